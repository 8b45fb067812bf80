#include "write/transcode.h"

#include <stdio.h>
#include <string.h>

#include "findings/report.h"
#include "nodestore.h"
#include "text/segments.h"
#include "trees/envelopenodes.h"

namespace edi {

namespace {

struct Walk {
    Charset from, to;
    bool keepgoing;
    const std::string &name;
    Report &rep;
    std::vector<std::pair<datatree_t *, char *>> &values;
    std::vector<std::string> path;
    size_t missing = 0;

    void node(datatree_t *tp)
    {
        path.push_back(tp->xmltag != nullptr ? tp->xmltag : "");
        if (tp->data != nullptr && !allascii(tp->data))
            value(tp);
        for (datatree_t *c = tp->child; c != nullptr; c = c->next)
            node(c);
        path.pop_back();
    }

    void value(datatree_t *tp)
    {
        std::vector<Unencodable> lost;
        std::string bytes = encodetext(decodetext(tp->data, from), to, &lost);
        if (!lost.empty() && missing++ < 20) {
            std::string where;
            for (const std::string &p : path)
                where += (where.empty() ? "" : ".") + p;
            char code[24];
            snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(lost.front().ch));
            const std::string text =
                where + ": the value '" + printable(tp->data) + "' holds " + code + ", which " +
                charsetname(to) + " has no code for" +
                (keepgoing ? "; written as '?'" : "; the interchange cannot carry it");
            Finding &f = keepgoing ? rep.add(EDI_FINDING_CHANGED, EDI_SEVERITY_WARNING, name, text)
                                   : rep.fail(name, text);
            f.element = where;
            f.value = tp->data;
        }
        values.emplace_back(tp, tp->data);
        tp->data = edihost::newtext(bytes.data(), bytes.size());
    }
};

}  // namespace

Transcoding::Transcoding(datatree_t *root, Charset from, Charset to, bool keepgoing,
                         const std::string &name, Report &rep)
{
    if (root == nullptr || from == to || to == Charset::unknown)
        return;
    Walk w{from, to, keepgoing, name, rep, values_, {}, 0};
    for (datatree_t *m = root->child; m != nullptr; m = m->next)
        if (!isenvelopenode(m))
            w.node(m);
    if (w.missing > 20)
        rep.add(EDI_FINDING_NOTE, keepgoing ? EDI_SEVERITY_WARNING : EDI_SEVERITY_ERROR, name,
                "... and " + std::to_string(w.missing - 20) + " more");
    ok_ = keepgoing || w.missing == 0;
}

Transcoding::~Transcoding()
{
    for (auto &[node, own] : values_) {
        edihost::freetext(node->data);
        node->data = own;
    }
}

}  // namespace edi
