#include "host/import/ServiceFixture.h"

#include <QtCore/QDir>
#include <QtTest/QTest>

using Service = tnFileIOService;
using tnCADFileTypes::JobState;

namespace {

QString text(const QString &value)
{
    return ' ' + (value.startsWith('/') ? QFileInfo(value).completeBaseName() : value);
}

QString text(unsigned int value)
{
    return ' ' + QString::number(value);
}

QString text(JobState state)
{
    static const QStringList names{" Success", " Failure", " JobAborted", " Incomplete"};
    return names.value(int(state), " ?");
}

} // namespace

template <typename... Arguments>
void ServiceFixture::listen(const QString &label, void (Service::*signal)(quint64, Arguments...))
{
    const auto note = [this, label](const auto &value) -> QString {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, double>)
            seconds[label] << value;
        else if constexpr (std::is_same_v<Value, tndNode>)
            node = value;
        else
            return text(value);
        return QString();
    };
    QObject::connect(service.get(), signal, service.get(),
                     [this, label, note](quint64 job, const Arguments &...arguments) {
                         record(job, (label + ... + note(arguments)));
                     });
}

ServiceFixture::ServiceFixture(const WorkerLimits &limits, const QString &program)
{
    qputenv("TN_FAKE_LOG", QFile::encodeName(m_directory.filePath("log")));
    service = std::make_unique<FileService>(scene, program, limits);
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
                         record(0, "type" + text(path) + text(unsigned(type)));
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
    const QString path = QDir::cleanPath(in() + '/' + name);
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).absolutePath()) || !file.open(QIODevice::WriteOnly)
        || file.write(script) != script.size())
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
    const auto all = QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot;
    return QDir(out()).entryList(all, QDir::Name);
}

quint64 ServiceFixture::convert(const QStringList &files)
{
    return service->loadFiles(files, tndNode(), out(), false, false, false);
}

quint64 ServiceFixture::load(const QStringList &files, bool remove, const tndNode &target)
{
    return service->loadFiles(files, target, out(), true, remove, false);
}

bool ServiceFixture::wait(quint64 job) const
{
    return QTest::qWaitFor([&] { return count(job, "finished") > 0; }, 30000);
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
