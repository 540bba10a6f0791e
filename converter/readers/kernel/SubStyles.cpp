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

} // namespace tnconvert
