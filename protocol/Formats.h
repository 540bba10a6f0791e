#pragma once

#include <array>

/// The kinds of CAD files that can be converted.
namespace tnprotocol {

struct Format {
    const char *name; ///< display name; a request's type
    std::array<const char *, 3> suffixes; ///< lower case, without the dot; null behind the last
};

inline constexpr Format step{"Step", {"stp", "step", "p21"}};
inline constexpr Format iges{"Iges", {"igs", "iges"}};
inline constexpr Format stl{"STL", {"stl"}};
inline constexpr Format obj{"Obj", {"obj"}};
inline constexpr Format vrml{"VRML", {"wrl", "vrml", "wrz"}};

/// All of them, in the order in which they are listed to people.
inline constexpr std::array formats{step, iges, stl, obj, vrml};

} // namespace tnprotocol
