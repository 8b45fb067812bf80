#include "text/envelope.h"

#include <stdio.h>

#include "text/segments.h"

namespace edi {

namespace {

std::string joinelements(const std::vector<std::string> &els, const Syntax &sx, bool term)
{
    std::string s;
    for (size_t i = 0; i < els.size(); i++) {
        if (i > 0)
            s += sx.dst;
        s += els[i];
    }
    if (term)
        s += sx.seg;
    return s;
}

std::string element(const std::vector<std::string> &els, size_t i)
{
    return i < els.size() ? els[i] : "";
}

// UNB with an empty qualifier behind a sender or recipient that has none:
// the module finds the sender only as the first component of its element.
std::string fixunb(std::vector<std::string> els, const Segment &s, EnvelopeNotes &notes)
{
    bool changed = false;
    const char *names[] = {"sender", "recipient"};
    for (size_t e = 2; e <= 3 && e < els.size(); e++) {
        if (els[e].empty() || componentsof(els[e], s.sx).size() > 1)
            continue;
        notes.changes.push_back(std::string("UNB ") + names[e - 2] + " " + printable(els[e]) +
                                " has no qualifier: read with an empty one");
        els[e] += s.sx.cmp;
        changed = true;
    }
    return changed ? joinelements(els, s.sx, s.terminated) : std::string();
}

std::string messagetype(const std::vector<std::string> &els, const Syntax &sx)
{
    std::vector<std::string> cs = componentsof(element(els, 2), sx);
    std::string id;
    for (size_t i = 0; i < cs.size() && i < 4; i++)
        id += (i > 0 ? ":" : "") + cs[i];
    return id;
}

struct Message {
    MessagePlace place;
    std::string type;
    int number = 0;
    std::string group;  // the UNG it stands in, as received; "" for none
    std::string groupend;  // the UNE that closes that group, as received
};

struct Interchange {
    std::string head, tail;  // UNA, UNB and what stands before the first UNH; UNZ
    std::string una, unb;    // as received
    std::string ungseg;      // the open UNG as received
    std::string reference;   // UNB element 5
    std::vector<Message> messages;
    std::string group;       // reference of the open UNG
};

}  // namespace

std::string describeunit(const Unit &u)
{
    std::string s = "interchange " + std::to_string(u.interchange);
    if (u.firstmsg == 0)
        return s;
    if (u.firstmsg == u.lastmsg)
        s += ", message " + std::to_string(u.firstmsg);
    else
        s += ", messages " + std::to_string(u.firstmsg) + " to " + std::to_string(u.lastmsg);
    if (!u.msgtype.empty())
        s += " (" + u.msgtype + ")";
    return s;
}

namespace {

// Adds the segment [begin, end) to a message's text.
void addsegment(MessagePlace &p, size_t begin, size_t end)
{
    if (!p.ranges.empty() && p.ranges.back().second == begin)
        p.ranges.back().second = end;
    else
        p.ranges.emplace_back(begin, end);
}

}  // namespace

std::vector<Unit> prepareenvelope(const std::string &text, EnvelopeNotes &notes)
{
    // The text outlives the call, so the copies may point into it until
    // each is put together.
    std::shared_ptr<const std::string> shared(&text, [](const std::string *) {});
    std::vector<Unit> units = prepareenvelope(shared, notes);
    for (Unit &u : units) {
        u.text = unittext(u);
        u.source.reset();
        u.places.clear();
    }
    return units;
}

std::string unittext(const Unit &u)
{
    if (u.source == nullptr)
        return u.text;
    size_t n = 0;
    std::vector<std::string_view> pieces = unitpieces(u);
    for (std::string_view p : pieces)
        n += p.size();
    std::string out;
    out.reserve(n);
    for (std::string_view p : pieces)
        out += p;
    return out;
}

std::vector<std::string_view> unitpieces(const Unit &u)
{
    std::vector<std::string_view> out{u.text};
    if (u.source != nullptr) {
        std::string_view src(*u.source);
        for (const MessagePlace &p : u.places)
            for (const auto &[b, e] : p.ranges)
                out.push_back(src.substr(b, e - b));
        out.push_back(u.unz);
    }
    return out;
}

bool cuttable(const Unit &u)
{
    if (u.source == nullptr || u.places.size() < 2)
        return false;
    for (const MessagePlace &p : u.places)
        if (!p.closed)
            return false;
    return true;
}

Unit messageframe(const Unit &u, size_t m)
{
    // The unit but for its text and groups, which are not copied whole
    // for every message.
    Unit one;
    one.interchange = u.interchange;
    one.msgtype = u.msgtype;
    one.ownlayout = u.ownlayout;
    one.una = u.una;
    one.unb = u.unb;
    one.unz = u.unz;
    if (u.firstmsg > 0)
        one.firstmsg = one.lastmsg = u.firstmsg + int(m);
    if (m < u.groups.size())
        one.groups = {u.groups[m]};
    if (m < u.groupends.size())
        one.groupends = {u.groupends[m]};
    return one;
}

Unit messagepart(const Unit &u, size_t m)
{
    Unit one = messageframe(u, m);
    one.text = u.text;
    one.source = u.source;
    MessagePlace p;
    p.begin = u.places[m].begin;
    p.end = u.places[m].end;
    p.closed = true;
    p.ranges = {{p.begin, p.end}};
    one.places = {p};
    return one;
}

std::vector<Unit> prepareenvelope(std::shared_ptr<const std::string> source,
                                  EnvelopeNotes &notes)
{
    const std::string &text = *source;
    // Segments are taken one at a time: a large interchange is not cut
    // into a list of all its segments first.
    {
        SegmentReader peek(text);
        Segment s0;
        bool any = peek.next(s0);
        if (any && s0.tag == "UNA")
            any = peek.next(s0);
        if (!any || s0.tag != "UNB") {
            Unit u;
            u.text = text;
            return {u};
        }
    }

    std::vector<Interchange> ics;
    std::string una;
    bool inmessage = false;
    auto fault = [&](const std::string &what) {
        notes.faults.push_back("interchange " + std::to_string(ics.size()) + ": " + what);
    };
    auto remark = [&](const std::string &what) {
        notes.changes.push_back("interchange " + std::to_string(ics.size()) + ": " + what);
    };
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        const std::string_view seg = std::string_view(text).substr(s.begin, s.end - s.begin);
        if (s.tag == "UNA") {
            una = seg;
            continue;
        }
        // The elements of the segments this pass looks into only: the
        // segments of the messages are just passed over.
        std::vector<std::string> els;
        if (s.tag == "UNB" || s.tag == "UNG" || s.tag == "UNE" || s.tag == "UNZ" ||
            s.tag == "UNH")
            els = elementsof(segmentbody(text, s), s.sx);
        if (s.tag == "UNB") {
            if (!ics.empty() && ics.back().tail.empty())
                fault("no trailer UNZ before the next UNB; the interchange is incomplete");
            ics.emplace_back();
            std::string fixed = fixunb(els, s, notes);
            ics.back().head = una + (fixed.empty() ? std::string(seg) : fixed);
            ics.back().una = una;
            ics.back().unb = seg;
            ics.back().reference = element(els, 5);
            inmessage = false;
            continue;
        }
        if (ics.empty())
            continue;
        Interchange &ic = ics.back();
        if (!ic.tail.empty()) {
            fault("'" + printable(seg.substr(0, 20)) + "' stands behind the trailer UNZ; remove it");
            continue;
        }
        if (s.tag == "UNG") {
            notes.changes.push_back("group segment taken out: " + printable(seg));
            ic.group = element(els, 5);
            ic.ungseg = seg;
            if (ic.group.empty())
                fault("the group header UNG has no group reference (element 5)");
            continue;
        }
        if (s.tag == "UNE") {
            notes.changes.push_back("group segment taken out: " + printable(seg));
            for (auto m = ic.messages.rbegin();
                 m != ic.messages.rend() && m->group == ic.ungseg && m->groupend.empty(); ++m)
                m->groupend = seg;
            ic.ungseg.clear();
            if (element(els, 2) != ic.group)
                remark("the group trailer UNE names the group reference '" +
                       printable(element(els, 2)) + "', its UNG '" + printable(ic.group) + "'");
            continue;
        }
        if (s.tag == "UNZ") {
            ic.tail = seg;
            if (element(els, 2) != ic.reference)
                remark("the trailer UNZ names the control reference '" +
                       printable(element(els, 2)) + "', the header UNB '" +
                       printable(ic.reference) + "'");
            inmessage = false;
            continue;
        }
        if (s.tag == "UNH") {
            Message m;
            m.type = messagetype(els, s.sx);
            m.number = ++notes.messages;
            m.group = ic.ungseg;
            m.place.begin = s.begin;
            ic.messages.push_back(m);
            inmessage = true;
        }
        if (inmessage || !ic.messages.empty())
            addsegment(ic.messages.back().place, s.begin, s.end);
        else
            ic.head += seg;
        if (s.tag == "UNT" && inmessage) {
            MessagePlace &p = ic.messages.back().place;
            p.closed = true;
            p.end = s.end;
        }
        if (s.tag == "UNT")
            inmessage = false;
    }
    if (!ics.empty() && ics.back().tail.empty())
        remark("no trailer UNZ at the end of the file");

