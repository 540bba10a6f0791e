#pragma once

#include "states/tnCADImportAddFilesState.h"

/// Files that are in the scene already are to be imported again: the list is fixed, and what
/// governs the merge with the scene stands in place of what governs a new import.
class tnCADImportReloadState : public tnCADImportAddFilesState {
    Q_OBJECT

public:
    /// With multipleFiles there may be several types to choose from.
    tnCADImportReloadState(tnCADImportDialog *dialog, bool multipleFiles);

    bool listLocked() const override;
    std::vector<QLayout *> shownLayouts() const override;
    std::vector<QLayout *> hiddenLayouts() const override;
    std::vector<QWidget *> shownWidgets() const override;
    std::vector<QWidget *> hiddenWidgets() const override;
    QString statusText() const override;
    QString optionsCaption() const override;
    QString windowTitle() const override;

private:
    bool m_multipleFiles;
};
