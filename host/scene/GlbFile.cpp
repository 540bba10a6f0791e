#include "host/scene/GlbFile.h"

#include "protocol/GlbLayout.h"

#include <QtCore/QFile>
#include <QtCore/QtEndian>

#include <algorithm>
#include <limits>

namespace tnhost {

namespace {

constexpr int deepestJson = 128;

quint32 word(const QByteArray &bytes, qint64 offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

/// Depth of the brackets outside of strings. Need not be valid JSON.
int nesting(const char *begin, const char *end)
{
    int depth = 0;
    int deepest = 0;
    bool inString = false;
    for (const char *c = begin; c != end; ++c) {
        if (inString) {
            if (*c == '\\' && c + 1 != end)
                ++c;
            else if (*c == '"')
                inString = false;
        } else if (*c == '"') {
            inString = true;
        } else if (*c == '[' || *c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if (*c == ']' || *c == '}') {
            --depth;
        }
    }
    return deepest;
}

/// Throws GlbError when header or chunks contradict the size, or when the JSON is nested too
/// deeply.
void check(const QByteArray &bytes)
{
    namespace glb = tnprotocol::glb;
    if (bytes.size() < glb::headerSize || word(bytes, 0) != glb::magic)
        throw GlbError(QStringLiteral("The file is not a glTF binary."));
    if (const quint32 version = word(bytes, 4); version != glb::version)
        throw GlbError(QStringLiteral("glTF version %1 cannot be read, only 2.").arg(version));
    const qint64 length = word(bytes, 8);
    if (length > bytes.size())
        throw GlbError(
            QStringLiteral("The file ends after %1 of %2 bytes.").arg(bytes.size()).arg(length));

    qint64 offset = glb::headerSize;
    int chunks = 0;
    while (offset < length) {
        if (length - offset < glb::chunkHeaderSize)
            throw GlbError(QStringLiteral("The file's last chunk is incomplete."));
        const qint64 chunkLength = word(bytes, offset);
        const quint32 type = word(bytes, offset + 4);
        offset += glb::chunkHeaderSize;
        if (chunkLength > length - offset)
            throw GlbError(QStringLiteral("A chunk of the file reaches beyond its end."));
        if (chunks == 0) {
            if (type != glb::jsonChunk)
                throw GlbError(QStringLiteral("The file's first chunk is not JSON."));
            const char *json = bytes.constData() + offset;
            if (nesting(json, json + chunkLength) > deepestJson)
                throw GlbError(QStringLiteral("The file's JSON is nested too deeply."));
        }
        offset += chunkLength;
        ++chunks;
    }
    if (chunks == 0)
        throw GlbError(QStringLiteral("The file has no content."));
}

} // namespace

QByteArray GlbFile::read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw GlbError(QStringLiteral("The file cannot be opened: %1.").arg(file.errorString()));
    // QByteArray counts in int; a larger file would be cut off without a word.
    if (file.size() > std::numeric_limits<int>::max() - 64)
        throw GlbError(QStringLiteral("The file is larger than 2 GB."));
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw GlbError(QStringLiteral("The file cannot be read: %1.").arg(file.errorString()));
    check(bytes);
    return bytes;
}

} // namespace tnhost
