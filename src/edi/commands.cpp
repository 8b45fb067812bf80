#include "commands.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "allocator.h"
#include "edihost.h"
#include "batch.h"
#include "capture.h"
#include "jsontree.h"
#include "output.h"
#include "readinput.h"
#include "validatefile.h"
#include "writeedifact.h"

namespace edi {

// A tree file in the tree text format or JSON, told apart by its first
// character that is not white space.
datatree_t *loadtree(const std::string &path)
{
    InputText in(path);
    if (!in.ok)
        return nullptr;
    size_t first = in.text.find_first_not_of(" \t\r\n");
    const bool json = first != std::string::npos && (in.text[first] == '{' || in.text[first] == '[');
    // A node is a line of tree text; counting them costs little.  A JSON
    // text is four times as long, so its nodes are estimated instead: a
    // node object with a short name and value takes 25 bytes or more, and
    // what a reservation holds beyond the tree is never touched.
    reservetree(json ? in.text.size() / 25
                     : static_cast<size_t>(std::count(in.text.begin(), in.text.end(), '\n')));
    datatree_t *tree = json ? jsontotree(in.text, path)
                            : edihost_parsetree(in.text.data(), in.text.size(), path.c_str());
    // Trees parsed later (configurations) take their memory as usual.
    edihost_reservenodes(0);
    return tree;
}

namespace {

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

// vdawrite writes to a scratch file, so that OUT is written whole or not
// at all and no message names the scratch file.  Of what the module says,
// the "dnode" line it writes for every record is shown only under
// --verbose (a file of 100,000 records would bring 100,000 of them); the
// other lines are named by the tree file, and a sentence follows a missing
// mandatory element (the records are written all the same) or a failure.
Exit writevdafile(const Module &mod, const Options &opt, datatree_t *tree, datatree_t *config)
{
    // The module writes the records file under a name of its own beside
    // the output, and its messages name the output.
    OutputFile file(opt.output);
    if (file.name().empty())
        return exit_failed;
    const std::string &written = file.name();
    std::vector<char> out = writable(written);
    std::vector<char> sender = writable(opt.sender);
    std::vector<char> recipient = writable(opt.recipient);
    StderrCapture cap(opt.trace < 0);
    int rc = mod.vdawrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                          recipient.data(), opt.test);
    std::vector<std::string> lines;
    size_t missing = 0;
    for (std::string &line : cap.lines()) {
        if (!opt.verbose && line.compare(0, 7, "dnode: ") == 0)
            continue;
        for (size_t at = line.find(written); at != std::string::npos;
             at = line.find(written, at + opt.output.size()))
            line.replace(at, written.size(), opt.output);
        if (line.find("mandatory element") != std::string::npos)
            missing++;
        lines.push_back(line);
    }
    const std::string &name = opt.inputs[0];
    printprefixed(name, lines);
    if (rc != 0) {
        fprintf(stderr, "%s: the record file could not be written (see the lines above); "
                        "nothing was kept.\n", name.c_str());
        return exit_failed;
    }
    if (missing > 0)
        fprintf(stderr,
                "%s: %zu mandatory element%s missing; the VDA writer writes every record all "
                "the same, with the default or blanks in place of %s; fill %s in the tree or "
                "give %s a default in the configuration.\n",
                name.c_str(), missing, missing == 1 ? " is" : "s are",
                missing == 1 ? "it" : "each", missing == 1 ? "it" : "them",
                missing == 1 ? "it" : "them");
    return file.keep() ? exit_ok : exit_failed;
}

}  // namespace

datatree_t *readworkingcopy(const Module &mod, const Options &opt, datatree_t *config,
                            const std::string &name, const std::string &text, envelope_t **ev)
{
    (void)opt;  // the options a choice of configuration by the working copy's UNH would use
    std::vector<char> fn = writable(name);
    edihost_setinput(name.c_str(), text.data(), text.size());
    datatree_t *tree = mod.edifactread(fn.data(), ev, config, nullptr);
    edihost_clearinput();
    return tree;
}

