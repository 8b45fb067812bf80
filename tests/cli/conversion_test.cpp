// The command converting files: corpus interchanges and VDA files read
// without harm, JSON and tree text giving the same interchange, VDA files
// read and written back, several inputs in one call.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <string>
#include <vector>

#include "runprogram.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

const std::string kConfigs = EDIPROT_CONFIGS;

std::vector<std::string> filesin(const std::string &folder)
{
    std::vector<std::string> names;
    for (const auto &e : std::filesystem::directory_iterator(folder))
        if (e.is_regular_file())
            names.push_back(e.path().string());
    std::sort(names.begin(), names.end());
    return names;
}

// The bundled inbound configuration for the D.96A message of `text`, or ""
// when no bundled configuration fits it.
std::string fittingconfig(const std::string &text)
{
    for (const char *msg : {"ORDERS", "DESADV", "DELFOR"}) {
        if (text.find(std::string(msg) + ":D:96A") == std::string::npos)
            continue;
        std::string lower(msg);
        for (char &c : lower)
            c = static_cast<char>(c - 'A' + 'a');
        std::string cf = kConfigs + "/" + lower + "-d96a-in.tree";
        if (exists(cf))
            return cf;
    }
    return "";
}

// True when `err` holds one of the lines with which the reader refuses
// an interchange.
bool readerrefusal(const std::string &err)
{
    for (const char *line : {" is not an edi-file\n", ": no sender\n", ": no doctype\n",
                             "> not found\n", " characters\n", " out of range\n",
                             ": the envelope is broken"})
        if (err.find(line) != std::string::npos)
            return true;
    return false;
}

// Every interchange of the corpus goes through `edi read`: through the
// bundled service configurations, and with a bundled configuration where
// one fits the message (with the line breaks taken out, since most files
// put one segment on a line).  The program never dies of a signal; it converts
// or refuses with the reader's own message and status 1.
TEST(EdiRead, EveryCorpusInterchangeIsConvertedOrRefusedWithTheReadersMessage)
{
    std::string dir = tempdir();
    int converted = 0, refused = 0, fitted = 0;
    for (const std::string &in : filesin(EDIPROT_CORPUS "/edifact")) {
        std::vector<std::vector<std::string>> calls = {
            {"read", in, "--servconf", kConfigs + "/servconf.conf", "--format", "json", "-o",
             dir + "/out.json"}};
        std::string cf = fittingconfig(readfile(in));
        if (!cf.empty()) {
            calls.push_back({"read", in, "--config", cf, "--format", "json", "-o",
                             dir + "/out.json"});
            fitted++;
        }
        for (const auto &args : calls) {
            std::filesystem::remove(dir + "/out.json");
            RunResult r = runedi(args);
            ASSERT_EQ(r.signal, 0) << in;
            if (r.status == 0) {
                converted++;
                EXPECT_EQ(readfile(dir + "/out.json").rfind("{\n \"format\": \"ediprot-tree\"", 0),
                          0u) << in;
            } else {
                refused++;
                EXPECT_EQ(r.status, 1) << in;
                EXPECT_TRUE(readerrefusal(r.err)) << in << ": " << r.err;
                EXPECT_FALSE(exists(dir + "/out.json")) << in;
            }
        }
    }
    // The ORDERS and DESADV files of the corpus that begin with UNA or UNB
    // are converted; one with text before its UNB is not.
    EXPECT_GE(fitted, 3);
    EXPECT_GE(converted, 3);
    EXPECT_GT(refused, 0);
}

