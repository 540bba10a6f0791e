#include "HostileRun.h"

#include "converter/ConvertedFile.h"

#include <QElapsedTimer>
#include <QRegularExpression>

namespace {

QByteArray processFact(qint64 process, const QString &fact)
{
    QFile file(QString("/proc/%1/%2").arg(QString::number(process), fact));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The most that a process and those below it have held so far, which have their own lives: those
/// that have ended are not in it.
qint64 peakMemory(qint64 process)
{
    static const QRegularExpression peak("VmHWM:\\s+(\\d+) kB");
    const QString status = processFact(process, "status");
    qint64 sum = peak.match(status).captured(1).toLongLong() * 1024;
    const QString children = processFact(process, QString("task/%1/children").arg(process));
    for (const QString &child : children.split(' ', Qt::SkipEmptyParts))
        sum += peakMemory(child.toLongLong());
    return sum;
}

QStringList faultsOfAnswer(const HostileAnswer &answer)
{
    if (answer.hasDied)
        return {"the worker died"};
    if (answer.hasHung)
        return {"no answer in time"};
    const bool isSuccess = answer.state == "success";
    QStringList faults;
    if (!isSuccess && answer.state != "failure" && answer.state != "incomplete")
        faults << "an answer without a state";
    if (isSuccess != answer.message.isEmpty())
        faults << "a message that does not fit its state";
    if (!isSuccess && !answer.message.endsWith('.'))
        faults << "a message that is no sentence";
    if (answer.message.contains(" cannot be converted: "))
        faults << "an error that nobody foresaw";
    return faults;
}

} // namespace

HostileRun::HostileRun(int seconds, const QStringList &arguments)
    : m_seconds(seconds)
    , m_arguments(arguments)
{
}

HostileAnswer HostileRun::convert(const HostileFile &file)
{
    QDir directory(m_directory.path());
    directory.removeRecursively();
    directory.mkpath(".");
    for (auto it = file.files.begin(); it != file.files.end(); ++it) {
        QFile part(directory.filePath(it.key()));
        if (!part.open(QIODevice::WriteOnly) || part.write(it.value()) != it.value().size())
            qFatal("cannot write %s", qPrintable(part.fileName()));
    }
    HostileAnswer answer;
    ask(directory.filePath(file.input), file.format, answer);
    answer.faults = faultsOfAnswer(answer);
    if (answer.hasDied || answer.hasHung) {
        m_worker->kill();
        m_worker->waitForFinished();
        m_worker.reset();
        return answer;
    }
    judgeOutput(answer);
    return answer;
}

void HostileRun::ask(const QString &input, const QString &type, HostileAnswer &answer)
{
    if (!m_worker) {
        m_worker = std::make_unique<ConverterProcess>(m_arguments);
        m_worker->next();
    }
    m_worker->convert(1, input, m_directory.filePath("out.glb"), {{"type", type}});
    const int betweenLooksAtMemory = 20;
    QElapsedTimer timer;
    timer.start();
    QJsonObject event;
    while (event["event"] != "finished") {
        answer.hasDied = m_worker->state() == QProcess::NotRunning;
        answer.hasHung = timer.elapsed() > m_seconds * 1000;
        if (answer.hasDied || answer.hasHung)
            break;
        event = m_worker->next(betweenLooksAtMemory);
        answer.memory = std::max(answer.memory, peakMemory(m_worker->processId()));
    }
    answer.seconds = double(timer.elapsed()) / 1000;
    answer.state = event["state"].toString();
    answer.message = event["message"].toString();
}

void HostileRun::judgeOutput(HostileAnswer &answer) const
{
    const QString output = m_directory.filePath("out.glb");
    const bool isExpected = answer.state == "success" || answer.state == "incomplete";
    if (QFile::exists(output) != isExpected)
        answer.faults << (isExpected ? "no output" : "an output that failed");
    if (QFile::exists(output + ".part"))
        answer.faults << "half an output";
    if (!QFile::exists(output))
        return;
    const ConvertedFile converted(output);
    answer.faults << converted.problems;
    answer.faults.removeDuplicates();
    answer.area = converted.area;
}
