#include "directory/validatecharset.h"

#include "directory/validate.h"

#include <stdio.h>

namespace edi::dirs {

namespace {

std::string byteshown(unsigned b)
{
    char s[8];
    snprintf(s, sizeof s, "\\x%02X", b & 0xFF);
    return s;
}

// What is wrong with `value`, the first character outside the set named;
// "" when it fits.  `lower` is set when lower case letters in level A are
// all that is wrong.
std::string misfit(const std::string &value, Charset cs, const std::string &syntaxid,
                   bool &lower)
{
    lower = false;
    std::string text = decodetext(value, cs);
    for (size_t at = 0; at < text.size();) {
        char32_t c = static_cast<char32_t>(nextcodepoint(text, at));
        Fit fit = charfit(c, cs);
        if (fit == Fit::lowercase)
            lower = true;
        if (fit != Fit::outside)
            continue;
        lower = false;
        bool raw = c >= rawbytebase + 0x80 && c <= rawbytebase + 0xFF;
        unsigned byte = raw ? c - rawbytebase : c;
        std::string level = cs == Charset::levela ? "level A" : "level B";
        if (cs == Charset::utf8)
            return "is not well-formed UTF-8 (byte " + byteshown(byte) + "), which " + syntaxid +
                   " declares";
        if (cs != Charset::levela && cs != Charset::levelb)
            return "has the byte " + byteshown(byte) + ", which " + charsetname(cs) + " (" +
                   syntaxid + ") does not assign";
        if (byte >= 0x80)
            return "has the byte " + byteshown(byte) + ", outside " + level + " (" + syntaxid + ")";
        if (c < 0x20 || c == 0x7F)
            return "has the control character " + byteshown(byte) + ", outside " + level + " (" +
                   syntaxid + ")";
        return "has '" + std::string(1, static_cast<char>(c)) + "', outside " + level + " (" +
               syntaxid + ")";
    }
    return lower ? "has lower case letters, outside level A (" + syntaxid + ") (warning)" : "";
}

}  // namespace

std::vector<CharsetFinding> charsetfindings(Charset cs, const std::string &syntaxid,
                                            const std::vector<SegmentValues> &segs)
{
    std::vector<CharsetFinding> out;
    if (cs == Charset::unknown)
        return out;
    for (size_t s = 0; s < segs.size(); s++) {
        const SegmentValues &sv = segs[s];
        // Element and repetition of each entry of sv.elements.
        std::vector<std::pair<int, int>> where;
        for (size_t k = 0; k < sv.repeats.size(); k++)
            for (size_t r = 0; r < sv.repeats[k]; r++)
                where.emplace_back(static_cast<int>(k + 1), static_cast<int>(r + 1));
        for (size_t e = 0; e < sv.elements.size(); e++) {
            const std::vector<std::string> &comps = sv.elements[e];
            for (size_t c = 0; c < comps.size(); c++) {
                bool lower = false;
                std::string what = misfit(comps[c], cs, syntaxid, lower);
                if (what.empty())
                    continue;
                CharsetFinding cf;
                Finding &f = cf.finding;
                f.segment = s + 1;
                f.tag = sv.tag;
                f.code = 37;
                f.element = e < where.size() ? where[e].first : static_cast<int>(e + 1);
                f.repetition = e < where.size() ? where[e].second : 0;
                f.component = comps.size() > 1 ? static_cast<int>(c + 1) : 0;
                f.value = comps[c];
                std::string place = "element " + std::to_string(f.element);
                if (f.component > 0)
                    place += ", component " + std::to_string(f.component);
                f.text = "value " + shown(comps[c]) + " (" + place + ") " + what;
                cf.warning = lower;
                out.push_back(std::move(cf));
            }
        }
    }
    return out;
}

}  // namespace edi::dirs
