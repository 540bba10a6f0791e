#pragma once

#include "modes/tnImportMode.h"

/// Loads the files and removes what was converted: the plain way into the scene.
class tnLoadMode : public tnImportMode {
public:
    explicit tnLoadMode(tnCADImportDialog *dialog);

    bool removesConvertedFiles() const override;
    bool loadsIntoScene() const override;
};
