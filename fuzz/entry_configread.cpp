#include <stdlib.h>

#include <string>

#include "edihost.h"
#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

using fuzzsupport::expect;

int configread(const uint8_t *data, size_t size)
{
    // "%%+" instead of "%%" runs with every trace point on; set on every
    // run, since the level is process-wide.
    std::string text(reinterpret_cast<const char *>(data), size);
    size_t cut = text.find("\n%%");
    if (cut == std::string::npos)
        return 0;
    size_t body = cut + 3;
    bool traced = body < size && text[body] == '+';
    body += traced;
    if (body >= size || text[body] != '\n')
        return 0;
    body++;
    datatree_t *conf = edihost_parsetree(text.data(), cut, "fuzz");
    if (conf == nullptr)
        return 0;
    tracelevel = traced ? -1 : 0;
    char *fn = fuzzsupport::asfile(data + body, size - body);
    int accepted = 0;

    envelope_t *ev = nullptr;
    datatree_t *tree = edifactread(fn, &ev, conf, nullptr);
    expect((tree == nullptr) == (ev == nullptr), "edifactread gave a tree without envelope, or the reverse");
    if (tree != nullptr) {
        freedatatree(tree);
        free(ev->servconftag);
        free(ev);
        accepted++;
    }

    tree = vdaread(fn, nullptr, conf, nullptr);
    if (tree != nullptr) {
        freedatatree(tree);
        accepted++;
    }

    freedatatree(conf);
    fuzzsupport::removefiles();
    tracelevel = 0;
    return accepted;
}

}  // namespace fuzzentry
