#include "states/tnCADImportState.h"

#include "dialog/tnCADImportDialog.h"

tnCADImportState::tnCADImportState(tnCADImportDialog *dialog)
    : QObject(dialog)
{
}

tnCADImportState::~tnCADImportState() = default;

tnCADImportDialog *tnCADImportState::dialog() const
{
    return qobject_cast<tnCADImportDialog *>(parent());
}

void tnCADImportState::setLayoutWidgetsVisible(QLayout *layout, bool visible)
{
    for (int i = 0; i < layout->count(); ++i) {
        if (QWidget *widget = layout->itemAt(i)->widget())
            widget->setVisible(visible);
    }
}

void tnCADImportState::setSettingsEnabled(bool enabled)
{
    dialog()->_settings->setEnabled(enabled);
}

void tnCADImportState::setListLocked(bool locked)
{
    dialog()->setAcceptDrops(!locked);
    dialog()->tableView->setLocked(locked);
}
