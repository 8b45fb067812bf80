#include "write/highbytes.h"

#include <stdlib.h>
#include <string.h>

#include <unordered_map>

#include "nodestore.h"
#include "text/charset.h"
#include "trees/samename.h"

namespace edi {

namespace {

// The marker: '#' passes the module's writer as itself, as do the
// upper-case hex digits behind it.
constexpr char kMark = '#';

bool needsmark(unsigned char c)
{
    return c >= 0x80 || c == kMark;
}

bool marked(const char *v)
{
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(v); *p != 0; p++)
        if (needsmark(*p))
            return true;
    return false;
}

// `v` cut to `max` characters (0: not cut); UTF-8 characters count once.
std::string cutto(const char *v, int max, bool utf8)
{
    std::string s(v);
    if (max <= 0)
        return s;
    size_t chars = 0;
    for (size_t i = 0; i < s.size(); i++) {
        bool starts = !utf8 || (static_cast<unsigned char>(s[i]) & 0xC0) != 0x80;
        if (starts && ++chars > static_cast<size_t>(max))
            return s.substr(0, i);
    }
    return s;
}

std::string mark(const std::string &v)
{
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : v) {
        if (!needsmark(c)) {
            out += static_cast<char>(c);
        } else if (c == kMark) {
            out += "##";
        } else {
            out += kMark;
            out += hex[c >> 4];
            out += hex[c & 15];
        }
    }
    return out;
}

// The length the module gives the marked value: release characters count.
int writtenlength(const std::string &v)
{
    int n = 0;
    for (char c : v)
        n += c == '+' || c == ':' || c == '\'' || c == '?' ? 2 : 1;
    return n;
}

int hexvalue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

struct Value {
    datatree_t *node;
    datatree_t *conf;
};

const datatree_t *childnamed(const datatree_t *parent, const char *name)
{
    for (const datatree_t *c = parent->child; c != nullptr; c = c->next)
        if (c->xmltag != nullptr && samename(c->xmltag, name))
            return c;
    return nullptr;
}

// Each value below `dp` with the configuration node the writer finds it
// by (the first child of that name, as the writer looks it up), in order,
// to `f`, until `f` says false.  False if it did.
template <class F>
bool eachvalue(datatree_t *dp, const datatree_t *conf, F &f)
{
    for (datatree_t *c = dp->child; c != nullptr; c = c->next) {
        const datatree_t *cf = c->xmltag != nullptr ? childnamed(conf, c->xmltag) : nullptr;
        if (cf == nullptr)
            continue;
        if (c->data != nullptr && c->child == nullptr) {
            if (!f(Value{c, const_cast<datatree_t *>(cf)}))
                return false;
        } else if (!eachvalue(c, cf, f)) {
            return false;
        }
    }
    return true;
}

// The same for the messages `first` to `last` (NULL: to the end).
template <class F>
void eachvalue(datatree_t *first, datatree_t *last, const datatree_t *config, F f)
{
    for (datatree_t *m = first; m != nullptr; m = m == last ? nullptr : m->next) {
        const datatree_t *conf = m->xmltag != nullptr ? childnamed(config, m->xmltag) : nullptr;
        if (conf != nullptr && !eachvalue(m, conf, f))
            return;
    }
}

}  // namespace

HighBytes::HighBytes(datatree_t *first, datatree_t *last, datatree_t *config, bool utf8)
{
    // Nearly every tree holds no byte above 127: that is found without
    // keeping its values.
    bool high = false;
    eachvalue(first, last, config, [&high](const Value &v) {
        high = !allascii(v.node->data);
        return !high;
    });
    if (!high)
        return;
    std::vector<Value> values;
    eachvalue(first, last, config, [&values](const Value &v) {
        values.push_back(v);
        return true;
    });
    // Elements holding a marked value, with the length the longest needs.
    std::unordered_map<datatree_t *, int> raised;
    for (const Value &v : values)
        if (marked(v.node->data))
            raised.emplace(v.conf, v.conf->edimaxlen);
    for (const Value &v : values) {
        auto at = raised.find(v.conf);
        if (at == raised.end() || v.conf->edimaxlen <= 0)
            continue;
        std::string m = mark(cutto(v.node->data, v.conf->edimaxlen, utf8));
        int need = writtenlength(m);
        if (need > at->second)
            at->second = need;
        values_.emplace_back(v.node, v.node->data);
        v.node->data = edihost::newtext(m.data(), m.size());
    }
    for (auto &[conf, len] : raised) {
        if (len <= conf->edimaxlen)
            continue;
        lengths_.emplace_back(conf, conf->edimaxlen);
        conf->edimaxlen = len;
    }
}

HighBytes::~HighBytes()
{
    for (auto &[node, own] : values_) {
        edihost::freetext(node->data);
        node->data = own;
    }
    for (auto &[conf, len] : lengths_)
        conf->edimaxlen = len;
}

std::string HighBytes::restore(const std::string &text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); i++) {
        if (text[i] != kMark || i + 1 >= text.size()) {
            out += text[i];
        } else if (text[i + 1] == kMark) {
            out += kMark;
            i++;
        } else if (i + 2 < text.size() && hexvalue(text[i + 1]) >= 0 && hexvalue(text[i + 2]) >= 0) {
            out += static_cast<char>(hexvalue(text[i + 1]) * 16 + hexvalue(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace edi
