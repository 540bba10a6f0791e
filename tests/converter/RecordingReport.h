#pragma once

#include "core/Converter.h"

#include <QString>
#include <QStringList>

/// Keeps what the converter reports.
class RecordingReport : public tnconvert::Report {
public:
    void progress(double, const std::string &) override { }
    void warning(const std::string &message) override;
    void partStarted(const std::string &file) override;
    void partFinished(const std::string &file, const tnconvert::Outcome &outcome) override;

    QStringList warnings;
    QStringList parts; ///< "part a.stp", "success a.stp", ... in the order of events
};

/// Writes @p content to @p path. Aborts the test program when that fails.
void writeFile(const QString &path, const QByteArray &content);

QByteArray readFile(const QString &path);

/// Settings from the text of a JSON object.
tnconvert::Settings settingsFrom(const char *json);

/// Converts within this process.
tnconvert::Outcome convertFile(const QString &input, const QString &output,
                               const tnconvert::Settings &settings, RecordingReport &report);
