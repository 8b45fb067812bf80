// Reading through the C interface: message by message, or whole.
#include <errno.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <new>

#include "api/objects.h"
#include "trees/envelopenodes.h"
#include "directory/autoconfig.h"
#include "directory/validatefile.h"
#include "files/output.h"
#include "text/segments.h"
#include "trees/jsontree.h"
#include "trees/treeload.h"

edi_message::~edi_message()
{
    for (datatree_t *t : {tree, envtree, grouptree})
        if (t != nullptr)
            freedatatree(t);
}

edi_reader::~edi_reader()
{
    reading.reset();
    if (unit.tree != nullptr)
        freedatatree(unit.tree);
    for (datatree_t *c : configs)
        freedatatree(c);
}

namespace edi {
namespace {

// All bytes of a descriptor; false after "NAME: cannot be read: reason".
bool readfd(int fd, const std::string &name, std::string &out, Report &rep)
{
    char buf[65536];
    for (;;) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n == 0)
            return true;
        if (n < 0) {
            if (errno == EINTR)
                continue;
            rep.fail(name, std::string("cannot be read: ") + strerror(errno));
            return false;
        }
        out.append(buf, static_cast<size_t>(n));
    }
}

// The reader of `bytes`, or a reader that gives nothing after `ok` false.
edi_reader *openreader(bool ok, std::string bytes, const std::string &name,
                       const edi_options *opt, edi_reader *r)
{
    if (!ok || !takeoptions(opt, r->settings, r->configs, r->rep)) {
        r->state = -1;
        return r;
    }
    const Module *mod = themodule(r->rep);
    if (mod == nullptr) {
        r->state = -1;
        return r;
    }
    DirectoriesInUse dirs(r->settings.directories);
    if (opt != nullptr && opt->validate) {
        Report found;
        validatefile(name, bytes, found);
        for (const Finding &f : found.items())
            r->validation[f.message].push_back(f);
    }
    r->settings.permessage = true;
    r->reading = std::make_unique<EdifactReading>(*mod, r->settings, r->configs, name,
                                                  std::move(bytes), r->rep);
    if (r->reading->failed())
        r->state = -1;
    return r;
}

std::string component(const std::vector<std::string> &cs, size_t i)
{
    return i < cs.size() ? cs[i] : "";
}

// The header values and segment count of each message of a working copy.
std::vector<edi_reader::MessageInfo> messagesof(const std::string &text)
{
    std::vector<edi_reader::MessageInfo> out;
    SegmentReader sr(text);
    Segment s;
    bool open = false;
    while (sr.next(s)) {
        if (s.tag == "UNH") {
            edi_reader::MessageInfo m;
            std::vector<std::string> els = elementsof(segmentbody(text, s), s.sx);
            m.reference = els.size() > 1 ? els[1] : "";
            std::vector<std::string> id =
                els.size() > 2 ? componentsof(els[2], s.sx) : std::vector<std::string>{};
            m.type = component(id, 0);
            m.version = component(id, 1);
            m.release = component(id, 2);
            out.push_back(m);
            open = true;
        }
        if (open && !out.empty())
            out.back().segments++;
        if (s.tag == "UNT")
            open = false;
    }
    return out;
}

}  // namespace
}  // namespace edi

using namespace edi;

