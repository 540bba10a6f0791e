#pragma once

#include "host/scene/Scene.h"
#include "host/services/FileService.h"

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <functional>
#include <memory>

namespace tnhost {

/// A file service on the fake converter, in a directory of its own, with all its signals on record.
class ServiceFixture {
public:
    explicit ServiceFixture(const WorkerLimits &limits = {},
                            const QString &program = QStringLiteral(TN_FAKE_CONVERTER))
    {
        qputenv("TN_FAKE_LOG", QFile::encodeName(m_directory.filePath("log")));
        start(std::make_unique<FileService>(scene, program, limits));
    }

    /// Takes another service in the place of the first, as another run of the host would.
    void start(std::unique_ptr<FileService> other)
    {
        service = std::move(other);
        m_signals.clear();
        using Service = tnFileIOService;
        listen("starting", &Service::startingImport);
        listen("finished", &Service::importFinished);
        listen("percent", &Service::importProgressChanged);
        listen("part+", &Service::childFileImportAdded);
        listen("part-", &Service::childFileImportFinished);
        listen("timed", &Service::conversionFinished);
        listen("converting", &Service::fileConversionStarted);
        listen("converted", &Service::fileConversionFinished);
        listen("failed", &Service::fileConversionFailed);
        listen("progress", &Service::fileConversionProgressChanged);
        listen("parts", &Service::childrenFileConversionFinished);
        listen("queued", &Service::fileAddedToLoadQueue);
        listen("loading", &Service::fileLoadingStarted);
        listen("added", &Service::fileAddedToScene);
        listen("loadFailed", &Service::fileLoadingFailed);
        listen("loaded", &Service::fileLoadingFinished);
        QObject::connect(service.get(), &Service::fileTypeReceived, service.get(),
                         [this](const QString &path, tnCADFileTypes::FileType type) {
                             record(0, "type" + text(path) + text(static_cast<int>(type)));
                         });
    }

    /// Writes an input file (the path is relative to in()) and gives its path. The content is a
    /// script for the fake converter; the default one converts with success.
    QString file(const QString &name, const QByteArray &script = "sleep 0\n") const
    {
        const QString path = QDir::cleanPath(in() + '/' + name);
        QFile file(path);
        if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !file.open(QIODevice::WriteOnly)
            || file.write(script) != script.size())
            qFatal("%s cannot be written", qUtf8Printable(path));
        return path;
    }
    /// f0.step, f1.step and so on.
    QStringList files(int count, const QByteArray &script) const
    {
        QStringList paths;
        for (int i = 0; i < count; ++i)
            paths << file(QString("f%1.step").arg(i), script);
        return paths;
    }
    QString in() const { return m_directory.path() + QStringLiteral("/in"); }
    QString out() const { return m_directory.path() + QStringLiteral("/out"); }
    /// The names of all that lies in out(), sorted, hidden files included.
    QStringList outNames() const
    {
        return QDir(out()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                     QDir::Name);
    }

    quint64 convert(const QStringList &files)
    {
        return service->loadFiles(files, tndNode(), out(), false, false, false);
    }
    quint64 load(const QStringList &files, bool remove = false, const tndNode &target = {})
    {
        return service->loadFiles(files, target, out(), true, remove, false);
    }
    /// Runs events until the job has ended; false after half a minute.
    bool wait(quint64 job) const
    {
        return QTest::qWaitFor([&] { return count(job, "finished") > 0; }, 30000);
    }

    /// Signals of a job in order, "label file... value", with the labels of the constructor and
    /// files without directory and suffix. Durations are left out.
    QStringList signalsOf(quint64 job) const { return m_signals.value(job); }
    int count(quint64 job, const QString &beginning) const
    {
        return signalsOf(job).filter(QRegularExpression('^' + beginning)).size();
    }

    /// What the fake converter wrote: one line per beginning and end of a file.
    QStringList fakeLog() const
    {
        QFile file(m_directory.filePath("log"));
        const bool isThere = file.open(QIODevice::ReadOnly);
        return isThere ? QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)
                       : QStringList();
    }
    /// The process ids in it, without repetitions.
    QList<int> fakeProcesses() const
    {
        QList<int> ids;
        for (const QString &line : fakeLog()) {
            if (const int id = line.section(' ', 0, 0).toInt(); !ids.contains(id))
                ids << id;
        }
        return ids;
    }

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
    void listen(const QString &label, void (tnFileIOService::*signal)(quint64, Arguments...))
    {
        QObject::connect(service.get(), signal, service.get(),
                         [this, label](quint64 job, const Arguments &...arguments) {
                             record(job, (label + ... + text(arguments, label)));
                         });
    }

    template <typename Value>
    QString text(const Value &value, const QString &label = QString())
    {
        static const QStringList states{" Success", " Failure", " JobAborted", " Incomplete"};
        if constexpr (std::is_same_v<Value, double>)
            seconds[label] << value;
        else if constexpr (std::is_same_v<Value, tndNode>)
            node = value;
        else if constexpr (std::is_same_v<Value, tnCADFileTypes::JobState>)
            return states.value(static_cast<int>(value), " ?");
        else if constexpr (std::is_same_v<Value, QString>)
            return ' ' + (value.startsWith('/') ? QFileInfo(value).completeBaseName() : value);
        else
            return ' ' + QString::number(value);
        return QString();
    }

    void record(quint64 job, const QString &entry)
    {
        wasInsideCall |= insideCall;
        m_signals[job] << entry;
        if (onSignal)
            onSignal(job, entry);
    }

    QTemporaryDir m_directory;
    QMap<quint64, QStringList> m_signals;
};

} // namespace tnhost
