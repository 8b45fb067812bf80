// The trace guard and prefix, including the one point that looks at the
// low four bits of tracelevel.
#include <gtest/gtest.h>

#include <ctype.h>

#include "internal.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

struct TraceLevel {
    explicit TraceLevel(int v) : saved(tracelevel) { tracelevel = v; }
    ~TraceLevel() { tracelevel = saved; }
    int saved;
};

TEST(Trace, TopFourBitsAboveTheLevelEnableAPoint)
{
    const struct {
        unsigned level;
        int point;
        bool on;
    } cases[] = {
        {0x00000000u, 0, false}, {0x10000000u, 0, true}, {0x10000000u, 1, false},
        {0x30000000u, 2, true},  {0x30000000u, 3, false}, {0xF0000000u, 3, true},
        {0x0000000Fu, 0, false},
    };
    for (const auto &c : cases) {
        TraceLevel tl(static_cast<int>(c.level));
        EXPECT_EQ(ediprot::trace_on(c.point), c.on) << std::hex << c.level << " " << c.point;
    }
}

TEST(Trace, PrefixHasTimeModuleNameAndLine)
{
    TraceLevel tl(static_cast<int>(0x30000000u));
    std::string err = capture_stderr([] { TRACE(2, "hello %d\n", 7); });
    // "HH:MM:SS.mmm (ediprot       :LLLL): hello 7\n", digits where the
    // form has 9.
    const std::string form = "99:99:99.999 (ediprot       :9999): hello 7\n";
    ASSERT_EQ(err.size(), form.size()) << err;
    for (size_t i = 0; i < form.size(); i++) {
        if (form[i] == '9')
            EXPECT_TRUE(isdigit(static_cast<unsigned char>(err[i]))) << err;
        else
            EXPECT_EQ(err[i], form[i]) << err;
    }
}

TEST(Trace, ReturnThisLineLooksAtTheLowFourBitsOnly)
{
    datatree_t *tree = node("a");
    {
        TraceLevel tl(static_cast<int>(0xF0000003u));
        std::string err = capture_stderr([&] { ediprot::searchlooppath("a", "", tree); });
        EXPECT_EQ(err.find("return this"), std::string::npos);
    }
    {
        TraceLevel tl(4);
        std::string err = capture_stderr([&] { ediprot::searchlooppath("a", "", tree); });
        EXPECT_NE(err.find("return this: <a>\n"), std::string::npos) << err;
        EXPECT_EQ(err.find("searchlooppath: path"), std::string::npos);
    }
    freedatatree(tree);
}

}  // namespace
