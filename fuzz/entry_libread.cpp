#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "edi.h"
#include "fuzzentries.h"
#include "fuzzsupport.h"

namespace fuzzentry {

using fuzzsupport::expect;

namespace {

// How one input is read, from its flag byte.
struct Mode {
    bool raw = false;
    bool keepgoing = true;  // small.tree leaves most segments of real files out
    int configs = 0;  // 0 small.tree, 1 servconf, 2 small.tree twice, 3 none
    bool whole = false;  // edi_read_memory as well
};

// Where the lengths read go, so that the reads are not left out.
volatile size_t sink;

// Reads every string of the tree, so that a dangling or unterminated one
// shows.
void touchtree(const datatree_t *tree)
{
    size_t sum = 0;
    std::vector<const datatree_t *> stack;
    if (tree != nullptr)
        stack.push_back(tree);
    while (!stack.empty()) {
        const datatree_t *t = stack.back();
        stack.pop_back();
        expect(t->xmltag != nullptr, "a tree node without name");
        sum += strlen(t->xmltag);
        if (t->data != nullptr)
            sum += strlen(t->data);
        if (t->next != nullptr)
            stack.push_back(t->next);
        if (t->child != nullptr) {
            expect(t->child->parent == t, "a child whose parent is another node");
            stack.push_back(t->child);
        }
    }
    sink = sum;
}

void checktext(const char *s, const char *what)
{
    expect(s != nullptr, what);
    sink = strlen(s);
}


// Every field of a finding, and what edi.h says of them.
void checkfinding(const edi_finding *f)
{
    expect(f != nullptr, "a finding below the count is NULL");
    expect(f->kind >= EDI_FINDING_FAILURE && f->kind <= EDI_FINDING_NOTE,
           "a finding of no known kind");
    expect(f->severity >= EDI_SEVERITY_ERROR && f->severity <= EDI_SEVERITY_INFO,
           "a finding of no known severity");
    checktext(f->file, "a finding's file is NULL");
    checktext(f->tag, "a finding's tag is NULL");
    checktext(f->element, "a finding's element is NULL");
    expect(f->text != nullptr, "a finding's text is NULL");
    // A module line that holds a line end of the input comes as several
    // findings, some empty (docs/fuzzing.md).
    expect(f->text[0] != '\0',
           "a finding without text");
    expect(f->message >= 0, "a finding of a negative message number");
    expect(f->verbose >= 0 && f->verbose <= 2, "a finding of no known verbose level");
    sink = f->segment;
}

// Checks the findings of one list; returns how many are failures.
template <typename Owner>
size_t checkfindings(const Owner *o, size_t (*count)(const Owner *),
                     const edi_finding *(*at)(const Owner *, size_t))
{
    size_t n = count(o), failures = 0;
    for (size_t i = 0; i < n; i++) {
        const edi_finding *f = at(o, i);
        checkfinding(f);
        failures += f->kind == EDI_FINDING_FAILURE;
    }
    expect(at(o, n) == nullptr, "a finding beyond the count is not NULL");
    return failures;
}

void checkenvelope(const edi_envelope *e)
{
    expect(e != nullptr, "a message without envelope");
    const char *texts[] = {e->syntax_id, e->syntax_version, e->sender, e->sender_qualifier,
                           e->recipient, e->recipient_qualifier, e->date, e->time,
                           e->control_ref, e->application_ref, e->test_indicator, e->group_id,
                           e->group_sender, e->group_recipient, e->group_ref};
    for (const char *t : texts)
        checktext(t, "an envelope text is NULL");
    expect(e->has_una == 0 || e->has_una == 1, "has_una neither 0 nor 1");
    expect(e->has_ung == 0 || e->has_ung == 1, "has_ung neither 0 nor 1");
    expect(e->has_ung || (!*e->group_id && !*e->group_sender && !*e->group_recipient &&
                          !*e->group_ref),
           "group fields of a message outside any group");
    expect(e->has_una || (e->component_sep == ':' && e->element_sep == '+' &&
                          e->decimal_mark == '.' && e->release_char == '?' &&
                          e->segment_term == '\''),
           "service characters other than the defaults without UNA");
    expect(e->interchange >= 1, "an interchange number below 1");
}

// One message as edi_next gave it; returns its message node's name.
std::string checkmessage(const edi_message *m, int last)
{
    const datatree_t *tree = edi_message_tree(m);
    expect(tree != nullptr, "a message without tree");
    expect(tree->parent == nullptr && tree->next == nullptr, "a message node still in a chain");
    touchtree(tree);
    checkenvelope(edi_message_envelope(m));
    checktext(edi_message_reference(m), "a message reference is NULL");
    checktext(edi_message_type(m), "a message type is NULL");
    checktext(edi_message_version(m), "a message version is NULL");
    checktext(edi_message_release(m), "a message release is NULL");
    int number = edi_message_number(m);
    expect(number > last, "message numbers not rising in file order");
    sink = edi_message_segments(m);
    size_t n = edi_message_finding_count(m);
    checkfindings(m, edi_message_finding_count, edi_message_finding);
    for (size_t i = 0; i < n; i++)
        expect(edi_message_finding(m, i)->message == number,
               "a message's finding names another message");
    return tree->xmltag;
}

// The names of the message nodes of a whole read's tree.
// The names of a whole read's messages: the root's children but for the
// envelope nodes (#envelope, #group) in front of them.
std::vector<std::string> messagenames(const datatree_t *root)
{
    std::vector<std::string> out;
    for (const datatree_t *t = root->child; t != nullptr; t = t->next)
        if (t->xmltag[0] != '#')
            out.push_back(t->xmltag);
    return out;
}

}  // namespace

int libread(const uint8_t *data, size_t size)
{
    // A first byte 0x80..0xBF is the mode and not part of the input; an
    // interchange never begins with one, so the seeds read as they are.
    // The whole read doubles the cost of an input: a quarter of them.
    Mode mode;
    if (size > 0 && (data[0] & 0xc0) == 0x80) {
        mode.whole = (data[0] & 0x30) == 0x30;
        mode.raw = (data[0] & 1) != 0;
        mode.keepgoing = (data[0] & 2) == 0;
        mode.configs = (data[0] >> 2) & 3;
        data++;
        size--;
    }
    // Without configuration each message type's is generated from the
    // directory data: fuzz/directories holds a cut-down D96A with ORDERS
    // only, cheap to load per input; other types get a layout taken from
    // the message itself.
    static const bool directories =
        setenv("EDIPROT_DIRECTORIES", fuzzsupport::fuzzpath("directories"), 1) == 0;
    expect(directories, "cannot set EDIPROT_DIRECTORIES");
    const char *small = fuzzsupport::fuzzpath("small.tree");
    const char *const twice[] = {small, small};
    edi_options opt;
    edi_options_init(&opt);
    opt.raw = mode.raw;
    opt.keep_going = mode.keepgoing;
    if (mode.configs == 0 || mode.configs == 2) {
        opt.configs = twice;
        opt.nconfigs = mode.configs == 0 ? 1 : 2;
    } else if (mode.configs == 1) {
        opt.servconf = fuzzsupport::fuzzpath("servconf.conf");
    }

    // Message by message.  The messages are kept past edi_close, which
    // edi.h allows.
    edi_reader *r = edi_open_memory(data, size, "fuzz", &opt);
    expect(r != nullptr, "edi_open_memory gave NULL");
    std::vector<edi_message *> messages;
    std::vector<std::string> names;
    int rc, last = 0;
    // edi.h keeps a finding valid until its reader is released: the first
    // one is held across the reads behind it.
    const edi_finding *held = nullptr;
    const char *heldfile = nullptr, *heldtext = nullptr;
    for (;;) {
        if (held == nullptr && edi_reader_finding_count(r) > 0) {
            held = edi_reader_finding(r, 0);
            heldfile = held->file;
            heldtext = held->text;
        }
        edi_message *m = reinterpret_cast<edi_message *>(1);
        rc = edi_next(r, &m);
        expect(rc >= -1 && rc <= 1, "edi_next returned neither -1, 0 nor 1");
        if (rc != 1) {
            expect(m == nullptr, "edi_next ended but set a message");
            break;
        }
        expect(m != nullptr, "edi_next returned 1 without message");
        names.push_back(checkmessage(m, last));
        last = edi_message_number(m);
        messages.push_back(m);
    }
    for (int again = 0; again < 2; again++) {
        edi_message *m = nullptr;
        expect(edi_next(r, &m) == rc && m == nullptr, "edi_next changed its answer after the end");
    }
    size_t failures = checkfindings(r, edi_reader_finding_count, edi_reader_finding);
    expect(rc != -1 || failures > 0, "edi_next returned -1 without a failure finding");
    if (held != nullptr) {
        checktext(heldfile, "a held finding's file is NULL");
        checktext(heldtext, "a held finding's text is NULL");
        checkfinding(held);
    }
    edi_close(r);
    last = 0;
    for (size_t i = 0; i < messages.size(); i++) {
        checkmessage(messages[i], last);
        last = edi_message_number(messages[i]);
        if (i % 2 == 1) {
            datatree_t *t = edi_message_take_tree(messages[i]);
            expect(t != nullptr && edi_message_tree(messages[i]) == nullptr,
                   "edi_message_take_tree left the tree in the message");
            edi_tree_free(t);
        }
        edi_message_free(messages[i]);
    }

    // The whole input at once, with the same options: the same messages
    // when both succeed.
    int accepted = rc == 0 && !names.empty();
    if (!mode.whole)
        return accepted;
    edi_result *res = edi_read_memory(data, size, "fuzz", &opt);
    expect(res != nullptr, "edi_read_memory gave NULL");
    int status = edi_result_status(res);
    datatree_t *tree = edi_result_tree(res);
    expect(status == 0 || status == 1, "a read's status is neither 0 nor 1");
    expect((status == 0) == (tree != nullptr), "a read's status and tree disagree");
    size_t wholefailures = checkfindings(res, edi_result_finding_count, edi_result_finding);
    // Interchanges without messages only: no failure is said today
    // (docs/fuzzing.md).
    expect(status == 0 || wholefailures > 0,
           "a read failed without a failure finding");
    for (size_t i = 0; i < edi_result_count(res); i++)
        checktext(edi_result_item(res, i), "a read's key is NULL");
    expect(edi_result_item(res, edi_result_count(res)) == nullptr, "a key beyond the count");
    if (tree != nullptr) {
        touchtree(tree);
        expect(rc == 0, "the whole read succeeded where edi_next failed");
        expect(messagenames(tree) == names, "the whole read's messages differ from edi_next's");
    } else {
        expect(rc == -1 || names.empty(), "the whole read failed where edi_next read messages");
    }
    edi_result_free(res);
    return accepted + (status == 0);
}

}  // namespace fuzzentry
