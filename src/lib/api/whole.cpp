// Whole inputs and outputs through the C interface: a read into one tree,
// VDA files, writes, validation, configurations and tree formats.
#include <ctype.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <new>
#include <set>

#include "api/objects.h"
#include "ack/contrl.h"
#include "ack/received.h"
#include "directory/autoconfig.h"
#include "directory/configgen.h"
#include "directory/validatefile.h"
#include "edihost.h"
#include "findings/reportjson.h"
#include "files/output.h"
#include "trees/jsontree.h"
#include "trees/treeload.h"
#include "vda/layout.h"
#include "vda/validate.h"
#include "write/writeedifact.h"

using namespace edi;

namespace {

// The bundled configuration for a VDA file: that of the family of its first
// record type.  "" after a failure naming what the file holds.
std::string vdaconfigfor(const std::string &name, const std::string &bytes, Report &rep)
{
    size_t start = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    size_t lineno = 1;
    for (size_t at = start; at < bytes.size();) {
        size_t nl = bytes.find('\n', at);
        std::string line = bytes.substr(at, (nl == std::string::npos ? bytes.size() : nl) - at);
        if (const VdaFamily *f = familyoftype(line.substr(0, 3))) {
            std::string path = bundledconfig(*f);
            if (path.empty()) {
                rep.fail(name, std::string("the bundled configuration ") + f->config +
                                   " is not found (no data folder); give --config FILE.");
                return "";
            }
            rep.add(EDI_FINDING_NOTE, EDI_SEVERITY_INFO, name,
                    std::string("read as ") + f->name + " with the bundled configuration " +
                        f->config + " (record type " + line.substr(0, 3) + " in line " +
                        std::to_string(lineno) + ")");
            return path;
        }
        if (nl == std::string::npos)
            break;
        at = nl + 1;
        lineno++;
    }
    rep.fail(name, "holds no VDA record (no line begins with a record type 511 to 519 or 711 "
                   "to 719); check that this is a VDA record file.");
    return "";
}

// True when `bytes` hold VDA records rather than an interchange: the first
// line (behind a byte-order mark) begins with a record type 511 to 519 or
// 711 to 719.
bool looksvda(const std::string &bytes)
{
    size_t start = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    return bytes.size() >= start + 3 && familyoftype(bytes.substr(start, 3)) != nullptr;
}

// Validation of an interchange against its directories, or of a VDA file
// against the bundled configuration of its records; the number of findings.
int validateany(const std::string &name, const std::string &bytes, Report &rep,
                size_t maxfindings = 0)
{
    if (!looksvda(bytes))
        return validatefile(name, bytes, rep, maxfindings);
    Report quiet;  // the note on the configuration chosen is no finding here
    std::string conffile = vdaconfigfor(name, bytes, quiet);
    datatree_t *conf = conffile.empty() ? nullptr : loadconfig(conffile, rep);
    if (conf == nullptr) {
        rep.append(quiet);
        return 1;
    }
    int n = validatevda(name, bytes, conf, rep);
    freedatatree(conf);
    return n;
}

// Runs `body` on a new result; out of memory gives a failed result, or
// NULL when not even that can be made.
template <typename F>
edi_result *withresult(F body)
{
    edi_result *res = nullptr;
    try {
        res = newresult();
        body(*res);
        return res;
    } catch (const std::bad_alloc &) {
        if (res == nullptr)
            return nullptr;
        if (res->tree != nullptr)
            freedatatree(res->tree);
        res->tree = nullptr;
        res->status = 1;
        try {
            res->rep.fail("", "edi: out of memory");
        } catch (...) {
        }
        return res;
    }
}

// The bytes of `path` ("-": standard input).
bool inputbytes(const std::string &path, std::string &bytes, Report &rep)
{
    if (path != "-")
        return readwhole(path, bytes, rep);
    return readwhole("/dev/stdin", bytes, rep);
}

void readinto(edi_result &res, const std::string &name, std::string bytes,
              const edi_options *opt, bool ok)
{
    Settings s;
    std::vector<datatree_t *> configs;
    if (!ok || !takeoptions(opt, s, configs, res.rep)) {
        res.status = 1;
        return;
    }
    const Module *mod = themodule(res.rep);
    if (mod == nullptr) {
        for (datatree_t *c : configs)
            freedatatree(c);
        res.status = 1;
        return;
    }
    DirectoriesInUse dirs(s.directories);
    // A CONTRL or APERAK from a partner is told in words behind the read.
    bool acks = bytes.find("CONTRL") != std::string::npos ||
                bytes.find("APERAK") != std::string::npos;
    std::string copy = (opt != nullptr && opt->validate) || acks ? bytes : std::string();
    ReadResult rr = readedifactinput(*mod, s, configs, name, std::move(bytes), res.rep);
    for (datatree_t *c : configs)
        freedatatree(c);
    res.tree = rr.tree;
    res.items = rr.keys;
    res.changes = rr.changes;
    if (acks && rr.tree != nullptr)
        tellacknowledgements(name, copy, res.rep);
    // The module's read is the same with or without validation; the
    // findings come behind it and fail the read.
    if (opt != nullptr && opt->validate && validatefile(name, copy, res.rep, opt->max_findings) > 0)
        res.status = 1;
    if (rr.tree == nullptr)
        res.status = 1;
}

}  // namespace

