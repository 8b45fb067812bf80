// The envelope level of libedi's text layer: working copies of an
// interchange, counts and references corrected, composites padded, and the
// envelope's values as the partner sent them.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <memory>
#include <string>
#include <vector>

#include "testsupport.h"
#include "text/compositepad.h"
#include "text/countfix.h"
#include "text/envelope.h"
#include "text/envelopevalues.h"
#include "directory/filelayout.h"

namespace {

using Lines = std::vector<std::string>;

const std::string ORD = "UNH+1+ORDERS:D:96A:UN'UNT+2+1'";
const std::string UNB7 = "UNB+UNOC:3+S:1+R:1+d:t+7'";

struct EnvelopeRow {
    const char *name;
    std::string in;
    Lines units;  // describeunit " | " text, one per working copy
    Lines changes, faults;
    int messages;
};

TEST(Envelope, WorkingCopiesAndNotes)
{
    const std::string ic1 = "UNA:+.? 'UNB+UNOC:3+S:1+R:1+d:t+1'" + ORD + "UNZ+1+1'";
    const std::string ic2 = "UNA|*.? !UNB*UNOC|3*S|1*R|1*d|t*2!UNH*1*ORDERS|D|96A|UN!UNT*2*1!"
                            "UNZ*1*2!";
    const std::string des = "UNH+3+DESADV:D:96A:UN'UNT+2+3'";
    const std::string ord2 = "UNH+2+ORDERS:D:96A:UN'UNT+2+2'";
    const EnvelopeRow rows[] = {
        {"no UNB: the text whole", ORD, {"interchange 1 | " + ORD}, {}, {}, 0},
        {"sender without qualifier", "UNB+UNOC:3+SENDER+RECV:14+d:t+7'" + ORD + "UNZ+1+7'",
         {"interchange 1, message 1 (ORDERS:D:96A:UN) | UNB+UNOC:3+SENDER:+RECV:14+d:t+7'" +
          ORD + "UNZ+1+7'"},
         {"UNB sender SENDER has no qualifier: read with an empty one"}, {}, 1},
        {"released component separator is no qualifier",
         "UNA:+.? 'UNB+UNOC:3+S?:X+R+d:t+7'UNZ+0+7'",
         {"interchange 1 | UNA:+.? 'UNB+UNOC:3+S?:X:+R:+d:t+7'UNZ+0+7'"},
         {"UNB sender S?:X has no qualifier: read with an empty one",
          "UNB recipient R has no qualifier: read with an empty one"}, {}, 0},
        {"group segments taken out and noted",
         UNB7 + "UNG+ORDERS+S+R+d:t+G1'" + ORD + "UNE+1+G2'UNZ+1+7'",
         {"interchange 1, message 1 (ORDERS:D:96A:UN) | " + UNB7 + ORD + "UNZ+1+7'"},
         {"group segment taken out: UNG+ORDERS+S+R+d:t+G1'",
          "group segment taken out: UNE+1+G2'",
          "interchange 1: the group trailer UNE names the group reference 'G2', its UNG 'G1'"},
         {}, 1},
        {"group without reference", UNB7 + "UNG+ORDERS+S+R+d:t'" + ORD + "UNZ+1+7'",
         {"interchange 1, message 1 (ORDERS:D:96A:UN) | " + UNB7 + ORD + "UNZ+1+7'"},
         {"group segment taken out: UNG+ORDERS+S+R+d:t'"},
         {"interchange 1: the group header UNG has no group reference (element 5)"}, 1},
        {"interchanges each with its own UNA", ic1 + ic2,
         {"interchange 1, message 1 (ORDERS:D:96A:UN) | " + ic1,
          "interchange 2, message 2 (ORDERS:D:96A:UN) | " + ic2},
         {"2 interchanges: each read on its own"}, {}, 2},
        {"runs of one type", UNB7 + ORD + ord2 + des + "UNZ+3+7'",
         {"interchange 1, messages 1 to 2 (ORDERS:D:96A:UN) | " + UNB7 + ORD + ord2 + "UNZ+3+7'",
          "interchange 1, message 3 (DESADV:D:96A:UN) | " + UNB7 + des + "UNZ+3+7'"},
         {"messages of different types: each run of one type read with its own configuration"},
         {}, 3},
        {"broken envelope", UNB7 + ORD + "UNB+UNOC:3+S:1+R:1+d:t+8'UNZ+0+9'FTX+x'",
         {"interchange 1, message 1 (ORDERS:D:96A:UN) | " + UNB7 + ORD},
         {"interchange 2: the trailer UNZ names the control reference '9', the header UNB '8'",
          "interchange 2 holds no message: passed over", "2 interchanges: each read on its own"},
         {"interchange 1: no trailer UNZ before the next UNB; the interchange is incomplete",
          "interchange 2: 'FTX+x'' stands behind the trailer UNZ; remove it"}, 1},
        {"released terminator, no UNZ", UNB7 + "UNH+1+ORDERS:D:96A:UN'FTX+a?'b'UNT+3+1'",
         {"interchange 1, message 1 (ORDERS:D:96A:UN) | " + UNB7 +
          "UNH+1+ORDERS:D:96A:UN'FTX+a?'b'UNT+3+1'"},
         {"interchange 1: no trailer UNZ at the end of the file"}, {}, 1},
    };
    for (const EnvelopeRow &r : rows) {
        SCOPED_TRACE(r.name);
        edi::EnvelopeNotes notes;
        Lines units;
        for (const edi::Unit &u : edi::prepareenvelope(r.in, notes))
            units.push_back(edi::describeunit(u) + " | " + u.text);
        EXPECT_EQ(units, r.units);
        EXPECT_EQ(notes.changes, r.changes);
        EXPECT_EQ(notes.faults, r.faults);
        EXPECT_EQ(notes.messages, r.messages);
    }
}

// Copies whose messages stay in place in the input are put together, and
// cut into one copy per message, exactly as copies cut from their text.
TEST(Envelope, MessagesInPlaceGiveTheCopiesOfTheirText)
{
    const std::string ord2 = "UNH+2+ORDERS:D:96A:UN'UNT+2+2'";
    const std::string ung = "UNG+ORDERS+S+R+d:t+G1'";
    const struct {
        const char *name;
        std::string in;
    } rows[] = {
        {"plain", UNB7 + ORD + ord2 + "UNZ+2+7'"},
        {"groups", "UNA:+.? '" + UNB7 + ung + ORD + ord2 + "UNE+2+G1'UNG+ORDERS+S+R+d:t+G2'" +
                       ORD + "UNE+1+G2'UNZ+3+7'"},
        {"a segment between UNT and the next UNH", UNB7 + ORD + "FTX+x'" + ord2 + "UNZ+2+7'"},
        {"a segment behind a group's UNE", UNB7 + ung + ORD + "UNE+1+G1'FTX+x'" + ord2 +
                                              "UNZ+2+7'"},
        {"a segment in front of the first UNH", UNB7 + "FTX+x'" + ORD + ord2 + "UNZ+2+7'"},
        {"a message without UNT", UNB7 + "UNH+1+ORDERS:D:96A:UN'BGM+x'" + ord2 + "UNZ+2+7'"},
        {"the last message without UNT", UNB7 + ORD + "UNH+2+ORDERS:D:96A:UN'BGM+x'UNZ+2+7'"},
        {"two UNT in one message", UNB7 + "UNH+1+ORDERS:D:96A:UN'UNT+2+1'UNT+2+1'" + ord2 +
                                      "UNZ+2+7'"},
        {"no UNZ", UNB7 + ORD + ord2},
        {"one message", UNB7 + ORD + "UNZ+1+7'"},
        {"own service characters, two types",
         "UNA|*.? !UNB*UNOC|3*S|1*R|1*d|t*2!UNH*1*ORDERS|D|96A|UN!UNT*2*1!UNH*2*ORDERS|D|96A|UN!"
         "UNT*2*2!UNH*3*DESADV|D|96A|UN!UNT*2*3!UNZ*3*2!"},
    };
    auto same = [](const edi::Unit &a, const edi::Unit &b) {
        EXPECT_EQ(edi::unittext(a), edi::unittext(b));
        EXPECT_EQ(edi::describeunit(a), edi::describeunit(b));
        EXPECT_EQ(a.groups, b.groups);
        EXPECT_EQ(a.groupends, b.groupends);
        EXPECT_EQ(a.unz, b.unz);
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.name);
        edi::EnvelopeNotes n1, n2;
        std::vector<edi::Unit> copied = edi::prepareenvelope(r.in, n1);
        std::vector<edi::Unit> inplace =
            edi::prepareenvelope(std::make_shared<const std::string>(r.in), n2);
        ASSERT_EQ(copied.size(), inplace.size());
        EXPECT_EQ(n1.changes, n2.changes);
        for (size_t i = 0; i < copied.size(); i++) {
            EXPECT_EQ(copied[i].source, nullptr);
            same(copied[i], inplace[i]);
            std::vector<edi::Unit> a = edi::splitmessages(copied[i]);
            std::vector<edi::Unit> b = edi::splitmessages(inplace[i]);
            ASSERT_EQ(a.size(), b.size());
            for (size_t k = 0; k < a.size(); k++)
                same(a[k], b[k]);
        }
    }
}

