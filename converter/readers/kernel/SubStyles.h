#pragma once

#include "core/Settings.h"
#include "readers/kernel/Style.h"

#include <TopTools_DataMapOfShapeInteger.hxx>
#include <TopoDS_Shape.hxx>

#include <optional>
#include <vector>

namespace tnconvert {

/// Looks of sub-shapes; the faces and edges below a coloured shell or solid get its look.
class SubStyles {
public:
    void add(const TopoDS_Shape &shape, const Style &style);

    /// The look of a face or edge, null when it has none of its own.
    const Style *find(const TopoDS_Shape &shape) const;

private:
    struct Entry {
        Style style;
        bool isOwn;
    };

    void set(const TopoDS_Shape &shape, const Style &style, bool isOwn);

    TopTools_DataMapOfShapeInteger m_indices;
    std::vector<Entry> m_styles;
};

/// What a face or edge of a part is drawn with; nothing when the settings leave it out.
std::optional<Material> materialOf(const TopoDS_Shape &piece, const Style &ofPart,
                                   const SubStyles &own, const Settings &settings);

} // namespace tnconvert
