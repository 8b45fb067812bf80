#include "text/transport.h"

#include <string.h>

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
    // The lines one at a time, with their line ends ("\n" or "\r\n") off:
    // a large file is neither copied nor listed.
    size_t pos = 0;
    auto nextline = [&in, &pos](std::string_view &line) {
        if (pos >= in.size())
            return false;
        size_t nl = in.find('\n', pos);
        size_t end = nl == std::string_view::npos ? in.size() : nl;
        line = in.substr(pos, end - pos);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        pos = nl == std::string_view::npos ? in.size() : nl + 1;
        return true;
    };
    // The service characters from the first bytes of the joined lines.
    std::string head;
    std::string_view line;
    while (head.size() < 9 && nextline(line))
        head.append(line.substr(0, 9 - head.size()));
    const Syntax sx = syntaxof(head);
    // A line's width in bytes, or in characters of UTF-8 text (the wrapping
    // program may have counted either).
    auto fits = [](std::string_view l, size_t width) {
        size_t chars = 0;
        for (char c : l)
            chars += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        return l.size() == width || chars == width;
    };
    // How many lines there are: an empty line at the very end is none.
    pos = 0;
    size_t lines = 0;
    while (nextline(line))
        lines++;
    if (lines > 0 && line.empty())
        lines--;
    if (lines < 3)
        return 0;
    pos = 0;
    size_t width = 0;
    bool inside = false;
    for (size_t i = 0; i < lines && nextline(line); i++) {
        if (i == 0)
            width = line.size();
        if (i + 1 == lines)
            return inside && line.size() <= width ? width : 0;
        if (width == 0 || !fits(line, width))
            return 0;
        inside = inside || line.back() != sx.seg;
    }
    return 0;
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

std::string striptransport(std::string bytes, TransportNotes &notes)
{
    // Bytes are only ever taken out, so the text is compacted where it
    // stands: `w` writes behind `i` reads, and a large input is not copied.
    size_t pos = 0;
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        notes.bom = true;
        pos = 3;
    }
    // Line ends or blanks in front of the header.
    while (pos < bytes.size() && spacing(bytes[pos], Syntax())) {
        notes.between++;
        pos++;
    }
    size_t w = 0;
    if ((notes.wrapped = wrapwidth(std::string_view(bytes).substr(pos))) > 0) {
        for (size_t k = pos; k < bytes.size(); k++)
            if (bytes[k] != '\r' && bytes[k] != '\n')
                bytes[w++] = bytes[k];
        bytes.resize(w);
        pos = 0;
    }
    std::string_view in = std::string_view(bytes).substr(pos);
    auto keep = [&bytes, &w, &in](size_t from, size_t n) {
        memmove(&bytes[w], in.data() + from, n);
        w += n;
    };
    Syntax sx;
    size_t i = 0;
    w = 0;
    // Segment by segment: spacing in front of a tag goes, the segment is
    // kept up to and with its unreleased terminator.
    while (i < in.size()) {
        size_t j = i;
        while (j < in.size() && spacing(in[j], sx))
            j++;
        if (in.size() - j >= 9 && in.substr(j, 3) == "UNA") {
            // A service string advice: its characters hold from here on.
            sx = syntaxof(in.substr(j));
            notes.between += j - i;
            keep(j, 9);
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
                keep(j, in.size() - j);
            }
            break;
        }
        notes.between += j - i;
        keep(j, end + 1 - j);
        i = end + 1;
    }
    bytes.resize(w);
    return bytes;
}

}  // namespace edi
