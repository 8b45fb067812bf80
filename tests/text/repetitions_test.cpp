// Repetitions of syntax version 4: the separator an interchange declares,
// the places a configuration gives, the working copy split onto them and
// the writer's output joined again; segment tags that are no tags.
#include <gtest/gtest.h>

#include <memory>

#include "testsupport.h"
#include "text/repetitions.h"
#include "text/segmenttags.h"

namespace {

using Tree = std::unique_ptr<datatree_t, void (*)(datatree_t *)>;

Tree parsed(const std::string &text)
{
    return Tree(testsupport::parse(text), freedatatree);
}

TEST(Repetitions, SeparatorFromUnaOrSyntaxVersion)
{
    struct Case {
        const char *una, *unb;
        char sep;
    } cases[] = {
        {"", "UNB+UNOA:4+S+R+041013:1901+16'", '*'},
        {"", "UNB+UNOA:3+S+R+041013:1901+16'", 0},
        {"", "UNB+UNOA:10+S+R'", '*'},
        {"", "UNB+UNOA+S+R'", 0},                     // no version
        {"UNA:+.?*'", "UNB+UNOC:4+S+R'", '*'},
        {"UNA:+.? '", "UNB+UNOC:4+S+R'", 0},          // a blank declares none
        {"UNA:+.\\*'", "UNB+IATA:1+S+R'", '*'},       // declared, whatever the version
        {"UNA:+.?#'", "UNB+UNOC:4+S+R'", '#'},
        {"UNA:+.?+'", "UNB+UNOC:4+S+R'", 0},          // one of the other separators
        {"UNA=*.? ~", "UNB=UNOC*4=S=R~", 0},
    };
    for (const Case &c : cases)
        EXPECT_EQ(edi::repetitionseparator(c.una, c.unb), c.sep) << c.una << c.unb;
}

// ATT with five places for C956, ALI with five 4183 of their own and CUX
// with two C504: the generator's names for both.
const char *config = "edi\n"
                     "  *MSG\n"
                     "    $ATT iseditag=1\n"
                     "      9017\n      C955\n        9021\n"
                     "      C956\n        9019\n        1131\n"
                     "      C956_2\n        9019\n        1131\n"
                     "      C956_3\n        9019\n        1131\n"
                     "      C956_4\n        9019\n        1131\n"
                     "      C956_5\n        9019\n        1131\n"
                     "    $ALI iseditag=1\n"
                     "      3239\n      9213\n      4183\n      4183_2\n      4183_3\n"
                     "    $CUX iseditag=1\n"
                     "      C504\n        6347\n      C504_2\n        6347\n      5402\n";

std::string places(const edi::RepetitionLayout &l, const std::string &tag)
{
    std::string out;
    for (const edi::ElementPlaces &p : l.at(tag))
        out += (out.empty() ? "" : " ") + p.name + "x" + std::to_string(p.places);
    return out;
}

TEST(Repetitions, LayoutFromRunsConfirmedByTheDirectory)
{
    Tree cf = parsed(config);
    edi::RepetitionLayout l = edi::repetitionlayout(cf.get());
    EXPECT_EQ(places(l, "ATT"), "9017x1 C955x1 C956x5");
    EXPECT_EQ(places(l, "ALI"), "3239x1 9213x1 4183x3");
    // The directory has C956 five times, 4183 and C504 once each.
    edi::confirmrepetitions(l, {{"ATT", {1, 1, 5}}, {"ALI", {1, 1, 1, 1, 1}}, {"CUX", {1, 1, 1}}});
    EXPECT_EQ(places(l, "ATT"), "9017x1 C955x1 C956x5");
    EXPECT_EQ(places(l, "ALI"), "3239x1 9213x1 4183x1 4183_2x1 4183_3x1");
    EXPECT_EQ(places(l, "CUX"), "C504x1 C504_2x1 5402x1");

    // Two tag nodes that disagree: no repeated element for that tag.
    Tree two = parsed("edi\n  *MSG\n    $ATT iseditag=1\n      9017\n      C956\n"
                                 "      C956_2\n    $ATT iseditag=1\n      9017\n      C956\n"
                                 "      C956_2\n      C956_3\n");
    EXPECT_EQ(places(edi::repetitionlayout(two.get()), "ATT"), "9017x1 C956x1 C956_2x1 C956_3x1");
}

TEST(Repetitions, WorkingCopySplitOntoThePlaces)
{
    Tree cf = parsed(config);
    edi::RepetitionLayout l = edi::repetitionlayout(cf.get());
    edi::confirmrepetitions(l, {{"ALI", {1, 1, 1, 1, 1}}});
    const std::string v4 = "UNB+UNOA:4+S+R+1'UNH+1+PAXLST:D:03B:UN'";
    struct Case {
        const char *in, *out;
        size_t split, segments, toomany;
    } cases[] = {
        {"ATT+2++M*M*M*M*M'", "ATT+2++M+M+M+M+M'", 1, 1, 0},
        {"ATT+2++M*F+X'", "ATT+2++M+F++++X'", 1, 1, 0},            // places kept for X
        {"ATT+2++M+X'", "ATT+2++M+++++X'", 0, 1, 0},               // one repetition, no separator
        {"ATT+2++M'", "ATT+2++M'", 0, 0, 0},                       // nothing behind: as it is
        {"ATT+2++M**F'", "ATT+2++M++F'", 1, 1, 0},                 // an empty repetition keeps its place
        {"ATT+2++M?*F'", "ATT+2++M?*F'", 0, 0, 0},                 // released: a value
        {"ATT+2++M?" "?*F'", "ATT+2++M?" "?+F'", 1, 1, 0},         // a released release character
        {"ATT+2++A:1*B:2'", "ATT+2++A:1+B:2'", 1, 1, 0},           // composites keep components
        {"ATT+2++1*2*3*4*5*6*7'", "ATT+2++1+2+3+4+5'", 1, 1, 1},   // two more than places
        {"ALI+DE+1+a*b'", "ALI+DE+1+a'", 1, 1, 1},                 // 4183 does not repeat
        {"XYZ+a*b'", "XYZ+a*b'", 0, 0, 0},                         // no layout for the tag
    };
    for (const Case &c : cases) {
        edi::RepetitionSplit notes;
        std::string out = edi::splitrepetitions(v4 + c.in, l, notes);
        EXPECT_EQ(out, v4 + c.out) << c.in;
        EXPECT_EQ(notes.split, c.split) << c.in;
        EXPECT_EQ(notes.segments, c.segments) << c.in;
        EXPECT_EQ(notes.toomany.size(), c.toomany) << c.in;
    }
    // Where it is: message, segment, element and the counts.
    edi::RepetitionSplit notes;
    edi::splitrepetitions(v4 + "BGM+1'ATT+2++1*2*3*4*5*6*7'", l, notes);
    ASSERT_EQ(notes.toomany.size(), 1u);
    const edi::TooManyRepetitions &t = notes.toomany[0];
    EXPECT_EQ(t.message, 1);
    EXPECT_EQ(t.position, 3u);
    EXPECT_EQ(t.tag, "ATT");
    EXPECT_EQ(t.element, 3u);
    EXPECT_EQ(t.name, "C956");
    EXPECT_EQ(t.found, 7u);
    EXPECT_EQ(t.places, 5u);

    // Syntax version 3: '*' is text; a separator of the UNA's own.
    for (const char *same : {"UNB+UNOA:3+S+R+1'UNH+1+X:D:03B:UN'ATT+2++M*M'",
                             "UNA:+.? 'UNB+UNOA:4+S+R+1'UNH+1+X'ATT+2++M*M'"}) {
        EXPECT_EQ(edi::splitrepetitions(same, l, notes), same);
        EXPECT_EQ(notes.separator, 0);
    }
    EXPECT_EQ(edi::splitrepetitions("UNA:+.?#'UNB+UNOA:3+S'UNH+1+X'ATT+2++M#M*F'", l, notes),
              "UNA:+.?#'UNB+UNOA:3+S'UNH+1+X'ATT+2++M+M*F'");
}

TEST(Repetitions, WriterOutputJoinedInSyntaxVersion4)
{
    Tree cf = parsed(config);
    edi::RepetitionLayout l = edi::repetitionlayout(cf.get());
    edi::confirmrepetitions(l, {{"ALI", {1, 1, 1, 1, 1}}});
    struct Case {
        const char *in, *out;
        size_t joined;
    } cases[] = {
        {"UNA:+.? 'UNB+UNOA:4+S+R'ATT+2++M+M+M+M+M'", "UNA:+.?*'UNB+UNOA:4+S+R'ATT+2++M*M*M*M*M'", 1},
        {"UNB+UNOA:4+S+R'ATT+2++M+F+++'", "UNB+UNOA:4+S+R'ATT+2++M*F'", 1},       // trailing ones go
        {"UNB+UNOA:4+S+R'ATT+2++M++F'", "UNB+UNOA:4+S+R'ATT+2++M**F'", 1},        // inner ones stay
        {"UNB+UNOA:4+S+R'ATT+2++M'", "UNB+UNOA:4+S+R'ATT+2++M'", 0},
        {"UNB+UNOA:4+S+R'ATT+2++A:1:+B::'", "UNB+UNOA:4+S+R'ATT+2++A:1*B'", 1},
        {"UNB+UNOA:4+S+R'ATT+2++a*b'", "UNB+UNOA:4+S+R'ATT+2++a?*b'", 0},         // a value's '*'
        {"UNB+UNOA:4+S+R'ALI+DE+1+a+b'", "UNB+UNOA:4+S+R'ALI+DE+1+a+b'", 0},      // not repeated
        {"UNA:+.?#'UNB+UNOA:4+S'ATT+2++M+F'", "UNA:+.?#'UNB+UNOA:4+S'ATT+2++M#F'", 1},
        {"UNA:+.? 'UNB+UNOB:2+S+R'ATT+2++M+M+a*b'", "UNA:+.? 'UNB+UNOB:2+S+R'ATT+2++M+M+a*b'", 0},
    };
    for (const Case &c : cases) {
        size_t n = 99;
        EXPECT_EQ(edi::joinrepetitions(c.in, l, n), c.out) << c.in;
        EXPECT_EQ(n, c.joined) << c.in;
    }
}

TEST(SegmentTags, TagsThatAreNoTagsAreTakenOut)
{
    struct Case {
        const char *in, *out, *bad;
    } cases[] = {
        {"UNB+X'UNH+1'BBBB+f1+f2'UNT+3+1'", "UNB+X'UNH+1'UNT+3+1'", "BBBB"},
        {"UNB+X'UNH+1'AB+f1'UNT+3+1'", "UNB+X'UNH+1'UNT+3+1'", "AB"},
        {"UNB+X'UNH+1'B-M+1'UNT+3+1'", "UNB+X'UNH+1'UNT+3+1'", "B-M"},
        {"UNB+X'UNH+1'BGM+1'UNS'U2S:1+2'ftx+a''UNT+3+1'", "UNB+X'UNH+1'BGM+1'UNS'U2S:1+2'ftx+a''UNT+3+1'", ""},
        {"GARBAGE UNB+X'", "GARBAGE UNB+X'", ""},  // no message: the module's to refuse
    };
    for (const Case &c : cases) {
        std::vector<edi::BadTag> bad;
        EXPECT_EQ(edi::withoutbadtags(c.in, bad), c.out) << c.in;
        EXPECT_EQ(bad.empty() ? "" : bad[0].tag, c.bad) << c.in;
    }
    std::vector<edi::BadTag> bad;
    edi::withoutbadtags("UNA:+.? 'UNB+X'UNH+1'BGM'UNT+3+1'UNH+2'DTM'BBBB+1'UNT+3+2'UNZ+2'", bad);
    ASSERT_EQ(bad.size(), 1u);
    EXPECT_EQ(bad[0].message, 2);
    EXPECT_EQ(bad[0].position, 3u);
}

}  // namespace
