#pragma once

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

namespace tnhost {

/// A run of the real program in a directory of its own, with the real plug-in and the real
/// converter unless told otherwise. Good for one run.
class HostProcess : public QProcess {
public:
    HostProcess() { setWorkingDirectory(m_dir.path()); }
    ~HostProcess() override { finish(); }

    QString path(const QString &name) const { return m_dir.filePath(name); }
    bool write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }
    bool copySample(const QString &sample, const QString &name) const
    {
        return QFile::copy(TN_SAMPLES_DIR "/" + sample, path(name));
    }

    void startHost(const QStringList &arguments) { start(TN_BIN_DIR "/tnhost", arguments); }
    /// Gives the exit status; -1: crashed or never ended.
    int finish()
    {
        const bool isGood = waitForFinished(60000) && exitStatus() == NormalExit;
        kill();
        output += readAllStandardOutput();
        errors += readAllStandardError();
        return isGood ? exitCode() : -1;
    }
    int run(const QStringList &arguments)
    {
        startHost(arguments);
        return finish();
    }
    QByteArray report() const { return output + "--\n" + errors; }

    QByteArray output;
    QByteArray errors;

private:
    const QTemporaryDir m_dir;
};

} // namespace tnhost
