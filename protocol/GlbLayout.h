#pragma once

#include <cstdint>

/// The layout of a converted file: a glTF binary, in little-endian numbers of 32 bits. A header of
/// magic number, version and length of the file is followed by chunks of content length, type and
/// content, the first of which is the JSON description.
namespace tnprotocol::glb {

inline constexpr int headerSize = 12; ///< bytes
inline constexpr int chunkHeaderSize = 8; ///< bytes
inline constexpr std::uint32_t magic = 0x46546C67; ///< "glTF"
inline constexpr std::uint32_t version = 2;
inline constexpr std::uint32_t jsonChunk = 0x4E4F534A; ///< "JSON"

/// In the extras of "asset": the name of the input, and what the request wanted noted of it.
inline constexpr char source[] = "source";
inline constexpr char sourceId[] = "sourceId";

/// In the extras of the top node: the axes of the source. The node's rotation turns them into those
/// of glTF, which is Y-up.
inline constexpr char sourceAxes[] = "sourceAxes";
inline constexpr char zUp[] = "Z-up";
inline constexpr char yUp[] = "Y-up";

} // namespace tnprotocol::glb
