#pragma once

#include <Interface_InterfaceModel.hxx>
#include <XSControl_WorkSession.hxx>

#include <functional>
#include <vector>

namespace tnconvert {

/// The entities of a file that the kernel has read, and what each of them refers to. Entities go by
/// their numbers in the model, from 1 on.
class EntityGraph {
public:
    using IsEnd = std::function<bool(const Handle(Standard_Transient) &)>;

    /// @p session has read the file.
    explicit EntityGraph(const Handle(XSControl_WorkSession) & session);

    /// For each number whether it is among @p first or is reached from there. What an entity refers
    /// to for which @p isEnd holds is not looked at.
    std::vector<bool> reached(const std::vector<int> &first, const IsEnd &isEnd) const;

    /// Whether the references of @p entity lead round in a circle or through more than 400 levels,
    /// which the kernel would follow without end. However often it is asked, each entity is looked
    /// at once.
    bool isEndless(const Handle(Standard_Transient) & entity);

private:
    /// An entity on the way from the first one.
    struct Step {
        int number;
        int levels; ///< below it, so far
        std::vector<int> left; ///< references that are still to be looked at
    };

    std::vector<int> references(int number) const;
    void open(int number);
    void close();

    const Handle(XSControl_WorkSession) m_session;
    const Handle(Interface_InterfaceModel) m_model;
    std::vector<int> m_levels; ///< by number: that an entity and what it refers to have
    std::vector<Step> m_way;
};

} // namespace tnconvert
