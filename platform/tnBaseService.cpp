#include "platform/tnBaseService.h"

tnBaseService::~tnBaseService() = default;
