#pragma once

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <memory>

namespace tnhost {

/// Turns the first SIGINT, SIGTERM or SIGHUP into a Qt signal, unless it was ignored when the
/// process began. For a second they then count as the same request, since some programs send more
/// than one; any that comes later ends the process at once, for the case that the first led to
/// nothing. So does the first one itself when the process has not ended one and a half seconds
/// later, whatever it is busy with. One object per process; behind it signals still count so, until
/// the process ends.
class SignalWatcher : public QObject {
    Q_OBJECT

public:
    SignalWatcher();
    ~SignalWatcher() override;

signals:
    void received(int signal);

private:
    void onReadable();

    int m_sockets[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace tnhost
