#pragma once

#include "ConvertedFile.h"
#include "conversion/Converter.h"

#include <QDir>
#include <QTemporaryDir>

/// Converts within this process, in a directory of its own, and keeps what is reported.
class ConverterFixture : public tnconvert::Report {
public:
    /// Converts to out.glb, which is removed before. Relative inputs are samples; the settings are
    /// the text of a JSON object.
    tnconvert::Outcome convert(const QString &input, const char *settings = "{}")
    {
        QFile::remove(path("out.glb"));
        return convertTo("out.glb", input, settings);
    }
    /// Converts to a path of the directory and removes nothing.
    tnconvert::Outcome convertTo(const QString &output, const QString &input,
                                 const char *settings = "{}")
    {
        warnings.clear();
        percents.clear();
        parts.clear();
        references.clear();
        std::vector<std::string> wrong;
        tnconvert::Job job;
        job.input = QDir(TN_SAMPLES_DIR).filePath(input).toStdString();
        job.output = path(output).toStdString();
        job.settings = tnconvert::Settings::fromJson(nlohmann::json::parse(settings), wrong);
        return tnconvert::convert(job, *this);
    }
    ConvertedFile result() const { return ConvertedFile(path("out.glb")); }

    QString path(const QString &name) const { return m_directory.filePath(name); }
    /// Writes a file into the directory and gives its path.
    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(name));
        return file.fileName();
    }
    /// The content of a file; relative paths are samples.
    static QByteArray read(const QString &path)
    {
        QFile file(QDir(TN_SAMPLES_DIR).filePath(path));
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qPrintable(path));
        return file.readAll();
    }

    void progress(double percent, const std::string &) override { percents << percent; }
    void warning(const std::string &message) override
    {
        warnings << QString::fromStdString(message);
    }
    void reference(const std::string &file) override
    {
        references << QString::fromStdString(file).remove(path("") + '/');
        references.removeDuplicates();
    }
    void partStarted(const std::string &file) override { note("part ", file); }
    void partFinished(const std::string &file, const tnconvert::Outcome &outcome) override
    {
        note(stateName(outcome.state) + QString(' '), file);
    }

    // Of the last conversion.
    QStringList warnings;
    QVector<double> percents;
    QStringList references; ///< as far as they lie in the directory without that
    QStringList parts; ///< "part a.stp", "success a.stp", ... in the order of events

private:
    void note(const QString &event, const std::string &file)
    {
        parts << event + QFileInfo(QString::fromStdString(file)).fileName();
    }

    QTemporaryDir m_directory;
};
