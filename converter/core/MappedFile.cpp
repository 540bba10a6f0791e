#include "core/MappedFile.h"

#include "core/FileProbe.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tnconvert {

MappedFile::MappedFile(const std::string &path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat facts { };
    if (file >= 0 && fstat(file, &facts) == 0 && facts.st_size > 0) {
        const auto size = std::size_t(facts.st_size);
        void *const view = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
        if (view != MAP_FAILED) {
            m_view = view;
            m_bytes = {static_cast<const char *>(view), size};
            madvise(view, size, MADV_SEQUENTIAL);
        }
    }
    if (file >= 0)
        close(file);
    if (m_view)
        return;
    m_content = readWhole(path);
    m_bytes = m_content;
}

MappedFile::~MappedFile()
{
    if (m_view)
        munmap(m_view, m_bytes.size());
}

} // namespace tnconvert
