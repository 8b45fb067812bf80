// The input bytes, up to the first NUL, as one VDA line.
#include <string>

#include "fuzzsupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzzsupport::quiet();
    std::string line(reinterpret_cast<const char *>(data), size);
    datatree_t *sp = nullptr;
    datatree_t *rec = makerecord(line.data(), &sp, fuzzsupport::config("vda4905.tree"));
    if ((rec == nullptr) != (sp == nullptr))
        __builtin_trap();  // a record without its configuration node, or the reverse
    if (rec != nullptr)
        freedatatree(rec);
    return 0;
}
