#include "RecordingReport.h"

#include <QFile>
#include <QFileInfo>

#include <nlohmann/json.hpp>

void RecordingReport::warning(const std::string &message)
{
    warnings << QString::fromStdString(message);
}

void RecordingReport::partStarted(const std::string &file)
{
    parts << "part " + QFileInfo(QString::fromStdString(file)).fileName();
}

void RecordingReport::partFinished(const std::string &file, const tnconvert::Outcome &outcome)
{
    parts << QString(tnconvert::stateName(outcome.state)) + ' '
            + QFileInfo(QString::fromStdString(file)).fileName();
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

tnconvert::Settings settingsFrom(const char *json)
{
    std::vector<std::string> warnings;
    return tnconvert::Settings::fromJson(nlohmann::json::parse(json), warnings);
}

tnconvert::Outcome convertFile(const QString &input, const QString &output,
                               const tnconvert::Settings &settings, RecordingReport &report)
{
    tnconvert::Job job;
    job.input = input.toStdString();
    job.output = output.toStdString();
    job.settings = settings;
    return tnconvert::convert(job, report);
}
