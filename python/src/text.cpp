#include "text.h"

#include <string.h>

#include <edi.h>

namespace ediprot_py {

// By the interchange's set through libedi, which decodes without loss
// (a byte the set has no character for is a private-use character that
// encodes back to it); the library's own texts, and values of a set libedi
// does not know, as Latin-1: every byte the character of its number.
PyObject *decode_text(const char *s, size_t n, const char *charset)
{
    if (charset != nullptr && *charset != '\0') {
        size_t len = 0;
        if (char *u = edi_text_decode(s, n, charset, &len)) {
            PyObject *o = PyUnicode_DecodeUTF8(u, static_cast<Py_ssize_t>(len), nullptr);
            edi_free(u);
            return o;
        }
    }
    return PyUnicode_DecodeLatin1(s, static_cast<Py_ssize_t>(n), nullptr);
}

PyObject *decode_text(const char *s, const char *charset)
{
    s = s != nullptr ? s : "";
    return decode_text(s, strlen(s), charset);
}

const char *const encode_refusal =
    "a character the interchange's character set has no code for";

namespace {

void assign(std::string &out, PyObject *bytes)
{
    Py_ssize_t n = PyBytes_GET_SIZE(bytes);
    out.assign(PyBytes_AS_STRING(bytes), n > 0 ? static_cast<size_t>(n) : 0);
}

}  // namespace

bool encode_text(PyObject *o, std::string &out, const char *charset)
{
    if (PyBytes_Check(o)) {
        assign(out, o);
        return true;
    }
    if (charset != nullptr && *charset != '\0' && edi_charset_name(charset) != nullptr) {
        Py_ssize_t n = 0;
        const char *utf8 = PyUnicode_AsUTF8AndSize(o, &n);
        if (utf8 == nullptr) {
            PyErr_Clear();
            return false;
        }
        size_t len = 0, missing = 0;
        char *b = edi_text_encode(utf8, static_cast<size_t>(n), charset, &len, &missing);
        if (b == nullptr)
            return false;
        out.assign(b, len);
        edi_free(b);
        return missing == 0;
    }
    PyObject *bytes = PyUnicode_AsLatin1String(o);
    if (bytes == nullptr) {
        PyErr_Clear();
        return false;
    }
    assign(out, bytes);
    Py_DECREF(bytes);
    return true;
}

}  // namespace ediprot_py
