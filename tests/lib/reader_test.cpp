// libedi through its C interface only, as an integrator uses it: messages
// one at a time with their envelope and findings, the whole read, writes,
// tree formats, configurations, and calls from several threads.
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "edi.h"

namespace {

const std::string corpus = EDIPROT_CORPUS "/edifact/";
const std::string samples = EDIPROT_SAMPLES "/";

std::string slurp(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

size_t count(const std::string &text, const std::string &what)
{
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        n++;
    return n;
}

struct Message {
    int number;
    std::string reference, type, version, tree, sender, senderqual, recipient, controlref,
        group;
    size_t segments;
    bool hasung;
};

std::string text(const datatree_t *tree)
{
    size_t len = 0;
    char *t = edi_tree_to_text(tree, &len);
    std::string s(t != nullptr ? t : "", len);
    edi_free(t);
    return s;
}

// The first message node under a read's root, past the envelope nodes.
datatree_t *firstmessage(const datatree_t *root)
{
    datatree_t *m = root->child;
    while (m != nullptr && m->xmltag != nullptr && m->xmltag[0] == '#')
        m = m->next;
    return m;
}

// Every message of a reader; `rc` receives edi_next's last answer.
std::vector<Message> drain(edi_reader *r, int &rc)
{
    std::vector<Message> out;
    edi_message *m = nullptr;
    while ((rc = edi_next(r, &m)) == 1) {
        const edi_envelope *e = edi_message_envelope(m);
        out.push_back({edi_message_number(m), edi_message_reference(m), edi_message_type(m),
                       edi_message_version(m), text(edi_message_tree(m)), e->sender,
                       e->sender_qualifier, e->recipient, e->control_ref, e->group_ref,
                       edi_message_segments(m), e->has_ung != 0});
        edi_message_free(m);
    }
    return out;
}

std::vector<std::string> texts(const edi_reader *r, edi_finding_kind kind)
{
    std::vector<std::string> out;
    for (size_t i = 0; i < edi_reader_finding_count(r); i++)
        if (edi_reader_finding(r, i)->kind == kind)
            out.push_back(edi_reader_finding(r, i)->text);
    return out;
}

TEST(Reader, GivesEachMessageWithItsHeaderAndEnvelope)
{
    struct Case {
        std::string file;
        size_t messages;
        std::string firstref, type, sender, senderqual, controlref, groupref;
    } cases[] = {
        {samples + "orders-d96a.edi", 2, "ORD0001", "ORDERS", "5412345000013", "14",
         "OR240815001", ""},
        // Line ends between segments: the module alone refuses this file.
        {corpus + "bots_INVOIC_D96A_invoic01.edi", 2, "111424", "INVOIC", "8712345678910", "14",
         "4", ""},
        // A group: its UNG is taken out of the working copy, not of the envelope.
        {corpus + "edinet_Issue149_UNG_segment_groups.edi", 1, "1234", "ISSUE", "SENDERID", "ZZZ",
         "95000000000001", "9999"},
    };
    for (const Case &c : cases) {
        edi_reader *r = edi_open_path(c.file.c_str(), nullptr);
        int rc = 0;
        std::vector<Message> ms = drain(r, rc);
        EXPECT_EQ(rc, 0) << c.file;
        std::string bytes = slurp(c.file);
        ASSERT_EQ(ms.size(), c.messages) << c.file;
        EXPECT_EQ(ms.size(), count(bytes, "UNH+")) << c.file;
        EXPECT_EQ(ms[0].reference, c.firstref) << c.file;
        for (size_t i = 0; i < ms.size(); i++) {
            EXPECT_EQ(ms[i].number, static_cast<int>(i + 1)) << c.file;
            EXPECT_EQ(ms[i].type, c.type) << c.file;
            EXPECT_EQ(ms[i].tree.compare(0, 1 + c.type.size(), "*" + c.type), 0) << c.file;
            EXPECT_GT(ms[i].segments, 2u) << c.file;
            EXPECT_EQ(ms[i].sender, c.sender) << c.file;
            EXPECT_EQ(ms[i].senderqual, c.senderqual) << c.file;
            EXPECT_EQ(ms[i].controlref, c.controlref) << c.file;
            EXPECT_EQ(ms[i].group, c.groupref) << c.file;
            EXPECT_EQ(ms[i].hasung, !c.groupref.empty()) << c.file;
        }
        // After the end, the end again.
        edi_message *m = reinterpret_cast<edi_message *>(1);
        EXPECT_EQ(edi_next(r, &m), 0);
        EXPECT_EQ(m, nullptr);
        edi_close(r);
    }
}

TEST(Reader, SegmentCountIsUnhToUnt)
{
    std::string one = "UNB+UNOA:3+ME:14+YOU:14+240101:1200+7'UNH+A1+ORDERS:D:96A:UN'"
                      "BGM+220+PO1+9'DTM+137:20240101:102'UNT+4+A1'UNZ+1+7'";
    edi_reader *r = edi_open_memory(one.data(), one.size(), "one.edi", nullptr);
    int rc;
    std::vector<Message> ms = drain(r, rc);
    ASSERT_EQ(ms.size(), 1u);
    EXPECT_EQ(ms[0].segments, 4u);
    EXPECT_EQ(ms[0].recipient, "YOU");
    EXPECT_EQ(ms[0].version, "D");
    edi_close(r);
}

// A change made to every message's working copy is listed for the first
// thousand messages and counted for the rest, so that the reader's memory
// does not grow with the number of messages; every message is still read.
TEST(Reader, ChangesToEveryCopyListedUpToAThousand)
{
    const int messages = 1003;
    std::string text = "UNB+UNOA:3+ME:14+YOU:14+240101:1200+7'";
    for (int i = 1; i <= messages; i++)
        text += "UNH+" + std::to_string(i) + "+ORDERS:D:96A:UN'BGM+220+PO1+9'UNT+3+" +
                std::to_string(i) + "'";
    text += "UNZ+" + std::to_string(messages) + "+7'";
    edi_reader *r = edi_open_memory(text.data(), text.size(), "many.edi", nullptr);
    int rc;
    EXPECT_EQ(drain(r, rc).size(), static_cast<size_t>(messages));
    EXPECT_EQ(rc, 0);
    std::vector<std::string> changes = texts(r, EDI_FINDING_CHANGED);
    size_t padded = 0;
    for (const std::string &c : changes)
        padded += c.find("without component separator") != std::string::npos;
    EXPECT_EQ(padded, 1000u);
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.back(),
              "3 more changes to working copies like those above are not listed (the first "
              "1000 are)");
    edi_close(r);
}

TEST(Reader, MemoryDescriptorAndPathGiveTheSameMessages)
{
    std::string path = corpus + "bots_INVOIC_D96A_invoic01.edi";
    std::string bytes = slurp(path);
    int rc;
    edi_reader *a = edi_open_path(path.c_str(), nullptr);
    std::vector<Message> frompath = drain(a, rc);
    edi_reader *b = edi_open_memory(bytes.data(), bytes.size(), path.c_str(), nullptr);
    std::vector<Message> frommemory = drain(b, rc);
    int fd = open(path.c_str(), O_RDONLY);
    ASSERT_GE(fd, 0);
    edi_reader *c = edi_open_fd(fd, path.c_str(), nullptr);
    close(fd);
    std::vector<Message> fromfd = drain(c, rc);
    ASSERT_EQ(frompath.size(), 2u);
    for (const auto *other : {&frommemory, &fromfd}) {
        ASSERT_EQ(other->size(), frompath.size());
        for (size_t i = 0; i < frompath.size(); i++)
            EXPECT_EQ((*other)[i].tree, frompath[i].tree);
    }
    edi_close(a);
    edi_close(b);
    edi_close(c);
}

TEST(Reader, MessagesAreTheWholeReadsMessages)
{
    std::string path = corpus + "bots_INVOIC_D96A_invoic01.edi";
    edi_result *whole = edi_read(path.c_str(), nullptr);
    ASSERT_EQ(edi_result_status(whole), 0);
    edi_reader *r = edi_open_path(path.c_str(), nullptr);
    int rc;
    std::vector<Message> ms = drain(r, rc);
    size_t i = 0;
    for (datatree_t *m = firstmessage(edi_result_tree(whole)); m != nullptr; m = m->next, i++) {
        if (m->xmltag[0] == '#') {  // an envelope node: not a message
            i--;
            continue;
        }
        ASSERT_LT(i, ms.size());
        datatree_t *next = m->next;
        m->next = nullptr;  // one message's text
        std::string t = text(m);
        m->next = next;
        EXPECT_EQ(t, ms[i].tree);
    }
    EXPECT_EQ(i, ms.size());
    edi_close(r);
    edi_result_free(whole);
}

TEST(Reader, FailuresAreFindingsAndTheEndStays)
{
    struct Case {
        std::string name, bytes, expect;  // bytes "" : a path that does not exist
    } cases[] = {
        {"/nonexistent/file.edi", "", "cannot be read: No such file or directory"},
        {"two.edi", "UNB+UNOA:3+ME:14+YOU:14+240101:1200+7'UNH+1+ORDERS:D:96A:UN'UNT+2+1'"
                    "UNB+UNOA:3+ME:14+YOU:14+240101:1200+8'",
         "the envelope is broken"},
        {"noise.edi", "this is not an interchange", ""},
    };
    for (const Case &c : cases) {
        edi_reader *r = c.bytes.empty()
                            ? edi_open_path(c.name.c_str(), nullptr)
                            : edi_open_memory(c.bytes.data(), c.bytes.size(), c.name.c_str(), nullptr);
        int rc;
        std::vector<Message> ms = drain(r, rc);
        EXPECT_EQ(rc, -1) << c.name;
        EXPECT_TRUE(ms.empty()) << c.name;
        std::vector<std::string> failures = texts(r, EDI_FINDING_FAILURE);
        ASSERT_FALSE(failures.empty()) << c.name;
        bool found = c.expect.empty();
        for (const std::string &f : failures)
            found = found || f.find(c.expect) != std::string::npos;
        EXPECT_TRUE(found) << c.name << ": " << failures.back();
        EXPECT_STREQ(edi_reader_finding(r, 0)->file, c.name.c_str());
        edi_message *m = nullptr;
        EXPECT_EQ(edi_next(r, &m), -1) << c.name;
        edi_close(r);
    }
}

TEST(Reader, SegmentsLeftOutAreFindingsWithTheirPlace)
{
    // DTM behind UNS has no place in ORDERS: with keep_going the message
    // comes with a finding naming message, position and tag.
    std::string text = "UNB+UNOA:3+ME:14+YOU:14+240101:1200+7'UNH+A1+ORDERS:D:96A:UN'"
                       "BGM+220+PO1+9'UNS+S'DTM+137:20240101:102'UNT+5+A1'UNZ+1+7'";
    std::string config = EDIPROT_CONFIGS "/orders-d96a-in.tree";
    const char *configs[] = {config.c_str()};
    edi_options opt;
    edi_options_init(&opt);
    opt.configs = configs;
    opt.nconfigs = 1;
    for (int keep : {0, 1}) {
        opt.keep_going = keep;
        edi_reader *r = edi_open_memory(text.data(), text.size(), "left.edi", &opt);
        edi_message *m = nullptr;
        int rc = edi_next(r, &m);
        EXPECT_EQ(rc, keep ? 1 : -1);
        const edi_finding *lo = nullptr;
        for (size_t i = 0; i < edi_reader_finding_count(r); i++)
            if (edi_reader_finding(r, i)->kind == EDI_FINDING_LEFT_OUT && lo == nullptr)
                lo = edi_reader_finding(r, i);
        ASSERT_NE(lo, nullptr);
        EXPECT_EQ(lo->message, 1);
        EXPECT_EQ(lo->segment, 4u);
        EXPECT_STREQ(lo->tag, "DTM");
        EXPECT_EQ(lo->severity, keep ? EDI_SEVERITY_WARNING : EDI_SEVERITY_ERROR);
        if (m != nullptr) {
            ASSERT_GE(edi_message_finding_count(m), 1u);
            EXPECT_EQ(edi_message_finding(m, 0)->kind, EDI_FINDING_LEFT_OUT);
        }
        edi_message_free(m);
        edi_close(r);
    }
}

TEST(Reader, ValidationFindingsGoWithTheirMessage)
{
    // The second message lacks its mandatory BGM.
    std::string text = "UNB+UNOA:3+ME:14+YOU:14+240101:1200+7'"
                       "UNH+A1+ORDERS:D:96A:UN'BGM+220+PO1+9'DTM+137:20240101:102'UNS+S'UNT+5+A1'"
                       "UNH+A2+ORDERS:D:96A:UN'DTM+137:20240101:102'UNS+S'UNT+4+A2'UNZ+2+7'";
    edi_options opt;
    edi_options_init(&opt);
    opt.validate = 1;
    opt.keep_going = 1;
    edi_reader *r = edi_open_memory(text.data(), text.size(), "v.edi", &opt);
    edi_message *m = nullptr;
    std::vector<size_t> perMessage;
    while (edi_next(r, &m) == 1) {
        size_t n = 0;
        for (size_t i = 0; i < edi_message_finding_count(m); i++)
            if (edi_message_finding(m, i)->kind == EDI_FINDING_VALIDATION) {
                EXPECT_EQ(edi_message_finding(m, i)->message, edi_message_number(m));
                n++;
            }
        perMessage.push_back(n);
        edi_message_free(m);
    }
    ASSERT_EQ(perMessage.size(), 2u);
    EXPECT_EQ(perMessage[0], 0u);
    EXPECT_GE(perMessage[1], 1u);
    edi_close(r);
}

TEST(Library, ReadWriteReadGivesTheSameTree)
{
    std::string path = samples + "orders-d96a.edi";
    edi_result *first = edi_read(path.c_str(), nullptr);
    ASSERT_EQ(edi_result_status(first), 0);
    edi_write_options w;
    edi_write_options_init(&w);
    w.sender = "5412345000013";
    w.recipient = "4098765000004";
    w.reference = "REF1";
    edi_result *written = edi_write(edi_result_tree(first), &w);
    ASSERT_EQ(edi_result_status(written), 0);
    size_t len = 0;
    const char *bytes = edi_result_text(written, &len);
    ASSERT_NE(bytes, nullptr);
    std::string out(bytes, len);
    EXPECT_NE(out.find("UNZ+2+REF1'"), std::string::npos);
    edi_result *again = edi_read_memory(bytes, len, "again.edi", nullptr);
    ASSERT_EQ(edi_result_status(again), 0);
    // The writer leaves trailing empty components out: an empty value
    // there reads back as none.
    auto values = [](std::string t) {
        for (size_t at; (at = t.find(" data=\"\"")) != std::string::npos;)
            t.erase(at, 8);
        return t;
    };
    datatree_t *a = firstmessage(edi_result_tree(first)),
               *b = firstmessage(edi_result_tree(again));
    EXPECT_EQ(values(text(a)), values(text(b)));
    edi_result_free(first);
    edi_result_free(written);
    edi_result_free(again);
}

TEST(Library, WriteRefusesServiceCharactersInTheEnvelope)
{
    edi_result *first = edi_read((samples + "orders-d96a.edi").c_str(), nullptr);
    edi_write_options w;
    edi_write_options_init(&w);
    w.sender = "ME+YOU";
    edi_result *written = edi_write(edi_result_tree(first), &w);
    EXPECT_EQ(edi_result_status(written), 2);
    EXPECT_EQ(edi_result_text(written, nullptr), nullptr);
    ASSERT_EQ(edi_result_finding_count(written), 1u);
    EXPECT_STREQ(edi_result_finding(written, 0)->element, "sender");
    edi_result_free(written);
    // The read's envelope names the recipient; a tree without it, and
    // without the option, would name nobody.
    w.sender = "ME";
    edi_result *carried = edi_write(edi_result_tree(first), &w);
    EXPECT_EQ(edi_result_status(carried), 0);
    edi_result_free(carried);
    datatree_t *root = edi_result_tree(first);
    datatree_t *envelope = root->child;
    ASSERT_EQ(std::string(envelope->xmltag), "#envelope");
    root->child = envelope->next;
    edi_result *nobody = edi_write(root, &w);
    root->child = envelope;
    EXPECT_EQ(edi_result_status(nobody), 2);
    ASSERT_EQ(edi_result_finding_count(nobody), 1u);
    EXPECT_STREQ(edi_result_finding(nobody, 0)->element, "recipient");
    edi_result_free(nobody);
    edi_result_free(first);
}

TEST(Library, TreeFormatsGoBothWays)
{
    edi_result *read = edi_read((samples + "orders-d96a.edi").c_str(), nullptr);
    const datatree_t *tree = edi_result_tree(read);
    size_t len;
    for (char *(*form)(const datatree_t *, size_t *) : {edi_tree_to_text, edi_tree_to_json}) {
        char *t = form(tree, &len);
        ASSERT_NE(t, nullptr);
        EXPECT_EQ(strlen(t), len);
        edi_result *back = edi_tree_parse(t, len, "t");
        ASSERT_EQ(edi_result_status(back), 0);
        EXPECT_EQ(text(edi_result_tree(back)), text(tree));
        edi_result_free(back);
        edi_free(t);
    }
    const char bad[] = "root\n  child bogus=1\n";
    edi_result *broken = edi_tree_parse(bad, sizeof bad - 1, "bad.tree");
    EXPECT_EQ(edi_result_status(broken), 1);
    ASSERT_GE(edi_result_finding_count(broken), 1u);
    EXPECT_EQ(std::string(edi_result_finding(broken, 0)->text).rfind("bad.tree:2: ", 0), 0u)
        << edi_result_finding(broken, 0)->text;
    edi_result_free(broken);
    edi_result_free(read);
}

TEST(Library, ConfigurationsAndListsFromTheDirectories)
{
    edi_result *dirs = edi_config_list(nullptr);
    ASSERT_EQ(edi_result_status(dirs), 0);
    std::vector<std::string> names;
    for (size_t i = 0; i < edi_result_count(dirs); i++)
        names.push_back(edi_result_item(dirs, i));
    EXPECT_EQ(names.front(), "D93A");
    EXPECT_EQ(names.back(), "D10B");
    edi_result *msgs = edi_config_list("D96A");
    bool orders = false;
    for (size_t i = 0; i < edi_result_count(msgs); i++)
        orders = orders || std::string(edi_result_item(msgs, i)).rfind("ORDERS\t", 0) == 0;
    EXPECT_TRUE(orders);
    edi_result *conf = edi_config("ORDERS", "D96A", 0);
    ASSERT_EQ(edi_result_status(conf), 0);
    EXPECT_STREQ(edi_result_tree(conf)->child->xmltag, "*ORDERS");
    edi_result *none = edi_config("NOSUCH", "D96A", 0);
    EXPECT_EQ(edi_result_status(none), 1);
    EXPECT_NE(std::string(edi_result_finding(none, 0)->text).find("has no message NOSUCH"),
              std::string::npos);
    for (edi_result *r : {dirs, msgs, conf, none})
        edi_result_free(r);
}

TEST(Library, NullArgumentsAreAnswered)
{
    edi_message *m = reinterpret_cast<edi_message *>(1);
    EXPECT_EQ(edi_next(nullptr, &m), -1);
    EXPECT_EQ(m, nullptr);
    EXPECT_EQ(edi_result_status(nullptr), 1);
    EXPECT_EQ(edi_result_tree(nullptr), nullptr);
    EXPECT_EQ(edi_result_finding(nullptr, 0), nullptr);
    EXPECT_EQ(edi_reader_finding_count(nullptr), 0u);
    EXPECT_STREQ(edi_message_type(nullptr), "");
    EXPECT_EQ(edi_tree_to_text(nullptr, nullptr), nullptr);
    edi_result *r = edi_write(nullptr, nullptr);
    EXPECT_EQ(edi_result_status(r), 1);
    edi_result_free(r);
    edi_close(nullptr);
    edi_result_free(nullptr);
    edi_message_free(nullptr);
}

TEST(Library, ThreadsReadAtOnceAndGetWhatOneThreadGets)
{
    std::vector<std::string> files = {corpus + "bots_INVOIC_D96A_invoic01.edi",
                                      samples + "orders-d96a.edi", samples + "desadv-d96a.edi"};
    auto readall = [](const std::string &f) {
        edi_reader *r = edi_open_path(f.c_str(), nullptr);
        int rc;
        std::vector<Message> ms = drain(r, rc);
        std::string all = std::to_string(rc) + std::to_string(edi_reader_finding_count(r));
        for (const Message &m : ms)
            all += m.tree;
        edi_close(r);
        return all;
    };
    std::vector<std::string> alone;
    for (const std::string &f : files)
        alone.push_back(readall(f));
    std::vector<std::string> got(files.size() * 4);
    std::vector<std::thread> threads;
    for (size_t t = 0; t < got.size(); t++)
        threads.emplace_back([&, t] { got[t] = readall(files[t % files.size()]); });
    for (std::thread &t : threads)
        t.join();
    for (size_t t = 0; t < got.size(); t++)
        EXPECT_EQ(got[t], alone[t % files.size()]) << files[t % files.size()];
}

}  // namespace

