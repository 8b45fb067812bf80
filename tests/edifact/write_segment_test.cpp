// writeeditag: one segment cut behind its last value, or left out as a
// whole without user data; what is taken back never reaches the stream.
#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "internal.h"
#include "testsupport.h"

using namespace testsupport;

namespace {

// Every node gets a greatest length, so that values pass the conversion.
void widen(datatree_t *tp)
{
    for (; tp != nullptr; tp = tp->next) {
        tp->edimaxlen = 35;
        widen(tp->child);
    }
}

// A seekable stream that already holds `lead` characters.
struct Stream {
    explicit Stream(size_t lead = 0) : fp(tmpfile())
    {
        std::string pad(lead, '.');
        fputs(pad.c_str(), fp);
    }
    ~Stream() { fclose(fp); }
    // Everything the file holds, also behind the present position.
    std::string whole()
    {
        long pos = ftell(fp);
        fflush(fp);
        std::string out;
        rewind(fp);
        int c;
        while ((c = fgetc(fp)) != EOF)
            out += static_cast<char>(c);
        fseek(fp, pos, SEEK_SET);
        return out;
    }
    // The file up to the present position.
    std::string written() { return whole().substr(0, static_cast<size_t>(ftell(fp))); }
    FILE *fp;
};

// $NAD with a simple element, a composite of three components and two
// more simple elements; the data tree fills the first and one component.
class NadSegment : public ::testing::Test {
protected:
    void SetUp() override
    {
        cf = rooted(node("edi", nullptr, {node("$NAD", nullptr, {
            node("3035"),
            node("C082", nullptr, {node("3039"), node("1131"), node("3055")}),
            node("3164"),
            node("3251"),
        })}));
        widen(cf);
        data = rooted(node("edi", nullptr, {node("$NAD", nullptr, {
            node("3035", "X1"), node("C082", nullptr, {node("3039", "Y")})})}));
    }
    void TearDown() override
    {
        freedatatree(cf);
        freedatatree(data);
    }
    datatree_t *nad() { return cf->child; }
    datatree_t *cf = nullptr;
    datatree_t *data = nullptr;
};

TEST_F(NadSegment, TakesBackTheTrailingEmptyElements)
{
    Stream s(200);
    ediprot::writeeditag(s.fp, data, nad(), "");
    EXPECT_EQ(ftell(s.fp), 209L);
    EXPECT_EQ(s.whole().substr(200), "NAD+X1+Y'");
}

TEST_F(NadSegment, TakesBackASegmentOfOptionalValuesOnly)
{
    nad()->child->edidata = ed_opt;
    nad()->child->next->child->edidata = ed_opt;
    freedatatree(data->child->child->next);
    data->child->child->next = nullptr;
    Stream s(200);
    ediprot::writeeditag(s.fp, data, nad(), "");
    EXPECT_EQ(ftell(s.fp), 200L);
    EXPECT_EQ(s.whole().substr(200), "");
}

TEST_F(NadSegment, KeepsAnOptionalValueBehindTheLastUserValue)
{
    nad()->child->next->child->edidata = ed_opt;
    Stream s;
    ediprot::writeeditag(s.fp, data, nad(), "");
    EXPECT_EQ(s.written(), "NAD+X1+Y'");
}

TEST_F(NadSegment, WritesTheValuesOfTheConfiguredSeparators)
{
    char saved[3] = {seg_sep, dst_sep, cmp_sep};
    seg_sep = '~';
    dst_sep = '*';
    cmp_sep = '=';
    nad()->child->next->next->defval = strdup("A*B");
    Stream s;
    ediprot::writeeditag(s.fp, data, nad(), "");
    seg_sep = saved[0];
    dst_sep = saved[1];
    cmp_sep = saved[2];
    EXPECT_EQ(s.written(), "NAD*X1*Y==*A?*B~");
}

struct SegCase {
    const char *what;
    const char *config;   // elements: '-' simple empty, 'v' simple with value,
                          // '(..)' composite of the same letters
    const char *expected;
};

// Builds a tag node $TAG from a compact description; values are the
// defaults "A", "B", ... in order.
datatree_t *maketag(const char *desc)
{
    datatree_t *tag = node("$TAG");
    char value[2] = "A";
    datatree_t *parent = tag;
    for (const char *cp = desc; *cp != '\0'; cp++) {
        if (*cp == '(') {
            parent = node("C");
            adopt(tag, {parent});
            continue;
        }
        if (*cp == ')') {
            parent = tag;
            continue;
        }
        datatree_t *el = node("E");
        el->edimaxlen = 35;
        if (*cp == 'v') {
            el->defval = strdup(value);
            value[0]++;
        }
        adopt(parent, {el});
    }
    return tag;
}

TEST(Writeeditag, KeepsSeparatorsInFrontOfValuesOnly)
{
    const SegCase cases[] = {
        {"no elements", "", ""},
        {"no value", "--(--)-", ""},
        {"empty elements in front stay", "v-v", "TAG+A++B'"},
        {"empty components in front stay", "(v--v)", "TAG+A:::B'"},
        {"empty composite between values", "v(---)v--", "TAG+A+::+B'"},
        {"trailing components go", "(v--)", "TAG+A'"},
        {"leading empties stay", "--v", "TAG+++A'"},
    };
    for (const SegCase &c : cases) {
        datatree_t *cf = rooted(node("edi", nullptr, {maketag(c.config)}));
        Stream s;
        ediprot::writeeditag(s.fp, nullptr, cf->child, "");
        EXPECT_EQ(s.written(), c.expected) << c.what;
        freedatatree(cf);
    }
}

TEST(Writeeditag, CountsAValueThatConvertsToNothing)
{
    datatree_t *cf = rooted(node("edi", nullptr, {maketag("vv-")}));
    datatree_t *second = cf->child->child->next;
    second->edimaxlen = 0;  // no length: the value leaves no text
    Stream s;
    ediprot::writeeditag(s.fp, nullptr, cf->child, "");
    EXPECT_EQ(s.written(), "TAG+A+'");
    freedatatree(cf);
}

TEST(Writeeditag, WritesThreeCharactersOfTheTagName)
{
    const struct {
        const char *name;
        const char *expected;
    } cases[] = {
        {"$AB", " AB+A'"}, {"$QTY_17", "QTY+A'"}, {"$unt", "unt+A'"},
    };
    for (const auto &c : cases) {
        datatree_t *cf = rooted(node("edi", nullptr, {maketag("v")}));
        free(cf->child->xmltag);
        cf->child->xmltag = strdup(c.name);
        Stream s;
        ediprot::writeeditag(s.fp, nullptr, cf->child, "");
        EXPECT_EQ(s.written(), c.expected);
        freedatatree(cf);
    }
}

TEST(Writeeditag, TracesWhereTheSegmentEnds)
{
    datatree_t *cf = rooted(node("edi", nullptr, {maketag("v-")}));
    Stream s(10);
    int saved = tracelevel;
    tracelevel = static_cast<int>(0x30000000u);
    std::string err = capture_stderr([&] { ediprot::writeeditag(s.fp, nullptr, cf->child, ""); });
    tracelevel = saved;
    for (const char *line : {"writeeditag: <$TAG>\n", "last_data: 10\n", "last_data: 15\n",
                             "edidata on E\n", "last_data 15, current 16\n",
                             "end writeeditag: <$TAG>\n"})
        EXPECT_NE(err.find(line), std::string::npos) << line << err;
    freedatatree(cf);
}

}  // namespace
