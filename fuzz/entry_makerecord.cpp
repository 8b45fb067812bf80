#include <string.h>

#include <string>

#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

int makerecord(const uint8_t *data, size_t size)
{
    std::string line(reinterpret_cast<const char *>(data), size);
    datatree_t *sp = nullptr;
    datatree_t *rec = ::makerecord(line.data(), &sp, fuzzsupport::config("vda4905.tree"));
    fuzzsupport::expect((rec == nullptr) == (sp == nullptr),
                        "makerecord gave a record without its configuration node, or the reverse");
    if (rec == nullptr)
        return 0;
    fuzzsupport::expect(strcmp(rec->xmltag, sp->xmltag) == 0,
                        "makerecord named the record unlike its configuration node");
    freedatatree(rec);
    return 1;
}

}  // namespace fuzzentry