TEST(Envelope, KeepsTheEnvelopeAsReceived)
{
    const std::string unb = "UNB+UNOC:3+S+R:1+d:t+7'", ung = "UNG+ORDERS+S+R+d:t+G1'";
    const std::string text = "UNA:+.? '" + unb + ung + ORD + "UNE+1+G1'" +
                             "UNH+2+ORDERS:D:96A:UN'UNT+2+2'UNZ+2+7'";
    edi::EnvelopeNotes notes;
    std::vector<edi::Unit> units = edi::prepareenvelope(text, notes);
    ASSERT_EQ(units.size(), 1u);
    EXPECT_EQ(units[0].una, "UNA:+.? '");
    EXPECT_EQ(units[0].unb, unb);  // without the empty qualifier of the working copy
    EXPECT_EQ(units[0].groups, (Lines{ung, ""}));
    EXPECT_EQ(units[0].msgtype, "ORDERS:D:96A:UN");
    EXPECT_EQ(units[0].firstmsg, 1);
    EXPECT_EQ(units[0].lastmsg, 2);
}

struct CountRow {
    const char *name;
    std::string in, ref, out;
    Lines changes;
};

TEST(Countfix, CorrectsCountsAndReferencesAndNotesEach)
{
    const CountRow rows[] = {
        {"two messages, one wrong",
         "UNA:+.? 'UNB+UNOC:3+S+R+d:t+OLD++APP'UNH+M1+ORDERS:D:96A:UN'BGM+220'UNT+9+X'"
         "UNH+M2+ORDERS:D:96A:UN'UNT+2+M2'UNZ+5+OLD'", "NEW",
         "UNA:+.? 'UNB+UNOC:3+S+R+d:t+NEW++APP'UNH+M1+ORDERS:D:96A:UN'BGM+220'UNT+3+M1'"
         "UNH+M2+ORDERS:D:96A:UN'UNT+2+M2'UNZ+2+NEW'",
         {"UNB element 5: OLD -> NEW", "UNT element 1: 9 -> 3", "UNT element 2: X -> M1",
          "UNZ element 1: 5 -> 2", "UNZ element 2: OLD -> NEW"}},
        {"short UNB, UNH without reference, released terminator",
         "UNB+UNOC:3+S+R'UNH'FTX+a?'b'UNT+5+Z'UNZ+1+R1'", "R1",
         "UNB+UNOC:3+S+R++R1'UNH'FTX+a?'b'UNT+3+Z'UNZ+1+R1'",
         {"UNB element 5:  -> R1", "UNT element 1: 5 -> 3"}},
        {"released release then terminator", "UNH+1'FTX+a?\?'UNT+2+1'", "",
         "UNH+1'FTX+a?\?'UNT+3+1'", {"UNT element 1: 2 -> 3"}},
        {"empty UNT filled", "UNH+1'UNT'", "", "UNH+1'UNT+2+1'",
         {"UNT element 1:  -> 2", "UNT element 2:  -> 1"}},
        {"own service characters, all right",
         "UNA|*.? !UNB*UNOC|3*S*R*d|t*1!UNH*1*X!UNT*2*1!UNZ*1*1!", "1",
         "UNA|*.? !UNB*UNOC|3*S*R*d|t*1!UNH*1*X!UNT*2*1!UNZ*1*1!", {}},
    };
    for (const CountRow &r : rows) {
        SCOPED_TRACE(r.name);
        Lines changes;
        EXPECT_EQ(edi::fixcounts(r.in, r.ref, changes), r.out);
        EXPECT_EQ(changes, r.changes);
    }
}

