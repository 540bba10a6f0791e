#include "writer/GlbWriter.h"

#include "core/Limits.h"
#include "writer/GltfModelBuilder.h"
#include "writer/PartialFile.h"

#include <sstream>

namespace tnconvert {

namespace {

constexpr std::uint32_t magic = 0x46546C67; // "glTF"
constexpr std::uint32_t jsonChunk = 0x4E4F534A; // "JSON"
constexpr std::uint32_t binaryChunk = 0x004E4942; // "BIN"
constexpr std::uint64_t headSize = 12;
constexpr std::uint64_t chunkHeadSize = 8;

/// The text that describes @p model and its buffer of @p bufferSize bytes. The library would write
/// the buffer as well, from copies of all of it, so it is not told of it.
std::string description(tinygltf::Model &model, std::uint64_t bufferSize)
{
    std::ostringstream stream;
    tinygltf::TinyGLTF library;
    library.WriteGltfSceneToStream(&model, stream, false, false);
    std::string json = stream.str();
    if (bufferSize > 0)
        json.insert(json.find('{') + 1,
                    "\"buffers\":[{\"byteLength\":" + std::to_string(bufferSize) + "}],");
    json.resize((json.size() + 3) / 4 * 4, ' ');
    return json;
}

void writeWords(std::initializer_list<std::uint32_t> words, std::streambuf &out)
{
    for (const std::uint32_t word : words)
        out.sputn(reinterpret_cast<const char *>(&word), sizeof word);
}

} // namespace

GlbWriter::GlbWriter(std::string source, std::string sourceId)
    : m_source(std::move(source))
    , m_sourceId(std::move(sourceId))
{
}

void GlbWriter::write(const Scene &scene, const std::string &path)
{
    GltfModelBuilder builder;
    tinygltf::Model model = builder.build(scene, m_source, m_sourceId);
    const std::string json = description(model, builder.buffer().size());
    const bool hasBuffer = builder.buffer().size() > 0;
    const std::uint64_t total = headSize + chunkHeadSize + json.size()
        + (hasBuffer ? chunkHeadSize + builder.buffer().size() : 0);
    checkOutputSize(total);

    PartialFile file(path);
    writeWords({magic, 2, std::uint32_t(total)}, file);
    writeWords({std::uint32_t(json.size()), jsonChunk}, file);
    file.sputn(json.data(), std::streamsize(json.size()));
    if (hasBuffer) {
        writeWords({std::uint32_t(builder.buffer().size()), binaryChunk}, file);
        builder.buffer().write(file);
    }
    file.publish();
}

} // namespace tnconvert
