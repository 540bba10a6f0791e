#pragma once

#include "tests/support/ScriptedFileService.h"

/// A service whose answers cost next to nothing, so that what is measured is the plug-in's own.
class InstantFileService : public ScriptedFileService {
public:
    bool isFileSupported(const QString &) override { return true; }
    QString fileSuffix(const QString &) override { return m_suffix; }
    tnCADFileTypes::FileType fileType(const QString &) override { return tnCADFileTypes::Step; }

private:
    const QString m_suffix = QStringLiteral("step");
};
