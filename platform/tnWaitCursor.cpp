#include "platform/tnWaitCursor.h"

#include <QtCore/Qt>
#include <QtGui/QCursor>
#include <QtGui/QGuiApplication>

tnWaitCursor::tnWaitCursor()
{
    if (qGuiApp)
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
}

tnWaitCursor::~tnWaitCursor()
{
    if (qGuiApp)
        QGuiApplication::restoreOverrideCursor();
}
