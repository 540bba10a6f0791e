#include "readers/kernel/EntityGraph.h"

#include "core/Limits.h"

#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>

#include <algorithm>
#include <utility>

namespace tnconvert {

namespace {

/// Levels of what leads round in a circle.
constexpr int endless = depthBound + 1;

} // namespace

EntityGraph::EntityGraph(const Handle(XSControl_WorkSession) & session)
    : m_session(session)
    , m_model(session->Model())
{
}

std::vector<bool> EntityGraph::reached(const std::vector<int> &first, const IsEnd &isEnd) const
{
    std::vector<bool> result(std::size_t(m_model->NbEntities()) + 1);
    std::vector<int> open;
    const auto reach = [&](int number) {
        if (result[std::size_t(number)])
            return;
        result[std::size_t(number)] = true;
        if (!isEnd(m_model->Value(number)))
            open.push_back(number);
    };
    for (const int number : first)
        reach(number);
    while (!open.empty()) {
        const int number = open.back();
        open.pop_back();
        for (const int other : references(number))
            reach(other);
    }
    return result;
}

bool EntityGraph::isEndless(const Handle(Standard_Transient) & entity)
{
    const int first = m_model->Number(entity);
    if (first <= 0)
        return false;
    m_levels.resize(std::size_t(m_model->NbEntities()) + 1);
    m_way.clear(); // of what a fault of the kernel may have interrupted
    // No recursion: a file may chain its entities as long as it is.
    open(first);
    while (!m_way.empty()) {
        std::vector<int> &left = m_way.back().left;
        if (left.empty()) {
            close();
            continue;
        }
        const int next = left.back();
        left.pop_back();
        open(next);
    }
    return m_levels[std::size_t(first)] > depthBound;
}

/// Goes on to an entity, unless it was met before.
void EntityGraph::open(int number)
{
    int &levels = m_levels[std::size_t(number)];
    if (levels == 0) {
        levels = endless; // for whoever leads back to it
        m_way.push_back({number, 0, references(number)});
    } else if (!m_way.empty()) {
        m_way.back().levels = std::max(m_way.back().levels, levels);
    }
}

/// Goes back to the entity before.
void EntityGraph::close()
{
    const Step closed = std::move(m_way.back());
    m_way.pop_back();
    const int levels = std::min(closed.levels + 1, endless);
    m_levels[std::size_t(closed.number)] = levels;
    if (!m_way.empty())
        m_way.back().levels = std::max(m_way.back().levels, levels);
}

std::vector<int> EntityGraph::references(int number) const
{
    std::vector<int> result;
    for (Interface_EntityIterator it = m_session->Graph().Shareds(m_model->Value(number));
         it.More(); it.Next()) {
        if (const int other = m_model->Number(it.Value()); other > 0)
            result.push_back(other);
    }
    return result;
}

} // namespace tnconvert
