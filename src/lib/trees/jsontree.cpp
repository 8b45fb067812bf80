#include "trees/jsontree.h"
#include "trees/jsoncharset.h"

#include "findings/report.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "trees/jsonfast.h"
#include "treefields.h"

namespace edi {

using json = nlohmann::ordered_json;

namespace {

// Deeper documents are refused: the conversion recurses once per level.
constexpr int kMaxDepth = 10000;

// A node text as UTF-8, decoded by the character set of its interchange.
std::string bytestoutf8(const char *s)
{
    return jsontext(s);
}

json nodetojson(const datatree_t *tp, int depth)
{
    if (depth > kMaxDepth)
        throw std::runtime_error("tree deeper than 10000 levels");
    jsonenvelope(tp);
    json j;
    j["name"] = bytestoutf8(tp->xmltag);
    // The fields in the order and with the words of the tree text format;
    // only those that are set.
    for (size_t f = 0; f < edihost::ntreefields; f++) {
        const edihost::treefield &fd = edihost::treefields[f];
        if (fd.kind == edihost::fieldkind::text) {
            if (const char *text = edihost::gettext(tp, fd))
                j[fd.key] = bytestoutf8(text);
            continue;
        }
        int value = edihost::getnumber(tp, fd);
        if (value == 0)
            continue;
        if (fd.kind == edihost::fieldkind::word) {
            int n = 0;
            while (fd.words[n] != nullptr)
                n++;
            if (value > 0 && value < n) {  // else it stays a number
                j[fd.key] = fd.words[value];
                continue;
            }
        }
        j[fd.key] = value;
    }
    if (tp->child != nullptr) {
        json kids = json::array();
        for (const datatree_t *cp = tp->child; cp != nullptr; cp = cp->next)
            kids.push_back(nodetojson(cp, depth + 1));
        j["children"] = std::move(kids);
    }
    return j;
}

// ---- JSON to tree --------------------------------------------------------

struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

char *utf8tobytes(const json &j, const char *field)
{
    if (!j.is_string())
        throw Error(std::string("\"") + field + "\" is not a string");
    // Kept as UTF-8: encodejsontree gives each text the bytes of its
    // interchange's character set once the whole tree is read.
    const std::string &out = j.get_ref<const std::string &>();
    if (out.find('\0') != std::string::npos)
        throw Error(std::string("\"") + field + "\" holds a NUL character");
    char *cp = strdup(out.c_str());
    if (cp == nullptr)
        abort();
    return cp;
}

int intfield(const json &j, const char *field)
{
    if (!j.is_number_integer())
        throw Error(std::string("\"") + field + "\" is not an integer");
    long long v = j.get<long long>();
    if (v < INT32_MIN || v > INT32_MAX)
        throw Error(std::string("\"") + field + "\" out of range");
    return static_cast<int>(v);
}

int wordfield(const edihost::treefield &fd, const json &j)
{
    if (j.is_number_integer())
        return intfield(j, fd.key);
    if (j.is_string()) {
        // The word up to a NUL, if the string holds one.
        const char *word = j.get_ref<const std::string &>().c_str();
        int value = edihost::findword(fd, word, strlen(word));
        if (value >= 0)
            return value;
    }
    throw Error(std::string("bad value of \"") + fd.key + "\"");
}

datatree_t *jsontonode(const json &j, int depth);

// A chain of nodes from an array; freed again on any error.
datatree_t *jsontochain(const json &arr, int depth)
{
    datatree_t *start = nullptr;
    datatree_t **tpp = &start;
    try {
        for (const json &kid : arr) {
            *tpp = jsontonode(kid, depth);
            tpp = &(*tpp)->next;
        }
    } catch (...) {
        if (start != nullptr)
            freedatatree(start);
        throw;
    }
    return start;
}

datatree_t *jsontonode(const json &j, int depth)
{
    if (depth > kMaxDepth)
        throw Error("document deeper than 10000 levels");
    // The compact form writes a node with a name and a value only as the
    // pair ["NAME", "VALUE"].
    const bool pair = j.is_array() && j.size() == 2;
    if (!j.is_object() && !pair)
        throw Error("a node is not an object or a [name, value] pair");
    auto *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    if (tp == nullptr)
        abort();
    if (pair) {
        try {
            tp->xmltag = utf8tobytes(j[0], "name");
            tp->data = utf8tobytes(j[1], "data");
        } catch (...) {
            freedatatree(tp);
            throw;
        }
        return tp;
    }
    try {
        bool named = false;
        for (auto it = j.begin(); it != j.end(); ++it) {
            const std::string &key = it.key();
            const json &v = it.value();
            if (key == "name") {
                tp->xmltag = utf8tobytes(v, "name");
                named = true;
            } else if (key == "children") {
                if (!v.is_array())
                    throw Error("\"children\" is not an array");
                tp->child = jsontochain(v, depth + 1);
            } else if (const edihost::treefield *fd = edihost::findfield(key.data(), key.size())) {
                if (fd->kind == edihost::fieldkind::text) {
                    free(edihost::gettext(tp, *fd));  // a key given twice: the last holds
                    edihost::settext(tp, *fd, utf8tobytes(v, fd->key));
                } else {
                    edihost::setnumber(tp, *fd, fd->kind == edihost::fieldkind::word
                                                    ? wordfield(*fd, v)
                                                    : intfield(v, fd->key));
                }
            } else {
                throw Error("unknown field \"" + key + "\"");
            }
        }
        if (!named)
            throw Error("a node has no \"name\"");
    } catch (...) {
        freedatatree(tp);
        throw;
    }
    return tp;
}

}  // namespace

std::string fullnodes(const datatree_t *tree, int indent)
{
    if (tree == nullptr || tree->next == nullptr)
        return tree == nullptr ? "null" : nodetojson(tree, 0).dump(indent, ' ');
    json arr = json::array();
    for (const datatree_t *tp = tree; tp != nullptr; tp = tp->next)
        arr.push_back(nodetojson(tp, 0));
    return arr.dump(indent, ' ');
}

namespace {

// UTF-8 text as a JSON string literal, escaped as the JSON library escapes
// it (\" \\ \b \f \n \r \t, other control characters \u00xx), without
// building a JSON value for every text of a tree.
void appendquoted(std::string &out, std::string_view utf8)
{
    static const char hex[] = "0123456789abcdef";
    out += '"';
    for (char ch : utf8) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20) {
                out += "\\u00";
                out += hex[c >> 4];
                out += hex[c & 15];
            } else {
                out += ch;
            }
        }
    }
    out += '"';
}

}  // namespace

