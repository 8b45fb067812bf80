#include "trees/jsonfast.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include <string>

#include "nodestore.h"
#include "treefields.h"
#include "trees/envelopenodes.h"

namespace edi {

namespace {

// Deeper trees are left to the general parser, which has its own limit.
constexpr int kFastDepth = 200;

struct Decline {};

struct Reader {
    const char *p, *end;
    JsonSeen &saw;

    void ws()
    {
        while (p < end && (*p == ' ' || *p == '\n' || *p == '\t' || *p == '\r'))
            p++;
    }
    char peek()
    {
        ws();
        if (p == end)
            throw Decline{};
        return *p;
    }
    void expect(char c)
    {
        if (peek() != c)
            throw Decline{};
        p++;
    }
    bool take(char c)
    {
        if (peek() != c)
            return false;
        p++;
        return true;
    }

    int hex()
    {
        if (p == end)
            throw Decline{};
        char c = *p++;
        if (c >= '0' && c <= '9')
            return c - '0';
        if ((c | 0x20) >= 'a' && (c | 0x20) <= 'f')
            return (c | 0x20) - 'a' + 10;
        throw Decline{};
    }

    // A string as UTF-8 of U+0001 to U+00FF (wider text goes the slow
    // way).  A NUL, raw control characters and malformed UTF-8 are
    // declined.
    std::string &str()
    {
        static std::string out;
        out.clear();
        expect('"');
        for (;;) {
            const char *run = p;
            while (p < end && static_cast<unsigned char>(*p) >= 0x20 && *p != '"' && *p != '\\' &&
                   static_cast<unsigned char>(*p) < 0x80)
                p++;
            out.append(run, static_cast<size_t>(p - run));
            if (p == end)
                throw Decline{};
            unsigned char c = static_cast<unsigned char>(*p++);
            if (c == '"')
                return out;
            if (c == 0xC2 || c == 0xC3) {  // U+0080 to U+00FF, kept as UTF-8
                if (p == end || (static_cast<unsigned char>(*p) & 0xC0) != 0x80)
                    throw Decline{};
                saw.ascii = false;
                out += static_cast<char>(c);
                out += *p++;
                continue;
            }
            if (c != '\\' || p == end)
                throw Decline{};
            const char *plain = strchr("\"\\/bfnrt", *p);
            if (*p != '\0' && plain != nullptr) {
                out += "\"\\/\b\f\n\r\t"[plain - "\"\\/bfnrt"];
                p++;
                continue;
            }
            if (*p++ != 'u')
                throw Decline{};
            int cp = hex() << 12;
            cp |= hex() << 8;
            cp |= hex() << 4;
            cp |= hex();
            if (cp == 0 || cp > 0xFF)
                throw Decline{};
            if (cp < 0x80) {
                out += static_cast<char>(cp);
            } else {
                saw.ascii = false;
                out += static_cast<char>(0xC0 | (cp >> 6));
                out += static_cast<char>(0x80 | (cp & 0x3F));
            }
        }
    }

    // An integer in the range of int; fractions, exponents and anything
    // wider are declined.
    int integer()
    {
        ws();
        bool neg = p < end && *p == '-';
        if (neg)
            p++;
        const char *digits = p;
        long long v = 0;
        while (p < end && *p >= '0' && *p <= '9' && p - digits < 11)
            v = v * 10 + (*p++ - '0');
        size_t n = static_cast<size_t>(p - digits);
        if (n == 0 || n > 10 || (n > 1 && *digits == '0') ||
            (p < end && (*p == '.' || *p == 'e' || *p == 'E' || (*p >= '0' && *p <= '9'))))
            throw Decline{};
        v = neg ? -v : v;
        if (v < INT32_MIN || v > INT32_MAX)
            throw Decline{};
        return static_cast<int>(v);
    }

    bool literal(const char *word)
    {
        size_t n = strlen(word);
        if (static_cast<size_t>(end - p) < n || memcmp(p, word, n) != 0)
            return false;
        p += n;
        return true;
    }

    // Any value of the kinds above, for the fields the reader ignores.
    void skip(int depth)
    {
        char c = peek();
        if (depth > kFastDepth)
            throw Decline{};
        if (c == '"') {
            str();
        } else if (c == '{' || c == '[') {
            p++;
            const char close = c == '{' ? '}' : ']';
            if (take(close))
                return;
            do {
                if (c == '{') {
                    str();
                    expect(':');
                }
                skip(depth + 1);
            } while (take(','));
            expect(close);
        } else if (!literal("true") && !literal("false") && !literal("null")) {
            integer();
        }
    }

