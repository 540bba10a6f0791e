#pragma once

#include <string>

namespace tnconvert {

/// Throws ConversionError when @p path is no readable file that contains something.
void checkReadable(const std::string &path);

/// The first @p count bytes of @p path, fewer when the file is shorter.
std::string readHead(const std::string &path, std::size_t count);

/// The last @p count bytes of @p path, fewer when the file is shorter.
std::string readTail(const std::string &path, std::size_t count);

/// The whole of @p path. Throws ConversionError when it cannot be read.
std::string readWhole(const std::string &path);

/// Throws ConversionError: "x.igs is not an Iges file: REASON. It seems to be a Step file."
[[noreturn]] void throwWrongContent(const std::string &path, const std::string &formatWithArticle,
                                    const std::string &reason);

} // namespace tnconvert
