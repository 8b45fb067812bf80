#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "edihost.h"
#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

namespace {

std::string dump(const datatree_t *tree)
{
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    fuzzsupport::expect(fp != nullptr, "open_memstream failed");
    edihost_writetree(fp, tree);
    fclose(fp);
    std::string text(buf, len);
    free(buf);
    return text;
}

}  // namespace

int treetext(const uint8_t *data, size_t size)
{
    datatree_t *tree = edihost_parsetree(reinterpret_cast<const char *>(data), size, "fuzz");
    if (tree == nullptr)
        return 0;
    std::string first = dump(tree);
    datatree_t *again = edihost_parsetree(first.data(), first.size(), "fuzz");
    fuzzsupport::expect(again != nullptr, "the writer's text of a tree does not parse");
    fuzzsupport::expect(dump(again) == first, "a tree changed through the writer and the parser");
    freedatatree(tree);
    freedatatree(again);
    return 1;
}

}  // namespace fuzzentry