TEST(Countfix, SetdateWritesUtc)
{
    // Nine hours behind UTC: local time would give another day and hour.
    setenv("TZ", "XXX+9", 1);
    tzset();
    const time_t when = 1706933159;  // 2024-02-03 04:05:59 UTC
    const std::pair<std::string, std::string> rows[] = {
        {"UNB+UNOC:3+S+R+991231:2359+1'UNZ+1+1'", "UNB+UNOC:3+S+R+240203:0405+1'UNZ+1+1'"},
        {"UNA|+.? 'UNB+UNOC|3+S+R+x+1'", "UNA|+.? 'UNB+UNOC|3+S+R+240203|0405+1'"},
        {"UNB+UNOC:3+S+R'", "UNB+UNOC:3+S+R+240203:0405'"},
        {"UNH+1+X:1'UNT+2+1'", "UNH+1+X:1'UNT+2+1'"},
    };
    for (const auto &[in, out] : rows)
        EXPECT_EQ(edi::setdate(in, when), out) << in;
}

TEST(Countfix, JoinsInterchangesUnderTheFirstHeader)
{
    const std::string a = "UNA:+.? 'UNB+x+1'UNH+1'UNT+2+1'UNZ+1+1'";
    const std::string b = "UNA:+.? 'UNB+x+2'UNH+2'UNT+2+2'UNH+3'UNT+2+3'UNZ+2+2'";
    EXPECT_EQ(edi::joininterchanges({a, b}),
              "UNA:+.? 'UNB+x+1'UNH+1'UNT+2+1'UNH+2'UNT+2+2'UNH+3'UNT+2+3'UNZ+1+1'");
    EXPECT_EQ(edi::joininterchanges({a}), a);
    const std::string ref = edi::newreference();
    EXPECT_EQ(ref.size(), 14u);
    EXPECT_EQ(ref.find_first_not_of("0123456789"), std::string::npos) << ref;
}

