// Python nodes to libedi's datatree_t, for writing and the tree formats.
#pragma once

#include <Python.h>

#include <utility>

#include <edi.h>

namespace ediprot_py {

// A tree being built: released with edi_tree_free unless taken.
struct Built {
    datatree_t *root = nullptr;
    Built() = default;
    Built(const Built &) = delete;
    Built &operator=(const Built &) = delete;
    Built(Built &&o) noexcept : root(std::exchange(o.root, nullptr)) {}
    ~Built() { edi_tree_free(root); }
    datatree_t *take() { return std::exchange(root, nullptr); }
};

// The node `obj` and everything below it as a new tree (nodes from calloc,
// texts from malloc, as edi_tree_free releases them).  What a node holds
// of a C tree and has not changed is copied from there.  Throws pybind11
// errors naming the node's path for what cannot be converted (a child
// that is no Node, a text that cannot be encoded or holds a NUL, a node
// inside itself).
Built to_tree(PyObject *obj);

}  // namespace ediprot_py
