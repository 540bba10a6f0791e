#include "host/headless/ScriptRunner.h"

#include "host/headless/DialogDriver.h"
#include "host/headless/ResultTable.h"
#include "host/headless/ScriptMessage.h"
#include "platform/tnController.h"

#include <QtCore/QThread>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>

#include <utility>

namespace tnhost {

namespace {

constexpr int abortPatienceMs = 1000;
constexpr int watchIntervalMs = 20;
/// A job is announced within the first turn of the loop; the second one is to spare.
constexpr int turnsBeforeClosing = 2;
/// From then on not even its dialog's end has ended the command.
constexpr int turnsBeforeGivingUp = 250;

} // namespace

ScriptRunner::ScriptRunner(FileService &service, const QByteArrayList &lines, bool hasUser,
                           AnswerPrinter answer, Printer note)
    : m_lines(lines)
    , m_hasUser(hasUser)
    , m_answer(std::move(answer))
    , m_note(std::move(note))
    , m_follower(service, m_note)
{
    connect(&m_follower, &JobFollower::jobEnded, this, &ScriptRunner::onJobEnded,
            Qt::QueuedConnection);
    m_watch.setInterval(watchIntervalMs);
    connect(&m_watch, &QTimer::timeout, this, &ScriptRunner::watch);
}

void ScriptRunner::start()
{
    next();
}

void ScriptRunner::abort(int signal)
{
    if (m_isFinished)
        return;
    m_signal = signal;
    m_note(QStringLiteral("Aborted by signal %1.").arg(signal));
    m_follower.abortAll();
    if (!m_follower.isAnyRunning())
        finish();
    else
        QTimer::singleShot(abortPatienceMs, this, &ScriptRunner::finish);
}

int ScriptRunner::exitStatus() const
{
    if (m_signal != 0)
        return 128 + m_signal;
    return m_isFinished && m_faults == 0 && m_follower.haveAllSucceeded() ? 0 : 1;
}

void ScriptRunner::next()
{
    while (!m_isFinished && m_line < m_lines.size()) {
        const QByteArray line = m_lines[m_line++].trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        ScriptMessage message;
        QString error;
        if (message.parse(line, &error)) {
            send(message);
            return;
        }
        ++m_faults;
        m_answer(ScriptMessage::complaint(m_line, error));
    }
    finish();
}

void ScriptRunner::send(ScriptMessage &message)
{
    m_jobsBefore = m_follower.startedJobs();
    m_loopLevel = QThread::currentThread()->loopLevel();
    m_idleTurns = 0;
    m_isSending = true;
    if (!m_hasUser)
        m_watch.start();
    const bool isKnown = tnController::callCB(message.command().toStdString(), message.message());
    m_watch.stop();
    if (m_isFinished || m_signal != 0)
        return; // which is what has ended the command

    if (isKnown) {
        QStringList unknown;
        m_answer(message.answer(&unknown));
        for (const QString &key : unknown)
            m_note(QStringLiteral("The answer \"%1\" is of a type that has no JSON.").arg(key));
    } else {
        ++m_faults;
        m_answer(message.refusal(QStringLiteral("no plug-in offers this command")));
    }
    // The service announces a job by a call that it has queued by now; this one comes behind it.
    QMetaObject::invokeMethod(this, &ScriptRunner::onSent, Qt::QueuedConnection);
}

void ScriptRunner::onSent()
{
    m_isSending = false;
    if (m_follower.isAnyRunning()) {
        if (m_signal != 0)
            m_follower.abortAll();
        return;
    }
    if (!m_hasUser && m_follower.startedJobs() == m_jobsBefore)
        remindOfDialog();
    next();
}

void ScriptRunner::onJobEnded()
{
    if (m_follower.isAnyRunning())
        return;
    if (m_signal != 0)
        finish();
    else if (!m_isSending)
        next();
}

void ScriptRunner::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    const std::vector<FileResult> results = m_follower.results();
    if (!results.empty()) {
        for (const QString &line : ResultTable::lines(results))
            m_note(line);
        m_note(ResultTable::summary(results));
    }
    emit finished(exitStatus());
}

/// Runs while a command does, and only where there is no user.
void ScriptRunner::watch()
{
    // A command that only lets events through now and then, in a long search, does not wait.
    const bool isWaiting = QThread::currentThread()->loopLevel() > m_loopLevel;
    if (!isWaiting || m_follower.isAnyRunning() || m_isFinished) {
        m_idleTurns = 0;
        return;
    }
    ++m_idleTurns;
    if (qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
        closeChooser();
    } else if (m_idleTurns == turnsBeforeClosing) {
        closeDialog();
    } else if (m_idleTurns == turnsBeforeGivingUp) {
        ++m_faults;
        m_note(QStringLiteral("Line %1: the command does not return; this ends the script.")
                   .arg(m_line));
        finish();
    }
}

void ScriptRunner::closeChooser()
{
    m_note(QStringLiteral("Line %1: a dialog asks, and there is nobody to answer: it is closed.")
               .arg(m_line));
    qobject_cast<QDialog *>(QApplication::activeModalWidget())->reject();
}

void ScriptRunner::closeDialog()
{
    DialogDriver dialog;
    QString problem;
    if (!dialog.find(&problem)) {
        m_note(QStringLiteral("Line %1: the command waits, and %2.").arg(m_line).arg(problem));
        return;
    }
    m_note(m_follower.startedJobs() == m_jobsBefore
               ? QStringLiteral("Line %1: the command waits for a dialog in which nobody presses "
                                "Import: it is closed.")
                     .arg(m_line)
               : QStringLiteral("Line %1: the command waits for a dialog that stays open: it is "
                                "closed.")
                     .arg(m_line));
    dialog.pressClose();
}

void ScriptRunner::remindOfDialog()
{
    DialogDriver dialog;
    QString problem;
    if (dialog.find(&problem) && dialog.isVisible() && dialog.canImport())
        m_note(QStringLiteral("Line %1: the import dialog is open, and nobody presses Import.")
                   .arg(m_line));
}

} // namespace tnhost
