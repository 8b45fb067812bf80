#include "text/tagnodes.h"

#include <ctype.h>

#include <vector>

namespace edi {

void eachtagnode(const datatree_t *config,
                 const std::function<void(const std::string &, const datatree_t *)> &visit)
{
    if (config == nullptr)
        return;
    // Without recursion: configurations may be thousands of levels deep.
    std::vector<const datatree_t *> todo{config};
    while (!todo.empty()) {
        const datatree_t *n = todo.back();
        todo.pop_back();
        for (const datatree_t *c = n->child; c != nullptr; c = c->next)
            todo.push_back(c);
        if (n->iseditag == 0 || n->xmltag == nullptr || n->xmltag[0] == '\0')
            continue;
        std::string tag;
        for (const char *p = n->xmltag + 1; *p != '\0' && tag.size() < 3; p++)
            tag += static_cast<char>(toupper(static_cast<unsigned char>(*p)));
        visit(tag, n);
    }
}

}  // namespace edi
