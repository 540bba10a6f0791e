#pragma once

#include "platform/tnCADFileTypes.h"
#include "platform/tndNode.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <functional>

class Scene;
class tnFileIOService;

/// Sends files one after the other to the plug-in, follows what the file service says of them and
/// prints it, line by line.
class HeadlessRunner : public QObject {
    Q_OBJECT

public:
    using Printer = std::function<void(const QString &line)>;

    /// Service and scene must outlive the runner. Files are absolute paths.
    HeadlessRunner(tnFileIOService &service, const Scene &scene, const QStringList &files,
                   Printer print);

    /// Once; returns at once.
    void start();
    /// Ends the running job and starts no other. The exit status is then 128 and the signal.
    void abort(int signal);

signals:
    /// Once, with 0 when there was a file and each of them succeeded, else with 1.
    void finished(int exitStatus);

private:
    enum class Result { Open, Succeeded, Failed };

    void connectService();
    void startNext();
    void sendCurrent();
    void onSent();
    void onImportFinished();
    void fail(const QString &reason);
    void endCurrent();
    void finish();
    void step(const QString &path, const QString &text);

    tnFileIOService &m_service;
    const Scene &m_scene;
    const QStringList m_files;
    const Printer m_print;

    int m_current = -1; ///< index of the file that is being imported
    quint64 m_job = 0; ///< 0: none is running
    Result m_result = Result::Open; ///< of the current file
    QString m_lastStep; ///< repeated progress is printed once
    int m_succeeded = 0;
    int m_failed = 0;
    int m_signal = 0;
    bool m_isFinished = false;
};
