#include "ressources/ressources.h"

#include <QtCore/QtGlobal>

void initRessources()
{
    Q_INIT_RESOURCE(ressources);
}
