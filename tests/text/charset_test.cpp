// Character sets of the syntax identifiers: bytes to UTF-8 and back without
// loss, what a set cannot hold, and UTF-8 found in a file that declares a
// single-byte set.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "text/charset.h"

using namespace std::string_literals;
using edi::Charset;

namespace {

std::string u8(std::initializer_list<char32_t> cps)
{
    std::string s;
    for (char32_t c : cps)
        edi::appendutf8(s, c);
    return s;
}

TEST(Charset, KnownBytesBothWays)
{
    struct Row {
        const char *syntaxid;
        std::string bytes, text;
    };
    const Row rows[] = {
        {"UNOC", "\xE9\x85", u8({0xE9, 0x85})},  // C1 controls stay
        {"UNOD", "\xA1\xB9", u8({0x104, 0x161})},
        {"UNOG", "\xA1\xA5", u8({0x126, 0xF7A5})},  // 0xA5: unassigned
        {"UNOH", "\xBD", u8({0x14A})},
        {"UNOE", "\xB0\xF0\x9F", u8({0x410, 0x2116, 0x9F})},
        {"UNOI", "\xC7\xA1", u8({0x627, 0xF7A1})},
        {"UNOF", "\xC1\xFF", u8({0x391, 0xF7FF})},
        {"UNOJ", "\xE0\xBF", u8({0x5D0, 0xF7BF})},
        {"UNOK", "\xD0\xFD", u8({0x11E, 0x131})},
        {"UNOL", "\xA4\xBD", u8({0x20AC, 0x153})},
        {"UNOA", "\xE4", u8({0xE4})},  // levels A and B: read as Latin-1
        {"UNOB", "\xDF", u8({0xDF})},
        {"UNOY", "\xC3\xA9\xF0\x9F\x98\x80", u8({0xE9, 0x1F600})},
        {"UNOY", "\xC0\x80", u8({0xF7C0, 0xF780})},               // overlong
        {"UNOY", "\xED\xA0\x80", u8({0xF7ED, 0xF7A0, 0xF780})},   // surrogate
        {"UNOY", "\xF4\x90\x80\x80", u8({0xF7F4, 0xF790, 0xF780, 0xF780})},
        {"UNOW", "a\xE2\x82", u8({'a', 0xF7E2, 0xF782})},         // cut short
        {"UNOW", "\xEF\x9E\x80", u8({0xF7EF, 0xF79E, 0xF780})},   // raw-byte code point
    };
    for (const Row &r : rows) {
        SCOPED_TRACE(std::string(r.syntaxid) + " " + r.text);
        Charset cs = edi::charsetofsyntax(r.syntaxid);
        EXPECT_EQ(edi::decodetext(r.bytes, cs), r.text);
        std::vector<edi::Unencodable> missing;
        EXPECT_EQ(edi::encodetext(r.text, cs, &missing), r.bytes);
        EXPECT_TRUE(missing.empty());
    }
}

TEST(Charset, EveryByteOfEverySetRoundTrips)
{
    std::string bytes;
    for (int b = 0; b < 256; b++)
        bytes += static_cast<char>(b);
    bytes += "\xC3\xA9\xE2\x82\xAC\xE2\x82\xEF\x9E\x80";  // UTF-8 runs, whole and cut
    for (const char *id : {"UNOA", "UNOB", "UNOC", "UNOD", "UNOE", "UNOF", "UNOG", "UNOH",
                           "UNOI", "UNOJ", "UNOK", "UNOL", "UNOY"}) {
        Charset cs = edi::charsetofsyntax(id);
        std::string text = edi::decodetext(bytes, cs);
        size_t at = 0;
        while (at < text.size() && edi::nextcodepoint(text, at) >= 0) {
        }
        EXPECT_EQ(at, text.size()) << id << ": the text is well-formed UTF-8";
        EXPECT_EQ(edi::encodetext(text, cs), bytes) << id;
    }
}

TEST(Charset, EncodingReportsWhatTheSetCannotHold)
{
    struct Row {
        const char *name;
        Charset cs;
        std::string in;
        edi::EncodeOptions opt;
        std::string out;
        std::vector<size_t> offsets;
    };
    const Row rows[] = {
        {"Greek in Latin-1", Charset::iso8859_1, "a\xCE\xA9" "b\xE2\x82\xAC", {}, "a?b?", {1, 4}},
        {"chosen replacement", Charset::iso8859_5, "x\xC3\xA9", {"_", false}, "x_", {1}},
        {"malformed input", Charset::iso8859_2, "\xC3(", {}, "?(", {0}},
        {"strict level A", Charset::levela, "M\xC3\xBCller", {"?", true}, "M?ller", {1}},
    };
    for (const Row &r : rows) {
        SCOPED_TRACE(r.name);
        std::vector<edi::Unencodable> missing;
        EXPECT_EQ(edi::encodetext(r.in, r.cs, &missing, r.opt), r.out);
        std::vector<size_t> offsets;
        for (const edi::Unencodable &u : missing)
            offsets.push_back(u.offset);
        EXPECT_EQ(offsets, r.offsets);
    }
    std::vector<edi::Unencodable> missing;
    edi::encodetext("\xCE\xA9\xC3", Charset::iso8859_1, &missing);
    ASSERT_EQ(missing.size(), 2u);
    EXPECT_TRUE(missing[0].ch == 0x3A9 && !missing[0].malformed);
    EXPECT_TRUE(missing[1].ch == 0xC3 && missing[1].malformed);
}

std::string corpusfile(const std::string &name)
{
    std::ifstream in(std::string(EDIPROT_CORPUS) + "/edifact/" + name, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

TEST(Charset, DetectsUtf8InSingleByteSets)
{
    struct Row {
        const char *name;
        std::string bytes;
        Charset declared, found;
    };
    const Row rows[] = {
        {"pure ASCII", "UNB+UNOA:3+S+R'", Charset::levela, Charset::levela},
        {"UTF-8 in UNOC", "NAD+M\xC3\xBCnchen'", Charset::iso8859_1, Charset::utf8},
        {"Latin-1", "NAD+M\xFCnchen Stra\xDF" "e'", Charset::iso8859_1, Charset::iso8859_1},
        // One pair looks like UTF-8 (\xC3\xA9), the next byte does not.
        {"Latin-1, one UTF-8-like pair", "\xC3\xA9tude \xE0 Paris", Charset::iso8859_1,
         Charset::iso8859_1},
        {"lead byte at the end", "ok\xC3", Charset::iso8859_5, Charset::iso8859_5},
        {"tiny-withUNA-UNOE", corpusfile("edireader_tiny-withUNA-UNOE_iso8859-5.edi"),
         Charset::iso8859_5, Charset::iso8859_5},
        {"ORDRSP latin1", corpusfile("edireader_ORDRSP-D01B-UNOC_latin1.edi"),
         Charset::iso8859_1, Charset::iso8859_1},
        {"example_utf8", corpusfile("php-edifact_example_utf8_DESADV.edi"), Charset::iso8859_1,
         Charset::utf8},
        {"recadv utf8", corpusfile("smooks_edg_recadv_D01B_utf8.txt"), Charset::levela,
         Charset::utf8},
    };
    for (const Row &r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(edi::detectcharset(r.bytes, r.declared), r.found);
        // Cut behind each terminator, as a working copy's pieces are: the
        // same answer.
        const std::string_view all(r.bytes);
        std::vector<std::string_view> pieces;
        size_t from = 0;
        for (size_t t = all.find('\''); t != std::string_view::npos; t = all.find('\'', from)) {
            pieces.push_back(all.substr(from, t + 1 - from));
            from = t + 1;
        }
        pieces.push_back(all.substr(from));
        EXPECT_EQ(edi::detectcharset(pieces, r.declared), r.found);
    }
    std::string cyrillic = edi::decodetext(rows[5].bytes, Charset::iso8859_5);
    EXPECT_NE(cyrillic.find(u8({0x420, 0x44B, 0x431, 0x430})), std::string::npos);  // "Рыба"
}

TEST(Charset, NamesBothWays)
{
    const char *rows[][3] = {
        {"UNOA", "US-ASCII", "UNOB"},   {"UNOB", "US-ASCII", "UNOB"},
        {"UNOC", "ISO-8859-1", "UNOC"}, {"UNOD", "ISO-8859-2", "UNOD"},
        {"UNOE", "ISO-8859-5", "UNOE"}, {"UNOF", "ISO-8859-7", "UNOF"},
        {"UNOG", "ISO-8859-3", "UNOG"}, {"UNOH", "ISO-8859-4", "UNOH"},
        {"UNOI", "ISO-8859-6", "UNOI"}, {"UNOJ", "ISO-8859-8", "UNOJ"},
        {"UNOK", "ISO-8859-9", "UNOK"}, {"UNOL", "ISO-8859-15", "UNOL"},
        {"UNOW", "UTF-8", "UNOY"},      {"iatb", "US-ASCII", "UNOB"},
    };
    for (auto &r : rows) {
        EXPECT_STREQ(edi::charsetname(edi::charsetofsyntax(r[0])), r[1]);
        EXPECT_STREQ(edi::syntaxidof(edi::charsetnamed(r[1])), r[2]);
    }
    EXPECT_EQ(edi::charsetnamed("utf8"), Charset::utf8);
    EXPECT_EQ(edi::charsetnamed("ISO-8859-10"), Charset::unknown);
    EXPECT_EQ(edi::syntaxproblem("UNOC"), "");
    EXPECT_EQ(edi::syntaxproblem("UNOQ"), "unknown syntax identifier 'UNOQ'");
    EXPECT_EQ(edi::syntaxproblem("U\nO"), "unknown syntax identifier 'U?O'");
    EXPECT_NE(edi::syntaxproblem("UNOX").find("ISO 2022"), std::string::npos);
}

}  // namespace
