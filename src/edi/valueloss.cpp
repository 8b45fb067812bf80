#include "valueloss.h"

#include <stdio.h>

#include <string_view>
#include <unordered_map>

namespace edi {

namespace {

// The writer's service characters (its UNA is always :+.? ').
bool servicechar(char c)
{
    return c == '\'' || c == '+' || c == ':' || c == '?';
}

// The configuration child of `parent` named `name`, the first if several
// are: the writer finds a value through the names from the message node
// down.  Each configuration node's children are indexed on first use.
class Children {
public:
    const datatree_t *find(const datatree_t *parent, const char *name)
    {
        auto &index = byparent_[parent];
        if (!index.built) {
            for (const datatree_t *c = parent->child; c != nullptr; c = c->next)
                if (c->xmltag != nullptr)
                    index.byname.emplace(c->xmltag, c);
            index.built = true;
        }
        auto found = index.byname.find(name);
        return found != index.byname.end() ? found->second : nullptr;
    }

private:
    struct Index {
        bool built = false;
        std::unordered_map<std::string_view, const datatree_t *> byname;
    };
    std::unordered_map<const datatree_t *, Index> byparent_;
};

// What the writer does to one value, or "" if it writes it as it is.
std::string change(const char *value, const datatree_t *cf, const char *charset)
{
    size_t length = 0;
    std::string blanked;
    bool dropped = false;
    for (const char *p = value; *p != '\0'; p++) {
        unsigned char c = static_cast<unsigned char>(*p);
        if (c & 0x80) {
            dropped = true;
            continue;
        }
        length += servicechar(static_cast<char>(c)) ? 2 : 1;
        if (charset != nullptr && charset[c] != static_cast<char>(c) &&
            blanked.find(static_cast<char>(c)) == std::string::npos)
            blanked += static_cast<char>(c);
    }
    std::string why;
    bool text = cf->editype == et_none || cf->editype == et_string || cf->editype == et_time;
    int limit = cf->edimaxlen > 0 ? cf->edimaxlen : cf->edilen;
    if (text && limit > 0 && length > static_cast<size_t>(limit))
        why = std::to_string(length) + " characters (release characters counted) cut to " +
              std::to_string(limit);
    if (!blanked.empty()) {
        std::string shown;
        for (char c : blanked) {
            char buf[8];
            snprintf(buf, sizeof buf, c >= 0x20 && c < 0x7f ? "%c" : "\\x%02x", c);
            shown += buf;
        }
        why += (why.empty() ? "'" : "; '") + shown + "' written as blank";
    }
    if (dropped)
        why += (why.empty() ? "" : "; ") + std::string("bytes above 127 left out");
    return why;
}

}  // namespace

std::vector<std::string> valueloss(const datatree_t *first, const datatree_t *last, int number,
                                   const datatree_t *config, const char *charset)
{
    Children children;
    std::vector<std::string> lines;
    // Nodes met on the walk; `where` of a node is the names of the named
    // frames from its tag node down, rebuilt only for a message line.
    struct Frame {
        const datatree_t *node;
        const datatree_t *conf;
        int up;      // frame of the parent, -1 for the message node
        bool named;  // a tag node or below one
    };
    std::vector<Frame> frames;
    std::vector<int> todo, kids;
    auto where = [&frames](int at) {
        std::vector<const char *> names;
        for (; at >= 0 && frames[static_cast<size_t>(at)].named; at = frames[static_cast<size_t>(at)].up)
            names.push_back(frames[static_cast<size_t>(at)].node->xmltag);
        std::string w;
        for (auto n = names.rbegin(); n != names.rend(); ++n)
            w += (w.empty() ? "" : ".") + std::string(*n);
        return w;
    };
    for (const datatree_t *m = first; m != nullptr; m = m->next, number++) {
        const datatree_t *mconf = m->xmltag != nullptr ? children.find(config, m->xmltag) : nullptr;
        if (mconf != nullptr) {
            frames.assign(1, {m, mconf, -1, false});
            todo.assign(1, 0);
            // The children of a node are looked at before anything below
            // them, then walked in order, depth first.
            while (!todo.empty()) {
                const int at = todo.back();
                todo.pop_back();
                kids.clear();
                const Frame it = frames[static_cast<size_t>(at)];
                for (const datatree_t *c = it.node->child; c != nullptr; c = c->next) {
                    if (c->xmltag == nullptr)
                        continue;
                    const datatree_t *cf = children.find(it.conf, c->xmltag);
                    if (cf == nullptr)
                        continue;  // the writer never reaches it
                    frames.push_back({c, cf, at, it.named || c->iseditag != 0});
                    const int self = static_cast<int>(frames.size()) - 1;
                    if (c->data != nullptr && c->data[0] != '\0' && c->child == nullptr) {
                        std::string why = change(c->data, cf, charset);
                        if (!why.empty())
                            lines.push_back("message " + std::to_string(number) + ", " +
                                            where(self) + ": " + why);
                    }
                    kids.push_back(self);
                }
                todo.insert(todo.end(), kids.rbegin(), kids.rend());
            }
        }
        if (m == last)
            break;
    }
    return lines;
}

}  // namespace edi
