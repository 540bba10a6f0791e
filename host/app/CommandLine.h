#pragma once

#include "host/headless/BatchOptions.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

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
    /// In milliseconds and bytes; nothing without the option.
    std::optional<int> silence() const { return m_silence; }
    std::optional<qint64> maxMemory() const { return m_maxMemory; }
    /// In bytes, 0 for none; nothing without an option.
    std::optional<qint64> cacheSize() const { return m_cacheSize; }
    bool clearsCache() const { return m_clearsCache; }
    bool followsOutside() const { return m_followsOutside; }
    bool namesFullSource() const { return m_namesFullSource; }
    const QString &script() const { return m_script; }
    const BatchOptions &batch() const { return m_batch; }
    /// Files and folders.
    const QStringList &files() const { return m_files; }

private:
    void addOptions(QCommandLineParser &parser);
    void readBatch(const QCommandLineParser &parser);
    /// Reads an option's value, if it is given, with a function that gives nothing for a wrong one;
    /// @p need says what it has to be.
    template <typename Value, typename Target>
    void readValue(const QCommandLineParser &parser, const char *name,
                   std::optional<Value> (*parse)(const QString &), const char *need,
                   Target &target);
    void checkCombination(const QCommandLineParser &parser);
    void fail(const QString &message);

    Outcome m_outcome = Outcome::Run;
    QString m_message;
    bool m_headless = false;
    QString m_pluginDirectory;
    QString m_converter;
    QString m_tmpDirectory;
    int m_maxProcesses = -1;
    std::optional<int> m_silence;
    std::optional<qint64> m_maxMemory;
    std::optional<qint64> m_cacheSize;
    bool m_clearsCache = false;
    bool m_followsOutside = false;
    bool m_namesFullSource = false;
    QString m_script;
    BatchOptions m_batch;
    QStringList m_files;
};

} // namespace tnhost
