#pragma once

#include "ConvertedFile.h"
#include "core/Converter.h"

#include <QTemporaryDir>

/// Converts within this process, in a directory of its own, and keeps what is reported.
class ConverterFixture : public tnconvert::Report {
public:
    /// Converts to out.glb, which is removed before. Relative inputs are samples; the settings are
    /// the text of a JSON object.
    tnconvert::Outcome convert(const QString &input, const char *settings = "{}");
    /// Converts to a path of the directory and removes nothing.
    tnconvert::Outcome convertTo(const QString &output, const QString &input,
                                 const char *settings = "{}");
    ConvertedFile result() const { return ConvertedFile(path("out.glb")); }

    QString path(const QString &name) const { return m_directory.filePath(name); }
    /// Writes a file into the directory and gives its path.
    QString write(const QString &name, const QByteArray &content) const;

    void progress(double, const std::string &) override { }
    void warning(const std::string &message) override;
    void partStarted(const std::string &file) override;
    void partFinished(const std::string &file, const tnconvert::Outcome &outcome) override;

    // Of the last conversion.
    QStringList warnings;
    QStringList parts; ///< "part a.stp", "success a.stp", ... in the order of events

private:
    QTemporaryDir m_directory;
};

/// The content of a file; relative paths are samples.
QByteArray readFile(const QString &path);
