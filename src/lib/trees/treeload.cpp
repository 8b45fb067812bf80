#include "trees/treeload.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <mutex>

#include "edihost.h"
#include "files/output.h"
#include "findings/report.h"
#include "module/capture.h"
#include "module/module.h"
#include "trees/jsontree.h"

namespace edi {

namespace {

// The host layer's parser says what is wrong on stderr ("FILE:LINE:
// reason"); each line becomes a failure.  The capture of descriptor 2 is
// process-wide, so it is taken under the module's lock.
template <typename F>
datatree_t *caught(Report &rep, F parse)
{
    std::vector<std::string> lines;
    datatree_t *tree;
    {
        std::lock_guard<std::recursive_mutex> hold(modulelock());
        StderrCapture cap(true);
        tree = parse();
        lines = cap.lines();
    }
    for (const std::string &l : lines)
        rep.fail("", l);
    if (tree == nullptr && lines.empty())
        rep.fail("", "edi: the tree could not be read");
    return tree;
}

}  // namespace

void reservetree(size_t nodes)
{
    // A node with a short name and value takes about 160 bytes.
    constexpr size_t pernode = 160;
    if (nodes >= 10000)
        edihost_reservenodes(nodes * pernode);
}

datatree_t *parsetree(std::string_view text, const std::string &name, Report &rep)
{
    size_t first = text.find_first_not_of(" \t\r\n");
    const bool json = first != std::string::npos && (text[first] == '{' || text[first] == '[');
    // A node is a line of tree text; counting them costs little.  A JSON
    // text is four times as long, so its nodes are estimated instead: a
    // node object with a short name and value takes 25 bytes or more, and
    // what a reservation holds beyond the tree is never touched.
    reservetree(json ? text.size() / 25
                     : static_cast<size_t>(std::count(text.begin(), text.end(), '\n')));
    datatree_t *tree = json ? jsontotree(text, name, rep) : caught(rep, [&] {
        return edihost_parsetree(text.data(), text.size(), name.c_str());
    });
    // Trees parsed later (configurations) take their memory as usual.
    edihost_reservenodes(0);
    return tree;
}

datatree_t *loadtree(const std::string &path, Report &rep)
{
    InputText in(path == "-" ? "/dev/stdin" : path, rep);
    if (!in.ok)
        return nullptr;
    return parsetree(in.text, path, rep);
}

datatree_t *loadconfig(const std::string &path, Report &rep)
{
    return caught(rep, [&] { return edihost_readtree(path.c_str()); });
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

}  // namespace edi
