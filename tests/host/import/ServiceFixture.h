#pragma once

#include "host/scene/Scene.h"
#include "host/services/FileService.h"

#include <QtCore/QMap>
#include <QtCore/QTemporaryDir>

#include <functional>
#include <memory>

/// A file service on the fake converter, in a directory of its own, with all its signals on record.
class ServiceFixture {
public:
    explicit ServiceFixture(const WorkerLimits &limits = {},
                            const QString &program = QStringLiteral(TN_FAKE_CONVERTER));

    /// Writes an input file (the path is relative to in()) and gives its path. The content is a
    /// script for the fake converter; the default one converts with success.
    QString file(const QString &name, const QByteArray &script = "sleep 0\n") const;
    /// f0.step, f1.step and so on.
    QStringList files(int count, const QByteArray &script) const;
    QString in() const { return m_directory.path() + QStringLiteral("/in"); }
    QString out() const { return m_directory.path() + QStringLiteral("/out"); }
    /// The names of all that lies in out(), sorted, hidden files included.
    QStringList outNames() const;

    quint64 convert(const QStringList &files);
    quint64 load(const QStringList &files, bool remove = false, const tndNode &target = {});
    /// Runs events until the job has ended; false after half a minute.
    bool wait(quint64 job) const;

    /// Signals of a job in order, "label file... value", with the labels of the constructor and
    /// files without directory and suffix. Durations are left out.
    QStringList signalsOf(quint64 job) const { return m_signals.value(job); }
    int count(quint64 job, const QString &beginning) const;

    /// What the fake converter wrote: one line per beginning and end of a file.
    QStringList fakeLog() const;
    /// The process ids in it, without repetitions.
    QList<int> fakeProcesses() const;

    Scene scene;
    std::unique_ptr<FileService> service;
    /// Set while a call is on the stack from inside of which no signal may come.
    bool insideCall = false;
    bool wasInsideCall = false;
    /// Called with each entry of signalsOf(), from inside the signal.
    std::function<void(quint64, const QString &)> onSignal;
    tndNode node; ///< of the last fileAddedToScene
    QMap<QString, QList<double>> seconds; ///< by label

private:
    template <typename... Arguments>
    void listen(const QString &label, void (tnFileIOService::*signal)(quint64, Arguments...));
    void record(quint64 job, const QString &entry);

    QTemporaryDir m_directory;
    QMap<quint64, QStringList> m_signals;
};