    bool mixed = false;
    std::string type0;
    for (const Interchange &ic : ics)
        for (const Message &m : ic.messages) {
            if (type0.empty())
                type0 = m.type;
            mixed = mixed || m.type != type0;
        }

    std::vector<Unit> units;
    for (size_t i = 0; i < ics.size(); i++) {
        Interchange &ic = ics[i];
        if (ic.messages.empty()) {
            if (ics.size() == 1) {
                Unit u;
                u.text = ic.head + ic.tail;
                u.una = ic.una;
                u.unb = ic.unb;
                units.push_back(u);
            } else {
                notes.changes.push_back("interchange " + std::to_string(i + 1) +
                                        " holds no message: passed over");
            }
            continue;
        }
        // One working copy per run of messages of one type.
        for (size_t k = 0; k < ic.messages.size();) {
            Unit u;
            u.interchange = static_cast<int>(i + 1);
            u.msgtype = ic.messages[k].type;
            u.firstmsg = ic.messages[k].number;
            u.text = ic.head;
            u.source = source;
            u.una = ic.una;
            u.unb = ic.unb;
            size_t e = k;
            while (e < ic.messages.size() && ic.messages[e].type == u.msgtype) {
                u.places.push_back(std::move(ic.messages[e].place));
                u.groups.push_back(ic.messages[e].group);
                u.groupends.push_back(ic.messages[e].groupend);
                u.lastmsg = ic.messages[e].number;
                e++;
            }
            u.unz = ic.tail;
            units.push_back(std::move(u));
            k = e;
        }
    }
    if (ics.size() > 1)
        notes.changes.push_back(std::to_string(ics.size()) + " interchanges: each read on its own");
    if (mixed)
        notes.changes.push_back(
            "messages of different types: each run of one type read with its own configuration");
    return units;
}

}  // namespace edi
