// Node.to_dict: a tree as plain dicts, lists and str.
#pragma once

#include <Python.h>

namespace ediprot_py {

// The children of node `obj` as plain data (Node.to_dict's rules); NULL
// with an exception set (RecursionError for a tree deeper than Python
// recurses, TypeError for a child that is no Node).
PyObject *to_plain(PyObject *obj, bool skip_empty);

}  // namespace ediprot_py
