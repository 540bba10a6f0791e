#include "readers/kernel/Style.h"

namespace tnconvert {

namespace {

std::string keyOf(const std::optional<Quantity_ColorRGBA> &color)
{
    if (!color)
        return "-";
    std::string key;
    for (const float part : {float(color->GetRGB().Red()), float(color->GetRGB().Green()),
                             float(color->GetRGB().Blue()), color->Alpha()})
        key += std::to_string(int(part * 65535)) + ",";
    return key;
}

} // namespace

std::string Style::key() const
{
    return keyOf(surface) + "|" + keyOf(curve) + (visible ? "" : "|hidden");
}

Material materialOf(const std::optional<Quantity_ColorRGBA> &color)
{
    Material material;
    if (color) {
        Standard_Real r = 0;
        Standard_Real g = 0;
        Standard_Real b = 0;
        color->GetRGB().Values(r, g, b, Quantity_TOC_sRGB);
        material.color = {r, g, b, color->Alpha()};
    }
    return material;
}

} // namespace tnconvert
