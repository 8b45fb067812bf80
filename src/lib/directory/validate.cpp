// The structure is matched greedily, as a reader places segments: a segment
// goes to the current entry if it takes its tag, else to a later entry of
// the same group occurrence (the entries passed are then complete), else it
// ends the occurrence if an enclosing level can take it (the group's own
// trigger then begins a new occurrence), else it has no place and is
// reported and skipped, so that one stray segment gives one finding.  An
// entry that has reached its maximum passes a segment on where a later
// entry or an enclosing level can take it.
#include "directory/validate.h"

#include <stdio.h>

#include <algorithm>

#include "directory/directorydata.h"

namespace edi::dirs {

std::string shown(const std::string &v)
{
    std::string r = "'";
    for (unsigned char c : v) {
        if (c >= 0x20 && c < 0x7f) {
            r += static_cast<char>(c);
        } else {
            char b[8];
            snprintf(b, sizeof b, "\\x%02X", c);
            r += b;
        }
    }
    return r + "'";
}

namespace {

using json = nlohmann::ordered_json;


// The tag an entry takes first: its own, or its group's trigger.
std::string firsttag(const json &e)
{
    const json *x = &e;
    while (x->contains("group")) {
        auto c = x->find("children");
        if (c == x->end() || !c->is_array() || c->empty())
            return "";
        x = &(*c)[0];
    }
    return x->value("segment", "");
}

std::string entryname(const json &e)
{
    return e.contains("group") ? "group " + e.value("group", "") + " (" + firsttag(e) + ")"
                               : "segment " + e.value("segment", "");
}

struct Checker {
    Checker(DirectoryData &data, const std::vector<SegmentValues> &segments)
        : d(data), segs(segments)
    {
    }
    DirectoryData &d;
    const std::vector<SegmentValues> &segs;
    std::vector<Finding> out;
    size_t pos = 0;
    std::vector<std::pair<const json *, const size_t *>> stack;  // each level's list and entry

    // Where in the segment the check is (element, repetition, component),
    // set while one is checked.
    int element = 0, repetition = 0, component = 0;

    void report(size_t at, int code, const std::string &text, const std::string &id = "",
                const std::string &value = "")
    {
        size_t i = std::min(at, segs.size() - 1);
        Finding f;
        f.segment = i + 1;
        f.tag = segs[i].tag;
        f.text = text;
        f.code = code;
        f.element = element;
        f.component = component;
        f.repetition = repetition;
        f.id = id;
        f.value = value;
        out.push_back(std::move(f));
    }

    // The first entry from `from` on that takes `tag`, or list.size().
    static size_t later(const json &list, size_t from, const std::string &tag)
    {
        while (from < list.size() && firsttag(list[from]) != tag)
            from++;
        return from;
    }

    // The entry of an enclosing level that takes `tag` at its current
    // entry or a later one, the nearest level first; NULL for none.
    const json *outerentry(const std::string &tag) const
    {
        for (size_t f = stack.size() - 1; f-- > 0;)
            for (size_t k = *stack[f].second; k < stack[f].first->size(); k++)
                if (firsttag((*stack[f].first)[k]) == tag)
                    return &(*stack[f].first)[k];
        return nullptr;
    }
    bool outer(const std::string &tag) const { return outerentry(tag) != nullptr; }

    // How many segments from `at` on one occurrence of `e` would take, its
    // own structure walked forward only (no enclosing level), counted up to
    // `cap`: what decides between two places for a group's first segment.
    size_t accepts(const json &e, size_t at, size_t cap) const
    {
        if (at >= segs.size() || firsttag(e) != segs[at].tag)
            return 0;
        if (!e.contains("group"))
            return 1;
        const json &list = e["children"];
        size_t p = at;
        for (size_t i = 0; i < list.size() && p < segs.size() && p - at < cap; i++) {
            int max = list[i].value("max", 1);
            for (int n = 0; (max < 0 || n < max) && p < segs.size() && p - at < cap; n++) {
                size_t took = accepts(list[i], p, cap - (p - at));
                if (took == 0)
                    break;
                p += took;
            }
        }
        return p - at;
    }

    // Whether the segment at pos, which the current group could take for
    // another occurrence, fits better in `other` (a later entry of this or an enclosing level):
    // one occurrence there takes more of the segments that follow.  A
    // message with the same group shape at two levels (DELFOR's SG8 inside
    // SG4 and SG18 behind it) is placed where it continues.
    bool fitsbetter(const json &current, const json *other) const
    {
        const size_t cap = 400;
        return other != nullptr && accepts(*other, pos, cap) > accepts(current, pos, cap);
    }

    void close(const json &e, int count)
    {
        if (count == 0 && e.value("req", "C") == "M")
            report(pos, 13, "mandatory " + entryname(e) + " missing", firsttag(e));
    }

