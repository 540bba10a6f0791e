#include "logbook/tnLogFormater.h"

tnLogFormater::~tnLogFormater() = default;
