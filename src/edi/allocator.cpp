#include "allocator.h"

#include <vector>

#include "edi.h"

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

void freeatexit(datatree_t *tree)
{
#if defined(__SANITIZE_ADDRESS__)
    edi_tree_free(tree);
#else
    static std::vector<datatree_t *> kept;
    kept.push_back(tree);
#endif
}

}  // namespace edi
