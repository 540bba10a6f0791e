#pragma once

#include <QtCore/QProcess>
#include <QtCore/QSocketNotifier>

#include <memory>

namespace tnhost {

/// A process whose standard output comes through a pipe of our own: QProcess does not report when a
/// process that lives on closes its output, and whoever waits for an answer would wait for good. It
/// receives none of a terminal's signals: its owner ends it.
class PipedProcess : public QProcess {
    Q_OBJECT

public:
    PipedProcess();
    ~PipedProcess() override;

    /// In place of start(program, arguments).
    void startPiped(const QString &program, const QStringList &arguments);
    /// What has come since the last call; empty when that is nothing.
    QByteArray readPipe();

signals:
    void pipeReady();
    /// Once: nothing will come any more. The process may live on.
    void pipeClosed();

protected:
    void setupChildProcess() override;

private:
    void closePipe();

    int m_readEnd = -1;
    int m_writeEnd = -1; ///< open only while the process is started
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace tnhost
