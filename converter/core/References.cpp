#include "core/References.h"

#include "core/ConversionError.h"
#include "core/Text.h"

#include <algorithm>
#include <filesystem>

namespace tnconvert {

namespace fs = std::filesystem;

namespace {

fs::path canonicalFolder(const std::string &file)
{
    std::error_code error;
    return fs::canonical(fs::path(file).parent_path(), error);
}

} // namespace

References::References(const std::string &topFile, bool followsOutside)
    : m_topFile(absolutePath(topFile))
    , m_folder(canonicalFolder(m_topFile))
    , m_followsOutside(followsOutside)
{
}

bool References::mayFollow(const std::string &path) const
{
    if (m_followsOutside)
        return true;
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    return !m_folder.empty() && !error
        && std::mismatch(m_folder.begin(), m_folder.end(), target.begin(), target.end()).first
        == m_folder.end();
}

std::string References::objection(const std::string &path) const
{
    if (!mayFollow(path))
        return "it lies outside the folder of " + fileName(m_topFile) + " and is not followed";
    if (isSame(path, m_topFile))
        return "it would be a part of itself";
    const std::string name = nameInOtherCase(path);
    return name.empty() ? std::string() : "it does not exist, but lies there as " + name;
}

void References::check(const std::string &path) const
{
    const std::string why = objection(path);
    if (!why.empty())
        throw ConversionError("The file " + validUtf8(path) + " cannot be read: " + why + ".");
}

bool References::isSame(const std::string &path, const std::string &other)
{
    std::error_code error;
    return fs::equivalent(path, other, error);
}

std::string References::nameInOtherCase(const std::string &path) const
{
    std::error_code error;
    if (fs::exists(path, error))
        return {};
    const fs::path folder = fs::path(path).parent_path();
    const auto [names, isNew] = m_folders.try_emplace(folder.string());
    fs::directory_iterator entries;
    if (isNew)
        entries = fs::directory_iterator(folder, error);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error)) {
        const std::string name = entries->path().filename().string();
        names->second.emplace(lowerCase(name), name);
    }
    const auto found = names->second.find(lowerCase(fs::path(path).filename().string()));
    return found == names->second.end() ? std::string() : validUtf8(found->second);
}

} // namespace tnconvert
