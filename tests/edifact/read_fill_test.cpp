// Template filling: the segments of one message poured into a copy of the
// configuration, strictly forward, with loops repeated by copying.
#include <gtest/gtest.h>

#include <string>

#include "read_support.h"
#include "testsupport.h"

using readsupport::picture;
using readsupport::readbytes;

namespace {

const char *kTemplate = R"(edi
  MSG
    $UNH001 iseditag=1 ediforce=mand
      0062
    $BGM iseditag=1
      1001
    *PARTY
      $NAD iseditag=1
        3035
        C082
          3039
          1131
        3207
    $UNT iseditag=1 ediforce=mand
      0074
)";

// A filled copy of the message node of `conf` from the segments of
// `bytes` (read with tagcnt starting at 1, so the first is number 002).
struct Fill {
    datatree_t *conf = nullptr;
    datatree_t *segs = nullptr;
    datatree_t *copy = nullptr;
    int rc = 0;
    std::string err;

    Fill(const char *conftext, const std::string &bytes)
    {
        conf = testsupport::parse(conftext);
        ediprot::tagcnt = 1;
        segs = readbytes(bytes);
        copy = ediprot::copysubtree(conf->child);
        setparents(copy, 0);
        ediprot::xdata = segs->child;
        err = testsupport::capture_stderr(
            [&] { rc = ediprot::xydatatohead(copy->child, 0); });
    }
    ~Fill()
    {
        freedatatree(copy);
        freedatatree(segs);
        freedatatree(conf);
    }
    std::string filled() const { return picture(copy->child); }
};

TEST(Xydatatohead, NullTemplateReturnsZero)
{
    EXPECT_EQ(ediprot::xydatatohead(nullptr, 0), 0);
}

TEST(Xydatatohead, StopsTakingAtASegmentThatNoTagTakes)
{
    Fill f(kTemplate, "UNH+1'XYZ+1'BGM+220'UNT+5");
    // Not negative: the loop's empty first child left match at 0.
    EXPECT_EQ(f.rc, 0);
    EXPECT_EQ(f.err, "");
    EXPECT_EQ(f.filled(), "$UNH001{0062=\"1\"} $BGM{1001} *PARTY{$NAD{3035 "
                          "C082{3039 1131} 3207}} $UNT{0074}");
    ASSERT_NE(ediprot::xdata, nullptr);
    EXPECT_STREQ(ediprot::xdata->xmltag, "$XYZ003_D");
}

TEST(Xydatatohead, ReportsMandatoryTagAfterTheEndOfInput)
{
    Fill f(kTemplate, "UNH+1'BGM+220");
    EXPECT_EQ(f.rc, -1);
    EXPECT_EQ(f.err, "mandatory tag <$UNT> not found\n");
    EXPECT_EQ(f.filled(), "$UNH001{0062=\"1\"} $BGM{1001=\"220\"} *PARTY{$NAD{3035 "
                          "C082{3039 1131} 3207}} $UNT{0074}");
}

TEST(Xydatatohead, MatchesFirstFourCharactersIgnoringCase)
{
    const char *conf = R"(edi
  MSG
    $unhXYZ iseditag=1
      0062
    $BGM iseditag=1
      1001
)";
    Fill f(conf, "UNH+1'bgm+220");
    EXPECT_EQ(f.filled(), "$unhXYZ{0062=\"1\"} $BGM{1001=\"220\"}");
}

TEST(Xydatatohead, SameNamedTagsTakeOneSegmentEach)
{
    const char *conf = R"(edi
  MSG
    $NAD001 iseditag=1
      3035
    $NAD002 iseditag=1
      3035
)";
    Fill two(conf, "NAD+BY'NAD+SU");
    EXPECT_EQ(two.filled(), "$NAD001{3035=\"BY\"} $NAD002{3035=\"SU\"}");
    Fill one(conf, "NAD+BY");
    EXPECT_EQ(one.filled(), "$NAD001{3035=\"BY\"} $NAD002{3035}");
}

TEST(Copytag, StoresByPositionAndConvertsEachValue)
{
    const char *conf = R"(edi
  MSG
    $DTM iseditag=1
      C507
        2005
        2380 editype=date
        2379
    $FTX iseditag=1
      4451
      4440
    $QTY iseditag=1
      6063 editype=float0
    $NIL iseditag=1
)";
    // Composite input on a leaf keeps the whole text; surplus input is
    // dropped; surplus template nodes stay empty; a tag without children
    // takes its segment and stores nothing.
    Fill f(conf, "DTM+137:20071123'FTX+A?+B:C+X?:Y+Z'QTY+00012'NIL+1");
    EXPECT_EQ(f.filled(),
              "$DTM{C507{2005=\"137\" 2380=\"2007-11-23\" 2379}} "
              "$FTX{4451=\"A+B:C\" 4440=\"X:Y\"} $QTY{6063=\"12\"} $NIL");
    EXPECT_EQ(ediprot::xdata, nullptr);
}

TEST(Copytag, FeedsACompositeFromASimpleElementAndTheOnesBehindIt)
{
    const char *conf = R"(edi
  MSG
    $NAD iseditag=1
      3035
      C082
        3039
        1131
        3055
      3207
)";
    Fill f(conf, "NAD+SU+456+FR");
    EXPECT_EQ(f.filled(),
              "$NAD{3035=\"SU\" C082{3039=\"456\" 1131=\"FR\" 3055} 3207=\"FR\"}");
}

}  // namespace
