// The tree parser: positions and links of the nodes it builds, and one
// "FILE:LINE: reason" with no tree for every kind of malformed text.
#include <gtest/gtest.h>
#include <string.h>

#include <string>
#include <vector>

#include "edihost.h"
#include "testsupport.h"

using testsupport::capture_stderr;

TEST(TreeParser, AcceptsAnyConsistentIndentationAndBacksUpSeveralLevels)
{
    datatree_t *root = testsupport::parse("a\n   b\n       c\n          d\n   e\nf\n");
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(testsupport::dump(root), "a\n  b\n    c\n      d\n  e\nf\n");
    freedatatree(root);
}

TEST(TreeParser, NumbersTakeSignsAndTheWholeIntRange)
{
    datatree_t *tp = testsupport::parse(
        "n loopcnt=-2147483648 edilen=+2147483647 edimaxlen=007 valid=\"-1\"\n");
    ASSERT_NE(tp, nullptr);
    EXPECT_EQ(tp->loopcnt, -2147483647 - 1);
    EXPECT_EQ(tp->edilen, 2147483647);
    EXPECT_EQ(tp->edimaxlen, 7);
    EXPECT_EQ(tp->valid, -1);
    freedatatree(tp);
}

TEST(TreeParser, MalformedTextGivesOneMessageWithItsLineAndNoTree)
{
    struct Case {
        std::string text;
        const char *message;
    } cases[] = {
        {"  a\n", "test:1: indented under no node\n"},
        {"a\n    b\n  c\n", "test:3: indentation matches no open level\n"},
        {"a\n  b\n    c\n   d\n", "test:4: indentation matches no open level\n"},
        {"a\n\tb\n", "test:2: tab in indentation\n"},
        {"a\n \tb\n", "test:2: tab in indentation\n"},
        {"a colour=red\n", "test:1: unknown field colour\n"},
        {"a\n  b editype=text\n", "test:2: bad editype word text\n"},
        {"a ediforce=MAND\n", "test:1: bad ediforce word MAND\n"},
        {"a edilen=12x\n", "test:1: bad number for edilen: 12x\n"},
        {"a edilen=-\n", "test:1: bad number for edilen: -\n"},
        {"a edilen=\"\"\n", "test:1: bad number for edilen: \"\"\n"},
        {"a edilen=2147483648\n", "test:1: number out of range for edilen: 2147483648\n"},
        {"a valid=-2147483649\n", "test:1: number out of range for valid: -2147483649\n"},
        {"a loopcnt=99999999999999999999999\n",
         "test:1: number out of range for loopcnt: 99999999999999999999999\n"},
        {"a\nb data=\"abc\n", "test:2: unterminated quoted text\n"},
        {"a data=\"abc\\\"\n", "test:1: unterminated quoted text\n"},
        {"a data=\"ab\\q\"\n", "test:1: bad escape \\q\n"},
        {"a data=\"\\x4\"\n", "test:1: bad escape \\x: two hex digits must follow\n"},
        {"a data=\"\\xg0\"\n", "test:1: bad escape \\x: two hex digits must follow\n"},
        {"a data=\"\\x00\"\n", "test:1: escape \\x00 (a NUL byte) is not allowed\n"},
        {"a data=\"x\x01\"\n", "test:1: byte 0x01 in quoted text (write it as an escape)\n"},
        {"a data=\xc3\xa4\n", "test:1: byte 0xc3 outside quotes\n"},
        {std::string("a\nb\0c\n", 6), "test:2: NUL byte in the text\n"},
        {"data=5\n", "test:1: a field stands where the name should be\n"},
        {"=5\n", "test:1: '=' where the name should be\n"},
        {"a data=1 iseditag=1 data=2\n", "test:1: duplicate field data\n"},
        {"a data\n", "test:1: expected key=value, found 'data'\n"},
        {"a edidata=user extra\n", "test:1: expected key=value, found 'extra'\n"},
        {"a data=\n", "test:1: missing the value of data\n"},
        {"a data= x\n", "test:1: missing the value of data\n"},
        {"a data=x\"y\"\n", "test:1: missing blank after the value of data\n"},
        {"\"a\"b\n", "test:1: missing blank after the name\n"},
        {"a \"data\"=1\n", "test:1: a field name must not be quoted\n"},
        {"a =1\n", "test:1: '=' without a field name\n"},
        {"", "test:1: no node in the text\n"},
        {"# only a comment\n\n", "test:2: no node in the text\n"},
    };
    for (const Case &c : cases) {
        datatree_t *tree = reinterpret_cast<datatree_t *>(1);
        std::string err = capture_stderr([&] {
            tree = edihost_parsetree(c.text.data(), c.text.size(), "test");
        });
        EXPECT_EQ(tree, nullptr) << c.text;
        EXPECT_EQ(err, c.message) << c.text;
    }
}

