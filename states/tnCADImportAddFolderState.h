#pragma once

#include "states/tnCADImportAddFilesState.h"

/// Dropped folders are being searched.
class tnCADImportAddFolderState : public tnCADImportAddFilesState {
    Q_OBJECT

public:
    explicit tnCADImportAddFolderState(tnCADImportDialog *dialog);

    bool settingsEnabled() const override;
    std::vector<QLayout *> shownLayouts() const override;
    std::vector<QLayout *> hiddenLayouts() const override;
};
