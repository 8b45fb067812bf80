// The input bytes as the JSON form of a tree.  Whatever imports must come
// back unchanged through the export and the import.
#include <string>

#include "../src/edi/jsontree.h"
#include "edihost.h"
#include "fuzzsupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzsupport::quiet();
    std::string text(reinterpret_cast<const char *>(data), size);
    datatree_t *tree = edi::jsontotree(text, "fuzz");
    if (tree == nullptr)
        return 0;
    std::string first = edi::treetojson(tree, nullptr);
    datatree_t *again = edi::jsontotree(first, "fuzz");
    if (again == nullptr || edi::treetojson(again, nullptr) != first)
        __builtin_trap();
    freedatatree(tree);
    freedatatree(again);
    return 0;
}
