#pragma once

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <memory>

/// Turns SIGINT and SIGTERM into a Qt signal. The second one ends the process at once, for the
/// case that the first led to nothing. One object per process.
class SignalWatcher : public QObject {
    Q_OBJECT

public:
    explicit SignalWatcher(QObject *parent = nullptr);
    ~SignalWatcher() override;

signals:
    void received(int signal);

private:
    void onReadable();

    int m_sockets[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};
