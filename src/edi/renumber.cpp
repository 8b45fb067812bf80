#include "renumber.h"

#include <string.h>

namespace edi {

namespace {

bool holdsdata(const datatree_t *tp)
{
    for (const datatree_t *c = tp->child; c != nullptr; c = c->next)
        if (c->data != nullptr || holdsdata(c))
            return true;
    return false;
}

// For each configuration node in order, every data sibling of the same name
// in order; a loop takes the next number per occurrence and one more for
// the writer's try that finds none.  Tag nodes' children are no loops.
void number(const datatree_t *conf, datatree_t *data)
{
    int i = 0;
    for (const datatree_t *cp = conf; cp != nullptr; cp = cp->next) {
        if (cp->xmltag == nullptr)
            continue;
        bool isloop = cp->xmltag[0] == '*', istag = cp->xmltag[0] == '$';
        for (datatree_t *dp = data; dp != nullptr; dp = dp->next) {
            if (dp->xmltag == nullptr || strcmp(dp->xmltag, cp->xmltag) != 0)
                continue;
            // An occurrence without any value is left out, as the reader
            // prunes it: 0 is a number the writer never looks for.
            if (isloop && !holdsdata(dp)) {
                dp->loopcnt = 0;
                continue;
            }
            if (isloop)
                dp->loopcnt = ++i;
            if (!istag && cp->child != nullptr)
                number(cp->child, dp->child);
        }
        if (isloop)
            ++i;
    }
}

}  // namespace

void renumbertree(const datatree_t *config, datatree_t *tree)
{
    number(config->child, tree->child);
}

void renumbermessage(const datatree_t *config, datatree_t *message)
{
    for (const datatree_t *cm = config->child; cm != nullptr; cm = cm->next)
        if (cm->xmltag != nullptr && message->xmltag != nullptr &&
            strcmp(cm->xmltag, message->xmltag) == 0) {
            number(cm->child, message->child);
            return;
        }
}

}  // namespace edi
