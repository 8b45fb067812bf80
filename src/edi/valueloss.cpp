#include "valueloss.h"

#include <stdio.h>

#include <unordered_map>

namespace edi {

namespace {

// The writer's service characters (its UNA is always :+.? ').
bool servicechar(char c)
{
    return c == '\'' || c == '+' || c == ':' || c == '?';
}

// Configuration nodes by their path of names below the root
// ("*ORDERS/*SG2/$NAD/C080/3036").  Iterative: configurations may nest deeply.
using Nodes = std::unordered_map<std::string, const datatree_t *>;

Nodes bypath(const datatree_t *config)
{
    Nodes out;
    std::vector<std::pair<const datatree_t *, std::string>> todo{{config, ""}};
    while (!todo.empty()) {
        auto [node, path] = todo.back();
        todo.pop_back();
        for (const datatree_t *c = node->child; c != nullptr; c = c->next) {
            if (c->xmltag == nullptr)
                continue;
            std::string p = path.empty() ? c->xmltag : path + "/" + c->xmltag;
            out.emplace(p, c);
            todo.emplace_back(c, p);
        }
    }
    return out;
}

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
    Nodes nodes = bypath(config);
    std::vector<std::string> lines;
    struct Item {
        const datatree_t *node;
        std::string path, where;
    };
    for (const datatree_t *m = first; m != nullptr; m = m->next, number++) {
        if (m->xmltag != nullptr && nodes.count(m->xmltag) != 0) {
            std::vector<Item> todo{{m, m->xmltag, ""}};
            std::vector<std::string> found;
            while (!todo.empty()) {
                Item it = todo.back();
                todo.pop_back();
                std::vector<Item> kids;
                for (const datatree_t *c = it.node->child; c != nullptr; c = c->next) {
                    if (c->xmltag == nullptr)
                        continue;
                    std::string p = it.path + "/" + c->xmltag;
                    auto cf = nodes.find(p);
                    if (cf == nodes.end())
                        continue;  // the writer never reaches it
                    // Messages name a value from its tag node down.
                    std::string w = it.where.empty() && c->iseditag == 0
                                        ? ""
                                        : (it.where.empty() ? "" : it.where + ".") + c->xmltag;
                    if (c->data != nullptr && c->data[0] != '\0' && c->child == nullptr) {
                        std::string why = change(c->data, cf->second, charset);
                        if (!why.empty())
                            found.push_back("message " + std::to_string(number) + ", " + w +
                                            ": " + why);
                    }
                    kids.push_back({c, p, w});
                }
                todo.insert(todo.end(), kids.rbegin(), kids.rend());
            }
            lines.insert(lines.end(), found.begin(), found.end());
        }
        if (m == last)
            break;
    }
    return lines;
}

}  // namespace edi
