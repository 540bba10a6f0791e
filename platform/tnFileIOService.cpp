#include "platform/tnFileIOService.h"

tnFileIOService::tnFileIOService()
{
    qRegisterMetaType<tnCADFileTypes::FileType>("tnCADFileTypes::FileType");
    qRegisterMetaType<tnCADFileTypes::JobState>("tnCADFileTypes::JobState");
    qRegisterMetaType<tndNode>("tndNode");
}

tnFileIOService::~tnFileIOService() = default;
