#include "ack/received.h"

#include <stdlib.h>

#include <vector>

#include "findings/report.h"
#include "text/segments.h"
#include "text/transport.h"

namespace edi {

namespace {

struct Fields {
    std::vector<std::vector<std::string>> els;
    std::string at(size_t e, size_t c = 0) const
    {
        return e < els.size() && c < els[e].size() ? els[e][c] : "";
    }
};

const char *actionname(const std::string &code)
{
    if (code == "4")
        return "rejected";
    if (code == "7")
        return "acknowledged";
    if (code == "8")
        return "received";
    return "answered";
}

std::string withcode(const std::string &code)
{
    if (code.empty())
        return "";
    const char *name = syntaxerrorname(atoi(code.c_str()));
    return " (" + code + (name[0] != '\0' ? std::string(" ") + name : "") + ")";
}

}  // namespace

const char *syntaxerrorname(int code)
{
    switch (code) {
    case 2: return "syntax version or level not supported";
    case 7: return "interchange recipient not actual recipient";
    case 12: return "invalid value";
    case 13: return "missing";
    case 14: return "value not supported in this position";
    case 15: return "not supported in this position";
    case 16: return "too many constituents";
    case 17: return "no agreement";
    case 18: return "unspecified error";
    case 20: return "character invalid as service character";
    case 21: return "invalid character(s)";
    case 22: return "invalid service character(s)";
    case 23: return "unknown interchange sender";
    case 24: return "too old";
    case 25: return "test indicator not supported";
    case 26: return "duplicate detected";
    case 28: return "references do not match";
    case 29: return "control count does not match number of instances received";
    case 35: return "too many repetitions";
    case 36: return "too many segment group repetitions";
    case 37: return "invalid type of character(s)";
    case 39: return "data element too long";
    case 40: return "data element too short";
    default: return "";
    }
}

int tellacknowledgements(const std::string &input, const std::string &bytes, Report &rep)
{
    TransportNotes tn;
    std::string text = striptransport(bytes, tn);
    SegmentReader sr(text);
    Segment s;
    std::string type;  // of the message being read
    int messages = 0, msgno = 0;
    std::string subject;  // what the current UCM or the APERAK speaks of
    auto say = [&](const std::string &what) {
        Finding &f = rep.add(EDI_FINDING_NOTE, EDI_SEVERITY_INFO, input,
                             "message " + std::to_string(msgno) + " (" + type + "): " + what);
        f.message = msgno;
    };
    while (sr.next(s)) {
        Fields f;
        for (const std::string &e : elementsof(segmentbody(text, s), s.sx)) {
            f.els.emplace_back();
            for (const std::string &c : componentsof(e, s.sx))
                f.els.back().push_back(printable(unreleased(c, s.sx.rel)));
        }
        if (s.tag == "UNH") {
            msgno++;
            type = f.at(2, 0);
            if (type == "CONTRL" || type == "APERAK")
                messages++;
            subject.clear();
            continue;
        }
        if (type == "CONTRL") {
            if (s.tag == "UCI")
                say("the interchange " + f.at(1) + " from " + f.at(2) + " to " + f.at(3) +
                    " was " + actionname(f.at(4)) + withcode(f.at(5)) +
                    (f.at(6).empty() ? "" : " in " + f.at(6)));
            else if (s.tag == "UCF")
                say("the group " + f.at(1) + " was " + actionname(f.at(4)) + withcode(f.at(5)));
            else if (s.tag == "UCM") {
                subject = "message " + f.at(1) + " (" + f.at(2, 0) + ")";
                say(subject + " was " + actionname(f.at(3)) + withcode(f.at(4)) +
                    (f.at(5).empty() ? "" : " in " + f.at(5)));
            } else if (s.tag == "UCS") {
                say(subject + ": segment " + f.at(1) + withcode(f.at(2)));
            } else if (s.tag == "UCD") {
                std::string where = "element " + f.at(2, 0) +
                                    (f.at(2, 1).empty() ? "" : ", component " + f.at(2, 1));
                say(subject + ": " + where + withcode(f.at(1)));
            }
        } else if (type == "APERAK") {
            if (s.tag == "BGM")
                subject = f.at(2).empty() ? "" : "document " + f.at(2);
            else if (s.tag == "RFF")
                say("refers to " + f.at(1, 0) + " " + f.at(1, 1));
            else if (s.tag == "ERC")
                say("application error " + f.at(1, 0) +
                    (f.at(1, 2).empty() ? "" : " (list " + f.at(1, 2) + ")"));
            else if (s.tag == "FTX") {
                std::string t;
                for (size_t c = 0; c < 5; c++)
                    if (!f.at(4, c).empty())
                        t += (t.empty() ? "" : " ") + f.at(4, c);
                if (!t.empty())
                    say("says: " + t);
            }
        }
    }
    return messages;
}

}  // namespace edi
