#pragma once

#include "platform/tnLog.h"

#include <QtCore/QObject>
#include <QtWidgets/QPlainTextEdit>

#include <memory>

namespace tnhost {

/// Carries log lines into the GUI thread. Lives as long as the log or the pane knows it.
class LogBridge : public QObject {
    Q_OBJECT

signals:
    void logged(int level, const QString &text);
};

/// Shows what goes to the host's log, from any thread. While it lives it is the log's only sink;
/// there is one at a time.
class LogPane : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit LogPane(QWidget *parent = nullptr);
    ~LogPane() override;

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void onLogged(int level, const QString &text);

    std::shared_ptr<LogBridge> m_bridge;
};

} // namespace tnhost
