// What libedi gives back (findings, results, envelopes) as the tuples the
// package's Python layer turns into its classes.
#pragma once

#include <pybind11/pybind11.h>

#include <edi.h>

namespace ediprot_py {

namespace py = pybind11;

py::tuple finding_tuple(const edi_finding *f);

template <typename Obj, typename Count, typename Get>
py::list findings_of(Obj o, Count count, Get get)
{
    py::list out;
    size_t n = count(o);
    for (size_t i = 0; i < n; i++)
        if (const edi_finding *f = get(o, i))
            out.append(finding_tuple(f));
    return out;
}

// (status, roots or None, text or None, items, findings) of a result, which
// is released; the roots are nodes of its tree, layout fields shown with
// `attrs`.
py::tuple take_result(edi_result *res, bool attrs);

// The envelope's fields in the order of the Envelope class.
py::tuple envelope_tuple(const edi_envelope *e);

// A str of a text of the library (NULL: ""), of the character set named
// by `charset` (a syntax identifier; "": the library's own texts).
py::object text(const char *s, const char *charset = "");

}  // namespace ediprot_py
