#include "text/reescape.h"

#include "text/segments.h"

namespace edi {

namespace {

bool service(char c, const Syntax &sx)
{
    return c == sx.seg || c == sx.dst || c == sx.cmp;
}

// True if a run of an even number of release characters stands directly in
// front of a separator or terminator.
bool ambiguous(const std::string &text, size_t from, const Syntax &sx)
{
    for (size_t i = from; i < text.size(); i++) {
        if (text[i] != sx.rel)
            continue;
        size_t run = 0;
        while (i < text.size() && text[i] == sx.rel) {
            run++;
            i++;
        }
        if (run % 2 == 0 && i < text.size() && service(text[i], sx))
            return true;
    }
    return false;
}

}  // namespace

std::string reescape(const std::string &text, bool &changed, char &release)
{
    changed = false;
    release = 0;
    Syntax sx = syntaxof(text);
    size_t body = sx.una ? 9 : 0;
    if (!ambiguous(text, body, sx))
        return text;
    for (char c : std::string("\\~`|^\x1f\x1e\x1d\x1c")) {
        if (c != sx.seg && c != sx.dst && c != sx.cmp && c != sx.dec &&
            text.find(c, body) == std::string::npos) {
            release = c;
            break;
        }
    }
    if (release == 0)
        return text;
    std::string out = "UNA";
    out += sx.cmp;
    out += sx.dst;
    out += sx.dec;
    out += release;
    out += sx.una ? text[7] : ' ';
    out += sx.seg;
    for (size_t i = body; i < text.size(); i++) {
        if (text[i] == sx.rel && i + 1 < text.size()) {
            out += release;
            out += text[++i];
        } else {
            out += text[i];
        }
    }
    changed = true;
    return out;
}

}  // namespace edi
