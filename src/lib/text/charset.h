// The character sets an interchange declares in its syntax identifier (UNB
// S001 0001), and its bytes as Unicode text (UTF-8) and back.
//
// Decoding never loses a byte: every byte string decodes to text that
// encodes back to the same bytes in the same set.  A byte the set has no
// character for (an unassigned ISO 8859 position, a byte of malformed UTF-8)
// becomes the private-use code point U+F700 + byte (U+F780-U+F7FF), which
// encodes back to that byte.  Levels A and B are 7-bit; senders put Latin-1
// bytes into them all the same, so their bytes above 127 decode as ISO
// 8859-1 (validation reports them).  docs/charsets.md has the rules.
#ifndef EDI_CHARSET_H
#define EDI_CHARSET_H

#include <stddef.h>

#include <string>
#include <string_view>
#include <vector>

namespace edi {

enum class Charset {
    unknown,
    levela,     // UNOA (and IATA): upper case letters, digits, some punctuation
    levelb,     // UNOB (and IATB): level A with lower case letters
    iso8859_1,  // UNOC
    iso8859_2,  // UNOD
    iso8859_3,  // UNOG
    iso8859_4,  // UNOH
    iso8859_5,  // UNOE
    iso8859_6,  // UNOI
    iso8859_7,  // UNOF
    iso8859_8,  // UNOJ
    iso8859_9,  // UNOK
    iso8859_15, // UNOL
    utf8,       // UNOW, UNOY
};

// The first private-use code point that stands for a raw byte: U+F700 + byte.
constexpr char32_t rawbytebase = 0xF700;

// ---- names

// The set a syntax identifier declares ("UNOC": ISO 8859-1), in any case;
// Charset::unknown for others, UNOX (ISO 2022 code extension) among them.
Charset charsetofsyntax(std::string_view syntaxid);
// The set an IANA name ("ISO-8859-5", "UTF-8", "US-ASCII"; case, '-' and
// '_' do not matter) or a syntax identifier names; US-ASCII is level B.
Charset charsetnamed(std::string_view name);
// The IANA name of a set ("US-ASCII" for levels A and B); "" for unknown.
const char *charsetname(Charset cs);
// The syntax identifier that declares a set ("UNOY" for UTF-8); "" for
// unknown.
const char *syntaxidof(Charset cs);
// Why a syntax identifier cannot be used ("unknown syntax identifier
// 'UNOQ'"); "" when it declares a set.
std::string syntaxproblem(std::string_view syntaxid);

// ---- decoding and encoding

// True if the NUL-terminated text `s` holds no byte above 127: it reads
// the same in every set, and passes the module's writer as it is.
bool allascii(const char *s);

// `bytes` in set `cs` as UTF-8 (Charset::unknown decodes as ISO 8859-1).
std::string decodetext(std::string_view bytes, Charset cs);

// What encoding could not write: a character the set has no code for, or a
// byte of the input that is not well-formed UTF-8.
struct Unencodable {
    size_t offset = 0;       // where in the UTF-8 input
    char32_t ch = 0;         // the character, or the byte when malformed
    bool malformed = false;  // a byte of malformed UTF-8, not a character
};

struct EncodeOptions {
    // Written for each unencodable character or malformed byte.
    std::string replacement = "?";
    // Levels A and B: only 7-bit characters count as encodable (else the
    // characters U+0080-U+00FF are written as their Latin-1 bytes, as
    // decoding reads them).
    bool strict = false;
};

// `utf8` as bytes of set `cs`; what could not be encoded is appended to
// `missing` (when given) and written as the replacement.
std::string encodetext(std::string_view utf8, Charset cs,
                       std::vector<Unencodable> *missing = nullptr,
                       const EncodeOptions &opt = EncodeOptions());

// ---- detection

// The set the bytes are really in: UTF-8 when `declared` is a single-byte
// set and every byte above 127 belongs to a well-formed UTF-8 sequence, at
// least one of them; else `declared`.
Charset detectcharset(std::string_view bytes, Charset declared);
// The same for a text given in pieces, each of whole characters: UTF-8
// only if every piece could be.
Charset detectcharset(const std::vector<std::string_view> &pieces, Charset declared);

// ---- code points

// The next code point of well-formed UTF-8 at `at` (moved behind it), or
// -1 (with `at` unmoved) where the bytes there are not well-formed UTF-8:
// no overlong forms, surrogates or code points above U+10FFFF.
long nextcodepoint(std::string_view s, size_t &at);
// `c` appended to `out` as UTF-8.
void appendutf8(std::string &out, char32_t c);

// How a character fits the repertoire of a set.
enum class Fit {
    inside,
    lowercase,  // a lower case letter in level A
    outside,    // not in the repertoire
};
// `c` as decoded text of set `cs` holds it (a raw byte is U+F780-U+F7FF).
Fit charfit(char32_t c, Charset cs);

}  // namespace edi

#endif
