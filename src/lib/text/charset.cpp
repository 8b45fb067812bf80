#include "text/charset.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "text/charsettables.h"

namespace edi {

namespace {

struct SetName {
    Charset cs;
    const char *syntaxid;  // the identifier that declares it when written
    const char *name;      // IANA
    int part;              // ISO 8859 part; 0: none
};

const SetName setnames[] = {
    {Charset::levela, "UNOA", "US-ASCII", 0},     {Charset::levelb, "UNOB", "US-ASCII", 0},
    {Charset::iso8859_1, "UNOC", "ISO-8859-1", 1}, {Charset::iso8859_2, "UNOD", "ISO-8859-2", 2},
    {Charset::iso8859_3, "UNOG", "ISO-8859-3", 3}, {Charset::iso8859_4, "UNOH", "ISO-8859-4", 4},
    {Charset::iso8859_5, "UNOE", "ISO-8859-5", 5}, {Charset::iso8859_6, "UNOI", "ISO-8859-6", 6},
    {Charset::iso8859_7, "UNOF", "ISO-8859-7", 7}, {Charset::iso8859_8, "UNOJ", "ISO-8859-8", 8},
    {Charset::iso8859_9, "UNOK", "ISO-8859-9", 9}, {Charset::iso8859_15, "UNOL", "ISO-8859-15", 15},
    {Charset::utf8, "UNOY", "UTF-8", 0},
};

// Identifiers that declare a set besides the ones above: UTF-8 has two,
// and the airline identifiers IATA and IATB are levels A and B.
const std::pair<const char *, Charset> othersyntaxids[] = {
    {"UNOW", Charset::utf8}, {"IATA", Charset::levela}, {"IATB", Charset::levelb}};

// The repertoires of levels A and B beside letters and digits.
constexpr std::string_view levelapunctuation = " .,-()/='+:?!\"%&*;<>";

const SetName *entry(Charset cs)
{
    for (const SetName &s : setnames)
        if (s.cs == cs)
            return &s;
    return nullptr;
}

std::string upper(std::string_view s)
{
    std::string r(s);
    for (char &c : r)
        if (c >= 'a' && c <= 'z')
            c = static_cast<char>(c - 'a' + 'A');
    return r;
}

// The upper half of the ISO 8859 part a set reads bytes above 127 by:
// levels A and B (and an unknown set) by Latin-1; none for UTF-8.
const uint16_t *upperhalf(Charset cs)
{
    if (cs == Charset::utf8)
        return nullptr;
    const SetName *e = entry(cs);
    int part = e != nullptr && e->part != 0 ? e->part : 1;
    for (const Iso8859Half &h : iso8859halves)
        if (h.part == part)
            return h.upper;
    return nullptr;
}

// Code point to byte for the upper half of one part, made once per part.
const std::unordered_map<char32_t, unsigned char> &encodemap(const uint16_t *half)
{
    static const auto maps = [] {
        std::array<std::unordered_map<char32_t, unsigned char>, iso8859parts> m;
        for (size_t p = 0; p < iso8859parts; p++)
            for (int i = 0; i < 128; i++)
                if (iso8859halves[p].upper[i] != 0)
                    m[p][iso8859halves[p].upper[i]] = static_cast<unsigned char>(0x80 + i);
        return m;
    }();
    for (size_t p = 0; p < iso8859parts; p++)
        if (iso8859halves[p].upper == half)
            return maps[p];
    return maps[0];
}

bool rawbyte(char32_t c)
{
    return c >= rawbytebase + 0x80 && c <= rawbytebase + 0xFF;
}

}  // namespace

Charset charsetofsyntax(std::string_view syntaxid)
{
    std::string id = upper(syntaxid);
    for (const SetName &s : setnames)
        if (id == s.syntaxid)
            return s.cs;
    for (const auto &[other, cs] : othersyntaxids)
        if (id == other)
            return cs;
    return Charset::unknown;
}

Charset charsetnamed(std::string_view name)
{
    Charset cs = charsetofsyntax(name);
    if (cs != Charset::unknown)
        return cs;
    auto bare = [](std::string_view s) {
        std::string r = upper(s);
        std::erase_if(r, [](char c) { return c == '-' || c == '_'; });
        return r;
    };
    std::string want = bare(name);
    if (want == "ASCII")
        return Charset::levelb;
    for (const SetName &s : setnames)
        if (want == bare(s.name))
            return s.cs == Charset::levela ? Charset::levelb : s.cs;
    return Charset::unknown;
}

const char *charsetname(Charset cs)
{
    const SetName *e = entry(cs);
    return e != nullptr ? e->name : "";
}

const char *syntaxidof(Charset cs)
{
    const SetName *e = entry(cs);
    return e != nullptr ? e->syntaxid : "";
}

std::string syntaxproblem(std::string_view syntaxid)
{
    if (charsetofsyntax(syntaxid) != Charset::unknown)
        return "";
    std::string shown;
    for (unsigned char c : syntaxid)
        shown += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    if (upper(syntaxid) == "UNOX")
        return "syntax identifier 'UNOX' (ISO 2022 code extension) is not supported";
    return "unknown syntax identifier '" + shown + "'";
}

long nextcodepoint(std::string_view s, size_t &at)
{
    auto byte = [&](size_t i) { return i < s.size() ? static_cast<unsigned char>(s[i]) : 0; };
    unsigned char b = byte(at);
    if (at >= s.size())
        return -1;
    if (b < 0x80) {
        at++;
        return b;
    }
    size_t n = b >= 0xC2 && b <= 0xDF ? 2 : b >= 0xE0 && b <= 0xEF ? 3 : b >= 0xF0 && b <= 0xF4 ? 4 : 0;
    if (n == 0 || at + n > s.size())
        return -1;
    long c = b & (0x7F >> n);
    for (size_t k = 1; k < n; k++) {
        if ((byte(at + k) & 0xC0) != 0x80)
            return -1;
        c = c << 6 | (byte(at + k) & 0x3F);
    }
    bool overlong = (n == 3 && c < 0x800) || (n == 4 && c < 0x10000);
    if (overlong || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        return -1;
    at += n;
    return c;
}

void appendutf8(std::string &out, char32_t c)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | c >> 6);
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | c >> 12);
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | c >> 18);
        out += static_cast<char>(0x80 | (c >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string decodetext(std::string_view bytes, Charset cs)
{
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 4);
    const uint16_t *half = upperhalf(cs);
    for (size_t i = 0; i < bytes.size();) {
        unsigned char b = static_cast<unsigned char>(bytes[i]);
        if (b < 0x80) {
            out += static_cast<char>(b);
            i++;
            continue;
        }
        if (half != nullptr) {
            appendutf8(out, half[b - 0x80] != 0 ? half[b - 0x80] : rawbytebase + b);
            i++;
            continue;
        }
        // UTF-8: a private-use code point of the raw-byte range in the data
        // would encode back as one byte, so its bytes are kept as raw bytes.
        size_t at = i;
        long c = nextcodepoint(bytes, at);
        if (c >= 0 && !rawbyte(static_cast<char32_t>(c))) {
            out.append(bytes.substr(i, at - i));
            i = at;
        } else {
            appendutf8(out, rawbytebase + b);
            i++;
        }
    }
    return out;
}

std::string encodetext(std::string_view utf8, Charset cs, std::vector<Unencodable> *missing,
                       const EncodeOptions &opt)
{
    std::string out;
    out.reserve(utf8.size());
    const uint16_t *half = upperhalf(cs);
    const auto *map = half != nullptr ? &encodemap(half) : nullptr;
    bool sevenbit = opt.strict && (cs == Charset::levela || cs == Charset::levelb);
    for (size_t i = 0; i < utf8.size();) {
        size_t at = i;
        long c = nextcodepoint(utf8, at);
        if (c < 0) {
            if (missing != nullptr)
                missing->push_back({i, static_cast<unsigned char>(utf8[i]), true});
            out += opt.replacement;
            i++;
            continue;
        }
        char32_t ch = static_cast<char32_t>(c);
        bool written = true;
        if (ch < 0x80) {
            out += static_cast<char>(ch);
        } else if (sevenbit) {
            written = false;
        } else if (rawbyte(ch)) {
            out += static_cast<char>(ch - rawbytebase);
        } else if (map == nullptr) {
            out.append(utf8.substr(i, at - i));
        } else if (auto it = map->find(ch); it != map->end()) {
            out += static_cast<char>(it->second);
        } else {
            written = false;
        }
        if (!written) {
            if (missing != nullptr)
                missing->push_back({i, ch, false});
            out += opt.replacement;
        }
        i = at;
    }
    return out;
}

Charset detectcharset(std::string_view bytes, Charset declared)
{
    if (declared == Charset::utf8)
        return declared;
    bool multibyte = false;
    for (size_t i = 0; i < bytes.size();) {
        if (static_cast<unsigned char>(bytes[i]) < 0x80) {
            i++;
            continue;
        }
        if (nextcodepoint(bytes, i) < 0)
            return declared;
        multibyte = true;
    }
    return multibyte ? Charset::utf8 : declared;
}

Charset detectcharset(const std::vector<std::string_view> &pieces, Charset declared)
{
    bool multibyte = false;
    for (std::string_view p : pieces) {
        Charset used = detectcharset(p, declared);
        if (used != declared)
            multibyte = true;
        else if (declared != Charset::utf8 &&
                 std::any_of(p.begin(), p.end(), [](char c) { return c & 0x80; }))
            return declared;
    }
    return multibyte ? Charset::utf8 : declared;
}

Fit charfit(char32_t c, Charset cs)
{
    bool digitorupper = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
    bool lower = c >= 'a' && c <= 'z';
    bool punct = c < 0x80 && c != 0 && levelapunctuation.find(static_cast<char>(c)) !=
                                            std::string_view::npos;
    switch (cs) {
    case Charset::levela:
        return digitorupper || punct ? Fit::inside : lower ? Fit::lowercase : Fit::outside;
    case Charset::levelb:
        return digitorupper || punct || lower ? Fit::inside : Fit::outside;
    case Charset::unknown:
        return Fit::outside;
    default:
        return rawbyte(c) ? Fit::outside : Fit::inside;
    }
}

bool allascii(const char *s)
{
    for (const unsigned char *p = reinterpret_cast<const unsigned char *>(s); *p != 0; p++)
        if (*p >= 0x80)
            return false;
    return true;
}

}  // namespace edi
