#pragma once

#include "core/ConversionError.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace tnconvert {

/// The most nodes of a scene, whatever the format. Real assemblies stay well below; a few kilobytes
/// of parts that repeat parts that repeat parts could otherwise fill any memory.
constexpr std::uint64_t nodeBound = 1'000'000;

/// The most levels of a tree. Real assemblies are less than twenty levels deep; recursion through
/// this many still fits on the stack.
constexpr int depthBound = 400;

/// The most triangles of a scene, whatever the format. As many fill about 4 GB of an output, which
/// is the most that its format can hold.
constexpr std::uint64_t triangleBound = 50'000'000;

/// The most bytes of triangles and lines in an output, which counts its bytes with 32 bits, what
/// describes them included.
constexpr std::uint64_t outputBound = 3'500'000'000;

/// The most triangles that a file may state one by one. As many fill an output when they share
/// their vertices as closed surfaces do; whether they do shows only later.
constexpr std::uint64_t statedTriangleBound = outputBound / 24;

/// The most bytes that a compressed file may unpack to; its size says nothing of that.
constexpr std::uint64_t unpackedBound = 1'000'000'000;

/// The sum of two counts of nodes, 10^18 at most, which is far above the bound.
inline std::uint64_t nodeSum(std::uint64_t a, std::uint64_t b)
{
    constexpr std::uint64_t largest = 1'000'000'000'000'000'000;
    return std::min(a + b, largest);
}

/// Throws ConversionError when @p count nodes are more than a scene may have. @p what begins the
/// sentence: it is what would have the nodes.
inline void checkNodeCount(const std::string &what, std::uint64_t count)
{
    if (count > nodeBound)
        throw ConversionError(what + " repeats its parts too often: at least "
                              + std::to_string(count) + " nodes would arise, and at most "
                              + std::to_string(nodeBound) + " can be converted.");
}

/// Throws ConversionError when @p count triangles are more than a scene may have. @p what begins
/// the sentence: it is what has the triangles.
inline void checkTriangleCount(const std::string &what, std::uint64_t count,
                               std::uint64_t bound = triangleBound)
{
    if (count > bound)
        throw ConversionError(what + " has too many triangles: " + std::to_string(count)
                              + ", and at most " + std::to_string(bound) + " can be converted.");
}

/// Throws ConversionError when an output cannot hold @p bytes of triangles and lines.
inline void checkOutputSize(std::uint64_t bytes)
{
    if (bytes > outputBound)
        throw ConversionError(
            "The model is larger than a glTF binary can be: its triangles need at "
            "least "
            + std::to_string(bytes) + " bytes, and at most " + std::to_string(outputBound)
            + " can be written.");
}

} // namespace tnconvert
