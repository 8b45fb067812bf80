// The character sets of the C interface: text/charset.h behind edi.h.
#include <new>

#include "api/objects.h"
#include "edi.h"
#include "text/charset.h"

namespace {

// NULL and "" are ISO-8859-1, the set of most interchanges that have
// bytes above 127.
edi::Charset setof(const char *charset)
{
    if (charset == nullptr || *charset == '\0')
        return edi::Charset::iso8859_1;
    return edi::charsetnamed(charset);
}

}  // namespace

char *edi_text_decode(const char *data, size_t len, const char *charset, size_t *outlen)
{
    edi::Charset cs = setof(charset);
    if (cs == edi::Charset::unknown || (data == nullptr && len > 0))
        return nullptr;
    try {
        return edi::cstring(edi::decodetext(std::string_view(data, len), cs), outlen);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

char *edi_text_encode(const char *utf8, size_t len, const char *charset, size_t *outlen,
                      size_t *unencodable)
{
    if (unencodable != nullptr)
        *unencodable = 0;
    edi::Charset cs = setof(charset);
    if (cs == edi::Charset::unknown || (utf8 == nullptr && len > 0))
        return nullptr;
    try {
        std::vector<edi::Unencodable> missing;
        std::string bytes = edi::encodetext(std::string_view(utf8, len), cs, &missing);
        if (unencodable != nullptr)
            *unencodable = missing.size();
        return edi::cstring(bytes, outlen);
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
}

const char *edi_charset_name(const char *syntax_id)
{
    if (syntax_id == nullptr)
        return nullptr;
    edi::Charset cs = edi::charsetofsyntax(syntax_id);
    return cs == edi::Charset::unknown ? nullptr : edi::charsetname(cs);
}

const char *edi_charset_syntax_id(const char *charset)
{
    edi::Charset cs = setof(charset);
    return cs == edi::Charset::unknown ? nullptr : edi::syntaxidof(cs);
}

const char *edi_charset_detect(const char *data, size_t len, const char *charset)
{
    edi::Charset cs = setof(charset);
    if (cs == edi::Charset::unknown || (data == nullptr && len > 0))
        return nullptr;
    return edi::charsetname(edi::detectcharset(std::string_view(data, len), cs));
}
