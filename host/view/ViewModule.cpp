#include "host/view/ViewModule.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>
#include <QtGui/QImage>

namespace tnhost {

namespace {

/// As seen from the program: where it was built and where it is installed.
constexpr const char *directories[] = {"/../lib/", "/../" TN_VIEW_DIR "/"};

/// Null with a sentence when there is no such function.
QFunctionPointer resolve(const char *name, QString *error)
{
    *error = QStringLiteral("The module that draws scenes is not installed.");
    for (const char *directory : directories) {
        QLibrary library(QCoreApplication::applicationDirPath() + QLatin1String(directory)
                         + QStringLiteral("tnview.so"));
        if (!QFileInfo::exists(library.fileName()))
            continue;
        // What it is built on keeps objects in static storage.
        library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
        if (const QFunctionPointer function = library.resolve(name))
            return function;
        *error = library.errorString();
    }
    return nullptr;
}

} // namespace

SceneDisplay *ViewModule::createView(Scene &scene, QString *error)
{
    const auto create = reinterpret_cast<ViewFactory>(resolve(viewFactoryName, error));
    return create ? create(scene, error) : nullptr;
}

QImage ViewModule::renderPicture(const Scene &scene, const QSize &size, QString *error)
{
    QImage image;
    if (const auto render = reinterpret_cast<PictureFunction>(resolve(pictureFunctionName, error)))
        render(scene, size, image, error);
    return image;
}

} // namespace tnhost
