#include "validatefile.h"

#include <map>
#include <memory>
#include <vector>

#include "autoconfig.h"
#include "output.h"
#include "segments.h"
#include "transport.h"
#include "validate.h"

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
edihost::SegmentValues valuesof(std::string_view text, const Segment &s, char rep)
{
    edihost::SegmentValues sv;
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
    std::map<std::string, std::unique_ptr<edihost::Directory>> loaded;

    // The directory of D96A, or nullptr if the data lacks it.
    const edihost::Directory *get(const std::string &name)
    {
        auto it = loaded.find(name);
        if (it == loaded.end()) {
            auto d = std::make_unique<edihost::Directory>();
            std::string err;
            if (!d->load(directoriesdir(), name, err))
                d.reset();
            it = loaded.emplace(name, std::move(d)).first;
        }
        return it->second.get();
    }
};

}  // namespace

int validatefile(const std::string &input, FILE *out)
{
    std::string bytes;
    if (!readwhole(input, bytes))
        return -1;
    TransportNotes tn;
    std::string text = striptransport(bytes, tn);
    std::vector<Segment> segs = cutsegments(text);
    Directories dirs;
    int found = 0, msgno = 0;
    char rep = 0;
    const Segment *una = nullptr;
    for (size_t i = 0; i < segs.size(); i++) {
        if (segs[i].tag == "UNA")
            una = &segs[i];
        if (segs[i].tag == "UNB") {
            rep = repetition(text, segs[i], una);
            una = nullptr;
        }
        if (segs[i].tag != "UNH")
            continue;
        // The message runs to its UNT, or up to the next UNH or UNZ.
        std::vector<edihost::SegmentValues> msg{valuesof(text, segs[i], rep)};
        for (size_t k = i + 1; k < segs.size() && segs[k].tag != "UNH" && segs[k].tag != "UNZ";
             k++) {
            msg.push_back(valuesof(text, segs[k], rep));
            if (segs[k].tag == "UNT")
                break;
        }
        msgno++;
        const auto &head = msg[0].elements;
        std::vector<std::string> id = head.size() > 1 ? head[1] : std::vector<std::string>{};
        id.resize(4);
        std::string type = id[0], directory = id[1] + id[2];
        if (!type.empty() && (id[1].empty() || id[2].empty())) {
            fprintf(out, "%s: message %d, segment 1 (UNH): the message header names no directory\n",
                    input.c_str(), msgno);
            found++;
            continue;
        }
        if (!id[3].empty() && id[3] != "UN") {
            fprintf(
                out,
                "%s: message %d, segment 1 (UNH): %s of agency %s: only UN directories are known\n",
                input.c_str(), msgno, type.c_str(), printable(id[3]).c_str());
            found++;
            continue;
        }
        const edihost::Directory *d = dirs.get(directory);
        bool has = false;
        if (d != nullptr)
            for (const auto &m : d->messages())
                has = has || m.first == type;
        if (!has) {
            fprintf(out, "%s: message %d, segment 1 (UNH): %s\n", input.c_str(), msgno,
                    type.empty() ? "the message header names no message type"
                                 : missingmessage(type, directory, d != nullptr).c_str());
            found++;
            continue;
        }
        for (const edihost::Finding &f : edihost::validate(*d, type, msg)) {
            fprintf(out, "%s: message %d, segment %zu (%s): %s\n", input.c_str(), msgno, f.segment,
                    printable(f.tag).c_str(), f.text.c_str());
            found++;
        }
    }
    if (msgno == 0) {
        fprintf(out, "%s: no message (UNH) found\n", input.c_str());
        found++;
    }
    return found;
}

}  // namespace edi
