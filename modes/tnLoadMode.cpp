#include "modes/tnLoadMode.h"

tnLoadMode::tnLoadMode(tnCADImportDialog *dialog)
    : tnImportMode(dialog)
{
}

bool tnLoadMode::removesConvertedFiles() const
{
    return true;
}

bool tnLoadMode::loadsIntoScene() const
{
    return true;
}
