#include "ConverterFixture.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString samplePath(const QString &path)
{
    return QDir(TN_SAMPLES_DIR).filePath(path);
}

QString fileName(const std::string &path)
{
    return ' ' + QFileInfo(QString::fromStdString(path)).fileName();
}

} // namespace

tnconvert::Outcome ConverterFixture::convert(const QString &input, const char *settings)
{
    QFile::remove(path("out.glb"));
    return convertTo("out.glb", input, settings);
}

tnconvert::Outcome ConverterFixture::convertTo(const QString &output, const QString &input,
                                               const char *settings)
{
    warnings.clear();
    parts.clear();
    tnconvert::Job job;
    job.input = samplePath(input).toStdString();
    job.output = path(output).toStdString();
    std::vector<std::string> wrong;
    job.settings = tnconvert::Settings::fromJson(nlohmann::json::parse(settings), wrong);
    return tnconvert::convert(job, *this);
}

QString ConverterFixture::write(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(name));
    return file.fileName();
}

void ConverterFixture::warning(const std::string &message)
{
    warnings << QString::fromStdString(message);
}

void ConverterFixture::partStarted(const std::string &file)
{
    parts << "part" + fileName(file);
}

void ConverterFixture::partFinished(const std::string &file, const tnconvert::Outcome &outcome)
{
    parts << tnconvert::stateName(outcome.state) + fileName(file);
}

QByteArray readFile(const QString &path)
{
    QFile file(samplePath(path));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}
