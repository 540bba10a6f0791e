#pragma once

#include "states/tnCADImportState.h"

/// What the form can't do for itself: models, the screen's scale, the host's icons. Entered once,
/// in the dialog's constructor.
class tnCADImportInitState : public tnCADImportState {
    Q_OBJECT

public:
    explicit tnCADImportInitState(tnCADImportDialog *dialog);

    void enter() override;

private:
    void createModels();
    void scaleLayout();
    void setIcons();
};
