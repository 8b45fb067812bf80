#include "recordindex.h"

#include <string>
#include <unordered_map>

namespace ediprot {

namespace {

struct Chain {
    datatree_t **tail = nullptr;                           // the empty slot at the end
    std::unordered_map<std::string, datatree_t **> first;  // key -> slot of first match
};

int scopes = 0;
bool enabled = true;
std::unordered_map<datatree_t **, Chain> *chains = nullptr;

std::string keyof(const char *name, int cnt)
{
    std::string k(name);
    if (name[0] == '*')
        k += '\n' + std::to_string(cnt);  // no name holds a line end
    return k;
}

// Indexes the nodes from c.tail to the end of the chain.
void extend(Chain &c)
{
    while (*c.tail != nullptr) {
        datatree_t *tp = *c.tail;
        c.first.try_emplace(keyof(tp->xmltag, tp->loopcnt), c.tail);
        c.tail = &tp->next;
    }
}

}  // namespace

RecordIndexScope::RecordIndexScope()
{
    if (scopes++ == 0 && enabled)
        chains = new std::unordered_map<datatree_t **, Chain>;
}

RecordIndexScope::~RecordIndexScope()
{
    if (--scopes == 0) {
        delete chains;
        chains = nullptr;
    }
}

datatree_t **recordindex_find(datatree_t **head, const char *name, int cnt)
{
    if (chains == nullptr)
        return nullptr;
    auto [it, fresh] = chains->try_emplace(head);
    Chain &c = it->second;
    if (fresh)
        c.tail = head;
    extend(c);
    auto f = c.first.find(keyof(name, cnt));
    return f != c.first.end() ? f->second : c.tail;
}

void recordindex_appended(datatree_t **head)
{
    if (chains == nullptr)
        return;
    auto it = chains->find(head);
    if (it != chains->end())
        extend(it->second);
}

void recordindex_setenabled(bool on)
{
    enabled = on;
}

}  // namespace ediprot
