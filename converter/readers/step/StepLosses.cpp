#include "readers/step/StepLosses.h"

#include <algorithm>
#include <iterator>

namespace tnconvert {

namespace {

struct Text {
    const char *one; ///< after "1 of 9 " or "1 "
    const char *several;
};

/// By kind.
constexpr Text texts[] = {
    {"entity has the number of another one", "entities have the numbers of others"},
    {"entity that its shapes need cannot be read", "entities that its shapes need cannot be read"},
    {"shape could not be read", "shapes could not be read"},
    {"face could not be read", "faces could not be read"},
    {"solid has a hole in its surface", "solids have holes in their surface"},
    {"shape does not fit together", "shapes do not fit together"},
    {"position could not be read", "positions could not be read"},
    {"product differs from what the file states for it",
     "products differ from what the file states for them"},
    {"entity could not be used", "entities could not be used"},
};
static_assert(std::size(texts) == std::size_t(StepLosses::Kind::KindCount));

} // namespace

void StepLosses::add(Kind kind, const std::string &entity, std::size_t count)
{
    Loss &loss = m_losses[std::size_t(kind)];
    if (loss.count == 0)
        loss.first = entity;
    loss.count += count;
}

void StepLosses::addTotal(Kind kind, std::size_t count)
{
    m_losses[std::size_t(kind)].total += count;
}

void StepLosses::add(const StepLosses &others)
{
    for (std::size_t kind = 0; kind < m_losses.size(); ++kind) {
        const Loss &loss = others.m_losses[kind];
        if (loss.count > 0)
            add(Kind(kind), loss.first, loss.count);
        addTotal(Kind(kind), loss.total);
    }
}

bool StepLosses::isEmpty() const
{
    return std::all_of(m_losses.begin(), m_losses.end(),
                       [](const Loss &loss) { return loss.count == 0; });
}

std::string StepLosses::sentence(const std::string &file) const
{
    std::string text;
    for (std::size_t kind = 0; kind < m_losses.size(); ++kind) {
        const Loss &loss = m_losses[kind];
        if (loss.count == 0)
            continue;
        text += (text.empty() ? "" : "; ") + std::to_string(loss.count);
        if (loss.total > 0)
            text += " of " + std::to_string(loss.total);
        const bool isOne = loss.count == 1 && loss.total <= 1;
        text += std::string(" ") + (isOne ? texts[kind].one : texts[kind].several);
        text += (loss.count > 1 ? ", the first is " : ", ") + loss.first;
    }
    return text.empty() ? text : file + " is damaged: " + text + ".";
}

} // namespace tnconvert
