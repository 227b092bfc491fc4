#include "FreedMemory.h"

#include <cstdlib>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

void returnFreedMemory()
{
#if defined(__GLIBC__)
    // glibc keeps freed memory in one arena for each networking thread
    // (https://man7.org/linux/man-pages/man3/malloc_trim.3.html).
    malloc_trim(0);
#endif
}
