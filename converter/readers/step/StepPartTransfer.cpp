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

StepPart StepPartTransfer::transfer(const StepProduct &product, StepLosses &losses,
                                    const Message_ProgressRange &progress) const
{
    StepPart part;
    const bool isOne = product.items.size() == 1;
    BRep_Builder builder;
    TopoDS_Compound all;
    builder.MakeCompound(all);
    Message_ProgressScope scope(progress, nullptr, double(product.items.size()));
    for (const StepItem &item : product.items) {
        StepItemTransfer transfer(m_entities, item, m_actor);
        const TopoDS_Shape shape = transfer.transfer(losses, scope.Next());
        if (shape.IsNull())
            continue;
        transfer.addLooks(m_looks, !isOne, part.subStyles);
        builder.Add(all, shape);
        part.shape = isOne ? shape : all;
    }
    return part;
}

} // namespace tnconvert
