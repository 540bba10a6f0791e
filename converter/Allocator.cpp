// The allocator of the whole program is mimalloc: a seventh of the time for a Step file goes into
// small pieces of memory. Its own operators new end the process when there is no more; those below
// throw, which becomes a sentence for the user.

#include <mimalloc.h>

#include <cstdlib>
#include <new>

namespace {

void *allocated(void *memory)
{
    if (!memory)
        throw std::bad_alloc();
    return memory;
}

// A short life need not give memory back.
[[maybe_unused]] const bool keepsPages = [] {
    mi_option_disable(mi_option_page_reset);
    return true;
}();

} // namespace

void *operator new(std::size_t size)
{
    return allocated(std::malloc(size));
}

void *operator new[](std::size_t size)
{
    return allocated(std::malloc(size));
}

void *operator new(std::size_t size, std::align_val_t alignment)
{
    return allocated(mi_malloc_aligned(size, std::size_t(alignment)));
}

void *operator new[](std::size_t size, std::align_val_t alignment)
{
    return allocated(mi_malloc_aligned(size, std::size_t(alignment)));
}
