#include "directory/validatefile.h"

#include <map>
#include <memory>
#include <vector>

#include "directory/autoconfig.h"
#include "findings/report.h"
#include "text/repetitions.h"
#include "text/segments.h"
#include "text/transport.h"
#include "directory/validate.h"
#include "directory/validatecharset.h"
#include "text/charset.h"

namespace edi {

namespace {

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

// The repetition separator the interchange declares, as the reader takes
// it (text/repetitions.h); 0 for none.
char repetition(std::string_view text, const Segment &unb, const Segment *una)
{
    std::string_view u = una != nullptr ? text.substr(una->begin, una->end - una->begin)
                                        : std::string_view();
    return repetitionseparator(u, text.substr(unb.begin, unb.end - unb.begin));
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

// Offsets in the file of positions in its text without transport bytes:
// the text is the file with bytes taken out between segments, so the two
// are walked together, forward only, as the segments come.
class FileOffsets {
public:
    FileOffsets(const std::string &file, const std::string &text) : file_(file), text_(text) {}
    size_t at(size_t pos)
    {
        while (t_ < pos && t_ < text_.size()) {
            while (f_ < file_.size() && file_[f_] != text_[t_])
                f_++;
            t_++;
            f_++;
        }
        // The next byte of the text, where the file has it.
        size_t f = f_;
        while (t_ < text_.size() && f < file_.size() && file_[f] != text_[t_])
            f++;
        return f;
    }

private:
    const std::string &file_, &text_;
    size_t t_ = 0, f_ = 0;
};

// Where a message's findings are: its interchange, its number and header,
// the file positions of its segments.
struct MessagePlace {
    const std::string &input;
    int msgno = 0;
    std::string interchangeref, messageref;
    std::vector<size_t> filesegment, offset;  // per segment of the message, from 0
};

Finding &finding(Report &rep, const MessagePlace &m, size_t segment, const std::string &tag,
                 const std::string &what, const edi::dirs::Finding *place = nullptr, int code = 0)
{
    Finding &f = rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, m.input,
                         "message " + std::to_string(m.msgno) + ", segment " +
                             std::to_string(segment) + " (" + printable(tag) + "): " + what);
    f.message = m.msgno;
    f.segment = segment;
    f.tag = tag;
    f.interchangeref = m.interchangeref;
    f.messageref = m.messageref;
    if (segment >= 1 && segment <= m.filesegment.size()) {
        f.filesegment = m.filesegment[segment - 1];
        f.offset = m.offset[segment - 1];
    }
    f.code = code;
    if (place != nullptr) {
        f.code = place->code;
        f.elementpos = place->element;
        f.componentpos = place->component;
        f.repetition = place->repetition;
        f.dataelement = place->id;
        f.value = place->value;
        f.element = place->id;
    }
    return f;
}

// The set the UNB at `unb` declares; an identifier that declares none is
// reported (0085 code 2, syntax identifier not supported).
Charset declaredset(Report &rep, const std::string &input, std::string_view text,
                    const Segment &unb, std::string &syntaxid, size_t filesegment, size_t offset)
{
    std::vector<std::string> els = elementsof(segmentbody(text, unb), unb.sx);
    std::vector<std::string> id = els.size() > 1 ? componentsof(els[1], unb.sx) : els;
    syntaxid = id.size() > 0 ? unreleased(id[0], unb.sx.rel) : "";
    std::string problem = syntaxproblem(syntaxid);
    if (problem.empty())
        return charsetofsyntax(syntaxid);
    std::string ref = els.size() > 5 ? els[5] : "";
    Finding &f = rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, input,
                         "interchange " + printable(ref) + " (UNB): " + problem +
                             "; the characters of its messages are not checked");
    f.tag = "UNB";
    f.interchangeref = ref;
    f.filesegment = filesegment;
    f.offset = offset;
    f.code = 2;
    f.elementpos = f.componentpos = 1;
    f.dataelement = f.element = "0001";
    f.value = syntaxid;
    return Charset::unknown;
}

}  // namespace

