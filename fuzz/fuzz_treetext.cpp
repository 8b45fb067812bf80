// The input bytes as a tree text file.  Whatever parses must come back
// unchanged through the writer and the parser.
#include <stdio.h>
#include <stdlib.h>

#include <string>

#include "edihost.h"
#include "fuzzsupport.h"

namespace {

std::string dump(const datatree_t *tree)
{
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    edihost_writetree(fp, tree);
    fclose(fp);
    std::string text(buf, len);
    free(buf);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzsupport::quiet();
    datatree_t *tree = edihost_parsetree(reinterpret_cast<const char *>(data), size, "fuzz");
    if (tree == nullptr)
        return 0;
    std::string first = dump(tree);
    datatree_t *again = edihost_parsetree(first.data(), first.size(), "fuzz");
    if (again == nullptr || dump(again) != first)
        __builtin_trap();
    freedatatree(tree);
    freedatatree(again);
    return 0;
}
