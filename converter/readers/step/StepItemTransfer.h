#pragma once

#include "readers/kernel/ShapeHealing.h"
#include "readers/kernel/SubStyles.h"
#include "readers/step/StepLooks.h"
#include "readers/step/StepLosses.h"
#include "readers/step/StepStructure.h"

#include <BRepBuilderAPI_Transform.hxx>
#include <Message_ProgressRange.hxx>
#include <STEPControl_ActorRead.hxx>
#include <StepShape_Face.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS_Shape.hxx>
#include <Transfer_TransientProcess.hxx>

#include <optional>
#include <vector>

namespace tnconvert {

/// Has the kernel make the shape of one item: a solid, a surface model, a set of curves. Faces that
/// the kernel cannot make with the rest are tried one by one, in a child process.
class StepItemTransfer {
public:
    /// All of them must outlive the transfer.
    StepItemTransfer(const StepEntities &entities, const StepItem &item,
                     const Handle(STEPControl_ActorRead) & actor);

    /// Heals only what cannot be used as the file has it. Gives the shape where the item is placed,
    /// or null when that is not enough; another transfer can then make more of it.
    TopoDS_Shape transferAsIs(StepLosses &losses, const Message_ProgressRange &progress);

    /// Heals all. Gives the shape where the item is placed; null when nothing could be made. What
    /// is missing is added to @p losses.
    TopoDS_Shape transfer(StepLosses &losses, const Message_ProgressRange &progress);

    /// Adds the looks of what the shape consists of, and the item's own when @p withItem.
    void addLooks(const StepLooks &looks, bool withItem, SubStyles &styles) const;

private:
    struct Face {
        Handle(StepShape_Face) entity;
        TopoDS_Shape shape;
    };

    TopoDS_Shape make(const Handle(Standard_Transient) & entity, Healing healing,
                      const Message_ProgressRange &progress = {}) const;
    std::vector<Handle(StepShape_Face)> missingFaces() const;
    void addFaces(const std::vector<Handle(StepShape_Face)> &missing, StepLosses &losses);
    void check(StepLosses &losses) const;
    bool isHoled() const;
    bool isNearlyFit() const;
    Handle(Standard_Transient) firstFailure() const;
    void place();
    TopoDS_Shape placed(const TopoDS_Shape &shape) const;

    const StepEntities &m_entities;
    const StepItem &m_item;
    const Handle(STEPControl_ActorRead) m_actor;
    const Handle(Transfer_TransientProcess) m_process;
    TopoDS_Shape m_shape;
    std::vector<Face> m_added; ///< faces that were made one by one
    std::optional<ShapeHealing> m_healing; ///< of what the file has
    TopLoc_Location m_location; ///< one for all: two of the same place are taken for different ones
    std::optional<BRepBuilderAPI_Transform> m_scaling; ///< instead, for what no location can hold
};

} // namespace tnconvert
