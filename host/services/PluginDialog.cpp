#include "host/services/PluginDialog.h"

#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>

namespace tnhost {

QDialog *PluginDialog::find()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String(name))
            return qobject_cast<QDialog *>(window);
    }
    return nullptr;
}

bool PluginDialog::show()
{
    QDialog *dialog = find();
    if (!dialog)
        return false;
    dialog->setWindowState(dialog->windowState() & ~Qt::WindowMinimized);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
    return true;
}

} // namespace tnhost
