#include "vda/place.h"

#include <stdlib.h>
#include <string.h>

#include "edihost.h"
#include "vda/layout.h"

namespace edi {

namespace {

bool isloop(const datatree_t *conf)
{
    return conf->xmltag != nullptr && conf->xmltag[0] == '*';
}

}  // namespace

RecordPlacer::RecordPlacer(const datatree_t *config, datatree_t *root) : config_(config)
{
    datatree_t *last = root->child;
    while (last != nullptr && last->next != nullptr)
        last = last->next;
    stack_.push_back(Frame{config, root, -1, last});
}

int RecordPlacer::position(const datatree_t *conf)
{
    auto it = positions_.find(conf);
    if (it != positions_.end())
        return it->second;
    // Every child of the parent at once: a configuration is walked once.
    int n = 0;
    const datatree_t *first = conf->parent != nullptr ? conf->parent->child : conf;
    for (const datatree_t *tp = first; tp != nullptr; tp = tp->next)
        positions_[tp] = n++;
    return positions_[conf];
}

void RecordPlacer::append(Frame &f, datatree_t *tp)
{
    tp->next = nullptr;
    tp->parent = f.node;
    if (f.lastchild == nullptr)
        f.node->child = tp;
    else
        f.lastchild->next = tp;
    f.lastchild = tp;
}

bool RecordPlacer::place(datatree_t *record, const datatree_t *confnode,
                         std::vector<const datatree_t *> *opened)
{
    // The configuration path from the root down to the record's node.
    std::vector<const datatree_t *> path;
    for (const datatree_t *tp = confnode; tp != nullptr; tp = tp->parent) {
        path.push_back(tp);
        if (tp == config_)
            break;
    }
    if (path.back() != config_ || path.size() < 2)
        return false;
    std::vector<const datatree_t *> down(path.rbegin(), path.rend());

    // The deepest open instance that can take the record forward.
    size_t depth = stack_.size();
    size_t at = 0;  // index in `down` of the level's configuration node
    int pos = -1;
    while (depth > 0) {
        const Frame &f = stack_[depth - 1];
        at = 0;
        while (at < down.size() && down[at] != f.conf)
            at++;
        if (at + 1 < down.size()) {
            pos = position(down[at + 1]);
            if (pos > f.lastpos || (pos == f.lastpos && isloop(down[at + 1])))
                break;
        }
        depth--;
    }
    if (depth == 0)
        return false;
    stack_.resize(depth);
    stack_.back().lastpos = pos;
    // The loop instances (or groups) on the way down, then the record.
    for (size_t j = at + 1; j + 1 < down.size(); j++) {
        const datatree_t *conf = down[j];
        Frame &parent = stack_.back();
        datatree_t *inst = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
        if (inst == nullptr)
            edihost_outofmemory();
        inst->xmltag = strdup(conf->xmltag);
        if (inst->xmltag == nullptr)
            edihost_outofmemory();
        if (isloop(conf))
            inst->loopcnt = ++instances_[{parent.node, conf}];
        if (opened != nullptr)
            opened->push_back(conf);
        append(parent, inst);
        stack_.push_back(Frame{conf, inst, position(down[j + 1]), nullptr});
    }
    append(stack_.back(), record);
    return true;
}

namespace {

// The record nodes below `tp`, in document order, taken out of the tree;
// every other node below it is freed.
void takerecords(datatree_t *tp, std::vector<datatree_t *> &out)
{
    std::vector<datatree_t *> todo;
    for (datatree_t *c = tp->child; c != nullptr; c = c->next)
        todo.push_back(c);
    tp->child = nullptr;
    std::vector<datatree_t *> order(todo.rbegin(), todo.rend());
    while (!order.empty()) {
        datatree_t *n = order.back();
        order.pop_back();
        n->next = nullptr;
        if (isrecordnode(n)) {
            out.push_back(n);
            continue;
        }
        std::vector<datatree_t *> kids;
        for (datatree_t *c = n->child; c != nullptr; c = c->next)
            kids.push_back(c);
        n->child = nullptr;
        freedatatree(n);
        for (auto it = kids.rbegin(); it != kids.rend(); ++it)
            order.push_back(*it);
    }
}

}  // namespace

void replacerecords(datatree_t *tree, const datatree_t *config,
                    std::vector<std::string> &unplaced)
{
    std::map<std::string, const datatree_t *> tags = recordnodes(config);
    std::vector<datatree_t *> records;
    takerecords(tree, records);
    RecordPlacer placer(config, tree);
    for (datatree_t *r : records) {
        auto it = tags.find(r->xmltag);
        if (it == tags.end() || !placer.place(r, it->second)) {
            unplaced.push_back(r->xmltag);
            freedatatree(r);
        }
    }
    setparents(tree, 0);
}

}  // namespace edi