    void take(const json &e, int count)
    {
        int max = e.value("max", 1);
        if (max >= 0 && count == max + 1)
            report(pos, e.contains("group") ? 36 : 35,
                   entryname(e) + " repeated more often than allowed (at most " +
                       std::to_string(max) + ")",
                   firsttag(e));
        if (e.contains("group")) {
            size_t before = pos;
            run(e["children"]);
            if (pos == before)  // a group without children: no endless loop
                pos++;
        } else {
            checksegment(segs[pos]);
            pos++;
        }
    }

    // One occurrence of the message, or of a group whose trigger stands at
    // pos.
    void run(const json &list)
    {
        if (!list.is_array() || list.empty())
            return;
        size_t idx = 0;
        int count = 0;
        stack.emplace_back(&list, &idx);
        while (pos < segs.size()) {
            const std::string &tag = segs[pos].tag;
            // The current entry takes it, unless it is full and a later
            // entry or an enclosing level can take it instead.
            if (firsttag(list[idx]) == tag) {
                int max = list[idx].value("max", 1);
                size_t next = later(list, idx + 1, tag);
                const json *other = next < list.size() ? &list[next] : outerentry(tag);
                bool elsewhere = other != nullptr;
                // A group's next occurrence is weighed against the other
                // place; a first occurrence or a segment is taken here.
                bool again = count > 0 && list[idx].contains("group");
                if (!elsewhere ||
                    ((max < 0 || count < max) && !(again && fitsbetter(list[idx], other)))) {
                    take(list[idx], ++count);
                    continue;
                }
            }
            size_t j = later(list, idx + 1, tag);
            if (j < list.size()) {
                close(list[idx], count);
                while (++idx < j)
                    close(list[idx], 0);
                count = 0;
                continue;
            }
            if (outer(tag))
                break;
            report(pos, 15, "segment " + tag + " has no place in the message structure here", tag);
            pos++;
        }
        close(list[idx], count);
        while (++idx < list.size())
            close(list[idx], 0);
        stack.pop_back();
    }

    const std::vector<std::string> *codelist(const std::string &id)
    {
        if (!d.codesread) {
            d.codesread = true;
            std::string p = d.path.substr(0, d.path.size() - 5) + ".codes.json";
            if (FILE *f = fopen(p.c_str(), "rb")) {
                d.codes = json::parse(f, nullptr, false);
                fclose(f);
            }
        }
        auto it = d.codelists.find(id);
        if (it == d.codelists.end()) {
            std::vector<std::string> v;
            if (d.codes.is_object() && d.codes.contains(id) && d.codes[id].is_array())
                for (auto &c : d.codes[id])
                    if (c.is_string())
                        v.push_back(c.get<std::string>());
            std::sort(v.begin(), v.end());
            it = d.codelists.emplace(id, std::move(v)).first;
        }
        return it->second.empty() ? nullptr : &it->second;
    }

    void checkvalue(const std::string &id, const std::string &v)
    {
        auto &els = d.j["elements"];
        if (v.empty() || !els.contains(id))
            return;
        const json &e = els[id];
        std::string repr = e.value("repr", "");
        bool numeric = !repr.empty() && repr[0] == 'n';
        size_t digits = 0, len = v.size();
        if (numeric) {
            // Sign and decimal mark do not count towards the length.
            size_t marks = 0, i = v[0] == '-' ? 1 : 0;
            len = v.size() - i;
            for (; i < v.size(); i++) {
                if (v[i] >= '0' && v[i] <= '9')
                    digits++;
                else if ((v[i] == '.' || v[i] == ',') && ++marks == 1)
                    len--;
                else
                    digits = 0, i = v.size();
            }
            if (digits == 0) {
                report(pos, 37, "value " + shown(v) + " of " + id + " is not numeric (" + repr + ")",
                       id, v);
                return;
            }
        }
        size_t at = repr.find_first_of("0123456789");
        size_t max = at == std::string::npos ? 0 : std::stoul(repr.substr(at, 6));
        if (e.value("reprfrom", "") != "codes" && max > 0 && len > max)
            report(pos, 39, "value " + shown(v) + " of " + id + " is longer than " + repr, id, v);
        if (e.value("coded", false))
            if (auto *codes = codelist(id);
                codes && !std::binary_search(codes->begin(), codes->end(), v))
                report(pos, 12, "code " + shown(v) + " of " + id + " is not in its code list", id, v);
    }

