#include "readers/step/StepItemTransfer.h"

#include "readers/kernel/ForkedShapes.h"
#include "readers/kernel/KernelGuard.h"
#include "readers/kernel/ShapeFitness.h"
#include "readers/step/StepFaces.h"

#include <BRepBndLib.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <Interface_Check.hxx>
#include <StepShape_EdgeBasedWireframeModel.hxx>
#include <StepShape_GeometricSet.hxx>
#include <StepShape_ManifoldSolidBrep.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS_Compound.hxx>
#include <TransferBRep.hxx>
#include <Transfer_Binder.hxx>

#include <algorithm>
#include <cmath>

namespace tnconvert {

namespace {

using Kind = StepLosses::Kind;

/// How far edges may miss their vertices, as a share of the shape's extent. Sound
/// files stay below 1e-4.
constexpr double largestGap = 1e-2;

bool isWire(const Handle(StepRepr_RepresentationItem) & entity)
{
    return entity->IsKind(STANDARD_TYPE(StepShape_GeometricSet))
        || entity->IsKind(STANDARD_TYPE(StepShape_EdgeBasedWireframeModel));
}

/// A face that lost its boundary goes on without end.
bool isBounded(const TopoDS_Shape &shape)
{
    Bnd_Box box;
    BRepBndLib::AddClose(shape, box);
    return !box.IsVoid() && !box.IsOpen();
}

} // namespace

StepItemTransfer::StepItemTransfer(const StepEntities &entities, const StepItem &item,
                                   const Handle(STEPControl_ActorRead) & actor)
    : m_entities(entities)
    , m_item(item)
    , m_actor(actor)
    , m_process(new Transfer_TransientProcess(1000))
{
    m_process->SetModel(entities.model());
}

TopoDS_Shape StepItemTransfer::transferAsIs(StepLosses &losses,
                                            const Message_ProgressRange &progress)
{
    bool isEnough = false;
    const auto work = [&] {
        m_shape = make(m_item.entity, Healing::Needed, progress);
        if (m_shape.IsNull() || !TopExp_Explorer(m_shape, TopAbs_FACE).More()
            || !missingFaces().empty())
            return;
        m_healing.emplace(m_shape);
        m_shape = m_healing->healed(m_shape);
        StepLosses own;
        check(own);
        isEnough = own.isEmpty() && fitsTogether(m_shape);
        place();
    };
    if (!KernelGuard::run(work) || !isEnough)
        return {};
    losses.addTotal(Kind::Face, facesOf(m_item.entity).size());
    return m_shape;
}

TopoDS_Shape StepItemTransfer::transfer(StepLosses &losses, const Message_ProgressRange &progress)
{
    const bool isMade =
        KernelGuard::run([&] { m_shape = make(m_item.entity, Healing::Full, progress); });
    StepLosses own;
    own.addTotal(Kind::Face, facesOf(m_item.entity).size());
    if (const auto missing = missingFaces(); !missing.empty())
        addFaces(missing, own);
    if (m_shape.IsNull()) {
        if (!isMade || !isWire(m_item.entity) || m_entities.graph().isEndless(m_item.entity))
            losses.add(Kind::Shape, m_entities.label(m_item.entity));
        return m_shape;
    }
    // What was made of damaged entities may be no better than they are.
    if (!KernelGuard::run([&] {
            check(own);
            place();
        }))
        own.add(Kind::Entity, m_entities.label(m_item.entity));
    losses.add(own);
    return m_shape;
}

std::vector<Handle(StepShape_Face)> StepItemTransfer::missingFaces() const
{
    std::vector<Handle(StepShape_Face)> missing;
    for (const Handle(StepShape_Face) & face : facesOf(m_item.entity)) {
        if (m_shape.IsNull() || TransferBRep::ShapeResult(m_process, face).IsNull())
            missing.push_back(face);
    }
    return missing;
}

/// The kernel heals what it takes for manifold.
TopoDS_Shape StepItemTransfer::make(const Handle(Standard_Transient) & entity, Healing healing,
                                    const Message_ProgressRange &progress) const
{
    if (m_entities.graph().isEndless(entity))
        return {};
    m_actor->PrepareUnits(m_item.representation, m_process);
    return TransferBRep::ShapeResult(
        m_actor->TransferShape(entity, m_process, healing == Healing::Full, false, progress));
}

void StepItemTransfer::addFaces(const std::vector<Handle(StepShape_Face)> &missing,
                                StepLosses &losses)
{
    const std::vector<TopoDS_Shape> made = makeForked(missing.size(), [&](std::size_t i) {
        TopoDS_Shape face = make(missing[i], Healing::Full);
        return !face.IsNull() && isBounded(face) ? face : TopoDS_Shape();
    });
    BRep_Builder builder;
    TopoDS_Compound all;
    builder.MakeCompound(all);
    if (!m_shape.IsNull())
        builder.Add(all, m_shape);
    for (std::size_t i = 0; i < missing.size(); ++i) {
        if (made[i].IsNull()) {
            losses.add(Kind::Face, m_entities.label(missing[i]));
            continue;
        }
        builder.Add(all, made[i]);
        m_added.push_back({missing[i], made[i]});
    }
    if (!m_added.empty())
        m_shape = all;
}

void StepItemTransfer::check(StepLosses &losses) const
{
    if (losses.isEmpty() && m_entities.graph().isEndless(m_item.entity))
        losses.add(Kind::Entity, m_entities.label(m_item.entity));
    if (!isNearlyFit())
        losses.add(Kind::Fit, m_entities.label(m_item.entity));
    if (losses.isEmpty() && m_added.empty() && isHoled())
        losses.add(Kind::Hole, m_entities.label(m_item.entity));
    if (const Handle(Standard_Transient) failure = firstFailure();
        losses.isEmpty() && m_added.empty() && !failure.IsNull())
        losses.add(Kind::Entity, m_entities.label(failure));
}

/// Whether a solid has a hole. Some programs do not join the faces of their solids at all.
bool StepItemTransfer::isHoled() const
{
    if (!m_item.entity->IsKind(STANDARD_TYPE(StepShape_ManifoldSolidBrep)))
        return false;
    bool isOpen = false;
    for (TopExp_Explorer shells(m_shape, TopAbs_SHELL); shells.More(); shells.Next())
        isOpen = isOpen || !BRep_Tool::IsClosed(shells.Current());
    if (!isOpen)
        return false;
    const auto sets = faceSetsOf(m_item.entity);
    return std::all_of(sets.begin(), sets.end(),
                       [](const auto &set) { return openShareOf(*set) < 0.5; });
}

/// Tolerances alone do not tell: where a surface is degenerate the kernel raises them by itself.
bool StepItemTransfer::isNearlyFit() const
{
    if (BRep_Tool::MaxTolerance(m_shape, TopAbs_VERTEX) <= harmlessGap)
        return true;
    const double gap = largestGapOf(m_shape);
    Bnd_Box box;
    BRepBndLib::AddClose(m_shape, box);
    return gap <= harmlessGap || box.IsVoid() || gap <= largestGap * std::sqrt(box.SquareExtent());
}

/// An entity that the kernel says it failed on, although it made something of the item.
Handle(Standard_Transient) StepItemTransfer::firstFailure() const
{
    for (int i = 1; i <= m_process->NbMapped(); ++i) {
        const Handle(Transfer_Binder) binder = m_process->MapItem(i);
        if (!binder.IsNull() && binder->Check()->HasFailed())
            return m_process->Mapped(i);
    }
    return {};
}

void StepItemTransfer::place()
{
    const gp_Trsf &placement = m_item.placement;
    if (std::abs(placement.ScaleFactor() - 1) > 1e-9)
        m_scaling.emplace(m_shape, placement, Standard_True);
    else if (placement.Form() != gp_Identity)
        m_location = TopLoc_Location(placement);
    m_shape = placed(m_shape);
}

TopoDS_Shape StepItemTransfer::placed(const TopoDS_Shape &shape) const
{
    return m_scaling ? m_scaling->ModifiedShape(shape) : shape.Moved(m_location);
}

void StepItemTransfer::addLooks(const StepLooks &looks, bool withItem, SubStyles &styles) const
{
    for (int i = 1; i <= m_process->NbMapped(); ++i) {
        const Handle(Standard_Transient) &entity = m_process->Mapped(i);
        const Style *look = looks.find(entity);
        if (!look || (!withItem && entity == m_item.entity))
            continue;
        const TopoDS_Shape shape = TransferBRep::ShapeResult(m_process->MapItem(i));
        if (!shape.IsNull())
            styles.add(placed(m_healing ? m_healing->healed(shape) : shape), *look);
    }
    const Style *ofItem = withItem ? looks.find(m_item.entity) : nullptr;
    for (const Face &face : m_added) {
        const Style *look = looks.find(face.entity);
        if (look || ofItem)
            styles.add(placed(face.shape), look ? *look : *ofItem);
    }
}

} // namespace tnconvert