// One segment a line: the module takes the line break for the first
// character of the next segment's tag (--raw shows it, naming the user's
// file); the command's working copy leaves the line breaks out.
TEST(EdiRead, AnInterchangeOfOneSegmentALineIsReadAsItIs)
{
    std::string dir = tempdir();
    std::string in = writefile(dir + "/lines.edi",
                               "UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+R1'\r\n"
                               "UNH+1+ORDERS:D:96A:UN'\r\nBGM+220+PO1+9'\r\nUNT+3+1'\r\n"
                               "UNZ+1+R1'\r\n");
    std::string cf = kConfigs + "/orders-d96a-in.tree";
    RunResult r = runedi({"read", in, "--config", cf, "--raw"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(in + ": 162: no doctype\n"), std::string::npos) << r.err;

    r = runedi({"read", in, "--config", cf, "--format", "json"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("\"key\": \"ORDERS_BUYERCORP\""), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("\"data\": \"PO1\""), std::string::npos) << r.out;
}

TEST(EdiRead, ReportsTheKeyOnStderrForTreeTextAndInTheJson)
{
    std::string in = EDIPROT_TESTDATA "/edifact/orders_two_messages.edi";
    RunResult r = runedi({"read", in, "--servconf", kConfigs + "/servconf.conf"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "edi: " + in + ": key ORDERS_BUYERCORP\n");
    EXPECT_EQ(r.out.rfind("edi\n", 0), 0u);

    r = runedi({"read", in, "--servconf", kConfigs + "/servconf.conf", "--format", "json"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_NE(r.out.find("\"key\": \"ORDERS_BUYERCORP\""), std::string::npos);
}

// Each bundled sample read through the service configurations and written
// with its outbound configuration, from the JSON and from the tree text of
// one read: both give back the sample's message segments.
TEST(EdiWrite, BundledSamplesComeBackFromJsonAndFromTreeText)
{
    std::string dir = tempdir();
    int samples = 0;
    for (const std::string &in : filesin(EDIPROT_SAMPLES)) {
        std::string base = std::filesystem::path(in).stem().string();
        if (std::filesystem::path(in).extension() != ".edi")
            continue;
        samples++;
        for (const char *format : {"json", "tree"}) {
            std::string read = dir + "/" + base + "." + format;
            std::string written = dir + "/" + base + "-from-" + format + ".edi";
            RunResult r = runedi({"read", in, "--servconf", kConfigs + "/servconf.conf",
                                  "--format", format, "-o", read});
            ASSERT_EQ(r.status, 0) << in << ": " << r.err;
            r = runedi({"write", read, "--config", kConfigs + "/" + base + "-out.tree",
                        "--sender", "S", "--recipient", "R", "-o", written});
            ASSERT_EQ(r.status, 0) << in << ": " << r.err;
            EXPECT_EQ(messagesegments(readfile(written)), messagesegments(readfile(in)))
                << in << " through " << format;
        }
    }
    EXPECT_GE(samples, 3);
}

// A JSON tree edited by hand: NULL and empty values and a byte above 0x7F
// reach the interchange as they stand in the JSON.
TEST(EdiWrite, HandWrittenJsonKeepsEmptyValuesAndHighBytesApartFromNull)
{
    std::string dir = tempdir();
    std::string cf = writefile(dir + "/out.tree",
                               "edi\n"
                               "  $FTX iseditag=1\n"
                               "    4451 edimaxlen=3\n"
                               "    4453 edimaxlen=3 defval=X\n"
                               "    4454 edimaxlen=3 defval=Y\n"
                               "    4440 edimaxlen=10\n");
    std::string json = writefile(
        dir + "/tree.json",
        "{\"format\": \"ediprot-tree\", \"version\": 1, \"tree\": {\"name\": \"edi\", \"children\": [{\"name\": \"$FTX\", \"iseditag\": 1,"
        " \"children\": [{\"name\": \"4451\", \"data\": \"AAI\"}, {\"name\": \"4453\", \"data\": \"\"},"
        " {\"name\": \"4454\"}, {\"name\": \"4440\", \"data\": \"Stra\\u00dfe\"}]}]}}");
    RunResult r = runedi({"write", json, "--config", cf, "--sender", "S", "--recipient", "R", "-o",
                          dir + "/out.edi"});
    ASSERT_EQ(r.status, 0) << r.err;
    // The empty value stays empty; the NULL one takes its default.  The
    // writer's character stage drops bytes above 0x7F.
    EXPECT_EQ(messagesegments(readfile(dir + "/out.edi")), "FTX+AAI++Y+Strae'");
}

TEST(EdiWrite, JsonWithACharacterAboveByteRangeIsRefused)
{
    std::string dir = tempdir();
    std::string json = writefile(dir + "/tree.json",
                                 "{\"tree\": {\"name\": \"edi\", \"data\": \"\\u20ac\"}}");
    RunResult r = runedi({"write", json, "--config", kConfigs + "/orders-d96a-out.tree",
                          "--sender", "S", "--recipient", "R", "-o", dir + "/out.edi"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(json), std::string::npos) << r.err;
    EXPECT_FALSE(exists(dir + "/out.edi"));
}

// The VDA sample and the corpus files read to JSON and written back give
// the same record lines; the trailer is the writer's own.
TEST(EdiVda, SampleReadToJsonAndWrittenBackGivesTheSameFile)
{
    std::string dir = tempdir();
    std::string in = EDIPROT_SAMPLES "/vda4905-sample.txt";
    std::string cf = kConfigs + "/vda4905.tree";
    RunResult r = runedi({"vda-read", in, "--config", cf, "--format", "json", "-o",
                          dir + "/read.json"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = runedi({"vda-write", dir + "/read.json", "--config", cf, "-o", dir + "/out.txt"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(readfile(dir + "/out.txt"), readfile(in));
}

TEST(EdiVda, EveryCorpusFileIsConvertedOrRefusedWithoutHarm)
{
    std::string dir = tempdir();
    std::string cf = kConfigs + "/vda4905.tree";
    for (const std::string &in : filesin(EDIPROT_CORPUS "/vda")) {
        RunResult r = runedi({"vda-read", in, "--config", cf, "--keep-going", "-o",
                              dir + "/read.tree"});
        ASSERT_EQ(r.signal, 0) << in;
        ASSERT_EQ(r.status, 0) << in << ": " << r.err;
        r = runedi({"vda-write", dir + "/read.tree", "--config", cf, "-o", dir + "/out.txt"});
        ASSERT_EQ(r.signal, 0) << in;
        EXPECT_EQ(r.status, 0) << in << ": " << r.err;
        std::string out = readfile(dir + "/out.txt");
        ASSERT_GE(out.size(), 130u) << in;
        // A byte-order mark no longer costs the first record.
        EXPECT_EQ(out.substr(0, 3), "511") << in;
        EXPECT_EQ(out.substr(out.size() - 130, 5), "51902") << in;
    }
}

// Several inputs: each is converted into the folder; a missing one sets
// the status without stopping the others.
TEST(EdiRead, SeveralInputsGoIntoTheFolderAndOneFailureSetsTheStatus)
{
    std::string dir = tempdir();
    std::string a = EDIPROT_TESTDATA "/edifact/orders_two_messages.edi";
    std::string b = EDIPROT_TESTDATA "/edifact/orders_una.edi";
    RunResult r = runedi({"read", a, dir + "/missing.edi", b, "--config",
                          kConfigs + "/orders-d96a-in.tree", "-o", dir});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(dir + "/missing.edi"), std::string::npos) << r.err;
    EXPECT_TRUE(exists(dir + "/orders_two_messages.edi.tree"));
    EXPECT_TRUE(exists(dir + "/orders_una.edi.tree"));
    EXPECT_FALSE(exists(dir + "/missing.edi.tree"));

    r = runedi({"read", a, b, "--config", kConfigs + "/orders-d96a-in.tree", "-o",
                dir + "/orders_una.edi.tree"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("not a folder"), std::string::npos) << r.err;
}

// An output that cannot be made leaves nothing behind and fails.
TEST(EdiRead, OutputIntoAMissingFolderFails)
{
    std::string dir = tempdir();
    RunResult r = runedi({"read", EDIPROT_TESTDATA "/edifact/orders_una.edi", "--config",
                          kConfigs + "/orders-d96a-in.tree", "-o", dir + "/no/such/out.tree"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("edi: " + dir + "/no/such/out.tree: No such file or directory\n"),
              std::string::npos) << r.err;
    EXPECT_TRUE(std::filesystem::is_empty(dir));
}

// A fifo as OUT is written in place: the command must not put a plain file
// where the fifo was (as a rename onto it would).
TEST(EdiRead, OutputOntoAFifoIsWrittenInPlace)
{
    std::string dir = tempdir();
    std::string fifo = dir + "/pipe";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::string got;
    std::thread reader([&] { got = readfile(fifo); });
    RunResult r = runedi({"read", EDIPROT_TESTDATA "/edifact/orders_una.edi", "--config",
                          kConfigs + "/orders-d96a-in.tree", "-o", fifo});
    reader.join();
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(got.rfind("edi\n", 0), 0u) << got;
    struct stat st;
    ASSERT_EQ(stat(fifo.c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
}

}  // namespace
