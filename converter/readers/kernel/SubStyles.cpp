#include "readers/kernel/SubStyles.h"

#include <TopExp_Explorer.hxx>

namespace tnconvert {

void SubStyles::add(const TopoDS_Shape &shape, const Style &style)
{
    set(shape, style, /*isOwn*/ true);
    for (const TopAbs_ShapeEnum type : {TopAbs_FACE, TopAbs_EDGE}) {
        if (shape.ShapeType() >= type)
            continue;
        for (TopExp_Explorer below(shape, type); below.More(); below.Next())
            set(below.Current(), style, false);
    }
}

const Style *SubStyles::find(const TopoDS_Shape &shape) const
{
    const int *index = m_indices.Seek(shape);
    return index ? &m_styles[std::size_t(*index)].style : nullptr;
}

void SubStyles::set(const TopoDS_Shape &shape, const Style &style, bool isOwn)
{
    int *index = m_indices.ChangeSeek(shape);
    if (!index) {
        m_indices.Bind(shape, int(m_styles.size()));
        m_styles.push_back({style, isOwn});
    } else if (isOwn || !m_styles[std::size_t(*index)].isOwn) {
        m_styles[std::size_t(*index)] = {style, isOwn};
    }
}

std::optional<Material> materialOf(const TopoDS_Shape &piece, const Style &ofPart,
                                   const SubStyles &own, const Settings &settings)
{
    Style style = ofPart;
    if (const Style *stated = own.find(piece))
        style.overlay(*stated);
    const bool isCurve = piece.ShapeType() == TopAbs_EDGE;
    const bool showsHidden =
        isCurve ? settings.importInvisibleCurves : settings.importInvisibleSurfaces;
    if (!style.visible && !showsHidden)
        return std::nullopt;
    return materialOf(isCurve ? style.curve : style.surface);
}

} // namespace tnconvert