std::string jsonquote(const char *text)
{
    std::string out;
    if (text == nullptr || allascii(text))
        appendquoted(out, text != nullptr ? text : "");
    else
        appendquoted(out, bytestoutf8(text));
    return out;
}

std::string treetojson(const datatree_t *tree, const char *key, const JsonMeta &meta, int indent)
{
    JsonDecoding latin1(Charset::iso8859_1);
    json doc;
    doc["format"] = "ediprot-tree";
    doc["version"] = 1;
    if (key != nullptr)
        doc["key"] = bytestoutf8(key);
    for (const auto &[name, texts] : meta) {
        json arr = json::array();
        for (const std::string &t : texts)
            arr.push_back(bytestoutf8(t.c_str()));
        doc[name] = std::move(arr);
    }
    if (tree == nullptr) {
        doc["tree"] = nullptr;
    } else if (tree->next == nullptr) {
        doc["tree"] = nodetojson(tree, 0);
    } else {
        json arr = json::array();
        for (const datatree_t *tp = tree; tp != nullptr; tp = tp->next)
            arr.push_back(nodetojson(tp, 0));
        doc["tree"] = std::move(arr);
    }
    return doc.dump(indent, ' ') + "\n";
}

namespace {
datatree_t *generaljson(std::string_view text, const std::string &name, Report &rep);

// The set a one-message document (edi_message_json, a line of NDJSON)
// names in its envelope; ISO 8859-1 for every other document.
Charset documentcharset(std::string_view text)
{
    if (text.find("\"envelope\"") == std::string_view::npos)
        return Charset::iso8859_1;
    json doc = json::parse(text.begin(), text.end(), nullptr, false);
    if (!doc.is_object() || !doc.contains("envelope") || !doc["envelope"].is_object())
        return Charset::iso8859_1;
    const json &env = doc["envelope"];
    if (!env.contains("charset") || !env["charset"].is_string())
        return Charset::iso8859_1;
    Charset cs = charsetnamed(env["charset"].get<std::string>());
    return cs == Charset::unknown ? Charset::iso8859_1 : cs;
}
}

datatree_t *jsontotree(std::string_view text, const std::string &name, Report &rep)
{
    JsonSeen seen;
    datatree_t *tree = jsonfast(text, &seen);
    bool encoded = false;
    if (tree != nullptr) {
        // What the fast reader saw spares a look at the whole text (its
        // charset) and at the whole tree (texts to encode).
        if (seen.ascii && seen.inorder)
            encoded = encodeasciitree(seen.envelopes, name, rep);
        else
            encoded = encodejsontree(tree, name, rep,
                                     seen.envelopekey ? documentcharset(text) : Charset::iso8859_1);
    } else {
        tree = generaljson(text, name, rep);
        encoded = tree != nullptr && encodejsontree(tree, name, rep, documentcharset(text));
    }
    if (tree != nullptr && !encoded) {
        freedatatree(tree);
        return nullptr;
    }
    return tree;
}

namespace {

// The document read by the general parser, which names what is wrong.
datatree_t *generaljson(std::string_view text, const std::string &name, Report &rep)
{
    json doc = json::parse(text.begin(), text.end(), nullptr, false);
    if (doc.is_discarded()) {
        rep.fail(name, "not a valid JSON document");
        return nullptr;
    }
    try {
        const json *tree = &doc;
        if (doc.is_object() && doc.contains("format")) {
            if (doc["format"] != "ediprot-tree")
                throw Error("not an ediprot tree document");
            if (!doc.contains("tree"))
                throw Error("document has no \"tree\"");
            tree = &doc["tree"];
        }
        if (tree->is_null())
            throw Error("document holds no tree");
        if (tree->is_array()) {
            datatree_t *chain = jsontochain(*tree, 0);
            if (chain == nullptr)
                throw Error("document holds no tree");
            setparents(chain, 0);
            for (datatree_t *tp = chain->next; tp != nullptr; tp = tp->next)
                setparents(tp, 0);
            return chain;
        }
        datatree_t *root = jsontonode(*tree, 0);
        setparents(root, 0);
        return root;
    } catch (const std::exception &e) {
        rep.fail(name, e.what());
        return nullptr;
    }
}

}  // namespace

}  // namespace edi
