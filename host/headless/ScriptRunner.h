#pragma once

#include "host/headless/JobFollower.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>

namespace tnhost {

class ScriptMessage;

/// Sends the messages of a script to the plug-ins, one after the other: each when the jobs of those
/// before it have ended. Where there is no user, it closes dialogs that would wait for one.
class ScriptRunner : public QObject {
    Q_OBJECT

public:
    using Printer = std::function<void(const QString &line)>;
    using AnswerPrinter = std::function<void(const QByteArray &line)>;

    /// The service must outlive the runner. Answers get one line per message, notes all the rest.
    ScriptRunner(FileService &service, const QByteArrayList &lines, bool hasUser,
                 AnswerPrinter answer, Printer note);

    /// Once.
    void start();
    /// Ends the running jobs and sends nothing more. The exit status is then 128 and the signal.
    void abort(int signal);

    /// 0: all was understood and all files succeeded. 1: something was not, or the script has not
    /// come to its end.
    int exitStatus() const;

signals:
    /// Once.
    void finished(int exitStatus);

private:
    void next();
    void send(ScriptMessage &message);
    void onSent();
    void onJobEnded();
    void finish();
    void watch();
    void closeChooser();
    void closeDialog();
    void remindOfDialog();

    const QByteArrayList m_lines;
    const bool m_hasUser;
    const AnswerPrinter m_answer;
    const Printer m_note;
    JobFollower m_follower;
    QTimer m_watch;
    int m_line = 0; ///< of the script, from 1
    int m_jobsBefore = 0; ///< jobs that had started when the last message was sent
    int m_loopLevel = 0; ///< event loops on the stack when it was sent
    int m_idleTurns = 0; ///< how often the command was seen to wait for nobody
    bool m_isSending = false; ///< until it is known whether the message has started a job
    int m_faults = 0;
    int m_signal = 0;
    bool m_isFinished = false;
};

} // namespace tnhost
