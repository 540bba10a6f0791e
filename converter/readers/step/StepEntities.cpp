#include "readers/step/StepEntities.h"

#include <StepSelect_StepType.hxx>

#include <algorithm>

namespace tnconvert {

StepEntities::StepEntities(const Handle(XSControl_WorkSession) & session)
    : m_session(session)
    , m_model(Handle(StepData_StepModel)::DownCast(session->Model()))
    , m_graph(session)
{
    for (int i = 1; i <= m_model->NbEntities(); ++i)
        m_numbers[m_model->Value(i)->DynamicType().get()].push_back(i);
}

std::vector<int> StepEntities::numbersOf(const Handle(Standard_Type) & type) const
{
    std::vector<int> result;
    for (const auto &[dynamicType, numbers] : m_numbers) {
        if (dynamicType->SubType(type))
            result.insert(result.end(), numbers.begin(), numbers.end());
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::string StepEntities::label(const Handle(Standard_Transient) & entity) const
{
    StepSelect_StepType types;
    types.SetProtocol(m_session->Protocol());
    return "#" + std::to_string(m_model->IdentLabel(entity)) + " " + types.Value(entity, m_model);
}

} // namespace tnconvert
