// The base class of the package's Node: a node that either stands for a
// node of a C tree (decoded when a field is read, its children made as
// Python nodes when first asked for) or holds its own fields (built by
// hand, or changed).  A read keeps the C trees and makes no Python node
// until one is looked at.
#pragma once

#include <Python.h>

#include <string>

#include <edi.h>

namespace ediprot_py {

// Owns a C tree that nodes point into; released when the last node of it
// goes.  Held by a capsule (Holder::capsule).
struct Holder {
    edi_message *message = nullptr;  // the tree is the message's
    datatree_t *tree = nullptr;      // else a tree released with edi_tree_free
    bool attrs = false;              // layout fields shown (configuration trees)
    std::string charset;             // syntax identifier of the values ("" unknown)
    ~Holder();
};

// The fields of a node, in the order of NodeObject::f.
enum Field { F_NAME, F_VALUE, F_CHILDREN, F_LOOP, F_ATTRS, F_COUNT };

struct NodeObject {
    PyObject_HEAD
    // Field objects.  With bit i of `own` set, f[i] is the node's own (NULL:
    // the default); else the field is src's and f[i] at most a cached copy.
    PyObject *f[F_COUNT];
    unsigned own;
    const datatree_t *src;  // the C node it stands for, or NULL
    PyObject *owner;        // the capsule of the Holder of src
    const Holder *hold;
};

extern PyTypeObject NodeBase_Type;

// The class new nodes get (the package's Node, a subclass of NodeBase).
extern PyTypeObject *node_class;

inline bool is_node(PyObject *o) { return PyObject_TypeCheck(o, &NodeBase_Type); }
inline bool owns(const NodeObject *n, Field i) { return (n->own >> i & 1u) != 0; }

// Readies NodeBase_Type; false with an exception set.
bool node_type_ready();

// A capsule owning `h`; NULL with an exception set (h is then released).
PyObject *holder_capsule(Holder *h);

// A new node of node_class standing for `src` of the tree `owner` holds.
PyObject *node_of(const datatree_t *src, PyObject *owner);

// Field i of node `n`, decoded when it is src's (a new reference).
PyObject *node_field(NodeObject *n, Field i);

// A name as str (a new reference).  Names repeat in every message: one
// str per distinct name is kept between calls (the GIL guards it).  Names
// are the configuration's, not the partner's: decoded without a character
// set.
PyObject *name_of(const char *s);

}  // namespace ediprot_py
