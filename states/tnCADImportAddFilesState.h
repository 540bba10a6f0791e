#pragma once

#include "states/tnCADImportState.h"

#include <QtCore/QString>

#include <vector>

class QWidget;

/// The user gathers files and sets options. The look of the other phases is given by the same
/// steps, from other lists and texts.
class tnCADImportAddFilesState : public tnCADImportState {
    Q_OBJECT

public:
    explicit tnCADImportAddFilesState(tnCADImportDialog *dialog);

    void enter() override;
    /// Whether the options can be changed.
    virtual bool settingsEnabled() const;
    /// Whether the list of files is fixed.
    virtual bool listLocked() const;
    // The rows of the window and the options that come into view and go; those in neither list stay
    // as they are.
    virtual std::vector<QLayout *> shownLayouts() const;
    virtual std::vector<QLayout *> hiddenLayouts() const;
    virtual std::vector<QWidget *> shownWidgets() const;
    virtual std::vector<QWidget *> hiddenWidgets() const;
    virtual QString statusText() const;
    /// The caption of the scene options.
    virtual QString optionsCaption() const;
    virtual QString windowTitle() const;
};
