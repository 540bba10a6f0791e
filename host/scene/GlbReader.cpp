#include "host/scene/GlbReader.h"

#include "host/scene/FragmentBuilder.h"
#include "host/scene/GlbFile.h"

#include <tiny_gltf.h>

#include <exception>

namespace tnhost {

namespace {

/// Pictures are not shown, so they are not decoded either.
bool skipImage(tinygltf::Image *, int, std::string *, std::string *, int, int,
               const unsigned char *, int, void *)
{
    return true;
}

/// A glTF binary of the converter has everything inside; one that names other files is not
/// followed.
tinygltf::FsCallbacks closedFileSystem()
{
    tinygltf::FsCallbacks callbacks{};
    // "Yes", so that the reading names the reason rather than a missing file.
    callbacks.FileExists = [](const std::string &, void *) { return true; };
    callbacks.ExpandFilePath = [](const std::string &path, void *) { return path; };
    callbacks.ReadWholeFile = [](std::vector<unsigned char> *, std::string *error,
                                 const std::string &path, void *) {
        *error += path + " is outside of the file.";
        return false;
    };
    callbacks.WriteWholeFile = [](std::string *, const std::string &,
                                  const std::vector<unsigned char> &, void *) { return false; };
    return callbacks;
}

tinygltf::Model parse(const QByteArray &bytes)
{
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(&skipImage, nullptr);
    loader.SetFsCallbacks(closedFileSystem());

    tinygltf::Model model;
    std::string error;
    std::string warning;
    if (!loader.LoadBinaryFromMemory(&model, &error, &warning,
                                     reinterpret_cast<const unsigned char *>(bytes.constData()),
                                     static_cast<unsigned int>(bytes.size()))) {
        throw GlbError(QStringLiteral("The file is no valid glTF: %1")
                           .arg(QString::fromStdString(error).simplified()));
    }
    return model;
}

} // namespace

std::shared_ptr<const SceneFragment> GlbReader::read(const QString &path, QString *error)
{
    QString message;
    try {
        return std::make_shared<const SceneFragment>(
            FragmentBuilder(parse(GlbFile::read(path))).build());
    } catch (const std::bad_alloc &) {
        message = QStringLiteral("There is not enough memory for the file.");
    } catch (const GlbError &problem) {
        message = QString::fromUtf8(problem.what());
    } catch (const std::exception &problem) {
        message =
            QStringLiteral("The file is no valid glTF: %1").arg(QString::fromUtf8(problem.what()));
    }
    if (error)
        *error = message;
    return nullptr;
}

} // namespace tnhost
