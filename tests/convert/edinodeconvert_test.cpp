// Output conversion: the character stage (release characters, charsetB,
// high-bit bytes) and the format stage of every value type.
#include <gtest/gtest.h>

#include <string>

#include "convert/convert.h"
#include "testsupport.h"

using namespace testsupport;
using ediprot::edinodeconvert;

namespace {

// A configuration node with the given type and lengths.
struct ConfNode {
    ConfNode(editype_t type, int edilen, int edimaxlen) : tp(node("E"))
    {
        tp->editype = type;
        tp->edilen = edilen;
        tp->edimaxlen = edimaxlen;
    }
    ~ConfNode() { freedatatree(tp); }
    std::string convert(const char *value)
    {
        std::string copy = value != nullptr ? value : "";
        return edinodeconvert(tp, value != nullptr ? copy.data() : nullptr);
    }
    datatree_t *tp;
};

struct Example {
    editype_t type;
    int edilen;
    int edimaxlen;
    const char *value;
    const char *expected;
};

TEST(Edinodeconvert, GivesEachTypeItsFileForm)
{
    const Example cases[] = {
        {et_string, 0, 5, "ABCDEFG", "ABCDE"},
        {et_string, 0, 5, "AB", "AB"},
        {et_string, 5, 0, "AB", "AB   "},
        {et_string, 5, 3, "ABCDEFG", "ABC"},
        {et_string, 0, 0, "ABC", ""},
        {et_string, 0, 10, "A+B", "A?+B"},
        {et_string, 0, 10, "100% ab@c", "100% ab c"},
        {et_none, 0, 10, "x'y:z?", "x?'y?:z??"},
        {et_time, 4, 0, "1405", "1405"},
        {et_float, 0, 2, "1234.50", "1234.50"},
        {et_float0, 6, 0, "123", "000123"},
        {et_float0, 6, 0, "12.5", "0012.5"},
        {et_date, 0, 0, "2007-11-23", "20071123"},
        {et_date, 0, 0, "2007-11-3", "2007113"},
        {et_date, 0, 0, "20071123", "2007"},
        {et_date, 0, 0, "2007--11---23-99", "20071123"},
        {et_sdate, 0, 0, "23.11.2007", "071123"},
        {et_sdate, 0, 0, "1.2.2007", "072"},
        {et_sdate, 0, 0, "23.11.07", ""},
        {et_sdate, 0, 0, "01.01.1970", "700101"},
        {et_sdate, 0, 0, "23.11.1999", "991123"},
        {et_sdate, 0, 0, "23.11", ""},
    };
    for (const Example &c : cases) {
        ConfNode cn(c.type, c.edilen, c.edimaxlen);
        EXPECT_EQ(cn.convert(c.value), c.expected)
            << "type " << c.type << " value " << c.value;
    }
}

TEST(Edinodeconvert, TreatsAnEmptyOrVanishingValueByType)
{
    const Example cases[] = {
        {et_float, 5, 0, "", ""},
        {et_date, 0, 0, "", ""},
        {et_sdate, 0, 0, "", ""},
        {et_float0, 4, 0, "", "0000"},
        {et_string, 3, 0, "", "   "},
        {et_string, 3, 2, "", ""},
        {et_string, 3, 0, "\xC4\xD6", "   "},
        {et_float0, 3, 0, "\xE9", "000"},
    };
    for (const Example &c : cases) {
        ConfNode cn(c.type, c.edilen, c.edimaxlen);
        EXPECT_EQ(cn.convert(c.value), c.expected) << "type " << c.type;
    }
}

TEST(Edinodeconvert, DropsHighBitBytesAndBlanksCharactersOutsideTheTable)
{
    ConfNode cn(et_string, 0, 40);
    EXPECT_EQ(cn.convert("M\xC3\xBCller$[x]\t~"), "Mller  x   ");
}

TEST(Edinodeconvert, ReleasesTheSeparatorsInForceBeforeTheTable)
{
    // A separator outside the table is released and stays itself.
    char saved = dst_sep;
    dst_sep = '@';
    ConfNode cn(et_string, 0, 20);
    std::string result = cn.convert("a@b+c");
    dst_sep = saved;
    EXPECT_EQ(result, "a?@b+c");
}

TEST(Edinodeconvert, CharsetTablesFollowTheCharacterRules)
{
    for (int c = 0; c < 128; c++) {
        bool blank = c < 0x20 || c == '$' || c == '@' || (c >= 0x5B && c <= 0x60) || c >= 0x7B;
        char b = blank ? ' ' : static_cast<char>(c);
        char a = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : b;
        EXPECT_EQ(charsetB[c], b) << "code " << c;
        EXPECT_EQ(charsetA[c], a) << "code " << c;
    }
    EXPECT_EQ(charsetA[128], '\0');
    EXPECT_EQ(charsetB[128], '\0');
}

// A cut that would separate a release character from what it releases
// drops the release character: "A?" would release the next separator.
TEST(Edinodeconvert, NeverEndsACutValueInADanglingReleaseCharacter)
{
    const Example cases[] = {
        {et_string, 0, 2, "A+B", "A"},
        {et_string, 0, 3, "A+B", "A?+"},
        {et_string, 0, 1, "?", ""},
        {et_string, 0, 3, "A??", "A??"},
        {et_string, 2, 0, "A+B", "A "},
        {et_string, 4, 0, "AB:C", "AB?:"},
        {et_string, 3, 0, "AB:C", "AB "},
    };
    for (const Example &c : cases) {
        ConfNode cn(c.type, c.edilen, c.edimaxlen);
        EXPECT_EQ(cn.convert(c.value), c.expected)
            << "edilen " << c.edilen << " edimaxlen " << c.edimaxlen << " " << c.value;
    }
}

TEST(Edinodeconvert, WritesAFloat0WiderThanItsFieldWhole)
{
    ConfNode cn(et_float0, 3, 0);
    EXPECT_EQ(cn.convert("123456"), "123456");
    ConfNode none(et_float0, 0, 0);
    EXPECT_EQ(none.convert("42"), "42");
}

}  // namespace
