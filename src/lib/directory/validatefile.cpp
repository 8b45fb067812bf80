#include "directory/validatefile.h"

#include <map>
#include <memory>
#include <vector>

#include "directory/autoconfig.h"
#include "findings/report.h"
#include "text/segments.h"
#include "text/transport.h"
#include "directory/validate.h"

namespace edi {

namespace {

// A value as the partner meant it: release characters taken out.
std::string unreleased(const std::string &v, char rel)
{
    std::string r;
    for (size_t i = 0; i < v.size(); i++)
        r += v[i] == rel && i + 1 < v.size() ? v[++i] : v[i];
    return r;
}

// `rep`: the repetition separator of syntax version 4, or 0.
edi::dirs::SegmentValues valuesof(std::string_view text, const Segment &s, char rep)
{
    edi::dirs::SegmentValues sv;
    sv.tag = s.tag;
    Syntax reps = s.sx;
    reps.dst = rep;
    std::vector<std::string> els = elementsof(segmentbody(text, s), s.sx);
    for (size_t e = 1; e < els.size(); e++) {
        std::vector<std::string> pieces =
            rep != 0 ? elementsof(els[e], reps) : std::vector<std::string>{els[e]};
        if (rep != 0)
            sv.repeats.push_back(pieces.size());
        for (const std::string &piece : pieces) {
            sv.elements.emplace_back();
            for (const std::string &c : componentsof(piece, s.sx))
                sv.elements.back().push_back(unreleased(c, s.sx.rel));
        }
    }
    return sv;
}

// The repetition separator from the UNB of syntax version 4 onwards: UNA's
// position 7 (a blank there means none), else `*`.
char repetition(std::string_view text, const Segment &unb, const Segment *una)
{
    std::vector<std::string> els = elementsof(segmentbody(text, unb), unb.sx);
    std::vector<std::string> id = els.size() > 1 ? componentsof(els[1], unb.sx) : els;
    if (id.size() < 2 || id[1].empty() || id[1][0] < '4' || id[1][0] > '9')
        return 0;
    char c = una != nullptr && una->end - una->begin > 7 ? text[una->begin + 7] : '*';
    return c == ' ' ? 0 : c;
}

struct Directories {
    std::map<std::string, std::unique_ptr<edi::dirs::Directory>> loaded;

    // The directory of D96A, or nullptr if the data lacks it.
    const edi::dirs::Directory *get(const std::string &name)
    {
        auto it = loaded.find(name);
        if (it == loaded.end()) {
            auto d = std::make_unique<edi::dirs::Directory>();
            std::string err;
            if (!d->load(directoriesdir(), name, err))
                d.reset();
            it = loaded.emplace(name, std::move(d)).first;
        }
        return it->second.get();
    }
};

}  // namespace

namespace {

void finding(Report &rep, const std::string &input, int msgno, size_t segment,
             const std::string &tag, const std::string &what)
{
    Finding &f = rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, input,
                         "message " + std::to_string(msgno) + ", segment " +
                             std::to_string(segment) + " (" + printable(tag) + "): " + what);
    f.message = msgno;
    f.segment = segment;
    f.tag = tag;
}

}  // namespace

int validatefile(const std::string &input, const std::string &bytes, Report &rep)
{
    TransportNotes tn;
    std::string text = striptransport(bytes, tn);
    std::vector<Segment> segs = cutsegments(text);
    Directories dirs;
    int found = 0, msgno = 0;
    char repsep = 0;
    const Segment *una = nullptr;
    for (size_t i = 0; i < segs.size(); i++) {
        if (segs[i].tag == "UNA")
            una = &segs[i];
        if (segs[i].tag == "UNB") {
            repsep = repetition(text, segs[i], una);
            una = nullptr;
        }
        if (segs[i].tag != "UNH")
            continue;
        // The message runs to its UNT, or up to the next UNH or UNZ.
        std::vector<edi::dirs::SegmentValues> msg{valuesof(text, segs[i], repsep)};
        for (size_t k = i + 1; k < segs.size() && segs[k].tag != "UNH" && segs[k].tag != "UNZ";
             k++) {
            msg.push_back(valuesof(text, segs[k], repsep));
            if (segs[k].tag == "UNT")
                break;
        }
        msgno++;
        const auto &head = msg[0].elements;
        std::vector<std::string> id = head.size() > 1 ? head[1] : std::vector<std::string>{};
        id.resize(4);
        std::string type = id[0], directory = id[1] + id[2];
        if (!type.empty() && (id[1].empty() || id[2].empty())) {
            finding(rep, input, msgno, 1, "UNH", "the message header names no directory");
            found++;
            continue;
        }
        if (!id[3].empty() && id[3] != "UN") {
            finding(rep, input, msgno, 1, "UNH",
                    type + " of agency " + printable(id[3]) + ": only UN directories are known");
            found++;
            continue;
        }
        const edi::dirs::Directory *d = dirs.get(directory);
        bool has = false;
        if (d != nullptr)
            for (const auto &m : d->messages())
                has = has || m.first == type;
        if (!has) {
            finding(rep, input, msgno, 1, "UNH",
                    type.empty() ? "the message header names no message type"
                                 : missingmessage(type, directory, d != nullptr));
            found++;
            continue;
        }
        for (const edi::dirs::Finding &f : edi::dirs::validate(*d, type, msg)) {
            finding(rep, input, msgno, f.segment, f.tag, f.text);
            found++;
        }
    }
    if (msgno == 0) {
        rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, input, "no message (UNH) found");
        found++;
    }
    return found;
}

}  // namespace edi
