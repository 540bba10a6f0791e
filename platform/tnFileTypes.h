#pragma once

/// What a file chooser's name filter offers.
namespace tnFileTypes {

/// Bits; they may be combined.
enum FileExtensionFilterMode : unsigned int {
    FilterNative = 0x1, ///< the host's own project files
    FilterAllReadable = 0x2, ///< one entry with every file that can be read
    FilterPerType = 0x4, ///< one entry per file type
    FilterAnyFile = 0x8, ///< one entry for any file
};

} // namespace tnFileTypes
