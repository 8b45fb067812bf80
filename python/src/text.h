// Names and values between libedi's bytes and Python's str, in one place:
// every text the extension hands to Python is decoded by decode_text and
// every text it takes back is encoded by encode_text.
#pragma once

#include <Python.h>

#include <stddef.h>

#include <string>

namespace ediprot_py {

// `n` bytes of a value or name as str.  `charset` is the character set of
// the interchange the bytes came in (UTF-8, ISO-8859-5, or a syntax
// identifier such as UNOC; "" for the library's own texts: Latin-1).
// NULL with a Python exception set on failure.
PyObject *decode_text(const char *s, size_t n, const char *charset);

// The same for a NUL-terminated text; NULL stands for "".
PyObject *decode_text(const char *s, const char *charset = "");

// The bytes of `o` (str, or bytes taken as they are) as libedi gets them,
// in `charset` ("": Latin-1).  False when a character cannot be encoded
// (no exception is left set).
bool encode_text(PyObject *o, std::string &out, const char *charset = "");

// What encode_text refuses, for messages.
extern const char *const encode_refusal;

}  // namespace ediprot_py
