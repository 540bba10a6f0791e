#include "modes/tnConvertMode.h"

tnConvertMode::tnConvertMode(tnCADImportDialog *dialog)
    : tnImportMode(dialog)
{
}

bool tnConvertMode::removesConvertedFiles() const
{
    return false;
}

bool tnConvertMode::loadsIntoScene() const
{
    return false;
}
