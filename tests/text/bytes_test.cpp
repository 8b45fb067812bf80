// The byte level of libedi's text layer: transport bytes taken out, segments
// cut with the service characters in force, release characters rewritten.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "text/reescape.h"
#include "text/segments.h"
#include "text/transport.h"

using namespace std::string_literals;

namespace {

// `text` with a line end behind every `width` bytes, as a program that
// wraps at a fixed width writes it.
std::string wrap(const std::string &text, size_t width, const std::string &eol)
{
    std::string out;
    for (size_t i = 0; i < text.size(); i += width)
        out += text.substr(i, width) + eol;
    return out;
}

struct TransportRow {
    const char *name;
    std::string in, out;
    bool bom;
    size_t between, trailing, wrapped;
};

TEST(Transport, TakesOutOnlyBytesBetweenSegments)
{
    const std::string flat = "UNB+UNOC:3+S'UNH+1+ORDERS:D:96A:UN'UNT+2+1'UNZ+1+1'";
    const TransportRow rows[] = {
        {"crlf between and behind", "UNB+a'\r\nUNH+1'\r\nUNZ+1'\r\n", "UNB+a'UNH+1'UNZ+1'",
         false, 4, 2, 0},
        {"line end inside a segment stays", "UNB+a'FTX+x\r\ny'UNZ+1'",
         "UNB+a'FTX+x\r\ny'UNZ+1'", false, 0, 0, 0},
        {"blanks and tabs in front of the header", " \t\r\nUNB+a'", "UNB+a'", false, 4, 0, 0},
        {"byte-order mark", "\xEF\xBB\xBFUNB+a'\n", "UNB+a'", true, 0, 1, 0},
        {"released terminator does not end the segment", "FTX+a?'\r\nb'\r\nUNZ'",
         "FTX+a?'\r\nb'UNZ'", false, 2, 0, 0},
        {"released release then terminator", "FTX+a?\?'\r\nUNZ'", "FTX+a?\?'UNZ'", false, 2, 0,
         0},
        {"CR as terminator stays", "UNA:+.? \rUNB+a\r\r\nUNZ+1\r\n",
         "UNA:+.? \rUNB+a\r\rUNZ+1\r", false, 1, 1, 0},
        {"blank as element separator stays", "UNA: .? 'UNB UNOC:3'\n UNZ 1'",
         "UNA: .? 'UNB UNOC:3' UNZ 1'", false, 1, 0, 0},
        {"each interchange with its own UNA",
         "UNA:+.? 'UNB+a'UNZ+1'\r\nUNA:+.?*!UNB+b'c!\r\nUNZ+1!\r\n",
         "UNA:+.? 'UNB+a'UNZ+1'UNA:+.?*!UNB+b'c!UNZ+1!", false, 4, 2, 0},
        {"NUL and Ctrl-Z behind the last segment", "UNB+a'UNZ+1'\r\n\x1a\0"s,
         "UNB+a'UNZ+1'", false, 0, 4, 0},
        {"last piece without terminator kept", "UNB+a'\nUNZ+1 \n", "UNB+a'UNZ+1 \n", false, 1,
         0, 0},
        {"wrapped at a fixed width", wrap(flat, 10, "\r\n"), flat, false, 0, 0, 10},
        {"one segment a line is not wrapped", "UNB+a'\nUNH+1'\nUNZ+1'\n", "UNB+a'UNH+1'UNZ+1'",
         false, 2, 1, 0},
        {"wrapped, an empty line behind", wrap(flat, 10, "\n") + "\n", flat, false, 0, 0, 10},
        {"wrapped, the last line as long as the others", wrap(flat.substr(0, 50), 10, "\r\n"),
         flat.substr(0, 50), false, 0, 0, 10},
        {"lines of one width, each a segment of the UNA's terminator, are not wrapped",
         "UNA:+.? !\nUNB+abcd!\nUNZ+1234!\n", "UNA:+.? !UNB+abcd!UNZ+1234!", false, 2, 1, 0},
        {"two lines are not wrapped", "UNB+abc\ndef'", "UNB+abc\ndef'", false, 0, 0, 0},
    };
    for (const TransportRow &r : rows) {
        SCOPED_TRACE(r.name);
        edi::TransportNotes notes;
        EXPECT_EQ(edi::striptransport(r.in, notes), r.out);
        EXPECT_EQ(notes.bom, r.bom);
        EXPECT_EQ(notes.between, r.between);
        EXPECT_EQ(notes.trailing, r.trailing);
        EXPECT_EQ(notes.wrapped, r.wrapped);
    }
}

TEST(Transport, DescribesEachKindOfChange)
{
    const edi::TransportNotes notes{true, 3, 2, 80};
    EXPECT_EQ(notes.describe(),
              (std::vector<std::string>{
                  "byte-order mark taken off",
                  "3 line-end or blank bytes between segments taken out",
                  "2 bytes behind the last segment taken off",
                  "wrapped at 80 characters a line: every line end taken out"}));
    EXPECT_TRUE(edi::TransportNotes().describe().empty());
}

// Segments as "TAG|body|t" (t: terminated, u: not), with the terminator in force.
std::vector<std::string> cut(const std::string &text)
{
    std::vector<std::string> out;
    for (const edi::Segment &s : edi::cutsegments(text))
        out.push_back(s.tag + "|" + std::string(edi::segmentbody(text, s)) + "|" +
                      (s.terminated ? "t" : "u") + s.sx.seg);
    return out;
}

TEST(Segments, CutAtUnreleasedTerminators)
{
    const struct {
        const char *name;
        std::string text;
        std::vector<std::string> segs;
    } rows[] = {
        {"UNA, released terminator, last piece", "UNA:+.? 'UNB+a'UNH+1?'x'UNZ+1",
         {"UNA|UNA:+.? |t'", "UNB|UNB+a|t'", "UNH|UNH+1?'x|t'", "UNZ|UNZ+1|u'"}},
        {"released release then terminator", "FTX+a?\?'UNZ'", {"FTX|FTX+a?\?|t'", "UNZ|UNZ|t'"}},
        {"three release characters release", "FTX+a?\?\?'b'", {"FTX|FTX+a?\?\?'b|t'"}},
        {"tag in upper case, bytes between kept", "unb+a'\nunz'",
         {"UNB|unb+a|t'", "\nUN|\nunz|t'"}},
        {"a second UNA holds from its place", "UNA:+.? 'UNB+a!'UNA|*.# !UNB*b#!c'!UNZ*1!",
         {"UNA|UNA:+.? |t'", "UNB|UNB+a!|t'", "UNA|UNA|*.# |t!", "UNB|UNB*b#!c'|t!",
          "UNZ|UNZ*1|t!"}},
        {"no segment in an empty text", "", {}},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(cut(r.text), r.segs);
    }
    // Every service character of the second UNA holds for what follows it.
    const edi::Syntax sx = edi::cutsegments("UNA:+.? 'UNB+a'UNA|*,# !UNZ*1!").back().sx;
    EXPECT_EQ(std::string({sx.cmp, sx.dst, sx.dec, sx.rel, sx.seg}), "|*,#!");
}

TEST(Segments, ElementsAndComponentsKeepReleasedSeparators)
{
    const edi::Syntax sx;
    EXPECT_EQ(edi::elementsof("NAD+BY+a?+b:c?:d+", sx),
              (std::vector<std::string>{"NAD", "BY", "a?+b:c?:d", ""}));
    EXPECT_EQ(edi::elementsof("FTX+a?\?+b", sx), (std::vector<std::string>{"FTX", "a?\?", "b"}));
    EXPECT_EQ(edi::componentsof("a?+b:c?:d", sx), (std::vector<std::string>{"a?+b", "c?:d"}));
    EXPECT_EQ(edi::componentsof(":x?\?:", sx), (std::vector<std::string>{"", "x?\?", ""}));
    EXPECT_EQ(edi::printable("a\r\x01~\x7f\xff"), "a\\x0d\\x01~\\x7f\\xff");
}

struct ReescapeRow {
    const char *name;
    std::string in, out;
    char release;
};

TEST(Reescape, RewritesOnlyWhereTheModuleWouldMisread)
{
    const std::string allfree = "\\~`|^\x1f\x1e\x1d\x1c";
    const ReescapeRow rows[] = {
        {"single release characters only", "UNB+a'FTX+b?'c?+d'", "UNB+a'FTX+b?'c?+d'", 0},
        {"odd run in front of a terminator", "FTX+a?\?\?'b'", "FTX+a?\?\?'b'", 0},
        {"released release then terminator, no UNA", "UNB+a'FTX+b?\?'UNZ+1'",
         "UNA:+.\\ 'UNB+a'FTX+b\\?'UNZ+1'", '\\'},
        {"every pair rewritten", "FTX+a?:b?\?+c'", "UNA:+.\\ 'FTX+a\\:b\\?+c'", '\\'},
        {"backslash taken: next free", "UNA:+.? 'FTX+a\\b?\?:c'", "UNA:+.~ 'FTX+a\\b~?:c'",
         '~'},
        {"repetition separator kept", "UNA:+.?*'FTX+a?\?'", "UNA:+.\\*'FTX+a\\?'", '\\'},
        {"decimal mark is no candidate", "UNA:+\\? 'FTX+a?\?'", "UNA:+\\~ 'FTX+a~?'", '~'},
        {"own service characters", "UNA|*.# !FTX*a##*b!", "UNA|*.\\ !FTX*a\\#*b!", '\\'},
        {"no free character", "FTX+" + allfree + "?\?'", "FTX+" + allfree + "?\?'", 0},
    };
    for (const ReescapeRow &r : rows) {
        SCOPED_TRACE(r.name);
        bool changed = true;
        char release = 'x';
        EXPECT_EQ(edi::reescape(r.in, changed, release), r.out);
        EXPECT_EQ(changed, r.release != 0);
        EXPECT_EQ(release, r.release);
        // What the module reads of the result: the same segments as the
        // syntax cuts the input.
        if (changed) {
            EXPECT_EQ(edi::cutsegments(r.out).size(),
                      edi::cutsegments(r.in).size() + (r.in.rfind("UNA", 0) == 0 ? 0 : 1));
        }
    }
}

}  // namespace
