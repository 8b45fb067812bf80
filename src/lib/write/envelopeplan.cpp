#include "write/envelopeplan.h"

#include <stdlib.h>
#include <time.h>

#include "findings/report.h"
#include "text/charset.h"
#include "text/countfix.h"
#include "text/segments.h"

namespace edi {

namespace {

std::vector<std::string> cut(const std::string &v, char sep)
{
    std::vector<std::string> out(1);
    for (char c : v) {
        if (c == sep)
            out.emplace_back();
        else
            out.back() += c;
    }
    return out;
}

void set(SegmentValues &els, size_t e, std::vector<std::string> comps)
{
    if (els.size() <= e)
        els.resize(e + 1);
    els[e] = std::move(comps);
}

// The values of a segment as written in `text`.
SegmentValues valuesof(std::string_view text, const Segment &s)
{
    SegmentValues out;
    std::vector<std::string> els = elementsof(segmentbody(text, s), s.sx);
    for (size_t e = 1; e < els.size(); e++) {
        std::vector<std::string> comps;
        for (const std::string &c : componentsof(els[e], s.sx))
            comps.push_back(unreleased(c, s.sx.rel));
        out.push_back(comps);
    }
    return out;
}

// The time of writing: SOURCE_DATE_EPOCH when set (output the same at
// every run), else now.
long long writingtime()
{
    const char *epoch = getenv("SOURCE_DATE_EPOCH");
    char *end = nullptr;
    long long when = epoch != nullptr ? strtoll(epoch, &end, 10) : -1;
    if (epoch != nullptr && *epoch != '\0' && *end == '\0' && when >= 0)
        return when;
    return static_cast<long long>(time(nullptr));
}

// An option's value that would break the header it goes into.
bool refused(const char *what, const std::string &v, size_t maxlen, Report &rep)
{
    if (v.find_first_of("+:'?") != std::string::npos) {
        rep.fail("", std::string("the ") + what + " '" + printable(v) +
                         "' holds a separator or the release character (+ : ' ?), which "
                         "would break the interchange header; give the identification "
                         "without them.")
            .element = what;
        return true;
    }
    if (v.size() > maxlen) {
        rep.fail("", std::string("the ") + what + " '" + printable(v) + "' is longer than its " +
                         std::to_string(maxlen) + " characters in the interchange header.")
            .element = what;
        return true;
    }
    return false;
}

bool partnerrefused(const char *what, const std::string &option, int version, Report &rep)
{
    std::vector<std::string> p = partnerof(option);
    std::string w(what);
    if (p.size() > 4) {
        rep.fail("", "the " + w + " '" + printable(option) +
                         "' has more than four parts; give ID, ID:QUALIFIER or "
                         "ID:QUALIFIER:ROUTING.")
            .element = what;
        return true;
    }
    const size_t routing = version >= 4 ? 35 : 14;
    const size_t limits[] = {35, 4, routing, 35};
    const char *parts[] = {"", " qualifier", " routing address", " internal identification"};
    for (size_t i = 0; i < p.size(); i++)
        if (refused((w + parts[i]).c_str(), p[i], limits[i], rep))
            return true;
    return false;
}

}  // namespace

std::vector<std::string> partnerof(const std::string &option)
{
    return cut(option, ':');
}

bool planenvelope(const std::string &moduletext, const datatree_t *env,
                  const std::vector<GroupSpan> &groups, const Settings &opt, EnvelopePlan &plan,
                  Report &rep)
{
    SegmentValues written, s009;
    size_t messages = 0;
    SegmentReader reader(moduletext);
    for (Segment s; reader.next(s);) {
        if (s.tag == "UNB")
            written = valuesof(moduletext, s);
        else if (s.tag == "UNH" && messages++ == 0) {
            SegmentValues unh = valuesof(moduletext, s);
            s009 = unh.size() > 1 ? SegmentValues{unh[1]} : SegmentValues{};
        }
    }
    SegmentValues unb = env != nullptr ? unbvalues(env) : written;
    if (!opt.syntax.empty()) {
        std::vector<std::string> s001 = cut(opt.syntax, ':');
        std::string why = syntaxproblem(s001[0]);
        if (s001.size() < 2 || s001[1].size() != 1 || s001[1][0] < '1' || s001[1][0] > '4')
            why = "the syntax '" + printable(opt.syntax) +
                  "' is not IDENTIFIER:VERSION with a version from 1 to 4 (UNOC:3)";
        if (!why.empty()) {
            rep.fail("", why + ".").element = "syntax";
            return false;
        }
        set(unb, 0, s001);
    }
    int version = atoi(segmentvalue(unb, 0, 1).c_str());
    if ((!opt.sender.empty() && partnerrefused("sender", opt.sender, version, rep)) ||
        (!opt.recipient.empty() && partnerrefused("recipient", opt.recipient, version, rep)) ||
        refused("application reference", opt.applicationref, 14, rep) ||
        refused("reference", opt.reference, 14, rep) || refused("group", opt.group, 6, rep))
        return false;
    if (!opt.sender.empty())
        set(unb, 1, partnerof(opt.sender));
    if (!opt.recipient.empty())
        set(unb, 2, partnerof(opt.recipient));
    for (size_t e : {1, 2})
        if (segmentvalue(unb, e, 0).empty()) {
            const char *what = e == 1 ? "sender" : "recipient";
            rep.fail("", std::string("the ") + what +
                             " is empty; the interchange header needs the identification of "
                             "both partners.")
                .element = what;
            return false;
        }
    if (!opt.applicationref.empty())
        set(unb, 6, {opt.applicationref});
    if (opt.ackrequest)
        set(unb, 8, {"1"});
    if (opt.test)
        set(unb, 10, {"1"});
    // The partner's date stays with its envelope; a new envelope, or one of
    // another syntax version, is dated now.
    if (env == nullptr || segmentvalue(unb, 3, 0).empty() || !opt.syntax.empty())
        set(unb, 3, unbdate(writingtime(), version));
    plan.reference = opt.reference;
    if (plan.reference.empty() && env != nullptr)
        plan.reference = segmentvalue(unb, 4, 0);
    if (plan.reference.empty())
        plan.reference = newreference();
    set(unb, 4, {plan.reference});
    plan.out.unb = unb;

    for (const GroupSpan &g : groups)
        plan.out.groups.push_back(OutEnvelope::Group{g.first, g.last, ungvalues(g.node)});
    if (!opt.group.empty() && groups.empty() && messages > 0) {
        // One group around every message, between the interchange's partners.
        SegmentValues ung;
        set(ung, 0, {opt.group});
        set(ung, 1, {segmentvalue(unb, 1, 0), segmentvalue(unb, 1, 1)});
        set(ung, 2, {segmentvalue(unb, 2, 0), segmentvalue(unb, 2, 1)});
        set(ung, 3, unbdate(writingtime(), version));
        set(ung, 4, {plan.reference});
        set(ung, 5, {segmentvalue(s009, 0, 3).empty() ? "UN" : segmentvalue(s009, 0, 3)});
        set(ung, 6, {segmentvalue(s009, 0, 1), segmentvalue(s009, 0, 2)});
        plan.out.groups.push_back(OutEnvelope::Group{0, messages - 1, ung});
    }

    std::string una = env != nullptr ? unaof(env) : "";
    plan.keepuna = env == nullptr || !una.empty();
    if (una.size() != 6)
        una = std::string(":+.?") + (version >= 4 ? '*' : ' ') + "'";
    plan.una = una;
    return true;
}

}  // namespace edi
