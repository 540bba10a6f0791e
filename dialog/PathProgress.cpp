#include "dialog/PathProgress.h"

#include <QtCore/QEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QLabel>
#include <QtWidgets/QStyle>

#include <utility>

namespace {

constexpr int pauseMilliseconds = 50;

} // namespace

PathProgress::PathProgress(QLabel *label)
    : QObject(label)
    , m_label(label)
{
    // A path is no markup, and none may widen the window.
    label->setTextFormat(Qt::PlainText);
    label->setSizePolicy(QSizePolicy::Ignored, label->sizePolicy().verticalPolicy());
    label->installEventFilter(this);
    m_pause.setSingleShot(true);
    m_pause.setInterval(pauseMilliseconds);
    connect(&m_pause, &QTimer::timeout, this, &PathProgress::showNext);
}

void PathProgress::show(const QString &path)
{
    m_next = path;
    if (!m_pause.isActive())
        showNext();
}

void PathProgress::showNext()
{
    if (m_next.isNull())
        return;
    m_label->setText(std::exchange(m_next, QString()));
    m_pause.start();
}

bool PathProgress::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Paint)
        return QObject::eventFilter(watched, event);
    const QRect area = m_label->contentsRect();
    QPainter painter(m_label);
    m_label->style()->drawItemText(
        &painter, area, QStyle::visualAlignment(m_label->layoutDirection(), m_label->alignment()),
        m_label->palette(), m_label->isEnabled(),
        m_label->fontMetrics().elidedText(m_label->text(), Qt::ElideMiddle, area.width()),
        m_label->foregroundRole());
    return true;
}
