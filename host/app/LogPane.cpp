#include "host/app/LogPane.h"

#include <QtGui/QFontDatabase>

namespace {

constexpr int mostLines = 10000;

struct LevelLook {
    const char *prefix;
    const char *color;
};

/// By the values of tnLog::Level. The colours stand out from dark and from light grounds.
constexpr LevelLook looks[] = {{"", ""}, {"Warning: ", "#c07800"}, {"Error: ", "#d03030"}};

} // namespace

LogPane::LogPane(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_bridge(std::make_shared<LogBridge>())
{
    setReadOnly(true);
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

void LogPane::onLogged(int level, const QString &text)
{
    const LevelLook &look = looks[level];
    const QString line = QString::fromUtf8(look.prefix) + text;
    if (*look.color == '\0')
        appendPlainText(line);
    else
        appendHtml(QStringLiteral("<span style=\"color:%1\">%2</span>")
                       .arg(QString::fromUtf8(look.color), line.toHtmlEscaped()));
}