Exit readone(const Module &mod, const Options &opt, const std::vector<datatree_t *> &configs,
             const std::string &input, const std::string &out)
{
    bool vda = opt.command == "vda-read";
    ReadResult res = vda ? readvdainput(mod, opt, configs.back(), input)
                         : readedifactinput(mod, opt, configs, input);
    if (res.tree == nullptr) {
        // What the directory says about a file that did not read helps most.
        if (opt.validate && !vda)
            validatefile(input, stderr);
        return exit_failed;
    }
    const char *key = res.keys.empty() ? nullptr : res.keys[0].c_str();
    std::string text;
    if (opt.format == "json") {
        JsonMeta meta;
        if (!res.changes.empty())
            meta.emplace_back("changes", res.changes);
        if (res.keys.size() > 1)
            meta.emplace_back("keys", res.keys);
        text = treetojson(res.tree, key, meta);
    } else {
        text = treetext(res.tree);
        for (const std::string &k : res.keys)
            fprintf(stderr, "edi: %s: key %s\n", input.c_str(), k.c_str());
    }
    freedatatree(res.tree);
    if (!writewhole(out, text))
        return exit_failed;
    // The module's read is the same with or without --validate; the
    // findings come behind it, on stderr, and fail the input.
    return opt.validate && validatefile(input, stderr) != 0 ? exit_failed : exit_ok;
}

Exit validatecommand(const Options &opt)
{
    Exit status = exit_ok;
    for (const std::string &input : expandinputs(opt.inputs))
        if (validatefile(input, stdout) != 0)
            status = exit_failed;
    return status;
}

Exit readcommand(const Module &mod, const Options &opt)
{
    // Without --config the module chooses by the service configurations:
    // one NULL configuration stands for that.
    std::vector<datatree_t *> configs;
    auto release = [&configs] {
        for (datatree_t *c : configs)
            if (c != nullptr)
                freedatatree(c);
    };
    for (const std::string &c : opt.configs) {
        configs.push_back(edihost_readtree(c.c_str()));
        if (configs.back() == nullptr) {
            release();
            return exit_failed;
        }
    }
    if (configs.empty())
        configs.push_back(nullptr);
    if (!opt.servconf.empty() && edihost_loadservconf(opt.servconf.c_str()) != 0) {
        release();
        return exit_failed;
    }

    std::vector<std::string> inputs = expandinputs(opt.inputs);
    bool fromfolder = false;
    for (const std::string &in : opt.inputs)
        fromfolder = fromfolder || isfolder(in);
    bool tofolder =
        !opt.output.empty() && (inputs.size() > 1 || fromfolder || isfolder(opt.output));
    Exit status = exit_ok;
    if (tofolder && !isfolder(opt.output)) {
        fprintf(stderr, "edi: %s: not a folder (several inputs need a folder for -o)\n",
                opt.output.c_str());
        status = exit_usage;
    } else if (opt.jobs > 0) {
        status = readbatch(inputs, opt, [&](const std::string &input) {
            return readone(mod, opt, configs, input,
                           tofolder ? infolder(opt.output, input, opt.format) : opt.output);
        });
    } else {
        for (const std::string &input : inputs) {
            Exit rc = readone(mod, opt, configs, input,
                              tofolder ? infolder(opt.output, input, opt.format) : opt.output);
            if (rc != exit_ok)
                status = rc;
        }
    }
    release();
    edihost_clearservconf();
    return status;
}

Exit writecommand(const Module &mod, const Options &opt)
{
    if (opt.command == "write")
        return writeedifact(mod, opt);
    datatree_t *config = edihost_readtree(opt.config.c_str());
    if (config == nullptr)
        return exit_failed;
    datatree_t *tree = loadtree(opt.inputs[0]);
    if (tree == nullptr) {
        freedatatree(config);
        return exit_failed;
    }
    droptrailers(tree);
    Exit rc = writevdafile(mod, opt, tree, config);
    freeatexit(tree);
    freedatatree(config);
    return rc;
}

}  // namespace edi