TEST(Compositepad, PadsOnlyCompositesWithoutComponentSeparator)
{
    // NAD: element 2 and 3 composite; DTM: element 1; LOC: element 2 is
    // composite in one tag node only.
    datatree_t *config = testsupport::parse(
        "edi\n  *MSG\n"
        "    $NAD iseditag=1\n      3035\n      C082\n        3039\n        1131\n"
        "      C080\n        3036\n        3036_2\n"
        "    $DTM iseditag=1\n      C507\n        2005\n        2380\n"
        "    $LOC iseditag=1\n      3227\n      C517\n        3225\n"
        "    *SG9\n      $LOC iseditag=1\n        3227\n        3225\n");
    ASSERT_NE(config, nullptr);
    const struct {
        const char *name;
        std::string in, out;
        size_t count;
    } rows[] = {
        {"simple value on a composite", "NAD+BY+4012345:9+Koenig'", "NAD+BY+4012345:9+Koenig:'", 1},
        {"empty element", "NAD+BY++Koenig'", "NAD+BY+:+Koenig:'", 2},
        {"released component separator kept whole", "NAD+BY+a?:b'", "NAD+BY+a?:b'", 0},
        {"released element separator", "NAD+BY+a?+b'", "NAD+BY+a?+b:'", 1},
        {"released release then separator", "NAD+BY+a?\?+b'", "NAD+BY+a?\?:+b:'", 2},
        {"elements beyond the configuration", "DTM+137+x'", "DTM+137:+x'", 1},
        {"not composite in every tag node", "LOC+5+x'", "LOC+5+x'", 0},
        {"tag not configured", "UNH+1+ORDERS'", "UNH+1+ORDERS'", 0},
        {"own component separator", "UNA|+.? 'NAD+BY+x+y'", "UNA|+.? 'NAD+BY+x|+y|'", 2},
        {"last piece without terminator", "DTM+1", "DTM+1:", 1},
        {"no element separator behind the tag", "NADX+a'NAD'", "NADX+a'NAD'", 0},
        {"between other segments", "UNB+x'DTM+1'NAD+BY+x'UNZ+1'", "UNB+x'DTM+1:'NAD+BY+x:'UNZ+1'",
         2},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.name);
        size_t count = 99;
        EXPECT_EQ(edi::padcomposites(r.in, config, count), r.out);
        EXPECT_EQ(count, r.count);
    }
    size_t count = 99;
    EXPECT_EQ(edi::padcomposites("DTM+1'", nullptr, count), "DTM+1'");
    EXPECT_EQ(count, 0u);
    freedatatree(config);
}

