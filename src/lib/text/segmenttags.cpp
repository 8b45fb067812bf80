#include "text/segmenttags.h"

#include <ctype.h>

#include "text/segments.h"

namespace edi {

namespace {

bool goodtag(std::string_view body, const Syntax &sx)
{
    if (body.size() < 3)
        return false;
    for (size_t i = 0; i < 3; i++)
        if (!isalnum(static_cast<unsigned char>(body[i])))
            return false;
    return body.size() == 3 || body[3] == sx.dst || body[3] == sx.cmp;
}

}  // namespace

std::string withoutbadtags(const std::string &text, std::vector<BadTag> &bad)
{
    bad.clear();
    std::string out;
    int message = 0;
    size_t position = 0;
    SegmentReader reader(text);
    for (Segment s; reader.next(s);) {
        std::string_view body = segmentbody(text, s);
        std::string_view whole(text.data() + s.begin, s.end - s.begin);
        // Only messages: a text that is no interchange at all is the
        // module's to refuse, with its own message.
        if (message == 0 || s.tag == "UNZ" || body.empty() || goodtag(body, s.sx)) {
            if (s.tag == "UNH") {
                message++;
                position = 0;
            }
            position += s.tag == "UNA" || s.tag == "UNB" || s.tag == "UNZ" ? 0 : 1;
            out.append(whole);
            continue;
        }
        position++;
        size_t end = body.find_first_of(std::string{s.sx.dst, s.sx.cmp});
        std::string_view tag = body.substr(0, end == std::string_view::npos ? body.size() : end);
        bad.push_back(BadTag{message, position, std::string(tag.substr(0, 35))});
    }
    return bad.empty() ? text : out;
}

}  // namespace edi
