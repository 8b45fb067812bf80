#include "allocator.h"

#include <vector>

#include "edihost.h"

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

void reservetree(size_t nodes)
{
    // A node with a short name and value takes about 160 bytes.
    constexpr size_t pernode = 160;
    if (nodes >= 10000)
        edihost_reservenodes(nodes * pernode);
}

void freeatexit(datatree_t *tree)
{
#if defined(__SANITIZE_ADDRESS__)
    freedatatree(tree);
#else
    static std::vector<datatree_t *> kept;
    kept.push_back(tree);
#endif
}

}  // namespace edi
