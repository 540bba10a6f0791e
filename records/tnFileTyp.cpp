#include "records/tnFileTyp.h"

#include "module/getService.h"
#include "platform/tnFileIOService.h"
#include "records/FolderSearch.h"

#include <algorithm>
#include <iterator>

tnFileTyp &tnFileTyp::instance()
{
    static tnFileTyp theInstance;
    return theInstance;
}

QStringList tnFileTyp::supportedFiles(const QStringList &files) const
{
    QStringList supported;
    auto *const service = files.isEmpty() ? nullptr : getService<tnFileIOService>();
    if (!service)
        return supported;
    std::copy_if(files.begin(), files.end(), std::back_inserter(supported),
                 [service](const QString &path) { return service->isFileSupported(path); });
    return supported;
}

QStringList tnFileTyp::searchFiles(const QList<QUrl> &urls)
{
    return FolderSearch().run(urls);
}

void tnFileTyp::stopSearch()
{
    for (FolderSearch *search : m_running)
        search->stop();
}
