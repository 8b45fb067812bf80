// The tree parser: builds a tree from the tree text format, with `line`,
// `file` and `parent` of every node set.  Any fault gives one message
// "NAME:LINE: reason" and no tree at all.  Also readconfig, the module's
// service for reading a configuration file.
#include <stdlib.h>
#include <string.h>

#include <new>
#include <string>
#include <vector>

#include "edihost.h"
#include "nodestore.h"
#include "treefastline.h"
#include "treefields.h"
#include "treelex.h"

namespace edihost {
namespace {

// Sets the fields of a line on `tp`.
bool setfields(linescan &ls, datatree_t *tp, const std::vector<entryfield> &fields)
{
    bool seen[32] = {};
    static_assert(sizeof seen / sizeof seen[0] >= 13, "one flag per field");
    for (const entryfield &ef : fields) {
        const treefield *fd = findfield(ef.key.data(), ef.key.size());
        if (fd == nullptr)
            return ls.fail("unknown field " + ef.key);
        size_t idx = static_cast<size_t>(fd - treefields);
        if (seen[idx])
            return ls.fail("duplicate field " + ef.key);
        seen[idx] = true;
        if (fd->kind == fieldkind::text) {
            settext(tp, *fd, newcopy(ef.value));
            continue;
        }
        int value = 0;
        if (fd->kind == fieldkind::word) {
            value = findword(*fd, ef.value.data(), ef.value.size());
            if (value < 0) {
                std::string shown;
                appendtoken(shown, ef.value.c_str(), false);
                return ls.fail("bad " + ef.key + " word " + shown);
            }
        } else if (!readint(ls, ef, value)) {
            return false;
        }
        setnumber(tp, *fd, value);
    }
    return true;
}

// One open level of nesting: its indentation and its latest node.
struct level {
    size_t indent;
    datatree_t *tp;
};

datatree_t *parsetree(const char *text, size_t len, const char *name)
{
    textlines lines{text, text + len};
    std::vector<level> open;
    std::vector<entryfield> fields;
    std::string tag;
    datatree_t *head = nullptr;
    // One shared copy of the name for every node.
    char *const file = edihost_internname(name);
    const char *lb;
    const char *le;
    while (lines.next(lb, le)) {
        linescan ls{lb, le, {}};
        datatree_t *tp = nullptr;
        bool ok = true;
        // Most lines are plain and read in one pass; any other, and any
        // fault, is read by the full reader, which names what is wrong.
        const char *ip = lb;
        while (ip != le && *ip == ' ')
            ip++;
        if (ip != le && *ip != '#' && *ip != '\t') {
            tp = newnode();
            if (readplainline(ip, le, tp)) {
                ls.cp = ip;
            } else {
                freenode(tp);
                tp = nullptr;
            }
        }
        if (tp != nullptr) {
            tp->line = lines.lineno;
            tp->file = file;
        } else if (memchr(lb, '\0', static_cast<size_t>(le - lb)) != nullptr) {
            ok = ls.fail("NUL byte in the text");
        } else {
            ls.skipblanks();
            if (ls.atend() || *ls.cp == '#')
                continue;  // blank line or comment
            if (*ip == '\t')
                ok = ls.fail("tab in indentation");
        }
        size_t indent = static_cast<size_t>(ls.cp - lb);
        if (ok && tp == nullptr)
            ok = readentry(ls, tag, fields);
        if (ok && tp == nullptr) {
            tp = newnode();
            tp->xmltag = newcopy(tag);
            tp->line = lines.lineno;
            tp->file = file;
            ok = setfields(ls, tp, fields);
        }
        // Where the node goes: below the latest node when indented deeper,
        // else behind the latest node of the same indentation.
        if (ok && open.empty() && indent > 0)
            ok = ls.fail("indented under no node");
        if (ok && !open.empty() && indent > open.back().indent) {
            tp->parent = open.back().tp;
            open.back().tp->child = tp;
            open.push_back({indent, tp});
        } else if (ok && !open.empty()) {
            while (open.back().indent > indent)
                open.pop_back();
            if (open.back().indent != indent) {
                ok = ls.fail("indentation matches no open level");
            } else {
                tp->parent = open.back().tp->parent;
                open.back().tp->next = tp;
                open.back().tp = tp;
            }
        } else if (ok) {
            head = tp;
            open.push_back({indent, tp});
        }
        if (!ok) {
            reportline(name, lines.lineno, ls.reason);
            if (tp != nullptr)
                freedatatree(tp);
            if (head != nullptr)
                freedatatree(head);
            return nullptr;
        }
    }
    if (head == nullptr)
        reportline(name, lines.lineno > 0 ? lines.lineno : 1, "no node in the text");
    return head;
}

}  // namespace
}  // namespace edihost

extern "C" {

datatree_t *edihost_parsetree(const char *text, size_t len, const char *name)
{
    if (name == nullptr)
        name = "(null)";
    if (text == nullptr)
        len = 0;
    try {
        return edihost::parsetree(text != nullptr ? text : "", len, name);
    } catch (const std::bad_alloc &) {
        edihost_outofmemory();
    }
    return nullptr;
}

datatree_t *edihost_readtree(const char *fn)
{
    if (fn == nullptr) {
        fputs("(null): no file name\n", stderr);
        return nullptr;
    }
    try {
        std::string text;
        if (!edihost::slurpfile(fn, text))
            return nullptr;
        return edihost_parsetree(text.data(), text.size(), fn);
    } catch (const std::bad_alloc &) {
        edihost_outofmemory();
    }
    return nullptr;
}

datatree_t *readconfig(char *conffile, int flag, char *file, int line)
{
    (void)flag;
    (void)file;
    (void)line;
    return edihost_readtree(conffile);
}

}  // extern "C"
