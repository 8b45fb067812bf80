#include <string>

#include "findings/report.h"
#include "trees/jsontree.h"
#include "edihost.h"
#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

int json(const uint8_t *data, size_t size)
{
    std::string text(reinterpret_cast<const char *>(data), size);
    edi::Report rep;
    datatree_t *tree = edi::jsontotree(text, "fuzz", rep);
    if (tree == nullptr)
        return 0;
    std::string first = edi::treetojson(tree, nullptr);
    datatree_t *again = edi::jsontotree(first, "fuzz", rep);
    fuzzsupport::expect(again != nullptr, "the exported JSON of a tree does not import");
    fuzzsupport::expect(edi::treetojson(again, nullptr) == first,
                        "a tree changed through the JSON export and import");
    freedatatree(tree);
    freedatatree(again);
    return 1;
}

}  // namespace fuzzentry