extern "C" {

edi_result *edi_read(const char *path, const edi_options *opt)
{
    return withresult([&](edi_result &res) {
        std::string name = path != nullptr ? path : "";
        std::string bytes;
        bool ok = inputbytes(name, bytes, res.rep);
        readinto(res, name, std::move(bytes), opt, ok);
    });
}

edi_result *edi_read_memory(const void *data, size_t len, const char *name,
                            const edi_options *opt)
{
    return withresult([&](edi_result &res) {
        std::string bytes = data != nullptr ? std::string(static_cast<const char *>(data), len)
                                            : std::string();
        readinto(res, name != nullptr ? name : "input", std::move(bytes), opt, true);
    });
}

char *edi_result_json(const edi_result *res)
{
    if (res == nullptr || res->tree == nullptr)
        return nullptr;
    try {
        JsonMeta meta;
        if (!res->changes.empty())
            meta.emplace_back("changes", res->changes);
        if (res->items.size() > 1)
            meta.emplace_back("keys", res->items);
        const char *key = res->items.empty() ? nullptr : res->items[0].c_str();
        return cstring(treetojson(res->tree, key, meta), nullptr);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

namespace {

void vdareadinto(edi_result &res, const std::string &name, bool ok, const std::string &bytes,
                 const char *config, const edi_options *opt)
{
    res.status = 1;
    Settings s;
    std::vector<datatree_t *> none;
    if (!ok || !takeoptions(opt, s, none, res.rep))
        return;
    for (datatree_t *c : none)
        freedatatree(c);
    const Module *mod = themodule(res.rep);
    if (mod == nullptr)
        return;
    std::string conffile = config != nullptr ? config : vdaconfigfor(name, bytes, res.rep);
    if (conffile.empty())
        return;
    datatree_t *conf = loadconfig(conffile, res.rep);
    if (conf == nullptr)
        return;
    ReadResult rr = readvdainput(*mod, s, conf, name, bytes, res.rep);
    res.tree = rr.tree;
    res.changes = rr.changes;
    res.status = rr.tree != nullptr ? 0 : 1;
    freedatatree(conf);
}

}  // namespace

edi_result *edi_vda_read(const char *path, const char *config, const edi_options *opt)
{
    return withresult([&](edi_result &res) {
        std::string name = path != nullptr ? path : "";
        std::string bytes;
        bool ok = inputbytes(name, bytes, res.rep);
        vdareadinto(res, name, ok, bytes, config, opt);
    });
}

edi_result *edi_vda_read_memory(const void *data, size_t len, const char *name,
                                const char *config, const edi_options *opt)
{
    return withresult([&](edi_result &res) {
        std::string bytes = data != nullptr ? std::string(static_cast<const char *>(data), len)
                                            : std::string();
        vdareadinto(res, name != nullptr ? name : "input", true, bytes, config, opt);
    });
}

edi_result *edi_vda_write(datatree_t *tree, const char *config, const edi_write_options *opt)
{
    return withresult([&](edi_result &res) {
        Settings s = takewriteoptions(opt);
        res.status = 1;
        if (tree == nullptr) {
            res.rep.fail(s.name, "the tree holds no record");
            return;
        }
        // An EDIFACT tree: message nodes with a UNH (the tree itself may be
        // one).  Its values have no place in a record layout.
        for (const datatree_t *m = tree; m != nullptr; m = m == tree ? tree->child : m->next) {
            for (const datatree_t *c = m->child; c != nullptr; c = c->next) {
                if (c->xmltag == nullptr || strncmp(c->xmltag, "$UNH", 4) != 0)
                    continue;
                res.rep.fail(s.name, std::string("the tree holds EDIFACT messages (") +
                                         (m->xmltag != nullptr ? m->xmltag : "") +
                                         " with a UNH segment), so it is no VDA tree; an "
                                         "EDIFACT tree is written with edi write.");
                return;
            }
        }
        const VdaFamily *family = familyoftree(tree);
        if (family == nullptr) {
            res.rep.fail(s.name, "the tree holds no VDA record (no node $S511 to $S519 or $S711 "
                                 "to $S719), so it is no VDA tree; an EDIFACT tree is written "
                                 "with edi write.");
            return;
        }
        std::string conffile = config != nullptr ? config : bundledconfig(*family);
        if (config == nullptr)
            res.rep.add(EDI_FINDING_NOTE, EDI_SEVERITY_INFO, s.name,
                        std::string("written as ") + family->name + " with the bundled "
                        "configuration " + family->config);
        datatree_t *conf = loadconfig(conffile, res.rep);
        if (conf == nullptr)
            return;
        const Module *mod = themodule(res.rep);
        if (mod != nullptr) {
            res.status = writevda(*mod, s, tree, conf, res.text, res.rep);
            res.hastext = res.status == 0;
        }
        freedatatree(conf);
    });
}

edi_result *edi_write(datatree_t *tree, const edi_write_options *opt)
{
    return withresult([&](edi_result &res) {
        Settings s = takewriteoptions(opt);
        std::vector<datatree_t *> configs;
        res.status = 1;
        for (size_t i = 0; opt != nullptr && opt->configs != nullptr && i < opt->nconfigs; i++) {
            datatree_t *c = opt->configs[i] != nullptr ? loadconfig(opt->configs[i], res.rep)
                                                       : nullptr;
            if (c == nullptr) {
                for (datatree_t *k : configs)
                    freedatatree(k);
                return;
            }
            configs.push_back(c);
        }
        const Module *mod = themodule(res.rep);
        if (mod == nullptr) {
            for (datatree_t *k : configs)
                freedatatree(k);
            return;
        }
        DirectoriesInUse dirs(s.directories);
        res.status = writeedifact(*mod, s, tree, std::move(configs), res.text, res.rep);
        res.hastext = res.status == 0;
    });
}

edi_result *edi_write_messages(datatree_t *const *messages, size_t n,
                               const edi_write_options *opt)
{
    if (messages == nullptr || n == 0)
        return edi_write(nullptr, opt);
    // The messages under a root of the library's for the time of the
    // write; their own links are given back behind it.
    std::vector<datatree_t *> next(n), parent(n);
    datatree_t root{};
    char name[] = "edi";
    root.xmltag = name;
    std::set<const datatree_t *> seen;
    for (size_t i = 0; i < n; i++) {
        if (messages[i] == nullptr)
            return edi_write(nullptr, opt);
        if (!seen.insert(messages[i]).second) {
            // Linked in a row, a message given twice would make a cycle.
            return withresult([&](edi_result &res) {
                res.status = 2;
                res.rep.fail(takewriteoptions(opt).name,
                             "message " + std::to_string(i + 1) + " is given twice");
            });
        }
        next[i] = messages[i]->next;
        parent[i] = messages[i]->parent;
    }
    for (size_t i = 0; i < n; i++) {
        messages[i]->next = i + 1 < n ? messages[i + 1] : nullptr;
        messages[i]->parent = &root;
    }
    root.child = messages[0];
    edi_result *res = edi_write(&root, opt);
    for (size_t i = 0; i < n; i++) {
        messages[i]->next = next[i];
        messages[i]->parent = parent[i];
    }
    return res;
}

edi_result *edi_validate(const char *path)
{
    return withresult([&](edi_result &res) {
        std::string name = path != nullptr ? path : "";
        std::string bytes;
        if (!inputbytes(name, bytes, res.rep)) {
            res.status = 1;
            return;
        }
        res.status = validateany(name, bytes, res.rep) > 0 ? 1 : 0;
    });
}

edi_result *edi_validate_opt(const char *path, const edi_options *opt)
{
    return withresult([&](edi_result &res) {
        std::string name = path != nullptr ? path : "";
        std::string bytes;
        if (!inputbytes(name, bytes, res.rep)) {
            res.status = 1;
            return;
        }
        DirectoriesInUse dirs(opt != nullptr && opt->directories != nullptr ? opt->directories
                                                                              : "");
        size_t max = opt != nullptr ? opt->max_findings : 0;
        res.status = validateany(name, bytes, res.rep, max) > 0 ? 1 : 0;
    });
}

char *edi_result_report(const edi_result *res, const char *file)
{
    if (res == nullptr)
        return nullptr;
    try {
        bool failed = false;
        for (const Finding &f : res->rep.items())
            failed = failed || f.kind == EDI_FINDING_FAILURE;
        std::string status = failed ? "failed" : res->status == 0 ? "ok" : "findings";
        return cstring(reportjson(file != nullptr ? file : "", status, res->rep), nullptr);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

edi_result *edi_ack(const char *path, const edi_options *opt, int errors_only,
                    const char *reference)
{
    return withresult([&](edi_result &res) {
        std::string name = path != nullptr ? path : "";
        std::string bytes;
        res.status = 1;
        if (!inputbytes(name, bytes, res.rep))
            return;
        DirectoriesInUse dirs(opt != nullptr && opt->directories != nullptr ? opt->directories
                                                                              : "");
        AckSettings a;
        a.errorsonly = errors_only != 0;
        a.reference = reference != nullptr ? reference : "";
        a.maxfindings = opt != nullptr ? opt->max_findings : 0;
        res.text = contrl(name, bytes, a, res.rep);
        res.hastext = true;
        bool rejected = false;
        for (const Finding &f : res.rep.items())
            rejected = rejected || f.kind == EDI_FINDING_VALIDATION;
        res.status = rejected ? 1 : 0;
    });
}

edi_result *edi_validate_memory(const void *data, size_t len, const char *name)
{
    return withresult([&](edi_result &res) {
        std::string bytes = data != nullptr ? std::string(static_cast<const char *>(data), len)
                                            : std::string();
        res.status = validateany(name != nullptr ? name : "input", bytes, res.rep) > 0 ? 1 : 0;
    });
}

edi_result *edi_config(const char *message, const char *directory, int outbound)
{
    return withresult([&](edi_result &res) {
        res.status = 1;
        // Message types and directories are upper case in the data; a
        // user's "invoic d96a" means the same.
        auto upper = [](const char *s) {
            std::string r = s != nullptr ? s : "";
            for (char &c : r)
                c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
            return r;
        };
        std::string type = upper(message);
        std::string dir = upper(directory);
        edi::dirs::Directory d;
        std::string err;
        if (!d.load(directoriesdir(), dir, err)) {
            res.rep.fail("", "edi: " + missingmessage(type, dir, false));
            return;
        }
        if (!d.config(type, outbound != 0, res.text, err)) {
            res.rep.fail("", "edi: " + missingmessage(type, dir, true));
            return;
        }
        res.hastext = true;
        res.tree = parsetree(res.text, type + " of " + dir, res.rep);
        res.status = res.tree != nullptr ? 0 : 1;
    });
}

edi_result *edi_config_list(const char *directory)
{
    return withresult([&](edi_result &res) {
        std::string dirs = directoriesdir();
        if (directory == nullptr) {
            res.items = edi::dirs::directories(dirs);
            if (res.items.empty()) {
                res.rep.fail("", "edi: no directories found in " + dirs);
                res.status = 1;
            }
            return;
        }
        std::string name = directory;
        for (char &c : name)
            c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
        edi::dirs::Directory d;
        std::string err;
        if (!d.load(dirs, name, err)) {
            auto all = edi::dirs::directories(dirs);
            std::string have = all.empty() ? "none in " + dirs : all.front() + " ... " + all.back();
            res.rep.fail("", "edi: " + err + " (directories: " + have + "; edi config --list)");
            res.status = 1;
            return;
        }
        for (auto &[type, name] : d.messages())
            res.items.push_back(type + "\t" + name);
    });
}

char *edi_directories_path(void)
{
    try {
        return cstring(directoriesdir(), nullptr);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

char *edi_tree_to_text(const datatree_t *tree, size_t *len)
{
    if (tree == nullptr)
        return nullptr;
    try {
        return cstring(treetext(tree), len);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

char *edi_tree_to_json(const datatree_t *tree, size_t *len)
{
    if (tree == nullptr)
        return nullptr;
    try {
        return cstring(treetojson(tree, nullptr), len);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

edi_result *edi_tree_parse(const char *text, size_t len, const char *name)
{
    return withresult([&](edi_result &res) {
        std::string_view t = text != nullptr ? std::string_view(text, len) : std::string_view();
        res.tree = parsetree(t, name != nullptr ? name : "tree", res.rep);
        res.status = res.tree != nullptr ? 0 : 1;
    });
}

edi_result *edi_tree_load(const char *path)
{
    return withresult([&](edi_result &res) {
        res.tree = loadtree(path != nullptr ? path : "", res.rep);
        res.status = res.tree != nullptr ? 0 : 1;
    });
}

}  // extern "C"
