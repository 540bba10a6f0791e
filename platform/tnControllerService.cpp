#include "platform/tnControllerService.h"

tnControllerService::~tnControllerService() = default;
