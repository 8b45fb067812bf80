// The layout fields of a configuration node (edilen, editype, ...) as the
// dict Node.attrs holds, both ways.
#pragma once

#include <Python.h>

#include <string>

#include <edi.h>

namespace ediprot_py {

// The fields of `n` that are set, or None when none is (a new reference;
// NULL with an exception set).
PyObject *attrs_of(const datatree_t *n, const char *charset);

// Sets the fields of `n` from the dict `attrs` (None: none).  Throws
// pybind11 errors naming `where` for what cannot be taken.
void set_layout(datatree_t *n, PyObject *attrs, const std::string &where);

// Copies the layout fields of `from` (texts duplicated); false when out of
// memory.
bool copy_layout(datatree_t *to, const datatree_t *from);

}  // namespace ediprot_py
