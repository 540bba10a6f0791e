#pragma once

#include "platform/tnFileTypes.h"
#include "platform/tnPlatformExport.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

/// Knowledge of the files that the host can read.
class TNPLATFORM_EXPORT tnFileIO {
public:
    struct ReadFileType {
        QString name;
        QStringList suffixes; ///< without dot
        bool native = false; ///< a project file of the host
    };

    tnFileIO() = delete;

    /// A name filter for QFileDialog, with the entries that mode asks for, the widest first.
    static QString getReadFileTypesFilter(tnFileTypes::FileExtensionFilterMode mode);

    /// What can be read; set by the host.
    static void setReadFileTypes(std::vector<ReadFileType> types);
};
