#pragma once

#include "host/headless/BatchOptions.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

class QCommandLineParser;

namespace tnhost {

/// What the user wants of this run.
class CommandLine {
public:
    enum class Outcome {
        Run,
        Done, ///< help or version were asked for; message is the answer
        Wrong, ///< message says why
    };

    /// Parses the arguments, the program's name first. Needs no application object, since the
    /// answer decides what kind of one is made.
    explicit CommandLine(const QStringList &arguments);

    Outcome outcome() const { return m_outcome; }
    const QString &message() const { return m_message; }

    bool isHeadless() const { return m_headless; }
    /// The options' values as given; empty without the option.
    const QString &pluginDirectory() const { return m_pluginDirectory; }
    const QString &converter() const { return m_converter; }
    const QString &tmpDirectory() const { return m_tmpDirectory; }
    /// -1 without the option.
    int maxProcesses() const { return m_maxProcesses; }
    const QString &script() const { return m_script; }
    const BatchOptions &batch() const { return m_batch; }
    /// Files and folders.
    const QStringList &files() const { return m_files; }

private:
    void addOptions(QCommandLineParser &parser);
    void readBatch(const QCommandLineParser &parser);
    void readMaxProcesses(const QCommandLineParser &parser);
    void checkCombination(const QCommandLineParser &parser);
    void fail(const QString &message);

    Outcome m_outcome = Outcome::Run;
    QString m_message;
    bool m_headless = false;
    QString m_pluginDirectory;
    QString m_converter;
    QString m_tmpDirectory;
    int m_maxProcesses = -1;
    QString m_script;
    BatchOptions m_batch;
    QStringList m_files;
};

} // namespace tnhost
