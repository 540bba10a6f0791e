#include "readers/step/StepPartTransfer.h"

#include "readers/step/StepItemTransfer.h"

#include <BRep_Builder.hxx>
#include <Message_ProgressScope.hxx>
#include <TopoDS_Compound.hxx>

namespace tnconvert {

StepPartTransfer::StepPartTransfer(const StepEntities &entities, const StepLooks &looks)
    : m_entities(entities)
    , m_looks(looks)
    , m_actor(new STEPControl_ActorRead)
{
}

StepPart StepPartTransfer::transfer(const StepProduct &product, Healing healing,
                                    const Message_ProgressRange &progress) const
{
    StepPart part;
    const bool isOne = product.items.size() == 1;
    BRep_Builder builder;
    TopoDS_Compound all;
    builder.MakeCompound(all);
    const auto add = [&](const StepItemTransfer &transfer, const TopoDS_Shape &shape) {
        transfer.addLooks(m_looks, !isOne, part.subStyles);
        builder.Add(all, shape);
        part.shape = isOne ? shape : all;
    };
    Message_ProgressScope scope(progress, nullptr, double(product.items.size()));
    for (const StepItem &item : product.items) {
        const Message_ProgressRange range = scope.Next();
        if (healing == Healing::Needed) {
            StepItemTransfer transfer(m_entities, item, m_actor);
            if (const TopoDS_Shape shape = transfer.transferAsIs(part.losses, range);
                !shape.IsNull()) {
                add(transfer, shape);
                part.healing = Healing::Needed;
                continue;
            }
        }
        StepItemTransfer transfer(m_entities, item, m_actor);
        if (const TopoDS_Shape shape = transfer.transfer(part.losses, range); !shape.IsNull())
            add(transfer, shape);
    }
    return part;
}

} // namespace tnconvert
