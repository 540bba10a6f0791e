#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace tnconvert {

/// Where the references of a file, and of the parts that it leads to, may point: to what lies in
/// the folder of the file that the user named, or below it. Only there does its author have a say.
class References {
public:
    /// @p followsOutside: the user lets references lead anywhere.
    References(const std::string &topFile, bool followsOutside);

    /// Whether @p path may be read, which need not exist. Links are followed: what counts is where
    /// the file lies.
    bool mayFollow(const std::string &path) const;
    /// Why the part @p path cannot be read, as far as that is a matter of the reference, in words
    /// that go between brackets; empty when it is not. A name in letters of another case is told.
    /// The first question about a folder reads that folder.
    std::string objection(const std::string &path) const;
    /// Throws ConversionError with the objection to @p path, if there is one.
    void check(const std::string &path) const;

    /// Whether both paths lead to the same file.
    static bool isSame(const std::string &path, const std::string &other);

private:
    using Names = std::multimap<std::string, std::string>; ///< by their lower case

    std::string nameInOtherCase(const std::string &path) const;

    std::string m_topFile;
    std::filesystem::path m_folder; ///< without links; empty when there is none
    bool m_followsOutside;
    mutable std::map<std::string, Names> m_folders;
};

} // namespace tnconvert
