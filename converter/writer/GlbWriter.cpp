#include "writer/GlbWriter.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "protocol/WorkerProtocol.h"
#include "writer/GltfModelBuilder.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace tnconvert {

namespace {

/// The file under its temporary name; removed unless it was published.
class PartialFile {
public:
    explicit PartialFile(const std::string &path)
        : m_path(path)
        , m_partial(path + tnprotocol::partialSuffix)
        , m_stream(m_partial, std::ios::binary | std::ios::trunc)
    {
        if (!m_stream)
            fail(std::generic_category().message(errno));
    }

    ~PartialFile()
    {
        m_stream.close();
        std::error_code ignored;
        if (!m_isPublished)
            std::filesystem::remove(m_partial, ignored);
    }

    PartialFile(const PartialFile &) = delete;
    PartialFile &operator=(const PartialFile &) = delete;

    std::ostream &stream() { return m_stream; }

    void publish()
    {
        m_stream.close();
        if (!m_stream)
            fail("the disk may be full");
        std::error_code error;
        std::filesystem::rename(m_partial, m_path, error);
        if (error)
            fail(error.message());
        m_isPublished = true;
    }

private:
    [[noreturn]] void fail(const std::string &why) const
    {
        throw ConversionError("The output " + validUtf8(m_path) + " cannot be written: " + why
                              + ".");
    }

    std::string m_path;
    std::string m_partial;
    std::ofstream m_stream;
    bool m_isPublished = false;
};

} // namespace

GlbWriter::GlbWriter(std::string source)
    : m_source(std::move(source))
{
}

void GlbWriter::write(const Scene &scene, const std::string &path)
{
    tinygltf::Model model = GltfModelBuilder().build(scene, m_source);
    PartialFile file(path);
    tinygltf::TinyGLTF library;
    if (!library.WriteGltfSceneToStream(&model, file.stream(), false, true))
        throw ConversionError("The output " + validUtf8(path) + " cannot be written.");
    file.publish();
}

} // namespace tnconvert