int validatefile(const std::string &input, const std::string &bytes, Report &rep,
                 size_t maxfindings)
{
    TransportNotes tn;
    std::string text = striptransport(bytes, tn);
    std::vector<Segment> segs = cutsegments(text);
    FileOffsets offsets(bytes, text);
    Directories dirs;
    int found = 0, msgno = 0;
    char repsep = 0;
    Charset declared = Charset::iso8859_1;
    std::string syntaxid;
    const Segment *una = nullptr;
    std::string interchangeref;
    size_t unas = 0;  // UNA segments so far: no segment of the count
    const size_t first = rep.items().size();
    auto full = [&] { return maxfindings > 0 && rep.items().size() - first >= maxfindings; };
    for (size_t i = 0; i < segs.size() && !full(); i++) {
        if (segs[i].tag == "UNA") {
            una = &segs[i];
            unas++;
        }
        if (segs[i].tag == "UNB") {
            repsep = repetition(text, segs[i], una);
            una = nullptr;
            std::vector<std::string> els = elementsof(segmentbody(text, segs[i]), segs[i].sx);
            interchangeref = els.size() > 5 ? els[5] : "";
            declared = declaredset(rep, input, text, segs[i], syntaxid, i + 1 - unas,
                                   offsets.at(segs[i].begin));
            found += declared == Charset::unknown;
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
        MessagePlace place{input, msgno, interchangeref, "", {}, {}};
        for (size_t k = 0; k < msg.size(); k++) {
            place.filesegment.push_back(i + k + 1 - unas);
            place.offset.push_back(offsets.at(segs[i + k].begin));
        }
        const auto &head = msg[0].elements;
        place.messageref = !head.empty() && !head[0].empty() ? head[0][0] : "";
        // Values outside the declared set, in segment order among the other
        // findings; lower case in level A is a warning and not counted.
        std::vector<edi::dirs::CharsetFinding> chars =
            edi::dirs::charsetfindings(declared, syntaxid, msg);
        size_t nextchar = 0;
        auto charsupto = [&](size_t segment) {
            for (; nextchar < chars.size() && chars[nextchar].finding.segment <= segment &&
                   !full();
                 nextchar++) {
                const edi::dirs::CharsetFinding &cf = chars[nextchar];
                Finding &f = finding(rep, place, cf.finding.segment, cf.finding.tag,
                                     cf.finding.text, &cf.finding);
                f.severity = cf.warning ? EDI_SEVERITY_WARNING : EDI_SEVERITY_ERROR;
                found += cf.warning ? 0 : 1;
            }
        };
        std::vector<std::string> id = head.size() > 1 ? head[1] : std::vector<std::string>{};
        id.resize(4);
        std::string type = id[0], directory = id[1] + id[2];
        if (!type.empty() && (id[1].empty() || id[2].empty())) {
            finding(rep, place, 1, "UNH", "the message header names no directory", nullptr, 13);
            found++;
            charsupto(msg.size());
            continue;
        }
        if (!id[3].empty() && id[3] != "UN") {
            finding(rep, place, 1, "UNH",
                    type + " of agency " + printable(id[3]) + ": only UN directories are known",
                    nullptr, 14);
            found++;
            charsupto(msg.size());
            continue;
        }
        const edi::dirs::Directory *d = dirs.get(directory);
        bool has = false;
        if (d != nullptr)
            for (const auto &m : d->messages())
                has = has || m.first == type;
        if (!has) {
            finding(rep, place, 1, "UNH",
                    type.empty() ? "the message header names no message type"
                                 : missingmessage(type, directory, d != nullptr),
                    nullptr, type.empty() ? 13 : 12);
            found++;
            charsupto(msg.size());
            continue;
        }
        for (const edi::dirs::Finding &f : edi::dirs::validate(*d, type, msg)) {
            charsupto(f.segment - 1);
            if (full())
                break;
            finding(rep, place, f.segment, f.tag, f.text, &f);
            found++;
        }
        charsupto(msg.size());
    }
    if (msgno == 0) {
        rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, input, "no message (UNH) found");
        found++;
    }
    return found;
}

}  // namespace edi
