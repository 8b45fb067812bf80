// Loop numbers of a filled tree: every surviving loop node must carry the
// number under which the writer's enumeration of the configuration looks
// for it, and that enumeration must meet every loop node exactly once.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../src/programs/edifact/readstages.h"
#include "read_support.h"
#include "testsupport.h"

using readsupport::picture;

namespace {

// The writer's walk: one counter per chain of configuration siblings; each
// loop node tries the next numbers until one is not found, and that try
// uses its number up too.  Records the data loop nodes found.
void enumerate(datatree_t *conf, datatree_t *head, const std::string &loop,
               std::vector<datatree_t *> &found)
{
    int i = 0;
    for (datatree_t *tp = conf; tp != nullptr; tp = tp->next) {
        if (tp->xmltag[0] == '*') {
            for (;;) {
                std::string lb = loop.empty() ? "" : loop + ".";
                lb += std::to_string(++i);
                datatree_t *xnode = ediprot::searchloopinstance(
                    pathfornode(tp, 0), lb.c_str(), head, tp->xmltag);
                if (xnode == nullptr)
                    break;
                found.push_back(xnode);
                enumerate(tp->child, head, lb, found);
            }
        } else if (tp->xmltag[0] != '$' && tp->child != nullptr) {
            enumerate(tp->child, head, loop, found);
        }
    }
}

void allloops(datatree_t *tp, std::vector<datatree_t *> &out)
{
    for (; tp != nullptr; tp = tp->next) {
        if (tp->xmltag[0] == '*')
            out.push_back(tp);
        if (tp->xmltag[0] != '$')
            allloops(tp->child, out);
    }
}

// Numbers `data` (a filled tree under a root "edi") after `conf` and
// returns the numbered picture; checks the writer's view on the way.
std::string numbered(datatree_t *conf, datatree_t *data)
{
    setparents(conf, 0);
    setparents(data, 0);
    // A tree built by hand has no record of the fill: names decide.
    ediprot::numberloops(conf->child, data->child,
                         [](const datatree_t *) -> const datatree_t * { return nullptr; },
                         true);
    std::vector<datatree_t *> found, all;
    enumerate(conf, data, "", found);
    allloops(data->child, all);
    EXPECT_EQ(found, all) << "the writer does not meet every loop node once";
    std::string out;
    for (datatree_t *tp : all)
        out += std::string(out.empty() ? "" : " ") + tp->xmltag + "=" +
               std::to_string(tp->loopcnt);
    freedatatree(conf);
    freedatatree(data);
    return out;
}

const char *kConf = R"(edi
  MSG
    $UNH iseditag=1
      0062
    *L1
      $A iseditag=1
        a
    *L2
      $B iseditag=1
        b
      *IN
        $C iseditag=1
          c
    $UNT iseditag=1
      0074
)";

TEST(Numberloops, SiblingLoopsShareOneCounterThatFailedTriesUseUp)
{
    datatree_t *data = testsupport::parse(R"(edi
  MSG
    $UNH
      0062 data=1
    *L1
      $A
        a data=x
    *L1
      $A
        a data=y
    *L2
      $B
        b data=z
      *IN
        $C
          c data=1
      *IN
        $C
          c data=2
    $UNT
      0074 data=9
)");
    EXPECT_EQ(numbered(testsupport::parse(kConf), data), "*L1=1 *L1=2 *L2=4 *IN=1 *IN=2");
}

TEST(Numberloops, AbsentLoopStillUsesUpItsFailedTry)
{
    datatree_t *data = testsupport::parse(R"(edi
  MSG
    $UNH
      0062 data=1
    *L2
      $B
        b data=z
    *L2
      $B
        b data=w
      *IN
        $C
          c data=1
    $UNT
      0074 data=9
)");
    EXPECT_EQ(numbered(testsupport::parse(kConf), data), "*L2=2 *L2=3 *IN=1");
}

TEST(Numberloops, MessageLoopNumbersItsMessagesAndRestartsInside)
{
    datatree_t *conf = testsupport::parse(R"(edi
  *MSG
    $UNH iseditag=1
      0062
    *L1
      $A iseditag=1
        a
    GRP
      *L3
        $D iseditag=1
          d
)");
    datatree_t *data = testsupport::parse(R"(edi
  *MSG
    $UNH
      0062 data=1
    *L1
      $A
        a data=x
    GRP
      *L3
        $D
          d data=1
  *MSG
    $UNH
      0062 data=2
    *L1
      $A
        a data=y
    *L1
      $A
        a data=z
    GRP
)");
    EXPECT_EQ(numbered(conf, data), "*MSG=1 *L1=1 *L3=1 *MSG=2 *L1=1 *L1=2");
}

}  // namespace
