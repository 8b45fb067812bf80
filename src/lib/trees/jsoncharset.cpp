#include "trees/jsoncharset.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "findings/report.h"
#include "nodestore.h"
#include "text/segments.h"
#include "trees/envelopenodes.h"

namespace edi {

namespace {

thread_local Charset current = Charset::iso8859_1;

struct Encoding {
    const std::string &name;
    Report &rep;
    size_t failures = 0;
    std::vector<std::string> path;

    // The text at `*slot` encoded into `cs`; a character without code is
    // named with the node's path.
    void text(char **slot, Charset cs)
    {
        if (*slot == nullptr || allascii(*slot))
            return;
        std::vector<Unencodable> missing;
        std::string bytes = encodetext(*slot, cs, &missing);
        if (!missing.empty()) {
            if (failures++ < 20) {
                std::string where;
                for (const std::string &p : path)
                    where += (where.empty() ? "" : ".") + p;
                const Unencodable &u = missing.front();
                char code[16];
                snprintf(code, sizeof code, u.malformed ? "byte 0x%02X" : "U+%04X",
                         static_cast<unsigned>(u.ch));
                Finding &f = rep.fail(name, where + ": the value '" + printable(*slot) + "' holds " +
                                                code + ", which " + charsetname(cs) +
                                                " has no code for; the interchange cannot carry it.");
                f.element = where;
                f.value = *slot;
            }
            return;
        }
        edihost::freetext(*slot);
        *slot = edihost::newtext(bytes.data(), bytes.size());
    }

    // An `#envelope` node naming a set the library does not know.
    void envelope(const datatree_t *tp)
    {
        const std::string named = charsetof(tp);
        if (!named.empty() && charsetnamed(named) == Charset::unknown && failures++ < 20)
            rep.fail(name, "the envelope names the character set '" + printable(named) +
                               "', which the library does not know (docs/charsets.md "
                               "lists the sets); its values cannot be encoded.")
                .element = "charset";
    }

    // A chain of nodes: an `#envelope` node puts its set in force for
    // itself and the nodes behind it in the chain; below a node the set in
    // force at it holds.
    void chain(datatree_t *first, Charset cs)
    {
        for (datatree_t *tp = first; tp != nullptr; tp = tp->next) {
            if (tp->xmltag != nullptr && strcmp(tp->xmltag, envelopenodename) == 0) {
                envelope(tp);
                cs = envelopecharset(tp);
            }
            path.push_back(tp->xmltag != nullptr ? tp->xmltag : "");
            text(&tp->data, cs);
            text(&tp->defval, cs);
            text(&tp->deffunc, cs);
            chain(tp->child, cs);
            path.pop_back();
            // Names last: the path above names them as the document gave them.
            text(&tp->xmltag, cs);
        }
    }
};

}  // namespace

JsonDecoding::JsonDecoding(Charset cs) : before_(current)
{
    current = cs;
}

JsonDecoding::~JsonDecoding()
{
    current = before_;
}

Charset envelopecharset(const datatree_t *env)
{
    Charset cs = charsetnamed(charsetof(env));
    if (cs == Charset::unknown) {
        SegmentValues unb = unbvalues(env);
        cs = !unb.empty() && !unb[0].empty() ? charsetofsyntax(unb[0][0]) : Charset::unknown;
    }
    return cs == Charset::unknown ? Charset::iso8859_1 : cs;
}

void jsonenvelope(const datatree_t *tp)
{
    if (tp->xmltag != nullptr && strcmp(tp->xmltag, envelopenodename) == 0)
        current = envelopecharset(tp);
}

std::string jsontext(const char *bytes)
{
    return decodetext(bytes, current);
}

namespace {

bool finish(const Encoding &enc, const std::string &name, Report &rep)
{
    if (enc.failures > 20)
        rep.fail(name, "... and " + std::to_string(enc.failures - 20) + " more texts the "
                                                                         "interchange cannot carry");
    return enc.failures == 0;
}

}  // namespace

bool encodejsontree(datatree_t *root, const std::string &name, Report &rep, Charset cs)
{
    Encoding enc{name, rep, 0, {}};
    enc.chain(root, cs);
    return finish(enc, name, rep);
}

bool encodeasciitree(const std::vector<datatree_t *> &envelopes, const std::string &name,
                     Report &rep)
{
    Encoding enc{name, rep, 0, {}};
    for (const datatree_t *env : envelopes)
        enc.envelope(env);
    return finish(enc, name, rep);
}

}  // namespace edi
