// Character sets through edi.h: text decoded and encoded by a syntax
// identifier or a set name, the names, and detection.  (The validation of
// characters is the golden case validate-fail-characters-outside-declared-set.)
#include <gtest/gtest.h>

#include <string>

#include "edi.h"

namespace {

// The result of edi_text_decode or edi_text_encode as a string, freed;
// `len` is read after the call has set it.
std::string taken(char *p, const size_t &len)
{
    std::string s = p != nullptr ? std::string(p, len) : "(null)";
    edi_free(p);
    return s;
}

TEST(Charsets, CallsBySyntaxIdOrSetName)
{
    size_t len = 0, bad = 99;
    EXPECT_EQ(taken(edi_text_decode("\xB0\xFF", 2, "UNOE", &len), len), "\xD0\x90\xD1\x9F");
    EXPECT_EQ(taken(edi_text_decode("\xB0\xFF", 2, "iso_8859-5", &len), len), "\xD0\x90\xD1\x9F");
    EXPECT_EQ(taken(edi_text_decode("\xE9", 1, nullptr, &len), len), "\xC3\xA9");
    EXPECT_EQ(taken(edi_text_decode("a\0b", 3, "UNOA", &len), len), std::string("a\0b", 3));
    EXPECT_EQ(taken(edi_text_decode("x", 1, "UNOX", &len), len), "(null)");
    EXPECT_EQ(taken(edi_text_decode(nullptr, 3, "UNOC", &len), len), "(null)");
    EXPECT_EQ(taken(edi_text_encode("\xD0\x90\xCE\xA9!", 5, "UNOE", &len, &bad), len), "\xB0?!");
    EXPECT_EQ(bad, 1u);
    EXPECT_EQ(taken(edi_text_encode("\xC3\xA9", 2, "UTF-8", &len, &bad), len), "\xC3\xA9");
    EXPECT_EQ(bad, 0u);
    EXPECT_EQ(taken(edi_text_encode("a", 1, "EBCDIC", &len, &bad), len), "(null)");

    EXPECT_STREQ(edi_charset_name("UNOW"), "UTF-8");
    EXPECT_EQ(edi_charset_name("UNOQ"), nullptr);
    EXPECT_EQ(edi_charset_name(nullptr), nullptr);
    EXPECT_STREQ(edi_charset_syntax_id("ISO-8859-15"), "UNOL");
    EXPECT_EQ(edi_charset_syntax_id("KOI8-R"), nullptr);
    EXPECT_STREQ(edi_charset_detect("M\xC3\xBC", 3, "UNOC"), "UTF-8");
    EXPECT_STREQ(edi_charset_detect("M\xFC", 2, "UNOC"), "ISO-8859-1");
    EXPECT_EQ(edi_charset_detect("x", 1, "UNOQ"), nullptr);
}

}  // namespace
