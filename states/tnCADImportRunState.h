#pragma once

#include "states/tnCADImportAddFilesState.h"

/// A batch is running. The options keep the look that they had, out of reach.
class tnCADImportRunState : public tnCADImportAddFilesState {
    Q_OBJECT

public:
    explicit tnCADImportRunState(tnCADImportDialog *dialog);

    bool settingsEnabled() const override;
    std::vector<QLayout *> shownLayouts() const override;
    std::vector<QLayout *> hiddenLayouts() const override;
    std::vector<QWidget *> shownWidgets() const override;
    std::vector<QWidget *> hiddenWidgets() const override;
    QString statusText() const override;
};