extern "C" {

edi_reader *edi_open_path(const char *path, const edi_options *opt)
{
    try {
        auto *r = new edi_reader();
        std::string name = path != nullptr ? path : "";
        std::string bytes;
        bool ok = name == "-" ? readfd(0, name, bytes, r->rep) : readwhole(name, bytes, r->rep);
        return openreader(ok, std::move(bytes), name, opt, r);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

edi_reader *edi_open_memory(const void *data, size_t len, const char *name,
                            const edi_options *opt)
{
    try {
        auto *r = new edi_reader();
        std::string bytes = data != nullptr ? std::string(static_cast<const char *>(data), len)
                                            : std::string();
        return openreader(true, std::move(bytes), name != nullptr ? name : "input", opt, r);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

edi_reader *edi_open_fd(int fd, const char *name, const edi_options *opt)
{
    try {
        auto *r = new edi_reader();
        std::string n = name != nullptr ? name : "input";
        std::string bytes;
        bool ok = readfd(fd, n, bytes, r->rep);
        return openreader(ok, std::move(bytes), n, opt, r);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

int edi_next(edi_reader *r, edi_message **msg)
{
    if (msg != nullptr)
        *msg = nullptr;
    if (r == nullptr || msg == nullptr)
        return -1;
    try {
        DirectoriesInUse dirs(r->settings.directories);
        while (r->state == 1 && r->pending == nullptr) {
            if (r->unit.tree != nullptr) {
                freedatatree(r->unit.tree);
                r->unit.tree = nullptr;
            }
            r->unitstart = r->rep.items().size();
            bool more = r->reading->next(r->unit);
            for (const std::string &name : r->reading->takeskipped()) {
                r->runcount = name == r->runname ? r->runcount + 1 : 1;
                r->runname = name;
            }
            if (!more) {
                r->state = r->reading->failed() ? -1 : 0;
                break;
            }
            r->pending = r->unit.tree->child;
            r->unit.tree->child = nullptr;
            r->infos = messagesof(r->unit.text);
            r->nextmessage = 0;
        }
        if (r->pending == nullptr)
            return r->state;
        auto *m = new edi_message();
        datatree_t *node = r->pending;
        r->pending = node->next;
        node->next = nullptr;
        node->parent = nullptr;
        m->tree = node;
        // Messages of one type in a row are numbered 1, 2, ... as a read of
        // them all in one piece numbers them, whatever working copies they
        // were read in.
        const std::string name = node->xmltag != nullptr ? node->xmltag : "";
        r->runcount = name == r->runname ? r->runcount + 1 : 1;
        r->runname = name;
        node->loopcnt = r->runcount;
        const edi::Unit &u = r->unit.unit;
        size_t i = r->nextmessage++;
        // The number in the file: from the envelope's count where the
        // working copy has one, else counted; rising always, even where the
        // module made more message nodes than the envelope saw headers.
        int expected = u.firstmsg > 0 ? u.firstmsg + static_cast<int>(i) : r->count + 1;
        m->number = std::max(expected, r->lastnumber + 1);
        r->lastnumber = m->number;
        r->count++;
        if (i < r->infos.size()) {
            m->reference = r->infos[i].reference;
            m->type = r->infos[i].type;
            m->version = r->infos[i].version;
            m->release = r->infos[i].release;
            m->segments = r->infos[i].segments;
        }
        std::string una, unb;
        unitenvelope(r->unit, una, unb);
        m->env = envelopevalues(una, unb, i < u.groups.size() ? u.groups[i] : "");
        m->env.interchange = u.interchange;
        m->charset = r->unit.charset;
        m->envtree = envelopenode(una, unb, u.unz, m->charset);
        if (i < u.groups.size() && !u.groups[i].empty())
            m->grouptree = groupnode(una, u.groups[i],
                                     i < u.groupends.size() ? u.groupends[i] : "");
        const std::deque<Finding> &all = r->rep.items();
        for (size_t k = r->unitstart; k < all.size(); k++)
            if (all[k].message == m->number)
                m->rep.add(all[k].kind, all[k].severity, all[k].file, all[k].text) = all[k];
        auto v = r->validation.find(m->number);
        if (v != r->validation.end())
            for (const Finding &f : v->second) {
                m->rep.add(f.kind, f.severity, f.file, f.text) = f;
                r->rep.add(f.kind, f.severity, f.file, f.text) = f;
            }
        const EnvelopeValues &e = m->env;
        edi_envelope &ev = m->view;
        ev.component_sep = e.cmp;
        ev.element_sep = e.dst;
        ev.decimal_mark = e.dec;
        ev.release_char = e.rel;
        ev.repetition_sep = e.rep;
        ev.segment_term = e.seg;
        ev.has_una = e.una;
        ev.syntax_id = e.syntaxid.c_str();
        ev.syntax_version = e.syntaxversion.c_str();
        ev.sender = e.sender.c_str();
        ev.sender_qualifier = e.senderqual.c_str();
        ev.recipient = e.recipient.c_str();
        ev.recipient_qualifier = e.recipientqual.c_str();
        ev.date = e.date.c_str();
        ev.time = e.time.c_str();
        ev.control_ref = e.controlref.c_str();
        ev.application_ref = e.applicationref.c_str();
        ev.test_indicator = e.testindicator.c_str();
        ev.has_ung = e.ung;
        ev.group_id = e.groupid.c_str();
        ev.group_sender = e.groupsender.c_str();
        ev.group_recipient = e.grouprecipient.c_str();
        ev.group_ref = e.groupref.c_str();
        ev.interchange = e.interchange;
        ev.unb_tree = m->envtree;
        ev.ung_tree = m->grouptree;
        ev.charset = m->charset.c_str();
        *msg = m;
        return 1;
    } catch (const std::bad_alloc &) {
        r->rep.fail("", "edi: out of memory");
        r->state = -1;
        return -1;
    }
}

size_t edi_reader_finding_count(const edi_reader *r)
{
    return r != nullptr ? r->rep.items().size() : 0;
}

const edi_finding *edi_reader_finding(const edi_reader *r, size_t i)
{
    return r != nullptr ? r->rep.view(i) : nullptr;
}

void edi_close(edi_reader *r)
{
    if (r != nullptr && r->pending != nullptr)
        freedatatree(r->pending);
    delete r;
}

const datatree_t *edi_message_tree(const edi_message *m)
{
    return m != nullptr ? m->tree : nullptr;
}

datatree_t *edi_message_take_tree(edi_message *m)
{
    if (m == nullptr)
        return nullptr;
    datatree_t *t = m->tree;
    m->tree = nullptr;
    return t;
}

const edi_envelope *edi_message_envelope(const edi_message *m)
{
    return m != nullptr ? &m->view : nullptr;
}

const char *edi_message_reference(const edi_message *m)
{
    return m != nullptr ? m->reference.c_str() : "";
}

const char *edi_message_type(const edi_message *m)
{
    return m != nullptr ? m->type.c_str() : "";
}

const char *edi_message_version(const edi_message *m)
{
    return m != nullptr ? m->version.c_str() : "";
}

const char *edi_message_release(const edi_message *m)
{
    return m != nullptr ? m->release.c_str() : "";
}

int edi_message_number(const edi_message *m)
{
    return m != nullptr ? m->number : 0;
}

size_t edi_message_segments(const edi_message *m)
{
    return m != nullptr ? m->segments : 0;
}

size_t edi_message_finding_count(const edi_message *m)
{
    return m != nullptr ? m->rep.items().size() : 0;
}

const edi_finding *edi_message_finding(const edi_message *m, size_t i)
{
    return m != nullptr ? m->rep.view(i) : nullptr;
}

void edi_message_free(edi_message *m)
{
    delete m;
}

}  // extern "C"