    // Repetitions of a syntax version 4 segment on the positions of the
    // layout: each element's repetitions, then empty ones up to its maximum.
    std::vector<std::vector<std::string>> positional;
    std::vector<std::pair<int, int>> where;  // each position's element and repetition
    const std::vector<std::vector<std::string>> &positions(const SegmentValues &s)
    {
        positional.clear();
        where.clear();
        const json &entries = d.j["segments"][s.tag]["elements"];
        size_t at = 0;
        for (size_t k = 0; k < s.repeats.size(); k++) {
            size_t n = s.repeats[k], max = n;
            if (k < entries.size()) {
                max = size_t(std::clamp(entries[k].value("max", 1), 1, 99));
                if (n > max) {
                    element = static_cast<int>(k + 1);
                    repetition = static_cast<int>(max + 1);
                    report(pos, 35, "element " + entries[k].value("id", "") +
                                        " repeated more often than allowed (at most " +
                                        std::to_string(max) + ")",
                           entries[k].value("id", ""));
                    element = repetition = 0;
                }
            }
            for (size_t r = 0; r < max; r++) {
                positional.push_back(r < n && at + r < s.elements.size()
                                         ? s.elements[at + r]
                                         : std::vector<std::string>{});
                where.emplace_back(static_cast<int>(k + 1), static_cast<int>(r + 1));
            }
            at += n;
        }
        return positional;
    }

    void checksegment(const SegmentValues &s)
    {
        auto &all = d.j["segments"];
        if (!all.contains(s.tag))
            return;
        // Positions as the generator lays them out: a repeated element
        // takes as many positions as it may repeat; only its first
        // occurrence can be mandatory.
        std::vector<std::pair<const json *, bool>> layout;
        for (auto &el : all[s.tag]["elements"])
            for (int r = std::clamp(el.value("max", 1), 1, 99); r > 0; r--)
                layout.emplace_back(&el, r == std::clamp(el.value("max", 1), 1, 99));
        const std::vector<std::vector<std::string>> &elements =
            s.repeats.empty() ? s.elements : positions(s);
        auto &composites = d.j["composites"];
        for (size_t k = 0; k < std::max(layout.size(), elements.size()); k++) {
            if (!s.repeats.empty() && k < where.size()) {
                element = where[k].first;
                repetition = where[k].second;
            } else {
                element = static_cast<int>(k + 1);
                repetition = 0;
            }
            component = 0;
            static const std::vector<std::string> none;
            const std::vector<std::string> &comps = k < elements.size() ? elements[k] : none;
            bool empty = std::all_of(comps.begin(), comps.end(), [](auto &c) { return c.empty(); });
            if (k >= layout.size()) {
                if (!empty)
                    report(pos, 16, "element " + std::to_string(k + 1) + " has no place in " +
                                        s.tag + ", which has " + std::to_string(layout.size()),
                           "", comps.empty() ? "" : comps[0]);
                continue;
            }
            std::string id = layout[k].first->value("id", "");
            if (empty) {
                if (layout[k].second && layout[k].first->value("req", "C") == "M")
                    report(pos, 13, "mandatory element " + id + " missing", id);
                continue;
            }
            if (!composites.contains(id)) {
                checkvalue(id, comps[0]);
                if (comps.size() > 1) {
                    component = 2;
                    report(pos, 16, "element " + id + " has no components", id, comps[1]);
                }
                continue;
            }
            auto &parts = composites[id]["components"];
            for (size_t c = 0; c < std::max(parts.size(), comps.size()); c++) {
                component = static_cast<int>(c + 1);
                std::string v = c < comps.size() ? comps[c] : std::string();
                if (c >= parts.size()) {
                    if (!v.empty())
                        report(pos, 16,
                               "component " + std::to_string(c + 1) + " has no place in " + id, id,
                               v);
                    continue;
                }
                std::string cid = parts[c].value("id", "");
                if (v.empty() && parts[c].value("req", "C") == "M")
                    report(pos, 13, "mandatory component " + cid + " of " + id + " missing", cid);
                else
                    checkvalue(cid, v);
            }
        }
        element = repetition = component = 0;
    }
};

}  // namespace

std::vector<Finding> validate(const Directory &d, const std::string &type,
                              const std::vector<SegmentValues> &segs)
{
    if (d.data == nullptr || segs.empty() || !d.data->j["messages"].contains(type))
        return {};
    Checker c(*d.data, segs);
    c.run(d.data->j["messages"][type]["structure"]);
    // The trailer's count and reference, as a partner checks them.
    const SegmentValues &unh = segs.front(), &unt = segs.back();
    auto first = [](const SegmentValues &s, size_t e) {
        return e < s.elements.size() && !s.elements[e].empty() ? s.elements[e][0] : "";
    };
    if (unh.tag == "UNH" && unt.tag == "UNT") {
        std::string count = first(unt, 0), ref = first(unt, 1);
        if (!count.empty() && count != std::to_string(segs.size())) {
            c.element = 1;
            c.report(segs.size() - 1, 29,
                     "segment count " + shown(count) + " of UNT, the message has " +
                         std::to_string(segs.size()),
                     "0074", count);
        }
        if (!ref.empty() && ref != first(unh, 0)) {
            c.element = 2;
            c.report(segs.size() - 1, 28,
                     "message reference " + shown(ref) + " of UNT differs from " +
                         shown(first(unh, 0)) + " of UNH",
                     "0062", ref);
        }
    }
    return std::move(c.out);
}

}  // namespace edi::dirs
