#include "host/app/start/DropArea.h"

#include "host/app/start/ImportCommands.h"

#include <QtCore/QMimeData>
#include <QtCore/QTimer>
#include <QtGui/QDropEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMainWindow>

namespace tnhost {

namespace {

constexpr int frameWidth = 4;
constexpr int frameMargin = 8;
constexpr int groundOpacity = 60; ///< of 255

QList<QUrl> localUrls(const QMimeData &data)
{
    QList<QUrl> result;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            result << url;
    }
    return result;
}

/// Files are only ever copied: after a move the source would delete its own.
bool isWelcome(const QDropEvent &event)
{
    // A modal dialog does not keep drops from the windows behind it.
    return (event.possibleActions() & Qt::CopyAction) && !QApplication::activeModalWidget()
        && !localUrls(*event.mimeData()).isEmpty();
}

class Frame : public QWidget {
public:
    explicit Frame(QWidget *parent)
        : QWidget(parent)
    {
        setObjectName(QStringLiteral("dropFrame"));
        setAttribute(Qt::WA_TransparentForMouseEvents); // the window gets the drop
        hide();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        QColor color = palette().color(QPalette::Highlight);
        const QRect inside = rect().adjusted(frameMargin, frameMargin, -frameMargin, -frameMargin);
        painter.setPen(QPen(color, frameWidth, Qt::DashLine));
        color.setAlpha(groundOpacity);
        painter.setBrush(color);
        painter.drawRect(inside);
    }
};

} // namespace

DropArea::DropArea(QMainWindow *window, ImportCommands &commands)
    : QObject(window)
    , m_window(window)
    , m_commands(commands)
    , m_frame(new Frame(window))
{
    window->setAcceptDrops(true);
    window->installEventFilter(this);
}

bool DropArea::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::DragLeave || type == QEvent::Drop)
        m_frame->hide();
    if (type != QEvent::DragEnter && type != QEvent::Drop)
        return QObject::eventFilter(watched, event);
    auto *drop = static_cast<QDropEvent *>(event);
    if (!isWelcome(*drop)) {
        drop->ignore();
        return true;
    }
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (type == QEvent::DragEnter)
        showFrame();
    else
        // Where the files come from waits until this returns.
        QTimer::singleShot(
            0, this, [this, urls = localUrls(*drop->mimeData())] { m_commands.importUrls(urls); });
    return true;
}

void DropArea::showFrame()
{
    m_frame->setGeometry(m_window->centralWidget()->geometry());
    m_frame->raise();
    m_frame->show();
}

} // namespace tnhost
