// Writing a VDA record file: the module writes it, counting the records
// for its trailer; the library names what it said by the tree and the
// output the caller gives.
#include <errno.h>
#include <string.h>

#include <mutex>
#include <string>
#include <vector>

#include "edihost.h"
#include "files/output.h"
#include "findings/report.h"
#include "module/capture.h"
#include "vda/layout.h"
#include "vda/place.h"
#include "write/losses.h"
#include "write/writeedifact.h"

namespace edi {

namespace {

// The trailer of each transmission is written anew from the records
// written; a trailer record read from the file would be written as one
// more record before it.  So it is taken out of the tree, and its version
// kept for the new one.
void droptrailers(datatree_t *tree, const std::string &tag, std::string &version)
{
    std::vector<datatree_t *> todo{tree};
    while (!todo.empty()) {
        datatree_t *parent = todo.back();
        todo.pop_back();
        datatree_t **tpp = &parent->child;
        while (*tpp != nullptr) {
            datatree_t *tp = *tpp;
            if (tp->xmltag != nullptr && tag == tp->xmltag) {
                for (datatree_t *f = tp->child; f != nullptr; f = f->next)
                    if (f->xmltag != nullptr && strcmp(f->xmltag, "version") == 0 &&
                        f->data != nullptr && version.empty())
                        version = f->data;
                *tpp = tp->next;
                tp->next = nullptr;
                freedatatree(tp);
            } else {
                if (tp->child != nullptr)
                    todo.push_back(tp);
                tpp = &tp->next;
            }
        }
    }
}

// The module's file with its last line, the module's own trailer 519,
// replaced by the family's trailer counting the records above it.
std::string newtrailer(const std::string &written, const VdaFamily &f,
                       const std::string &version)
{
    size_t end = written.size();
    if (end >= 2 && written.compare(end - 2, 2, "\r\n") == 0)
        end -= 2;
    size_t start = written.rfind('\n', end == 0 ? 0 : end - 1);
    start = start == std::string::npos ? 0 : start + 1;
    std::string body = written.substr(0, start);
    std::vector<size_t> counts(f.counted.size());
    for (size_t at = 0; at + 3 <= body.size();) {
        std::string type = body.substr(at, 3);
        for (size_t i = 0; i < f.counted.size(); i++)
            if (f.counted[i] == type)
                counts[i]++;
        size_t nl = body.find('\n', at);
        at = nl == std::string::npos ? body.size() : nl + 1;
    }
    for (size_t i = 0; i < f.counted.size(); i++)
        if (f.counted[i] == f.trailer)
            counts[i]++;
    return body + trailerline(f, version, counts) + "\r\n";
}

std::vector<char> writable(const std::string &s)
{
    return std::vector<char>(s.c_str(), s.c_str() + s.size() + 1);
}

}  // namespace

// Of what the module says, the "dnode" line it writes for every record is
// a detail (a file of 100,000 records brings 100,000 of them); a sentence
// follows a missing mandatory element (the records are written all the
// same) or a failure.
namespace {

WriteStatus writeone(const Module &mod, const Settings &opt, datatree_t *tree,
                     datatree_t *config, std::string &result, Report &rep)
{
    Scratch scratch("records.txt");
    if (scratch.folder.empty()) {
        rep.fail("", std::string("edi: temporary folder: ") + strerror(errno));
        return write_failed;
    }
    const std::string &written = scratch.file;
    std::vector<char> out = writable(written);
    std::vector<char> sender = writable(opt.sender);
    std::vector<char> recipient = writable(opt.recipient);
    int rc = -1;
    std::vector<std::string> lines = inmodule(opt.trace, opt.trace < 0, [&] {
        rc = mod.vdawrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                          recipient.data(), opt.test);
    });
    size_t missing = 0;
    const std::string &name = opt.name;
    for (std::string &line : lines) {
        for (size_t at = line.find(written); at != std::string::npos;
             at = line.find(written, at + opt.output.size()))
            line.replace(at, written.size(), opt.output);
        if (line.find("mandatory element") != std::string::npos)
            missing++;
        Finding &f = rep.add(EDI_FINDING_MODULE, EDI_SEVERITY_ERROR, name, line);
        if (line.compare(0, 7, "dnode: ") == 0) {
            f.severity = EDI_SEVERITY_INFO;
            f.verbose = Finding::detail;
        }
    }
    if (rc != 0) {
        rep.fail(name, "the record file could not be written (see the lines above); nothing "
                       "was kept.");
        return write_failed;
    }
    if (missing > 0)
        rep.add(EDI_FINDING_CHANGED, EDI_SEVERITY_WARNING, name,
                std::to_string(missing) + " mandatory element" +
                    (missing == 1 ? " is" : "s are") +
                    " missing; the VDA writer writes every record all the same, with the "
                    "default or blanks in place of " + (missing == 1 ? "it" : "each") +
                    "; fill " + (missing == 1 ? "it" : "them") +
                    " in the tree or give " + (missing == 1 ? "it" : "them") +
                    " a default in the configuration.");
    return readwhole(written, result, rep) ? write_ok : write_failed;
}

}  // namespace

