#include "readers/iges/IgesDamage.h"

#include "core/Text.h"
#include "readers/kernel/EntityGraph.h"

#include <IGESData_IGESEntity.hxx>
#include <IGESData_IGESModel.hxx>
#include <Interface_Check.hxx>
#include <Interface_EntityIterator.hxx>
#include <Interface_Graph.hxx>
#include <Interface_ReportEntity.hxx>
#include <TransferBRep.hxx>
#include <Transfer_Binder.hxx>
#include <Transfer_TransientProcess.hxx>
#include <XSControl_TransferReader.hxx>

#include <algorithm>
#include <vector>

namespace tnconvert {

namespace {

using Entity = Handle(IGESData_IGESEntity);

template <std::size_t size>
bool contains(const int (&numbers)[size], int number)
{
    return std::find(std::begin(numbers), std::end(numbers), number) != std::end(numbers);
}

/// The kinds of entities that geometry is made of. The rest are notes, views, colours and the like.
bool isGeometry(int type)
{
    static constexpr int containers[] = {308, 402, 408, 430};
    return (type >= 100 && type < 200) || (type >= 502 && type <= 514)
        || contains(containers, type);
}

/// Kinds that the kernel turns into faces wherever they stand.
bool isFace(int type)
{
    static constexpr int types[] = {143, 144, 186, 510, 514};
    return contains(types, type);
}

/// Kinds that are drawn when they belong to nothing else. Planes and other surfaces without an end
/// are no more than a help for others.
bool isSurface(int type)
{
    static constexpr int surfaces[] = {114, 118, 120, 122, 128, 140};
    const bool isSolid = type >= 150 && type <= 184;
    return isFace(type) || isSolid || contains(surfaces, type) || type == 430;
}

bool isCurve(int type)
{
    static constexpr int types[] = {100, 102, 104, 106, 110, 112, 126, 130};
    return contains(types, type);
}

/// Kinds that make sense only as a part of another: without it, that other one has lost them.
bool isBoundary(int type)
{
    static constexpr int types[] = {141, 142, 508};
    return contains(types, type);
}

/// Whether one of the messages tells more than that a font, level, view or colour is unknown.
bool hasSeriousFail(const Interface_Check &check)
{
    constexpr std::string_view directory = "Directory Entry (Field ";
    // The entity's type, its matrix and its form.
    static constexpr int serious[] = {1, 7, 15};
    for (int i = 1; i <= check.NbFails(); ++i) {
        const std::string_view fail = trimmed(check.CFail(i));
        if (fail.substr(0, directory.size()) != directory
            || contains(serious, std::atoi(fail.data() + directory.size())))
            return true;
    }
    return false;
}

/// What has become of the entities of one file.
class Survey {
public:
    Survey(const Handle(XSControl_WorkSession) & session, const Settings &settings)
        : m_model(*Handle(IGESData_IGESModel)::DownCast(session->Model()))
        , m_process(*session->TransferReader()->TransientProcess())
        , m_graph(session->Graph())
        , m_entities(session)
        , m_wantsCurves(settings.importCurves)
        , m_wantsHidden(settings.importInvisibleSurfaces || settings.importInvisibleCurves)
    {
    }

    /// Whether no other entity of the file refers to it.
    bool isRoot(const Entity &entity) const { return m_graph.Sharings(entity).NbEntities() == 0; }

    /// Whether it came to nothing, or not to all of what it states.
    bool isSuspect(int number) const
    {
        const Entity entity = m_model.Entity(number);
        const int type = entity->TypeNumber();
        if (!isGeometry(type))
            return false;
        if (m_model.IsReportEntity(number)
            && hasSeriousFail(*m_model.ReportEntity(number)->Check()))
            return true;
        const Handle(Transfer_Binder) binder = m_process.Find(entity);
        if (!binder.IsNull() && hasSeriousFail(*binder->Check()))
            return true;
        if (isFace(type) || isSurface(type) || isCurve(type))
            return (isFace(type) || isRoot(entity)) && !hasShape(binder);
        return isBoundary(type) && isRoot(entity);
    }

    /// The numbers of all entities that are reached from a root that is to be drawn.
    std::vector<bool> wanted() const
    {
        std::vector<int> drawn;
        for (int i = 1; i <= m_model.NbEntities(); ++i) {
            const Entity entity = m_model.Entity(i);
            const bool isDrawn = (m_wantsCurves || !isCurve(entity->TypeNumber()))
                && (m_wantsHidden || entity->BlankStatus() == 0);
            if (isDrawn && isRoot(entity))
                drawn.push_back(i);
        }
        return m_entities.reached(drawn, [](const auto &) { return false; });
    }

private:
    static bool hasShape(const Handle(Transfer_Binder) & binder)
    {
        return !binder.IsNull() && binder->HasResult()
            && !TransferBRep::ShapeResult(binder).IsNull();
    }

    const IGESData_IGESModel &m_model;
    const Transfer_TransientProcess &m_process;
    const Interface_Graph &m_graph;
    const EntityGraph m_entities;
    const bool m_wantsCurves;
    const bool m_wantsHidden;
};

/// Lines that are no entity: the kernel says so in the checks of the whole model.
int unreadLines(const IGESData_IGESModel &model)
{
    constexpr std::string_view syntax = "Syntax error";
    const Handle(Interface_Check) &check = model.GlobalCheck();
    int count = 0;
    for (int i = 1; i <= check->NbFails(); ++i)
        count += trimmed(check->CFail(i)).substr(0, syntax.size()) == syntax ? 1 : 0;
    return count;
}

} // namespace

IgesDamage::IgesDamage(const Handle(XSControl_WorkSession) & session, const Settings &settings)
{
    const Handle(IGESData_IGESModel) model = Handle(IGESData_IGESModel)::DownCast(session->Model());
    const bool wantsHidden = settings.importInvisibleSurfaces || settings.importInvisibleCurves;
    const Survey survey(session, settings);
    std::vector<int> suspects;
    for (int i = 1; i <= model->NbEntities(); ++i) {
        const Entity entity = model->Entity(i);
        if (survey.isSuspect(i))
            suspects.push_back(i);
        m_leavesHiddenOut = m_leavesHiddenOut
            || (!wantsHidden && entity->BlankStatus() != 0 && isGeometry(entity->TypeNumber()));
    }
    m_unreadLines = unreadLines(*model);
    if (suspects.empty())
        return;
    const std::vector<bool> isWanted = survey.wanted();
    for (const int number : suspects) {
        const Entity entity = model->Entity(number);
        if (isWanted[std::size_t(number)] && m_count++ == 0)
            m_first = "type " + std::to_string(entity->TypeNumber()) + " at D"
                + std::to_string(model->DNum(entity));
    }
}

std::string IgesDamage::loss(const std::string &name) const
{
    if (m_count > 1)
        return std::to_string(m_count) + " entities of " + name
            + " are missing or incomplete, the first is " + m_first + ".";
    if (m_count == 1)
        return "An entity of " + name + " is missing or incomplete, " + m_first + ".";
    if (m_unreadLines > 0)
        return std::to_string(m_unreadLines) + " lines of " + name + " cannot be read.";
    return {};
}

} // namespace tnconvert
