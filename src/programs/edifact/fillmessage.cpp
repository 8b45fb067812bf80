// One message of an interchange filled into its copy of the configuration,
// pruned and numbered; and the numbers of the messages themselves.
#include <unordered_map>

#include "../debug.h"
#include "edifact.h"
#include "pendingshape.h"

namespace ediprot {

namespace {

// The configuration node of each node directly below the result's root:
// the messages, and the further children of the configuration root that
// the last message's copy brought along.
std::unordered_map<const datatree_t *, const datatree_t *> heads;
// Whether each message's pruning left data below it.
std::unordered_map<const datatree_t *, bool> withdata;

const datatree_t *headorigin(const datatree_t *dp)
{
    auto found = heads.find(dp);
    return found != heads.end() ? found->second : nullptr;
}

}  // namespace

void resetfill()
{
    heads.clear();
    withdata.clear();
    pending::beginread();
}

void forgetheads(const datatree_t *chain)
{
    for (const datatree_t *sp = chain; sp != nullptr; sp = sp->next) {
        heads.erase(sp);
        withdata.erase(sp);
    }
}

int keptdata(const datatree_t *msg)
{
    auto found = withdata.find(msg);
    return found != withdata.end() ? found->second : -1;
}

datatree_t *fillmessage(datatree_t *conf, datatree_t *first)
{
    pending::beginmessage();
    datatree_t *msg = pending::copyof(conf);
    heads[msg] = conf;
    datatree_t **tail = &msg->next;
    for (datatree_t *cp = conf->next; cp != nullptr; cp = cp->next) {
        *tail = pending::emptycopy(cp);
        heads[*tail] = cp;
        tail = &(*tail)->next;
    }
    if (pending::ispending(msg))
        pending::open(msg);
    setparents(msg, 0);
    TRACE(2, "edifactread: after copysubtree\n");
    TRACE_DUMP(3, msg);
    xdata = first;
    xydatatohead(msg->child, 0);
    // Pruned now, so that the empty copies of one message are gone before
    // the next is filled; the final pass over the whole tree finds the
    // same nodes to keep.
    std::vector<datatree_t *> removed;
    withdata[msg] = prunemessage(&msg->child, removed) != 0;
    if (conf->xmltag[0] != '$' && conf->child != nullptr)
        numberloops(conf->child, msg->child, pending::origin, true);
    freeremoved(removed);
    // Every node of the message knows its parent while the message is
    // still in the cache; the whole result is not walked again for it.
    setparents(msg, 0);
    return msg;
}

void linkheads(datatree_t *head, const datatree_t *lastmsg)
{
    bool behind = lastmsg == nullptr;
    for (datatree_t *tp = head->child; tp != nullptr; tp = tp->next) {
        tp->parent = head;
        if (behind)
            setparents(tp, 0);
        behind = behind || tp == lastmsg;
    }
}

void numberheads(const datatree_t *conf, datatree_t *data)
{
    numberloops(conf, data, headorigin, false);
}

}  // namespace ediprot
