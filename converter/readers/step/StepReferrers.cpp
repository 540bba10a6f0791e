#include "readers/step/StepReferrers.h"

#include "core/FileProbe.h"

#include <cstddef>
#include <cstdlib>

namespace tnconvert {

namespace {

/// Where a text in quotes or a comment ends that may begin at @p at.
std::size_t behindText(const std::string &content, std::size_t at)
{
    const bool isComment = content.compare(at, 2, "/*") == 0;
    if (!isComment && content[at] != '\'')
        return at;
    const std::size_t end = content.find(isComment ? "*/" : "'", at + (isComment ? 2 : 1));
    return end == std::string::npos ? content.size() : end + (isComment ? 2 : 1);
}

} // namespace

std::unordered_set<std::uint64_t> referrersOf(const std::string &path,
                                              const std::unordered_set<std::uint64_t> &numbers)
{
    std::unordered_set<std::uint64_t> referrers;
    const std::string content = readWhole(path);
    std::uint64_t entity = 0; // 0: the next number is that of an entity
    for (std::size_t at = 0; at < content.size(); ++at) {
        // A quote within a text is doubled, as if one text came behind another.
        while (behindText(content, at) != at)
            at = behindText(content, at);
        if (content[at] == ';')
            entity = 0;
        if (content[at] != '#')
            continue;
        const std::uint64_t number = std::strtoull(content.c_str() + at + 1, nullptr, 10);
        if (entity == 0)
            entity = number;
        else if (numbers.count(number) > 0)
            referrers.insert(entity);
    }
    return referrers;
}

} // namespace tnconvert
