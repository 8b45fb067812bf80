// One interchange read by several processes (-j N with one input): the same
// NDJSON lines in the same order as one process gives, each finding about
// the input once, and a failing input failing alike.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "testsupport.h"

using namespace testsupport;

namespace {

const std::string kCorpus = EDIPROT_CORPUS "/edifact/";

// jobs 0: without -j.
RunResult ndjson(const std::string &input, int jobs)
{
    std::vector<std::string> args = {"read", input, "--format", "ndjson", "--keep-going"};
    if (jobs > 0)
        args.insert(args.end(), {"-j", std::to_string(jobs)});
    return runprogram(EDI_PROGRAM, args);
}

size_t count(const std::string &text, const std::string &what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        n++;
    return n;
}

TEST(EdiParallel, WorkersGiveWhatOneProcessGives)
{
    // Twelve messages of one type; messages of two types in turn; several
    // interchanges; a message read with a layout taken from itself.
    for (const char *name : {"bots_ORDERS_D96A_1.edi", "edinet_Issue188_IFTMIN_INVOIC_multi.edi",
                             "edifabric_INVOIC_D00A_MultipleInterchange.txt",
                             "php-edifact_D96A_DESADV.edi"}) {
        SCOPED_TRACE(name);
        RunResult one = ndjson(kCorpus + name, 0);
        ASSERT_EQ(one.status, 0) << one.err;
        ASSERT_GT(count(one.out, "\n"), 0u);
        for (int jobs : {1, 2, 3, 5}) {
            RunResult many = ndjson(kCorpus + name, jobs);
            EXPECT_EQ(many.status, 0) << many.err;
            EXPECT_EQ(many.out, one.out) << jobs << " workers";
            EXPECT_EQ(many.err, one.err) << jobs << " workers";
        }
    }
}

TEST(EdiParallel, AFailingInputFailsWithEveryWorkerCount)
{
    const std::string bad = kCorpus + "edifabric_bad_INVOIC_D00A_InvalidHeader.txt";
    RunResult one = ndjson(bad, 0), two = ndjson(bad, 2);
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(two.status, 1);
    EXPECT_EQ(two.out, one.out);
}

}  // namespace
