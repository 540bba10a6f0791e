#include "core/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>

namespace tnconvert {

namespace {

/// Length of the valid UTF-8 sequence at the start of @p text, 0 when there is none.
std::size_t sequenceLength(std::string_view text)
{
    struct Form {
        unsigned char mask;
        unsigned char lead;
        std::size_t length;
        unsigned least;
    };
    static constexpr Form forms[] = {{0x80, 0x00, 1, 0},
                                     {0xE0, 0xC0, 2, 0x80},
                                     {0xF0, 0xE0, 3, 0x800},
                                     {0xF8, 0xF0, 4, 0x10000}};
    const auto first = static_cast<unsigned char>(text[0]);
    for (const Form &form : forms) {
        if ((first & form.mask) != form.lead)
            continue;
        if (text.size() < form.length)
            return 0;
        unsigned code = first & static_cast<unsigned char>(~form.mask);
        for (std::size_t i = 1; i < form.length; ++i) {
            const auto byte = static_cast<unsigned char>(text[i]);
            if ((byte & 0xC0) != 0x80)
                return 0;
            code = (code << 6) | (byte & 0x3F);
        }
        const bool isValid =
            code >= form.least && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        return isValid ? form.length : 0;
    }
    return 0;
}

bool isUtf8(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string fromLatin1(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | (byte >> 6));
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

/// @p sequence is one character of UTF-8. Beyond ASCII there are 32 more, which terminals obey too.
bool isControl(std::string_view sequence)
{
    const auto last = static_cast<unsigned char>(sequence.back());
    return sequence.size() == 1 ? last < 0x20 || last == 0x7F
                                : sequence.size() == 2 && sequence[0] == '\xC2' && last < 0xA0;
}

} // namespace

std::string lowerCase(std::string_view text)
{
    std::string result(text);
    for (char &c : result) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return result;
}

std::string validUtf8(std::string_view text)
{
    const std::string latin = isUtf8(text) ? std::string() : fromLatin1(text);
    if (!latin.empty())
        text = latin;
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = sequenceLength(text);
        if (isControl(text.substr(0, length)))
            result += ' ';
        else
            result += text.substr(0, length);
        text.remove_prefix(length);
    }
    return result;
}

std::optional<double> parseNumber(std::string_view text)
{
    if (!text.empty() && text.front() == '+')
        text.remove_prefix(1);
    double value = 0;
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::result_out_of_range && rest == end) {
        // Too small to be told from 0; too large stays an error.
        const std::size_t exponent = text.find_first_of("eE");
        if (exponent != std::string_view::npos && text.substr(exponent + 1, 1) == "-")
            return 0.0;
        return std::nullopt;
    }
    if (error != std::errc() || rest != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string_view takeWord(std::string_view &text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    const char *const end = text.data() + text.size();
    const char *const first = std::find_if_not(text.data(), end, isBlank);
    const char *const last = std::find_if(first, end, isBlank);
    text.remove_prefix(std::size_t(last - text.data()));
    return {first, std::size_t(last - first)};
}

std::optional<double> takeNumber(std::string_view &text)
{
    return parseNumber(takeWord(text));
}

std::string fileName(const std::string &path)
{
    return validUtf8(std::filesystem::path(path).filename().string());
}

std::string fileStem(const std::string &path)
{
    return validUtf8(std::filesystem::path(path).stem().string());
}

std::string absolutePath(const std::string &path)
{
    return std::filesystem::absolute(path).lexically_normal().string();
}

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string_view withoutByteOrderMark(std::string_view text)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.substr(text.substr(0, mark.size()) == mark ? mark.size() : 0);
}

} // namespace tnconvert
