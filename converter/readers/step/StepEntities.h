#pragma once

#include "readers/kernel/EntityGraph.h"

#include <StepData_StepModel.hxx>
#include <XSControl_WorkSession.hxx>

#include <string>
#include <unordered_map>
#include <vector>

namespace tnconvert {

/// The entities of a Step file by their type. Costs one look at each.
class StepEntities {
public:
    /// @p session has read the file.
    explicit StepEntities(const Handle(XSControl_WorkSession) & session);

    const Handle(XSControl_WorkSession) & session() const { return m_session; }
    const Handle(StepData_StepModel) & model() const { return m_model; }
    /// What they refer to.
    EntityGraph &graph() const { return m_graph; }

    /// Those of a type and of what derives from it, in the order of the file.
    template <typename Entity>
    std::vector<opencascade::handle<Entity>> all() const
    {
        std::vector<opencascade::handle<Entity>> entities;
        for (const int number : numbersOf(STANDARD_TYPE(Entity)))
            entities.push_back(opencascade::handle<Entity>::DownCast(m_model->Value(number)));
        return entities;
    }

    /// The entity as the file has it, as in "#13 VERTEX_POINT".
    std::string label(const Handle(Standard_Transient) & entity) const;

private:
    std::vector<int> numbersOf(const Handle(Standard_Type) & type) const;

    Handle(XSControl_WorkSession) m_session;
    Handle(StepData_StepModel) m_model;
    mutable EntityGraph m_graph; ///< remembers what was asked of it
    std::unordered_map<const Standard_Type *, std::vector<int>> m_numbers;
};

} // namespace tnconvert
