#pragma once

#include "scene/Scene.h"

#include <Quantity_ColorRGBA.hxx>

#include <optional>
#include <string>

namespace tnconvert {

/// The look of a part, a face or an edge, so far as the file and the assemblies above state it.
struct Style {
    std::optional<Quantity_ColorRGBA> surface;
    std::optional<Quantity_ColorRGBA> curve;
    bool visible = true;

    /// Takes over what @p other states.
    void overlay(const Style &other)
    {
        if (other.surface)
            surface = other.surface;
        if (other.curve)
            curve = other.curve;
        visible = visible && other.visible;
    }

    /// The same for looks that cannot be told apart.
    std::string key() const;
};

/// The material of a colour, or the usual one.
Material materialOf(const std::optional<Quantity_ColorRGBA> &color);

} // namespace tnconvert
