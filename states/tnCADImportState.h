#pragma once

#include <QtCore/QObject>

class QLayout;
class tnCADImportDialog;

/// A phase of the work, as far as it shows in the dialog. A state is built, entered once and
/// dropped: being in a state means no more than that the form has that look.
class tnCADImportState : public QObject {
    Q_OBJECT

public:
    /// The dialog becomes the parent and must not be null.
    explicit tnCADImportState(tnCADImportDialog *dialog);
    ~tnCADImportState() override;

    /// Gives the form the look of the state.
    virtual void enter() = 0;

protected:
    tnCADImportDialog *dialog() const;
    /// For the widgets that stand directly in the layout; spacers and nested layouts are left
    /// alone.
    void setLayoutWidgetsVisible(QLayout *layout, bool visible);
    void setSettingsEnabled(bool enabled);
    /// A locked list takes no drops and can't be edited.
    void setListLocked(bool locked);
};
