#pragma once

#include "host/headless/BatchOptions.h"
#include "host/headless/FileCollector.h"
#include "host/headless/JobFollower.h"

#include <QtCore/QDateTime>
#include <QtCore/QObject>

#include <functional>
#include <vector>

namespace tnhost {

class DialogDriver;
class Scene;

/// Has the plug-in import files in one batch, as a user would: opens its dialog with the files,
/// sets the options there and presses its button. Prints each step, then the scene and a table of
/// what has become of the files.
class BatchRunner : public QObject {
    Q_OBJECT

public:
    using Printer = std::function<void(const QString &line)>;

    /// Service and scene must outlive the runner.
    BatchRunner(FileService &service, const Scene &scene, const BatchOptions &options,
                const FileCollector::Result &files, Printer print, Printer complain);

    /// Once. Returns at once or when the plug-in has refused.
    void start();
    /// Ends the running job and starts no other. The exit status is then 128 and the signal.
    void abort(int signal);

signals:
    /// Once, with 0 when each of the files succeeded and none was left out, else with 1.
    void finished(int exitStatus);

private:
    void giveUp(const QString &reason);
    bool setUpDialog(DialogDriver &dialog);
    void onPressed();
    void onJobEnded();
    void finish();
    void printScene();
    void printLogbook();
    QDateTime logbookTime() const;

    const Scene &m_scene;
    const BatchOptions m_options;
    const Printer m_print;
    const Printer m_complain;
    JobFollower m_follower;
    const FileCollector::Result m_files;
    QDateTime m_logbookBefore; ///< invalid: there was none
    int m_signal = 0;
    bool m_isFinished = false;
};

} // namespace tnhost