TEST(TreeParser, AFaultAfterALargeTreeFreesAllOfIt)
{
    std::string text = "root\n";
    for (int i = 0; i < 1000; i++)
        text += "  kid data=" + std::to_string(i) + "\n    grandkid defval=x deffunc=y\n";
    text += "  late editype=bogus\n";
    std::string err = capture_stderr([&] {
        EXPECT_EQ(edihost_parsetree(text.data(), text.size(), "test"), nullptr);
    });
    EXPECT_EQ(err, "test:2002: bad editype word bogus\n");
}

TEST(TreeParser, ReadtreeNamesTheFileInEveryNodeAndEveryMessage)
{
    std::string dir = testsupport::tempdir();
    std::string good = testsupport::writefile(dir + "/good.cfg", "edi\n  x\n");
    std::string bad = testsupport::writefile(dir + "/bad.cfg", "edi\n  x edilen=abc\n");
    datatree_t *tree = readconfig(good.data(), 0, const_cast<char *>("ediprot"), 1);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(std::string(tree->child->file), good);
    EXPECT_EQ(tree->child->line, 2);
    freedatatree(tree);

    std::string missing = dir + "/missing.cfg";
    struct Case {
        std::string fn;
        std::string message;
    } cases[] = {
        {bad, bad + ":2: bad number for edilen: abc\n"},
        {missing, missing + ": No such file or directory\n"},
        {dir, dir + ": Is a directory\n"},
    };
    for (const Case &c : cases) {
        std::string err = capture_stderr([&] { EXPECT_EQ(edihost_readtree(c.fn.c_str()), nullptr); });
        EXPECT_EQ(err, c.message);
    }
}


// A plain line is read in one pass; a line whose name is quoted goes to
// the full reader.  Both must give the same node, or the same message.
TEST(TreeParser, PlainLinesReadAsTheFullReaderReadsThem)
{
    const char *rests[] = {
        " data=x loopcnt=5 defval=d deffunc=f iseditag=1 type=loop edidata=opt edilen=3 "
        "edimaxlen=-4 editype=float ediforce=mand edialign=right valid=7",
        " loopcnt=-2147483648 edilen=+2147483647 edimaxlen=007 valid=-0",
        " loopcnt=2147483648",
        " loopcnt=-2147483649",
        " loopcnt=99999999999999999999",
        " loopcnt=+",
        " loopcnt=-",
        " loopcnt=1x",
        " type=bogus",
        " type=lo",
        " editype=floats",
        " data=1 data=2",
        " nosuch=1",
        " data=",
        " =x",
        " data",
        " data==x",
        "\tdata=x\t iseditag=2",
        "  data=x   ",
        " data=x\r",
        " data=a\\b/c#d",
        " data=\xc3\xa9",
        " data=x\"y\"",
        "=x",
        "",
    };
    for (const char *rest : rests) {
        auto read = [](const std::string &text) {
            datatree_t *tree = nullptr;
            std::string err = capture_stderr(
                [&] { tree = edihost_parsetree(text.data(), text.size(), "test"); });
            std::string got = tree != nullptr ? testsupport::dump(tree) : err;
            if (tree != nullptr)
                freedatatree(tree);
            return got;
        };
        std::string plain = "edi\n  n" + std::string(rest) + "\n";
        std::string quoted = "edi\n  \"n\"" + std::string(rest) + "\n";
        EXPECT_EQ(read(plain), read(quoted)) << rest;
    }
}
