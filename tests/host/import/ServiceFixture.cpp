#include "host/import/ServiceFixture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtTest/QTest>

using Service = tnFileIOService;
using tnCADFileTypes::JobState;

namespace {

QString base(const QString &path)
{
    return QFileInfo(path).fileName();
}

QString stateName(JobState state)
{
    static const QStringList names{"Success", "Failure", "JobAborted", "Incomplete"};
    return names.value(int(state), "?");
}

} // namespace

ServiceFixture::ServiceFixture(const WorkerLimits &limits, const QString &program)
{
    qputenv("TN_FAKE_LOG", QFile::encodeName(m_directory.filePath("log")));
    service = std::make_unique<FileService>(scene, program, limits);
    connectConversionSignals();
    connectLoadSignals();
}

ServiceFixture::~ServiceFixture() = default;

void ServiceFixture::connectConversionSignals()
{
    Service *s = service.get();
    QObject::connect(s, &Service::startingImport, s, [this](quint64 job, unsigned count) {
        record(job, QString("startingImport %1").arg(count));
    });
    QObject::connect(s, &Service::importFinished, s,
                     [this](quint64 job, double) { record(job, "importFinished"); });
    QObject::connect(s, &Service::importProgressChanged, s, [this](quint64 job, unsigned value) {
        record(job, QString("importProgressChanged %1").arg(value));
    });
    QObject::connect(s, &Service::childFileImportAdded, s,
                     [this](quint64 job, const QString &parent, const QString &child) {
                         record(job, "childAdded " + base(parent) + ' ' + base(child));
                     });
    QObject::connect(s, &Service::childFileImportFinished, s,
                     [this](quint64 job, const QString &parent, const QString &child) {
                         record(job, "childFinished " + base(parent) + ' ' + base(child));
                     });
    QObject::connect(s, &Service::conversionFinished, s, [this](quint64 job, double value) {
        seconds["conversionFinished"] = value;
        record(job, "conversionFinished");
    });
    QObject::connect(s, &Service::fileConversionStarted, s,
                     [this](quint64 job, const QString &path) {
                         record(job, "conversionStarted " + base(path));
                     });
    QObject::connect(s, &Service::fileConversionFinished, s,
                     [this](quint64 job, const QString &path, JobState state, double value) {
                         seconds["fileConversionFinished " + base(path)] = value;
                         record(job, "conversionEnded " + base(path) + ' ' + stateName(state));
                     });
    QObject::connect(s, &Service::fileConversionFailed, s,
                     [this](quint64 job, const QString &path, const QString &message) {
                         record(job, "conversionFailed " + base(path) + ' ' + message);
                     });
    QObject::connect(
        s, &Service::fileConversionProgressChanged, s,
        [this](quint64 job, const QString &path, unsigned percent, const QString &message) {
            record(job, QString("progress %1 %2 %3").arg(base(path)).arg(percent).arg(message));
        });
    QObject::connect(s, &Service::childrenFileConversionFinished, s,
                     [this](quint64 job, const QString &path, double value) {
                         seconds["childrenFileConversionFinished"] = value;
                         record(job, "partsEnded " + base(path));
                     });
}

void ServiceFixture::connectLoadSignals()
{
    Service *s = service.get();
    QObject::connect(
        s, &Service::fileAddedToLoadQueue, s,
        [this](quint64 job, const QString &path) { record(job, "loadQueued " + base(path)); });
    QObject::connect(s, &Service::fileLoadingStarted, s, [this](quint64 job, const QString &path) {
        record(job, "loadStarted " + base(path));
    });
    QObject::connect(s, &Service::fileAddedToScene, s,
                     [this](quint64 job, const QString &path, const tndNode &node) {
                         nodes[base(path)] = node;
                         record(job, "added " + base(path));
                     });
    QObject::connect(s, &Service::fileLoadingFailed, s,
                     [this](quint64 job, const QString &path, const QString &message) {
                         record(job, "loadFailed " + base(path) + ' ' + message);
                     });
    QObject::connect(s, &Service::fileLoadingFinished, s,
                     [this](quint64 job, const QString &path, JobState state) {
                         record(job, "loadEnded " + base(path) + ' ' + stateName(state));
                     });
    QObject::connect(s, &Service::fileTypeReceived, s,
                     [this](const QString &path, tnCADFileTypes::FileType type) {
                         record(0, QString("type %1 %2").arg(base(path)).arg(int(type)));
                     });
}

void ServiceFixture::record(quint64 job, const QString &entry)
{
    wasInsideCall |= insideCall;
    m_signals[job] << entry;
    if (onSignal)
        onSignal(job, entry);
}

QString ServiceFixture::file(const QString &name, const QByteArray &script) const
{
    const QString path = in() + '/' + name;
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(script) != script.size())
        qFatal("%s cannot be written", qUtf8Printable(path));
    return path;
}

QStringList ServiceFixture::files(int count, const QByteArray &script) const
{
    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths << file(QString("f%1.step").arg(i), script);
    return paths;
}

QStringList ServiceFixture::outNames() const
{
    return QDir(out()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                 QDir::Name);
}

quint64 ServiceFixture::convert(const QStringList &files)
{
    return service->loadFiles(files, tndNode(), out(), false, false, false);
}

bool ServiceFixture::wait(quint64 job) const
{
    return QTest::qWaitFor([&] { return count(job, "importFinished") > 0; }, 30000);
}

int ServiceFixture::count(quint64 job, const QString &beginning) const
{
    return signalsOf(job).filter(QRegularExpression('^' + beginning)).size();
}

QStringList ServiceFixture::fakeLog() const
{
    QFile file(m_directory.filePath("log"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
}

QList<int> ServiceFixture::fakeProcesses() const
{
    QList<int> ids;
    for (const QString &line : fakeLog()) {
        const int id = line.section(' ', 0, 0).toInt();
        if (!ids.contains(id))
            ids << id;
    }
    return ids;
}
