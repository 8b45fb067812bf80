#include "commands.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <memory>
#include <vector>

#include "edihost.h"
#include "joinlines.h"
#include "jsontree.h"
#include "output.h"

namespace edi {

namespace {

// A tree file in the tree text format or JSON, told apart by its first
// character that is not white space.
datatree_t *loadtree(const std::string &path)
{
    std::string text;
    if (!readwhole(path, text))
        return nullptr;
    size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string::npos && (text[first] == '{' || text[first] == '['))
        return jsontotree(text, path);
    return edihost_parsetree(text.data(), text.size(), path.c_str());
}

std::string treetext(const datatree_t *tree)
{
    char *buf = nullptr;
    size_t len = 0;
    FILE *fp = open_memstream(&buf, &len);
    if (fp == nullptr)
        edihost_outofmemory();
    edihost_writetree(fp, tree);
    fclose(fp);
    std::string text(buf, len);
    free(buf);
    return text;
}

// A writable copy: the module may cut sender and recipient in place.
std::vector<char> writable(const std::string &s)
{
    return std::vector<char>(s.c_str(), s.c_str() + s.size() + 1);
}

// The module writes the trailer of a VDA file itself, counting the records
// it wrote; a trailer record read from the file stands under the root and
// would be written as one more record before it.  So it is left out.
void droptrailers(datatree_t *tree)
{
    for (datatree_t *root = tree; root != nullptr; root = root->next) {
        datatree_t **tpp = &root->child;
        while (*tpp != nullptr) {
            datatree_t *tp = *tpp;
            if (tp->xmltag != nullptr && strcmp(tp->xmltag, "$S519") == 0) {
                *tpp = tp->next;
                tp->next = nullptr;
                freedatatree(tp);
            } else {
                tpp = &tp->next;
            }
        }
    }
}

}  // namespace

Exit readcommand(const Module &mod, const Options &opt)
{
    bool vda = opt.command == "vda-read";
    datatree_t *config = nullptr;
    if (!opt.config.empty()) {
        config = edihost_readtree(opt.config.c_str());
        if (config == nullptr)
            return exit_failed;
    }
    if (!opt.servconf.empty() && edihost_loadservconf(opt.servconf.c_str()) != 0) {
        if (config != nullptr)
            freedatatree(config);
        return exit_failed;
    }

    bool tofolder = opt.inputs.size() > 1 && !opt.output.empty();
    if (tofolder && !isfolder(opt.output)) {
        fprintf(stderr, "edi: %s: not a folder (several inputs need a folder for -o)\n",
                opt.output.c_str());
        if (config != nullptr)
            freedatatree(config);
        return exit_usage;
    }

    Exit status = exit_ok;
    for (const std::string &input : opt.inputs) {
        std::unique_ptr<JoinedCopy> joined;
        if (opt.joinlines) {
            joined = std::make_unique<JoinedCopy>(input);
            if (joined->path().empty()) {
                status = exit_failed;
                continue;
            }
        }
        std::vector<char> fn = writable(joined ? joined->path() : input);
        envelope_t *ev = nullptr;
        datatree_t *tree = vda ? mod.vdaread(fn.data(), &ev, config, nullptr)
                               : mod.edifactread(fn.data(), &ev, config, nullptr);
        if (tree == nullptr) {
            status = exit_failed;
            continue;
        }
        const char *key = ev != nullptr ? ev->servconftag : nullptr;
        std::string text = opt.format == "json" ? treetojson(tree, key) : treetext(tree);
        if (key != nullptr && opt.format != "json")
            fprintf(stderr, "edi: %s: key %s\n", input.c_str(), key);
        std::string out = tofolder ? infolder(opt.output, input, opt.format) : opt.output;
        if (!writewhole(out, text))
            status = exit_failed;
        freedatatree(tree);
        if (ev != nullptr) {
            free(ev->servconftag);
            free(ev);
        }
    }
    if (config != nullptr)
        freedatatree(config);
    edihost_clearservconf();
    return status;
}

Exit writecommand(const Module &mod, const Options &opt)
{
    datatree_t *config = edihost_readtree(opt.config.c_str());
    if (config == nullptr)
        return exit_failed;
    datatree_t *tree = loadtree(opt.inputs[0]);
    if (tree == nullptr) {
        freedatatree(config);
        return exit_failed;
    }
    bool vda = opt.command == "vda-write";
    if (vda)
        droptrailers(tree);
    std::vector<char> out = writable(opt.output);
    std::vector<char> sender = writable(opt.sender);
    std::vector<char> recipient = writable(opt.recipient);
    int rc = vda ? mod.vdawrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                                recipient.data(), opt.test)
                 : mod.edifactwrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                                    recipient.data(), opt.test);
    freedatatree(tree);
    freedatatree(config);
    return rc == 0 ? exit_ok : exit_failed;
}

}  // namespace edi
