#include "core/FileProbe.h"

#include "core/ConversionError.h"
#include "core/Text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace tnconvert {

namespace {

struct Signature {
    const char *beginning;
    std::size_t length;
    const char *description;
};

constexpr Signature signatures[] = {
    {"ISO-10303-21", 12, "a Step file"},
    {"#VRML V1", 8, "a VRML 1.0 file"},
    {"#VRML", 5, "a VRML file"},
    {"#X3D", 4, "an X3D file"},
    {"solid", 5, "an ASCII STL file"},
    {"glTF", 4, "a glTF binary"},
    {"%PDF", 4, "a PDF document"},
    {"PK\x03\x04", 4, "a zip archive"},
    {"\x1F\x8B", 2, "a gzip-compressed file"},
    {"\x89PNG", 4, "an image"},
    {"\xFF\xD8\xFF", 3, "an image"},
    {"\x7F"
     "ELF",
     4, "a program"},
    {"MZ", 2, "a program"},
    {"<!DOCTYPE html", 14, "a web page"},
    {"<html", 5, "a web page"},
    {"<?xml", 5, "an XML file"},
    {"{", 1, "a JSON file"},
};

bool looksLikeIges(std::string_view head)
{
    constexpr std::size_t sectionColumn = 72;
    return head.size() > sectionColumn + 1 && head[sectionColumn] == 'S'
        && head.substr(0, sectionColumn).find('\n') == std::string_view::npos;
}

bool isText(std::string_view head)
{
    return std::all_of(head.begin(), head.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x20 || byte == '\t' || byte == '\r' || byte == '\n' || byte == '\f';
    });
}

/// What a file that begins with @p head seems to be: "a Step file", "text", ...
const char *describeContent(std::string_view head)
{
    for (const Signature &signature : signatures) {
        if (head.substr(0, signature.length)
            == std::string_view(signature.beginning, signature.length))
            return signature.description;
    }
    if (looksLikeIges(head))
        return "an Iges file";
    return isText(head) ? "text of some other kind" : "binary data of some other kind";
}

[[noreturn]] void throwUnreadable(const std::string &path, const std::string &why)
{
    throw ConversionError(fileName(path) + " cannot be read: " + why + ".");
}

std::ifstream opened(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throwUnreadable(path, std::generic_category().message(errno));
    return file;
}

} // namespace

void checkReadable(const std::string &path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found)
        throw ConversionError("The file " + validUtf8(path) + " does not exist.");
    if (error)
        throwUnreadable(path, error.message());
    if (std::filesystem::is_directory(status))
        throw ConversionError(fileName(path) + " is a directory, not a file.");
    if (!std::filesystem::is_regular_file(status))
        throw ConversionError(fileName(path) + " is not a regular file.");
    opened(path);
    if (std::filesystem::file_size(path, error) == 0)
        throw ConversionError(fileName(path) + " is empty.");
}

std::string readHead(const std::string &path, std::size_t count)
{
    std::ifstream file = opened(path);
    std::string bytes(count, '\0');
    file.read(bytes.data(), std::streamsize(count));
    bytes.resize(std::size_t(file.gcount()));
    return bytes;
}

std::string readTail(const std::string &path, std::size_t count)
{
    std::ifstream file = opened(path);
    file.seekg(0, std::ios::end);
    const std::size_t size = std::size_t(file.tellg());
    const std::size_t wanted = std::min(size, count);
    file.seekg(std::streamoff(size - wanted));
    std::string bytes(wanted, '\0');
    file.read(bytes.data(), std::streamsize(wanted));
    bytes.resize(std::size_t(file.gcount()));
    return bytes;
}

std::string readWhole(const std::string &path)
{
    std::ifstream file = opened(path);
    file.seekg(0, std::ios::end);
    std::string bytes(std::size_t(file.tellg()), '\0');
    file.seekg(0);
    file.read(bytes.data(), std::streamsize(bytes.size()));
    if (!file)
        throwUnreadable(path, std::generic_category().message(EIO));
    return bytes;
}

void throwWrongContent(const std::string &path, const std::string &formatWithArticle,
                       const std::string &reason)
{
    throw ConversionError(fileName(path) + " is not " + formatWithArticle + ": " + reason
                          + ". It seems to be " + describeContent(readHead(path, 512)) + ".");
}

} // namespace tnconvert
