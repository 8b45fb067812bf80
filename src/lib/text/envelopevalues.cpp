#include "text/envelopevalues.h"

#include <vector>

#include "text/segments.h"

namespace edi {

namespace {

// Component `c` of element `e` of a segment, release characters taken out.
struct Fields {
    std::vector<std::vector<std::string>> els;
    char rel;
    std::string at(size_t e, size_t c) const
    {
        if (e >= els.size() || c >= els[e].size())
            return "";
        return unreleased(els[e][c], rel);
    }
};

Fields fieldsof(const std::string &seg, const Syntax &sx)
{
    Fields f{{}, sx.rel};
    std::string_view body(seg);
    if (!body.empty() && body.back() == sx.seg)
        body.remove_suffix(1);
    for (const std::string &e : elementsof(body, sx))
        f.els.push_back(componentsof(e, sx));
    return f;
}

}  // namespace

EnvelopeValues envelopevalues(const std::string &una, const std::string &unb,
                              const std::string &ung)
{
    EnvelopeValues v;
    Syntax sx = syntaxof(una + unb);
    v.una = sx.una;
    v.cmp = sx.cmp;
    v.dst = sx.dst;
    v.dec = sx.dec;
    v.rel = sx.rel;
    v.seg = sx.seg;
    // UNA's sixth character: the repetition separator from syntax
    // version 4 on, a blank before.
    if (una.size() >= 9)
        v.rep = una[7];
    Fields b = fieldsof(unb, sx);
    v.syntaxid = b.at(1, 0);
    v.syntaxversion = b.at(1, 1);
    if (!v.una && !v.syntaxversion.empty() && v.syntaxversion[0] >= '4')
        v.rep = '*';
    v.sender = b.at(2, 0);
    v.senderqual = b.at(2, 1);
    v.recipient = b.at(3, 0);
    v.recipientqual = b.at(3, 1);
    v.date = b.at(4, 0);
    v.time = b.at(4, 1);
    v.controlref = b.at(5, 0);
    v.applicationref = b.at(7, 0);
    v.testindicator = b.at(11, 0);
    if (!ung.empty()) {
        Fields g = fieldsof(ung, sx);
        v.ung = true;
        v.groupid = g.at(1, 0);
        v.groupsender = g.at(2, 0);
        v.grouprecipient = g.at(3, 0);
        v.groupref = g.at(5, 0);
    }
    return v;
}

}  // namespace edi