    char *dup(const std::string &s) { return edihost::newtext(s.data(), s.size()); }

    // A string as a new text: copied straight from the document when it
    // holds nothing to decode (nearly every name and value), else
    // through str().
    char *text()
    {
        if (peek() == '"') {
            const char *q = p + 1;
            while (q < end && static_cast<unsigned char>(*q) >= 0x20 && *q != '"' &&
                   *q != '\\' && static_cast<unsigned char>(*q) < 0x80)
                q++;
            if (q < end && *q == '"') {
                char *t = edihost::newtext(p + 1, static_cast<size_t>(q - p - 1));
                p = q + 1;
                return t;
            }
        }
        return dup(str());
    }

    // An `#envelope` node, kept in document order: named after its
    // children were read, it would come behind them.
    void noteenvelope(datatree_t *tp, bool childrenfirst)
    {
        if (tp->xmltag[0] != '#' || strcmp(tp->xmltag, envelopenodename) != 0)
            return;
        saw.envelopes.push_back(tp);
        if (childrenfirst)
            saw.inorder = false;
    }

    // One node object into *slot (linked at once, so that a decline frees
    // it with the rest); each key once, "name" required.
    void node(datatree_t **slot, int depth)
    {
        if (depth > kFastDepth)
            throw Decline{};
        datatree_t *tp = edihost::newnode();
        *slot = tp;
        if (take('[')) {  // the compact form's ["NAME", "VALUE"]
            tp->xmltag = text();
            noteenvelope(tp, false);
            expect(',');
            tp->data = text();
            expect(']');
            return;
        }
        expect('{');
        uint64_t seen = 0;
        do {
            const std::string &key = str();
            const edihost::treefield *fd = nullptr;
            int bit = key == "name" ? 0 : key == "children" ? 1 : -1;
            if (bit < 0 && (fd = edihost::findfield(key.data(), key.size())) != nullptr)
                bit = 2 + static_cast<int>(fd - edihost::treefields);
            if (bit < 0 || (seen & (1ULL << bit)) != 0)
                throw Decline{};
            seen |= 1ULL << bit;
            expect(':');
            if (bit == 0) {
                tp->xmltag = text();
                noteenvelope(tp, (seen & 2) != 0);
            } else if (bit == 1) {
                expect('[');
                if (!take(']')) {
                    datatree_t **kid = &tp->child;
                    do {
                        node(kid, depth + 1);
                        kid = &(*kid)->next;
                    } while (take(','));
                    expect(']');
                }
            } else if (fd->kind == edihost::fieldkind::text) {
                edihost::settext(tp, *fd, text());
            } else if (fd->kind == edihost::fieldkind::word && peek() == '"') {
                const std::string &word = str();
                int value = edihost::findword(*fd, word.data(), word.size());
                if (value < 0)
                    throw Decline{};
                edihost::setnumber(tp, *fd, value);
            } else {
                edihost::setnumber(tp, *fd, integer());
            }
        } while (take(','));
        expect('}');
        if ((seen & 1) == 0)
            throw Decline{};
    }

    // {"format": "ediprot-tree", ... "tree": node or non-empty array ...}
    datatree_t *document(datatree_t **roots)
    {
        expect('{');
        if (str() != "format")
            throw Decline{};
        expect(':');
        if (str() != "ediprot-tree")
            throw Decline{};
        bool tree = false;
        while (take(',')) {
            const std::string &key = str();
            if (key == "format")
                throw Decline{};  // a later value would count
            if (key != "tree") {
                saw.envelopekey = saw.envelopekey || key == "envelope";
                expect(':');
                skip(0);
                continue;
            }
            expect(':');
            if (tree)
                throw Decline{};
            tree = true;
            if (take('[')) {
                datatree_t **slot = roots;
                do {
                    node(slot, 0);
                    slot = &(*slot)->next;
                } while (take(','));
                expect(']');
            } else {
                node(roots, 0);
            }
        }
        expect('}');
        ws();
        if (!tree || p != end)
            throw Decline{};
        return *roots;
    }
};

}  // namespace

datatree_t *jsonfast(std::string_view text, JsonSeen *seen)
{
    JsonSeen own;
    if (seen == nullptr)
        seen = &own;
    *seen = JsonSeen{};
    Reader r{text.data(), text.data() + text.size(), *seen};
    datatree_t *roots = nullptr;
    try {
        r.document(&roots);
    } catch (const Decline &) {
        freedatatree(roots);
        *seen = JsonSeen{};
        return nullptr;
    }
    for (datatree_t *tp = roots; tp != nullptr; tp = tp->next)
        setparents(tp, 0);
    return roots;
}

}  // namespace edi
