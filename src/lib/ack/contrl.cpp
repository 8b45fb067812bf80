#include "ack/contrl.h"

#include <stdlib.h>
#include <time.h>

#include <map>
#include <vector>

#include "directory/validatefile.h"
#include "findings/report.h"
#include "text/countfix.h"
#include "text/envelopevalues.h"
#include "text/segments.h"
#include "text/transport.h"

namespace edi {

namespace {

// A value in the CONTRL's own service characters (the defaults).
std::string released(const std::string &v)
{
    std::string out;
    for (char c : v) {
        if (c == '+' || c == ':' || c == '\'' || c == '?')
            out += '?';
        out += c;
    }
    return out;
}

// ID or ID:QUALIFIER.
std::string party(const std::string &id, const std::string &qualifier)
{
    return released(id) + (qualifier.empty() ? "" : ":" + released(qualifier));
}

struct Message {
    int number = 0;
    std::string reference, type, version, release, agency;
};

struct Interchange {
    EnvelopeValues env;
    std::vector<Message> messages;
    int unzcount = -1;       // UNZ's message count, -1 without UNZ
    std::string unzref;
};

std::vector<Interchange> interchangesof(const std::string &text)
{
    std::vector<Interchange> out;
    SegmentReader sr(text);
    Segment s;
    std::string una;
    int number = 0;
    while (sr.next(s)) {
        std::string seg = text.substr(s.begin, s.end - s.begin);
        if (s.tag == "UNA") {
            una = seg;
            continue;
        }
        std::vector<std::string> els = elementsof(segmentbody(text, s), s.sx);
        if (s.tag == "UNB") {
            out.emplace_back();
            out.back().env = envelopevalues(una, seg, "");
            una.clear();
        } else if (s.tag == "UNH" && !out.empty()) {
            Message m;
            m.number = ++number;
            m.reference = els.size() > 1 ? els[1] : "";
            std::vector<std::string> id =
                els.size() > 2 ? componentsof(els[2], s.sx) : std::vector<std::string>{};
            id.resize(4);
            m.type = id[0], m.version = id[1], m.release = id[2], m.agency = id[3];
            out.back().messages.push_back(m);
        } else if (s.tag == "UNZ" && !out.empty()) {
            out.back().unzcount = els.size() > 1 ? atoi(els[1].c_str()) : 0;
            out.back().unzref = els.size() > 2 ? els[2] : "";
        }
    }
    return out;
}

// Date and time of writing: SOURCE_DATE_EPOCH when set (the same output at
// every run), else now; syntax version 4 writes the century.
std::string stamp(bool v4)
{
    const char *epoch = getenv("SOURCE_DATE_EPOCH");
    char *end = nullptr;
    long long given = epoch != nullptr ? strtoll(epoch, &end, 10) : -1;
    time_t when = epoch != nullptr && *epoch != '\0' && *end == '\0' && given >= 0
                      ? static_cast<time_t>(given)
                      : time(nullptr);
    struct tm tm;
    gmtime_r(&when, &tm);
    char buf[32];
    strftime(buf, sizeof buf, v4 ? "%Y%m%d:%H%M" : "%y%m%d:%H%M", &tm);
    return buf;
}

// The message's part of the CONTRL: UCM, then a UCS per faulty segment
// with the UCD of each faulty element below it.
std::vector<std::string> messageresponse(const Message &m, const std::vector<const Finding *> &fs)
{
    std::vector<std::string> segs;
    std::string id = released(m.type) + ":" + released(m.version) + ":" + released(m.release) +
                     ":" + released(m.agency.empty() ? "UN" : m.agency);
    segs.push_back("UCM+" + released(m.reference) + "+" + id + "+" + (fs.empty() ? "7" : "4"));
    std::map<size_t, std::vector<const Finding *>> bysegment;
    for (const Finding *f : fs)
        bysegment[f->segment].push_back(f);
    size_t ucs = 0;
    for (const auto &[position, list] : bysegment) {
        if (++ucs > 999)
            break;
        // A fault of the segment as a whole goes into UCS, each element's
        // into a UCD of its own.
        std::string code;
        for (const Finding *f : list)
            if (f->elementpos == 0 && f->code != 0 && code.empty())
                code = std::to_string(f->code);
        segs.push_back("UCS+" + std::to_string(position) + (code.empty() ? "" : "+" + code));
        size_t ucd = 0;
        for (const Finding *f : list) {
            if (f->elementpos == 0 || ++ucd > 99)
                continue;
            std::string where = std::to_string(f->elementpos);
            if (f->componentpos > 0)
                where += ":" + std::to_string(f->componentpos);
            segs.push_back("UCD+" + std::to_string(f->code != 0 ? f->code : 18) + "+" + where);
        }
    }
    return segs;
}

}  // namespace

std::string contrl(const std::string &input, const std::string &bytes, const AckSettings &opt,
                   Report &rep)
{
    TransportNotes tn;
    std::string text = striptransport(bytes, tn);
    const size_t first = rep.items().size();
    validatefile(input, bytes, rep, opt.maxfindings);
    std::map<int, std::vector<const Finding *>> bymessage;
    const std::deque<Finding> &all = rep.items();
    for (size_t i = first; i < all.size(); i++)
        // Warnings (lower case in level A) reject nothing.
        if (all[i].kind == EDI_FINDING_VALIDATION && all[i].message > 0 &&
            all[i].severity == EDI_SEVERITY_ERROR)
            bymessage[all[i].message].push_back(&all[i]);

    std::string out;
    for (const Interchange &ic : interchangesof(text)) {
        bool v4 = !ic.env.syntaxversion.empty() && ic.env.syntaxversion[0] >= '4';
        // The envelope's own faults reject the interchange as a whole.
        std::string uci = "+7";
        if (ic.unzcount >= 0 && ic.unzref != ic.env.controlref)
            uci = "+4+28+UNZ";
        else if (ic.unzcount >= 0 && static_cast<size_t>(ic.unzcount) != ic.messages.size())
            uci = "+4+29+UNZ";
        std::vector<std::string> body;
        bool rejected = uci != "+7";
        for (const Message &m : ic.messages) {
            auto it = bymessage.find(m.number);
            static const std::vector<const Finding *> none;
            const std::vector<const Finding *> &fs = it != bymessage.end() ? it->second : none;
            rejected = rejected || !fs.empty();
            if (opt.errorsonly && fs.empty())
                continue;
            for (std::string &s : messageresponse(m, fs))
                body.push_back(std::move(s));
        }
        if (opt.errorsonly && !rejected)
            continue;
        std::string ref = opt.reference.empty() ? newreference() : opt.reference;
        std::vector<std::string> msg;
        msg.push_back(std::string("UNH+1+CONTRL:") + (v4 ? "4:1" : "D:3") + ":UN");
        msg.push_back("UCI+" + released(ic.env.controlref) + "+" +
                      party(ic.env.sender, ic.env.senderqual) + "+" +
                      party(ic.env.recipient, ic.env.recipientqual) + uci);
        msg.insert(msg.end(), body.begin(), body.end());
        msg.push_back("UNT+" + std::to_string(msg.size() + 1) + "+1");
        out += "UNA:+.? '";
        out += "UNB+" + released(ic.env.syntaxid.empty() ? "UNOA" : ic.env.syntaxid) + ":" +
               released(ic.env.syntaxversion.empty() ? "3" : ic.env.syntaxversion) + "+" +
               party(ic.env.recipient, ic.env.recipientqual) + "+" +
               party(ic.env.sender, ic.env.senderqual) + "+" + stamp(v4) + "+" + released(ref) +
               "'";
        for (const std::string &s : msg)
            out += s + "'";
        out += "UNZ+1+" + released(ref) + "'";
    }
    return out;
}

}  // namespace edi