// A tree of several transmissions (loop instances under the root) is
// written one transmission at a time, each with its own trailer.
WriteStatus writevda(const Module &mod, const Settings &opt, datatree_t *tree,
                     datatree_t *config, std::string &result, Report &rep)
{
    const VdaFamily *family = familyoftree(config);
    std::string version;
    if (family != nullptr)
        droptrailers(tree, std::string("$S") + family->trailer, version);
    // The placement below keeps the records alone: a value outside any
    // record has no place in the file.
    std::vector<Unwritten> lost = outside(tree, isrecordnode);
    // The records where this configuration has them, whatever layout the
    // tree was made with; a record it has no place for fails the write.
    std::vector<std::string> unplaced;
    replacerecords(tree, config, unplaced);
    if (!unplaced.empty()) {
        std::string list;
        for (const std::string &u : unplaced)
            list += (list.empty() ? "" : ", ") + u;
        std::string what = std::to_string(unplaced.size()) + " record" +
                           (unplaced.size() == 1 ? "" : "s") + " of the tree (" + list +
                           ") the configuration has no place for, so they ";
        if (!opt.keepgoing) {
            rep.fail(opt.name, what + "would not be written; give the configuration the tree "
                                      "was made with, or --keep-going to write the file "
                                      "without them.");
            return write_failed;
        }
        rep.add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_WARNING, opt.name,
                what + "are not written (--keep-going).");
    }
    // Nothing is lost without a word: the values the writer would pass
    // over, and those it would cut, fail the write unless the caller
    // accepts the loss.  The whole tree is walked as the writer walks each
    // transmission: the placement numbered them as it counts them.
    {
        std::vector<Unwritten> l = leftout(tree, config, Writer::vda);
        lost.insert(lost.end(), std::make_move_iterator(l.begin()),
                    std::make_move_iterator(l.end()));
        const bool failed = reportleftout(
            lost, Writer::vda, opt, [](const datatree_t *) { return 0; },
            roothint(tree, config), rep);
        const bool cut = reportchanges(
            vdachanges(tree, config, mod.charsetB != nullptr ? *mod.charsetB : nullptr),
            Writer::vda, opt, rep);
        if (failed || cut)
            return write_failed;
    }
    // The transmissions: instances of the configuration's top loop that
    // holds the header record (511, 711).  Other trees are written whole.
    std::vector<datatree_t *> pieces;
    const datatree_t *transmission = nullptr;
    std::string header = family != nullptr ? std::string("$S") + family->header : "";
    for (const datatree_t *c = config->child; c != nullptr && !header.empty(); c = c->next) {
        if (c->xmltag == nullptr || c->xmltag[0] != '*')
            continue;
        for (const datatree_t *k = c->child; k != nullptr; k = k->next)
            if (k->xmltag != nullptr && header == k->xmltag)
                transmission = c;
    }
    // Split only a tree that holds nothing but transmissions, several.
    size_t count = 0, others = 0;
    for (datatree_t *tp = tree->child; tp != nullptr && transmission != nullptr; tp = tp->next) {
        if (tp->xmltag != nullptr && strcmp(tp->xmltag, transmission->xmltag) == 0)
            count++;
        else
            others++;
    }
    if (count > 1 && others == 0)
        for (datatree_t *tp = tree->child; tp != nullptr; tp = tp->next)
            pieces.push_back(tp);
    if (pieces.empty()) {
        WriteStatus st = writeone(mod, opt, tree, config, result, rep);
        if (st == write_ok && family != nullptr)
            result = newtrailer(result, *family, version);
        return st;
    }
    // Each transmission alone under the root, numbered 1 as the writer
    // looks it up; the links are given back behind.
    datatree_t *children = tree->child;
    result.clear();
    WriteStatus st = write_ok;
    for (datatree_t *piece : pieces) {
        datatree_t *next = piece->next;
        int number = piece->loopcnt;
        piece->next = nullptr;
        piece->loopcnt = 1;
        tree->child = piece;
        std::string text;
        st = writeone(mod, opt, tree, config, text, rep);
        piece->next = next;
        piece->loopcnt = number;
        tree->child = children;
        if (st != write_ok)
            return st;
        result += family != nullptr ? newtrailer(text, *family, version) : text;
    }
    return st;
}

}  // namespace edi
