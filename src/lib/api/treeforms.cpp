// Trees as text in the full or the compact form, and one message as a
// JSON document of its own (a line of NDJSON).
#include <new>
#include <stdexcept>

#include "api/objects.h"
#include "trees/compacttree.h"
#include "trees/jsontree.h"
#include "trees/jsoncharset.h"
#include "trees/treeload.h"

namespace edi {
namespace {

// The text `make` gives as a string for edi_free; NULL when it throws
// (out of memory, a tree too deep).
template <typename F>
char *guarded(size_t *len, F make)
{
    try {
        return cstring(make(), len);
    } catch (const std::bad_alloc &) {
        return nullptr;
    } catch (const std::runtime_error &) {
        return nullptr;
    }
}

std::string jsonof(const datatree_t *tree, const char *key, const JsonMeta &meta, int form)
{
    const bool oneline = (form & EDI_FORM_ONE_LINE) != 0;
    if ((form & EDI_FORM_COMPACT) != 0)
        return compactjson(tree, key, meta, oneline);
    return treetojson(tree, key, meta, oneline ? -1 : 1);
}

// "name": "value" for each envelope value that is present.
void envelopejson(std::string &out, const edi_envelope &e, bool oneline)
{
    const char *colon = oneline ? ":" : ": ";
    bool first = true;
    auto put = [&](const char *name, const std::string &value) {
        if (value.empty())
            return;
        out += first ? "" : ",";
        first = false;
        out += std::string("\"") + name + "\"" + colon + jsonquote(value.c_str());
    };
    out += '{';
    out += std::string("\"interchange\"") + colon + std::to_string(e.interchange);
    first = false;
    if (e.has_una)
        put("una", std::string{e.component_sep, e.element_sep, e.decimal_mark, e.release_char,
                               e.repetition_sep, e.segment_term});
    put("syntax_id", e.syntax_id);
    put("syntax_version", e.syntax_version);
    put("sender", e.sender);
    put("sender_qualifier", e.sender_qualifier);
    put("recipient", e.recipient);
    put("recipient_qualifier", e.recipient_qualifier);
    put("date", e.date);
    put("time", e.time);
    put("control_ref", e.control_ref);
    put("application_ref", e.application_ref);
    put("test_indicator", e.test_indicator);
    put("charset", e.charset != nullptr ? e.charset : "");
    if (e.has_ung) {
        put("group_id", e.group_id);
        put("group_sender", e.group_sender);
        put("group_recipient", e.group_recipient);
        put("group_ref", e.group_ref);
    }
    out += '}';
}

// One node (its chain cut off) in the form asked for.
void nodesjson(std::string &out, const datatree_t *tp, int form)
{
    const bool oneline = (form & EDI_FORM_ONE_LINE) != 0;
    datatree_t *next = tp->next;
    const_cast<datatree_t *>(tp)->next = nullptr;
    struct Relink {
        const datatree_t *tp;
        datatree_t *next;
        ~Relink() { const_cast<datatree_t *>(tp)->next = next; }
    } relink{tp, next};
    if ((form & EDI_FORM_COMPACT) == 0) {
        out += fullnodes(tp, oneline ? -1 : 1);
        return;
    }
    datatree_t *copy = compactcopy(tp);
    try {
        compactnodes(out, copy, oneline);
    } catch (...) {
        freedatatree(copy);
        throw;
    }
    freedatatree(copy);
}

std::string messagejson(const edi_message &m, int form)
{
    // Values are decoded by the character set the message came in.
    JsonDecoding decoding(charsetnamed(m.charset) == Charset::unknown ? Charset::iso8859_1
                                                                      : charsetnamed(m.charset));
    const bool oneline = (form & EDI_FORM_ONE_LINE) != 0;
    const char *colon = oneline ? ":" : ": ";
    const std::string sep = oneline ? "," : ",\n ";
    std::string out = oneline ? "{" : "{\n ";
    out += std::string("\"format\"") + colon + "\"ediprot-tree\"" + sep;
    out += std::string("\"version\"") + colon + "1" + sep;
    if ((form & EDI_FORM_COMPACT) != 0)
        out += std::string("\"form\"") + colon + "\"compact\"" + sep;
    out += std::string("\"message\"") + colon + std::to_string(m.number) + sep;
    out += std::string("\"envelope\"") + colon;
    envelopejson(out, m.view, oneline);
    // Every element of the envelope as nodes: `#envelope` and `#group`.
    out += sep + "\"envelope_nodes\"" + colon + "[";
    bool firstnode = true;
    for (const datatree_t *env : {m.envtree, m.grouptree}) {
        if (env == nullptr)
            continue;
        out += firstnode ? "" : ",";
        firstnode = false;
        nodesjson(out, env, form);
    }
    out += "]";
    out += sep + "\"tree\"" + colon;
    nodesjson(out, m.tree, form);
    out += oneline ? "}\n" : "\n}\n";
    return out;
}

}  // namespace
}  // namespace edi

using namespace edi;

extern "C" {

char *edi_tree_to_text_opt(const datatree_t *tree, int form, size_t *len)
{
    if (tree == nullptr)
        return nullptr;
    return guarded(len, [&] {
        if ((form & EDI_FORM_COMPACT) == 0)
            return treetext(tree);
        datatree_t *copy = compactcopy(tree);
        std::string text = treetext(copy);
        freedatatree(copy);
        return text;
    });
}

char *edi_tree_to_json_opt(const datatree_t *tree, int form, size_t *len)
{
    if (tree == nullptr)
        return nullptr;
    return guarded(len, [&] { return jsonof(tree, nullptr, {}, form); });
}

char *edi_result_json_opt(const edi_result *res, int form)
{
    if (res == nullptr || res->tree == nullptr)
        return nullptr;
    return guarded(nullptr, [&] {
        JsonMeta meta;
        if (!res->changes.empty())
            meta.emplace_back("changes", res->changes);
        if (res->items.size() > 1)
            meta.emplace_back("keys", res->items);
        const char *key = res->items.empty() ? nullptr : res->items[0].c_str();
        return jsonof(res->tree, key, meta, form);
    });
}

char *edi_message_json(const edi_message *m, int form)
{
    if (m == nullptr || m->tree == nullptr)
        return nullptr;
    return guarded(nullptr, [&] { return messagejson(*m, form); });
}

}  // extern "C"
