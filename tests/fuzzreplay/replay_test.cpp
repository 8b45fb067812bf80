// Replays every input kept under fuzz/regressions/<entry>/ through the fuzz
// entry of that name, each as a test of its own (none while the folder is
// empty: no fuzz run has kept a finding yet).  The entries stop the process when an entry point
// breaks its interface, and the sanitizer build stops it on any memory
// fault or leak, so a regression that comes back fails its test.
#include <dirent.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../../fuzz/fuzzentries.h"
#include "testsupport.h"

namespace {

struct entry {
    const char *name;
    int (*run)(const uint8_t *, size_t);
    int most;  // greatest count of accepting calls
};

const entry entries[] = {
    {"edifactread", fuzzentry::edifactread, 2},
    {"configread", fuzzentry::configread, 2},
    {"vdaread", fuzzentry::vdaread, 1},
    {"makerecord", fuzzentry::makerecord, 1},
    {"treetext", fuzzentry::treetext, 1},
    {"json", fuzzentry::json, 1},
    {"writers", fuzzentry::writers, 2},
};

const entry *findentry(const std::string &name)
{
    for (const entry &e : entries)
        if (name == e.name)
            return &e;
    return nullptr;
}

const std::string regressions = std::string(EDIPROT_CONFIGS) + "/../fuzz/regressions";
const std::string fuzzseeds = std::string(EDIPROT_CONFIGS) + "/../fuzz/seeds";

std::vector<std::string> listdir(const std::string &dir, bool folders)
{
    std::vector<std::string> names;
    DIR *dp = opendir(dir.c_str());
    if (dp == nullptr)
        return names;
    while (dirent *de = readdir(dp)) {
        if (de->d_name[0] == '.')
            continue;
        struct stat st;
        if (stat((dir + "/" + de->d_name).c_str(), &st) == 0 && S_ISDIR(st.st_mode) == folders)
            names.push_back(de->d_name);
    }
    closedir(dp);
    std::sort(names.begin(), names.end());
    return names;
}

struct regression {
    std::string target;
    std::string file;
};

std::vector<regression> allregressions()
{
    std::vector<regression> all;
    for (const std::string &target : listdir(regressions, true))
        for (const std::string &file : listdir(regressions + "/" + target, false))
            all.push_back({target, file});
    return all;
}

int runon(const entry &e, const std::string &bytes)
{
    return e.run(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
}

// Test lists show the input, not the bytes of the record.
void PrintTo(const regression &r, std::ostream *os)
{
    *os << r.target << "/" << r.file;
}

class RegressionInput : public testing::TestWithParam<regression> {};

TEST_P(RegressionInput, ReplaysWithoutFaultAndWithADocumentedOutcome)
{
    const regression &r = GetParam();
    const entry *e = findentry(r.target);
    ASSERT_NE(e, nullptr) << "fuzz/regressions/" << r.target << " names no fuzz entry";
    int accepted = runon(*e, testsupport::readfile(regressions + "/" + r.target + "/" + r.file));
    EXPECT_GE(accepted, 0);
    EXPECT_LE(accepted, e->most);
}

std::string testname(const testing::TestParamInfo<regression> &info)
{
    std::string name = info.param.target + "_" + info.param.file;
    for (char &c : name)
        if (!isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Fuzz, RegressionInput, testing::ValuesIn(allregressions()), testname);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(RegressionInput);

// Each entry takes a good input the whole way, so that a replay through it
// reaches the entry point rather than stopping at the door.
struct goodinput {
    const char *target;
    std::string file;
    int accepted;
};

void PrintTo(const goodinput &g, std::ostream *os)
{
    *os << g.target << " " << g.file;
}

class GoodInput : public testing::TestWithParam<goodinput> {};

TEST_P(GoodInput, IsAcceptedByEveryCallOfItsEntry)
{
    const goodinput &g = GetParam();
    const entry *e = findentry(g.target);
    ASSERT_NE(e, nullptr);
    std::string bytes = testsupport::readfile(g.file);
    ASSERT_FALSE(bytes.empty()) << g.file;
    if (strcmp(g.target, "makerecord") == 0)
        bytes = bytes.substr(0, bytes.find_first_of("\r\n"));
    EXPECT_EQ(runon(*e, bytes), g.accepted);
}

INSTANTIATE_TEST_SUITE_P(
    Fuzz, GoodInput,
    testing::Values(goodinput{"configread", fuzzseeds + "/configread/orders", 1},
                    goodinput{"edifactread", std::string(EDIPROT_TESTDATA) + "/edifact/orders_una.edi", 2},
                    goodinput{"vdaread", std::string(EDIPROT_SAMPLES) + "/vda4905-sample.txt", 1},
                    goodinput{"makerecord", std::string(EDIPROT_SAMPLES) + "/vda4905-sample.txt", 1},
                    goodinput{"treetext", std::string(EDIPROT_CONFIGS) + "/vda4905.tree", 1},
                    goodinput{"json", fuzzseeds + "/json/small.json", 1},
                    goodinput{"writers", fuzzseeds + "/writers/vda-data", 2}),
    [](const testing::TestParamInfo<goodinput> &info) { return std::string(info.param.target); });

}  // namespace