// Every field on one line: service characters, then UNB and UNG values.
std::string render(const edi::EnvelopeValues &v)
{
    std::string s = (v.una ? "una " : "") + std::string{v.cmp, v.dst, v.dec, v.rel, v.rep, v.seg};
    s += " id=" + v.syntaxid + ":" + v.syntaxversion + " from=" + v.sender + ":" + v.senderqual +
         " to=" + v.recipient + ":" + v.recipientqual + " at=" + v.date + ":" + v.time +
         " ref=" + v.controlref + " app=" + v.applicationref + " test=" + v.testindicator;
    if (v.ung)
        s += " ung=" + v.groupid + ":" + v.groupsender + ":" + v.grouprecipient + ":" + v.groupref;
    return s;
}

TEST(EnvelopeValues, FieldsAsTheSenderMeantThem)
{
    const struct {
        const char *name;
        std::string una, unb, ung, want;
    } rows[] = {
        {"version 4 without UNA", "",
         "UNB+UNOC:4+SEND?+ER:14+RECV:ZZ+240131:0915+REF1++APPREF++++1'", "",
         ":+.?*' id=UNOC:4 from=SEND+ER:14 to=RECV:ZZ at=240131:0915 ref=REF1 app=APPREF test=1"},
        {"version 3 without UNA", "", "UNB+UNOC:3+S+R+d:t+9'", "",
         ":+.? ' id=UNOC:3 from=S: to=R: at=d:t ref=9 app= test="},
        {"UNA decides, also for version 4", "UNA|*,# !", "UNB*UNOA|4*A#*B|1*R|2*d|t*9!", "",
         "una |*,# ! id=UNOA:4 from=A*B:1 to=R:2 at=d:t ref=9 app= test="},
        {"repetition separator from UNA", "UNA:+.?*'", "UNB+UNOC:3+S+R+d:t+9'", "",
         "una :+.?*' id=UNOC:3 from=S: to=R: at=d:t ref=9 app= test="},
        {"released release character", "", "UNB+UNOC:3+AB?\?+R+d:t+9?:1'", "",
         ":+.? ' id=UNOC:3 from=AB?: to=R: at=d:t ref=9:1 app= test="},
        {"group", "", "UNB+UNOC:3+S:1+R:1+d:t+9'", "UNG+INVOIC+GS:1+GR:2+240101:1200+G77+UN+D:96A'",
         ":+.? ' id=UNOC:3 from=S:1 to=R:1 at=d:t ref=9 app= test= ung=INVOIC:GS:GR:G77"},
    };
    for (const auto &r : rows)
        EXPECT_EQ(render(edi::envelopevalues(r.una, r.unb, r.ung)), r.want) << r.name;
}

}  // namespace
