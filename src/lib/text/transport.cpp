#include "text/transport.h"

#include "text/segments.h"

namespace edi {

namespace {

bool spacing(char c, const Syntax &sx)
{
    return (c == '\r' || c == '\n' || c == ' ' || c == '\t') && c != sx.seg && c != sx.dst &&
           c != sx.cmp && c != sx.rel;
}

bool filler(char c, const Syntax &sx)
{
    return spacing(c, sx) || c == '\0' || c == '\x1a';
}

// A file wrapped at a fixed width: every line but the last has the same
// length, and lines end inside segments.  Such line ends are no data (they
// fall inside tags and service strings as well), so they all go.  Returns
// the width, or 0 for a file that is not wrapped.
size_t wrapwidth(std::string_view in)
{
    std::string joined;
    std::vector<std::string_view> lines;
    for (size_t pos = 0; pos < in.size();) {
        size_t nl = in.find('\n', pos);
        size_t end = nl == std::string_view::npos ? in.size() : nl;
        std::string_view line = in.substr(pos, end - pos);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        lines.push_back(line);
        joined.append(line);
        pos = nl == std::string_view::npos ? in.size() : nl + 1;
    }
    if (!lines.empty() && lines.back().empty())
        lines.pop_back();
    if (lines.size() < 3)
        return 0;
    // A line's width in bytes, or in characters of UTF-8 text (the wrapping
    // program may have counted either).
    auto fits = [](std::string_view line, size_t width) {
        size_t chars = 0;
        for (char c : line)
            chars += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        return line.size() == width || chars == width;
    };
    Syntax sx = syntaxof(joined);
    size_t width = lines[0].size();
    bool inside = false;
    for (size_t i = 0; i + 1 < lines.size(); i++) {
        if (!fits(lines[i], width) || width == 0)
            return 0;
        inside = inside || lines[i].back() != sx.seg;
    }
    return inside && lines.back().size() <= width ? width : 0;
}

}  // namespace

std::vector<std::string> TransportNotes::describe() const
{
    std::vector<std::string> out;
    if (bom)
        out.push_back("byte-order mark taken off");
    if (between > 0)
        out.push_back(std::to_string(between) + " line-end or blank bytes between segments taken out");
    if (trailing > 0)
        out.push_back(std::to_string(trailing) + " bytes behind the last segment taken off");
    if (wrapped > 0)
        out.push_back("wrapped at " + std::to_string(wrapped) +
                      " characters a line: every line end taken out");
    return out;
}

std::string striptransport(const std::string &bytes, TransportNotes &notes)
{
    size_t pos = 0;
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        notes.bom = true;
        pos = 3;
    }
    std::string_view in(bytes);
    in.remove_prefix(pos);
    // Line ends or blanks in front of the header.
    size_t lead = 0;
    while (lead < in.size() && spacing(in[lead], Syntax()))
        lead++;
    notes.between += lead;
    in.remove_prefix(lead);
    std::string unwrapped;
    if ((notes.wrapped = wrapwidth(in)) > 0) {
        for (char c : in)
            if (c != '\r' && c != '\n')
                unwrapped += c;
        in = unwrapped;
    }
    Syntax sx;
    std::string out;
    out.reserve(in.size());
    size_t i = 0;
    // Segment by segment: spacing in front of a tag goes, the segment is
    // copied up to and with its unreleased terminator.
    while (i < in.size()) {
        size_t j = i;
        while (j < in.size() && spacing(in[j], sx))
            j++;
        if (in.size() - j >= 9 && in.substr(j, 3) == "UNA") {
            // A service string advice: its characters hold from here on.
            sx = syntaxof(in.substr(j));
            notes.between += j - i;
            out.append(in.substr(j, 9));
            i = j + 9;
            continue;
        }
        size_t end = j;
        while (end < in.size() && (in[end] != sx.seg || released(in, end, j, sx.rel)))
            end++;
        if (end >= in.size()) {
            // No terminator any more: filler only is dropped, anything else is
            // a last piece the module shall see as it is.
            bool onlyfiller = true;
            for (size_t k = i; k < in.size() && onlyfiller; k++)
                onlyfiller = filler(in[k], sx);
            if (onlyfiller) {
                notes.trailing += in.size() - i;
            } else {
                notes.between += j - i;
                out.append(in.substr(j));
            }
            break;
        }
        notes.between += j - i;
        out.append(in.substr(j, end + 1 - j));
        i = end + 1;
    }
    return out;
}

}  // namespace edi
