#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tnconvert {

/// ASCII letters in lower case; other bytes are kept.
std::string lowerCase(std::string_view text);

/// @p text when it is valid UTF-8; else its bytes taken as Latin-1, which is what older CAD files
/// mostly contain. Control characters become blanks.
std::string validUtf8(std::string_view text);

/// Reads a decimal number that makes up the whole of @p text, whatever the locale. Infinite and
/// undefined values are no numbers.
std::optional<double> parseNumber(std::string_view text);

/// Takes the word at the start of @p text off it, with the blanks and tabs in front.
std::string_view takeWord(std::string_view &text);

/// Takes a word like takeWord(), and reads it like parseNumber().
std::optional<double> takeNumber(std::string_view &text);

/// The file name at the end of @p path, as shown to people.
std::string fileName(const std::string &path);

/// The file name without its suffix, as a name for what the file contains.
std::string fileStem(const std::string &path);

/// The absolute, normalised form of @p path.
std::string absolutePath(const std::string &path);

std::string_view trimmed(std::string_view text);

/// @p text without the mark that some programs put in front of text in UTF-8.
std::string_view withoutByteOrderMark(std::string_view text);

} // namespace tnconvert
