#include "allocator.h"

#ifdef EDI_WITH_MIMALLOC
#include <mimalloc.h>
#endif

namespace edi {

void tuneallocator()
{
#ifdef EDI_WITH_MIMALLOC
    // A default, not a setting: the environment's word still counts.
    mi_option_set_enabled_default(mi_option_large_os_pages, true);
#endif
}

}  // namespace edi
