// The passes that give a written interchange the partner's envelope: the
// service characters rewritten with release characters moved, values with
// separators of either set kept, UNB dates by syntax version, and the
// bytes above 127 carried past the module's writer.
#include <gtest/gtest.h>

#include "text/envelopeout.h"
#include "write/highbytes.h"

namespace edi {
namespace {

TEST(Reseparate, RewritesEveryValueForTheNewCharacters)
{
    struct Case {
        const char *text, *una;
        bool keepuna;
        const char *want;
    } cases[] = {
        // Same characters: the text as it is, UNA kept or taken off.
        {"UNA:+.? 'UNB+UNOA:3+A+B'", ":+.? '", true, "UNA:+.? 'UNB+UNOA:3+A+B'"},
        {"UNA:+.? 'UNB+UNOA:3+A+B'", ":+.? '", false, "UNB+UNOA:3+A+B'"},
        // A '|' in a value needs a release character once '|' separates.
        {"UNA:+.? 'FTX+A|B:C?+D'", ":|.? '", true, "UNA:|.? 'FTX|A?|B:C+D'"},
        // Another release character and terminator.
        {"UNA:+.? 'FTX+A?'B'", ":+.! \n", true, "UNA:+.! \nFTX+A'B\n"},
        // Repetitions keep their own separator.
        {"UNA:+.?*'ATT+2++M*M'", ":+.?^'", true, "UNA:+.?^'ATT+2++M^M'"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(reseparate(c.text, c.una, c.keepuna), c.want) << c.text;
}

TEST(SetEnvelope, ReplacesTheHeaderAndFramesGroups)
{
    OutEnvelope env;
    env.unb = {{"UNOC", "3"}, {"ME", "ZZ"}, {"YOU"}, {"231114", "2213"}, {"R+1"}};
    env.groups.push_back(OutEnvelope::Group{1, 1, {{"G"}, {"ME"}, {"YOU"}, {}, {"GR"}}});
    std::string text = "UNA:+.? 'UNB+UNOB:2+X:14+Y:14+700101:0000+1'"
                       "UNH+1+A'UNT+2+1'UNH+2+A'UNT+2+2'UNZ+2+1'";
    EXPECT_EQ(setenvelope(text, env),
              "UNA:+.? 'UNB+UNOC:3+ME:ZZ+YOU+231114:2213+R?+1'"
              "UNH+1+A'UNT+2+1'UNG+G+ME+YOU++GR'UNH+2+A'UNT+2+2'UNE+1+GR'UNZ+2+1'");
}

TEST(UnbDate, FollowsTheSyntaxVersion)
{
    EXPECT_EQ(unbdate(1700000000, 3), (std::vector<std::string>{"231114", "2213"}));
    EXPECT_EQ(unbdate(1700000000, 4), (std::vector<std::string>{"20231114", "2213"}));
}

TEST(HighBytes, RestoreTurnsMarkersBackAndLeavesOtherText)
{
    struct Case {
        const char *in, *want;
    } cases[] = {
        {"MUNCI#C3#8B", "MUNCI\xC3\x8B"},
        {"A##B", "A#B"},
        {"#ZZ #4", "#ZZ #4"},  // no marker: as it stands
        {"#", "#"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(HighBytes::restore(c.in), c.want) << c.in;
}

}  // namespace
}  // namespace edi
