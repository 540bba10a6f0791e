#include "writer/GlbWriter.h"

#include "writer/GltfModelBuilder.h"
#include "writer/PartialFile.h"

#include <ostream>

namespace tnconvert {

GlbWriter::GlbWriter(std::string source, std::string sourceId)
    : m_source(std::move(source))
    , m_sourceId(std::move(sourceId))
{
}

void GlbWriter::write(const Scene &scene, const std::string &path)
{
    tinygltf::Model model = GltfModelBuilder().build(scene, m_source, m_sourceId);
    PartialFile file(path);
    std::ostream stream(&file);
    tinygltf::TinyGLTF library;
    library.WriteGltfSceneToStream(&model, stream, false, true); // tells of no failure
    file.publish();
}

} // namespace tnconvert
