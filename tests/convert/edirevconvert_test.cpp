// Input value conversion: release characters leave the value; dates and
// zero-filled numbers take their tree form.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "convert/convert.h"
#include "state.h"
#include "testsupport.h"

namespace {

using ediprot::edirevconvert;

std::string convert(int type, const std::string &text)
{
    datatree_t ep{};
    ep.xmltag = const_cast<char *>("3035");
    // Any int may stand in the field; set it as the host would, bytewise.
    memcpy(&ep.editype, &type, sizeof type);
    std::string work = text;
    return edirevconvert(&ep, reinterpret_cast<unsigned char *>(work.data()));
}

struct ConvCase {
    int type;
    const char *in;
    const char *out;
};

TEST(Edirevconvert, ConvertsEachTypeToItsTreeForm)
{
    const ConvCase cases[] = {
        {et_sdate, "071123", "23.11.2007"},
        {et_sdate, "000000", "01.01.2000"},
        {et_sdate, "991200", "01.11.2099"},
        {et_sdate, "200700", "01.01.2020"},
        {et_float0, "000123", "123"},
        {et_float0, "00012.50", "12"},
        {et_float0, "12A", "12"},
        {et_date, "20071123", "2007-11-23"},
        {et_date, "2007112345", "2007-11-23"},
        {et_date, "200711", "2007-11-  "},
        {et_string, "A?+B?:X", "A+B:X"},
        {et_string, "A??B", "A?B"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(convert(c.type, c.in), c.out) << c.type << " " << c.in;
}

TEST(Edirevconvert, HandlesEmptyAndDegenerateTexts)
{
    const ConvCase cases[] = {
        {et_none, "", ""},
        {et_string, "", ""},
        {et_float, "", ""},
        {et_time, "", ""},
        {et_float0, "", ""},
        {et_date, "", "    -  -  "},
        {et_float0, "0000", ""},
        {et_float0, "00.50", ""},
        {et_float0, "0 12", ""},
        {et_float0, "0A1", ""},
        {et_float0, "01?2", "1"},
        {et_sdate, " garbage", "01.01.1970"},
        {et_sdate, " ", "01.01.1970"},
        // Fewer than six characters hold no date: the empty text.
        {et_sdate, "", ""},
        {et_sdate, "0711", ""},
        {et_sdate, "07110", ""},
        // A date already in tree form is taken over as it stands.
        {et_date, "2007-11-23", "2007-11-23"},
        {et_date, "2007-1", "2007-1"},
        {et_date, "20071123-5", "2007-11-23"},
        // The decimal mark stays what it is; other types are copied.
        {et_float, "12,50", "12,50"},
        {et_time, "1?'2", "1'2"},
        {42, "A?", "A"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(convert(c.type, c.in), c.out) << c.type << " <" << c.in << ">";
}

TEST(Edirevconvert, FollowsTheReleaseCharacterInForce)
{
    escape = '#';
    EXPECT_EQ(convert(et_string, "A#+B?C##"), "A+B?C#");
    EXPECT_EQ(convert(et_string, "AB#"), "AB");
    escape = '?';
}

TEST(Edirevconvert, CutsValueLongerThanItsBuffer)
{
    std::string big(ediprot::kTextMax + 100, 'x');
    std::string got = convert(et_string, big);
    EXPECT_EQ(got.size(), static_cast<size_t>(ediprot::kTextMax - 1));
    std::string zeros(ediprot::kTextMax + 100, '0');
    zeros += "7";
    EXPECT_EQ(convert(et_float0, zeros), "7");
}

}  // namespace