namespace {

TEST(Library, MessagesFromTheReaderWrittenAsOneInterchange)
{
    std::string path = samples + "orders-d96a.edi";
    edi_reader *r = edi_open_path(path.c_str(), nullptr);
    std::vector<edi_message *> ms;
    edi_message *m;
    while (edi_next(r, &m) == 1)
        ms.push_back(m);
    ASSERT_EQ(ms.size(), 2u);
    std::vector<datatree_t *> trees;
    for (edi_message *one : ms)
        trees.push_back(edi_message_take_tree(one));
    edi_write_options w;
    edi_write_options_init(&w);
    w.reference = "R9";
    w.sender = "ME";
    w.recipient = "YOU";
    edi_result *out = edi_write_messages(trees.data(), trees.size(), &w);
    ASSERT_EQ(edi_result_status(out), 0);
    std::string text(edi_result_text(out, nullptr));
    EXPECT_EQ(count(text, "UNH+"), 2u);
    EXPECT_NE(text.find("UNZ+2+R9'"), std::string::npos);
    // The caller's trees are as they were: unlinked.
    EXPECT_EQ(trees[0]->next, nullptr);
    EXPECT_EQ(trees[0]->parent, nullptr);
    // One message given twice is refused, not looped over.
    datatree_t *twice[] = {trees[0], trees[0]};
    edi_result *refused = edi_write_messages(twice, 2, &w);
    EXPECT_EQ(edi_result_status(refused), 2);
    EXPECT_EQ(trees[0]->next, nullptr);
    for (datatree_t *t : trees)
        edi_tree_free(t);
    for (edi_message *one : ms)
        edi_message_free(one);
    edi_result_free(out);
    edi_result_free(refused);
    edi_close(r);
}

TEST(Library, DirectoryDataChosenPerCall)
{
    // A folder without directory data: no configuration can be made, so
    // each message is read with a layout taken from itself, and the note
    // says where the library looked; the default is back for the next call.
    edi_options opt;
    edi_options_init(&opt);
    opt.directories = "/nonexistent-directories";
    std::string path = samples + "orders-d96a.edi";
    auto notes = [](const edi_result *res) {
        size_t n = 0;
        for (size_t i = 0; i < edi_result_finding_count(res); i++)
            n += strstr(edi_result_finding(res, i)->text, "/nonexistent-directories") != nullptr;
        return n;
    };
    edi_result *none = edi_read(path.c_str(), &opt);
    EXPECT_EQ(edi_result_status(none), 0);
    EXPECT_EQ(notes(none), 1u);
    EXPECT_STREQ(firstmessage(edi_result_tree(none))->child->child->xmltag, "UNH01");
    edi_result *some = edi_read(path.c_str(), nullptr);
    EXPECT_EQ(edi_result_status(some), 0);
    EXPECT_EQ(notes(some), 0u);
    edi_result_free(none);
    edi_result_free(some);
}

}  // namespace

