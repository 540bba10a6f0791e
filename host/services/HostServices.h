#pragma once

#include "host/import/ConverterWorker.h"

#include <QtCore/QString>

#include <memory>

namespace tnhost {

class ControllerService;
class FileService;
class Scene;
class SceneService;

/// Everything that the host offers its plug-ins, made and registered in one place. One per
/// process, made before the plug-ins are loaded; it must outlive them.
class HostServices {
public:
    struct Options {
        QString tmpDirectory; ///< absolute, writable
        QString converterProgram;
        int maxProcesses = -1; ///< 0: one per core; -1: as the service has it
        WorkerLimits limits;
        qint64 cacheSize = 0; ///< bytes of earlier results to keep; 0: none are kept or used
    };

    explicit HostServices(const Options &options);
    /// Withdraws the services and destroys them; running conversions die with the file service.
    ~HostServices();
    Q_DISABLE_COPY_MOVE(HostServices)

    Scene &scene() { return *m_scene; }
    FileService &fileService() { return *m_fileService; }
    const QString &converterProgram() const { return m_converterProgram; }
    ControllerService &controllerService() { return *m_controllerService; }

private:
    void announceReadTypes() const;

    const QString m_converterProgram;
    // The services stand on the scene, so it comes first and goes last.
    std::unique_ptr<Scene> m_scene;
    std::unique_ptr<SceneService> m_sceneService;
    std::unique_ptr<ControllerService> m_controllerService;
    std::unique_ptr<FileService> m_fileService;
};

} // namespace tnhost
