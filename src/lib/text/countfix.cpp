#include "text/countfix.h"

#include <stdio.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include "text/segments.h"

namespace edi {

namespace {

// The segment with element `index` replaced (element 0 is the tag).
std::string setelements(std::string_view body, const Segment &s,
                        const std::vector<std::pair<size_t, std::string>> &values)
{
    std::vector<std::string> els = elementsof(body, s.sx);
    for (const auto &[index, value] : values) {
        if (els.size() <= index)
            els.resize(index + 1);
        els[index] = value;
    }
    std::string out;
    for (size_t i = 0; i < els.size(); i++)
        out += (i > 0 ? std::string(1, s.sx.dst) : "") + els[i];
    if (s.terminated)
        out += s.sx.seg;
    return out;
}

}  // namespace

std::string fixcounts(const std::string &text, const std::string &ref,
                      std::vector<std::string> &changes)
{
    std::string out;
    long insegs = 0, messages = 0;
    std::string unhref;  // the message reference (0062) of the last UNH
    // The segment with its elements set, and a note for each that changed.
    auto set = [&](std::string_view body, const Segment &s,
                   const std::vector<std::pair<size_t, std::string>> &values) {
        std::vector<std::string> els = elementsof(body, s.sx);
        for (const auto &[index, value] : values) {
            std::string old = index < els.size() ? els[index] : "";
            if (old != value)
                changes.push_back(s.tag + " element " + std::to_string(index) + ": " +
                                  printable(old) + " -> " + printable(value));
        }
        out += setelements(body, s, values);
    };
    out.reserve(text.size() + 64);
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        std::string_view body = segmentbody(text, s);
        if (s.tag == "UNH") {
            insegs = 0;
            messages++;
            std::vector<std::string> els = elementsof(body, s.sx);
            unhref = els.size() > 1 ? els[1] : "";
        }
        insegs++;
        // A UNT repeats its UNH's message reference; where the UNH has none
        // there is nothing to repeat, and the UNT's is left as it is.
        if (s.tag == "UNT" && !unhref.empty())
            set(body, s, {{1, std::to_string(insegs)}, {2, unhref}});
        else if (s.tag == "UNT")
            set(body, s, {{1, std::to_string(insegs)}});
        else if (s.tag == "UNZ")
            set(body, s, {{1, std::to_string(messages)}, {2, ref}});
        else if (s.tag == "UNB")
            set(body, s, {{5, ref}});
        else
            out.append(text, s.begin, s.end - s.begin);
    }
    return out;
}

std::string setdate(const std::string &text, time_t when)
{
    struct tm tm;
    gmtime_r(&when, &tm);
    char buf[32];
    snprintf(buf, sizeof buf, "%02d%02d%02d", tm.tm_year % 100, tm.tm_mon + 1, tm.tm_mday);
    std::string out;
    out.reserve(text.size() + 16);
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        if (s.tag != "UNB") {
            out.append(text, s.begin, s.end - s.begin);
            continue;
        }
        std::string dt = std::string(buf) + s.sx.cmp;
        snprintf(buf, sizeof buf, "%02d%02d", tm.tm_hour, tm.tm_min);
        out += setelements(segmentbody(text, s), s, {{4, dt + buf}});
    }
    return out;
}

std::string joininterchanges(const std::vector<std::string> &texts)
{
    std::string head, body, tail;
    for (size_t i = 0; i < texts.size(); i++) {
        for (const Segment &s : cutsegments(texts[i])) {
            std::string seg = texts[i].substr(s.begin, s.end - s.begin);
            if (s.tag == "UNA" || s.tag == "UNB")
                head += i == 0 ? seg : "";
            else if (s.tag == "UNZ")
                tail = i == 0 ? seg : tail;
            else
                body += seg;
        }
    }
    return head + body + tail;
}

std::string newreference()
{
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    long mix = (tv.tv_usec / 100 + static_cast<long>(getpid()) * 7) % 10000;
    char buf[32];
    snprintf(buf, sizeof buf, "%010lld%04ld", static_cast<long long>(tv.tv_sec) % 10000000000LL, mix);
    return buf;
}

}  // namespace edi