namespace {

// The loop instances of `name` anywhere in the tree.
size_t instances(const datatree_t *tp, const char *name)
{
    size_t n = 0;
    for (; tp != nullptr; tp = tp->next)
        n += (tp->xmltag != nullptr && strcmp(tp->xmltag, name) == 0) + instances(tp->child, name);
    return n;
}

TEST(Vda, EveryRecordKeptAsLoopInstancesAndWrittenBack)
{
    struct Case {
        std::string file;
        std::vector<std::pair<const char *, size_t>> loops;
    } cases[] = {
        {corpus + "../vda/edifabric_Vda_4905_02_MultipleMessages.txt",
         {{"*TRANSMISSION", 2}, {"*CALLOFF", 2}, {"*TEXT518", 4}}},
        {samples + "vda4913-sample.txt",
         {{"*TRANSPORT", 1}, {"*DELIVERYNOTE", 2}, {"*ITEM", 3}, {"*PACKAGING", 3}}},
    };
    for (const Case &c : cases) {
        edi_result *read = edi_vda_read(c.file.c_str(), nullptr, nullptr);
        ASSERT_EQ(edi_result_status(read), 0) << c.file;
        for (const auto &[name, n] : c.loops)
            EXPECT_EQ(instances(edi_result_tree(read), name), n) << c.file << " " << name;
        edi_result *written = edi_vda_write(edi_result_tree(read), nullptr, nullptr);
        ASSERT_EQ(edi_result_status(written), 0) << c.file;
        std::string want, got = edi_result_text(written, nullptr);
        for (char ch : slurp(c.file))
            if (ch != '\r' && ch != '\n')
                want += ch;
        got.erase(std::remove_if(got.begin(), got.end(), [](char ch) { return ch == '\r' || ch == '\n'; }),
                  got.end());
        EXPECT_EQ(got, want.substr(want.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0)) << c.file;
        edi_result_free(read);
        edi_result_free(written);
    }
}

TEST(Vda, ValidationNamesLineAndField)
{
    std::string text = slurp(samples + "vda4913-sample.txt");
    text.replace(128 + 2 + 40, 7, "00023X0");  // 712 gross weight, line 2
    edi_result *res = edi_validate_memory(text.data(), text.size(), "v.txt");
    EXPECT_EQ(edi_result_status(res), 1);
    ASSERT_EQ(edi_result_finding_count(res), 1u);
    const edi_finding *f = edi_result_finding(res, 0);
    EXPECT_EQ(f->kind, EDI_FINDING_VALIDATION);
    EXPECT_EQ(f->segment, 2u);
    EXPECT_STREQ(f->tag, "712");
    EXPECT_STREQ(f->element, "grossweight");
    edi_result_free(res);
}

}  // namespace
