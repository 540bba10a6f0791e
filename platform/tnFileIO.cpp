#include "platform/tnFileIO.h"

#include <QtCore/QCoreApplication>

namespace {

std::vector<tnFileIO::ReadFileType> &readFileTypes()
{
    static auto *const types = new std::vector<tnFileIO::ReadFileType>;
    return *types;
}

QString entry(const QString &name, const QStringList &suffixes)
{
    QStringList patterns;
    for (const QString &suffix : suffixes)
        patterns << QStringLiteral("*.") + suffix;
    return name + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
}

} // namespace

QString tnFileIO::getReadFileTypesFilter(tnFileTypes::FileExtensionFilterMode mode)
{
    QStringList everySuffix;
    QStringList perType;
    QStringList native;
    for (const ReadFileType &type : readFileTypes()) {
        everySuffix << type.suffixes;
        perType << entry(type.name, type.suffixes);
        if (type.native)
            native << entry(type.name, type.suffixes);
    }
    everySuffix.sort();
    everySuffix.removeDuplicates();

    QStringList filter;
    if ((mode & tnFileTypes::FilterAllReadable) && !everySuffix.isEmpty())
        filter << entry(QCoreApplication::translate("tnFileIO", "All supported files"),
                        everySuffix);
    if (mode & tnFileTypes::FilterNative)
        filter << native;
    if (mode & tnFileTypes::FilterPerType)
        filter << perType;
    if (mode & tnFileTypes::FilterAnyFile)
        filter << QCoreApplication::translate("tnFileIO", "All files") + QStringLiteral(" (*)");
    return filter.join(QStringLiteral(";;"));
}

void tnFileIO::setReadFileTypes(std::vector<ReadFileType> types)
{
    readFileTypes() = std::move(types);
}
