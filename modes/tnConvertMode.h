#pragma once

#include "modes/tnImportMode.h"

/// Converts the files and stops there: the scene stays as it is, the converted files stay on disk.
class tnConvertMode : public tnImportMode {
public:
    explicit tnConvertMode(tnCADImportDialog *dialog);

    bool removesConvertedFiles() const override;
    bool loadsIntoScene() const override;
};
