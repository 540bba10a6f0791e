#include "host/app/LogPane.h"

#include <QtCore/QTime>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QFontDatabase>
#include <QtWidgets/QMenu>

namespace tnhost {

namespace {

constexpr int mostLines = 10000;

struct LevelLook {
    const char *prefix;
    /// Each easy to read on its ground; empty: as any text.
    const char *colorOnLight;
    const char *colorOnDark;
};

/// By the values of tnLog::Level.
constexpr LevelLook looks[] = {
    {"", "", ""}, {"Warning: ", "#8f5a00", "#f0b040"}, {"Error: ", "#c01818", "#ff8080"}};

} // namespace

LogPane::LogPane(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_bridge(std::make_shared<LogBridge>())
{
    setReadOnly(true);
    setAcceptDrops(false); // files that are dropped here are the window's
    setTabChangesFocus(true);
    setMaximumBlockCount(mostLines);
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    connect(m_bridge.get(), &LogBridge::logged, this, &LogPane::onLogged);
    // A thread may be within the sink when the pane goes, so the sink holds on to the bridge only.
    tnLog::setSink([bridge = m_bridge](tnLog::Level level, const QString &text) {
        emit bridge->logged(static_cast<int>(level), text);
    });
}

LogPane::~LogPane()
{
    tnLog::setSink({});
}

void LogPane::contextMenuEvent(QContextMenuEvent *event)
{
    const std::unique_ptr<QMenu> menu(createStandardContextMenu(event->pos()));
    menu->addSeparator();
    QAction *clearAll = menu->addAction(tr("C&lear"), this, &QPlainTextEdit::clear);
    clearAll->setEnabled(!document()->isEmpty());
    menu->exec(event->globalPos());
}

void LogPane::onLogged(int level, const QString &text)
{
    const LevelLook &look = looks[level];
    const bool isDark = palette().color(QPalette::Base).lightness() < 128;
    const QString line = QTime::currentTime().toString(QStringLiteral("HH:mm:ss  "))
        + QString::fromUtf8(look.prefix) + text;
    // Texts may have lines and columns of their own.
    appendHtml(QStringLiteral("<span style=\"white-space:pre-wrap;color:%1\">%2</span>")
                   .arg(QString::fromUtf8(isDark ? look.colorOnDark : look.colorOnLight),
                        line.toHtmlEscaped()));
}

} // namespace tnhost
