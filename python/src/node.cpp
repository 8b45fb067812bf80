#include "node.h"

#include <string.h>

#include <string>
#include <string_view>
#include <unordered_map>

#include "layout.h"
#include "text.h"

namespace ediprot_py {

PyTypeObject *node_class = &NodeBase_Type;

Holder::~Holder()
{
    edi_message_free(message);
    edi_tree_free(tree);
}

namespace {

const char *const holder_name = "ediprot.tree";

void release_holder(PyObject *capsule)
{
    delete static_cast<Holder *>(PyCapsule_GetPointer(capsule, holder_name));
}

struct NameHash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const { return std::hash<std::string_view>()(s); }
};
// Never destroyed: the names live as long as the interpreter.
auto &names = *new std::unordered_map<std::string, PyObject *, NameHash, std::equal_to<>>;

}  // namespace

PyObject *name_of(const char *s)
{
    std::string_view key(s != nullptr ? s : "");
    auto it = names.find(key);
    if (it != names.end()) {
        Py_INCREF(it->second);
        return it->second;
    }
    if (names.size() >= 16384) {
        for (auto &kv : names)
            Py_DECREF(kv.second);
        names.clear();
    }
    PyObject *o = decode_text(key.data(), key.size(), "");
    if (o == nullptr)
        return nullptr;
    PyUnicode_InternInPlace(&o);
    names.emplace(key, o);
    Py_INCREF(o);
    return o;
}

namespace {

PyObject *default_field(Field i)
{
    if (i == F_NAME)
        return PyUnicode_FromStringAndSize("", 0);
    if (i == F_LOOP)
        return PyLong_FromLong(0);
    Py_RETURN_NONE;
}

// The children of src as a new list of nodes.
PyObject *children_of(NodeObject *n)
{
    Py_ssize_t count = 0;
    for (const datatree_t *c = n->src->child; c != nullptr; c = c->next)
        count++;
    PyObject *list = PyList_New(count);
    if (list == nullptr)
        return nullptr;
    Py_ssize_t i = 0;
    for (const datatree_t *c = n->src->child; c != nullptr; c = c->next) {
        PyObject *child = node_of(c, n->owner);
        if (child == nullptr) {
            Py_DECREF(list);
            return nullptr;
        }
        PyList_SET_ITEM(list, i++, child);
    }
    return list;
}

// ---- the type ------------------------------------------------------------

int node_traverse(PyObject *self, visitproc visit, void *arg)
{
    auto *n = reinterpret_cast<NodeObject *>(self);
    for (PyObject *o : n->f)
        Py_VISIT(o);
    Py_VISIT(n->owner);
    return 0;
}

int node_clear(PyObject *self)
{
    auto *n = reinterpret_cast<NodeObject *>(self);
    for (PyObject *&o : n->f)
        Py_CLEAR(o);
    // Without its owner the node keeps nothing of src: defaults.
    n->src = nullptr;
    n->hold = nullptr;
    n->own = (1u << F_COUNT) - 1;
    Py_CLEAR(n->owner);
    return 0;
}

void node_dealloc(PyObject *self)
{
    PyObject_GC_UnTrack(self);
    Py_TRASHCAN_BEGIN(self, node_dealloc)
    node_clear(self);
    Py_TYPE(self)->tp_free(self);
    Py_TRASHCAN_END
}

PyObject *get_field(PyObject *self, void *i)
{
    return node_field(reinterpret_cast<NodeObject *>(self),
                      static_cast<Field>(reinterpret_cast<intptr_t>(i)));
}

int set_field(PyObject *self, PyObject *v, void *closure)
{
    auto i = static_cast<Field>(reinterpret_cast<intptr_t>(closure));
    if (v == nullptr) {
        PyErr_SetString(PyExc_AttributeError, "a node's fields cannot be deleted");
        return -1;
    }
    if (i == F_CHILDREN && v != Py_None && !PyList_Check(v)) {
        PyErr_SetString(PyExc_TypeError, "_children must be a list or None");
        return -1;
    }
    auto *n = reinterpret_cast<NodeObject *>(self);
    Py_INCREF(v);
    Py_XSETREF(n->f[i], v);
    n->own |= 1u << i;
    return 0;
}

// node._adopt(other): this node stands for what `other` stands for, and
// shares its own fields (the children list too).
PyObject *node_adopt(PyObject *self, PyObject *other)
{
    if (!is_node(other)) {
        PyErr_SetString(PyExc_TypeError, "_adopt takes a Node");
        return nullptr;
    }
    auto *n = reinterpret_cast<NodeObject *>(self);
    auto *o = reinterpret_cast<NodeObject *>(other);
    if (n == o)
        Py_RETURN_NONE;
    for (int i = 0; i < F_COUNT; i++) {
        Py_XINCREF(o->f[i]);
        Py_XSETREF(n->f[i], o->f[i]);
    }
    Py_XINCREF(o->owner);
    Py_XSETREF(n->owner, o->owner);
    n->own = o->own;
    n->src = o->src;
    n->hold = o->hold;
    Py_RETURN_NONE;
}

#define FIELD(name, i, doc)                                                       \
    {                                                                             \
        name, get_field, set_field, doc, reinterpret_cast<void *>(intptr_t{i}) \
    }

PyGetSetDef node_getset[] = {
    FIELD("name", F_NAME, "The node's name (* marks a loop, $ a segment or record)."),
    FIELD("value", F_VALUE, "The node's value, or None for no value."),
    FIELD("_children", F_CHILDREN, "The list of nodes below, or None for none."),
    FIELD("loop", F_LOOP, "The number of a loop instance (0: none)."),
    FIELD("attrs", F_ATTRS, "The layout fields of a configuration node, or None."),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMethodDef node_methods[] = {
    {"_adopt", node_adopt, METH_O, "Stand for what another node stands for."},
    {nullptr, nullptr, 0, nullptr},
};

PyTypeObject make_type()
{
    PyTypeObject t{};
    t.ob_base.ob_base.ob_refcnt = 1;  // static: never released
    t.tp_name = "ediprot._ediprot.NodeBase";
    t.tp_basicsize = sizeof(NodeObject);
    t.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC;
    t.tp_doc = "The fields of a Node, decoded from libedi's tree when read.";
    t.tp_traverse = node_traverse;
    t.tp_clear = node_clear;
    t.tp_dealloc = node_dealloc;
    t.tp_getset = node_getset;
    t.tp_methods = node_methods;
    t.tp_new = PyType_GenericNew;
    return t;
}

}  // namespace

PyTypeObject NodeBase_Type = make_type();

bool node_type_ready() { return PyType_Ready(&NodeBase_Type) == 0; }

PyObject *holder_capsule(Holder *h)
{
    PyObject *c = PyCapsule_New(h, holder_name, release_holder);
    if (c == nullptr)
        delete h;
    return c;
}

PyObject *node_of(const datatree_t *src, PyObject *owner)
{
    PyObject *o = node_class->tp_alloc(node_class, 0);
    if (o == nullptr)
        return nullptr;
    auto *n = reinterpret_cast<NodeObject *>(o);
    n->src = src;
    n->owner = owner;
    Py_INCREF(owner);
    n->hold = static_cast<const Holder *>(PyCapsule_GetPointer(owner, holder_name));
    return o;
}

PyObject *node_field(NodeObject *n, Field i)
{
    PyObject *o = n->f[i];
    if (owns(n, i) || n->src == nullptr || o != nullptr) {
        if (o == nullptr)
            return default_field(i);
        Py_INCREF(o);
        return o;
    }
    const datatree_t *s = n->src;
    switch (i) {
    case F_NAME:
        o = name_of(s->xmltag);
        break;
    case F_VALUE:
        if (s->data == nullptr)
            Py_RETURN_NONE;
        o = decode_text(s->data, n->hold->charset.c_str());
        break;
    case F_CHILDREN:
        if (s->child == nullptr)
            Py_RETURN_NONE;
        o = children_of(n);
        break;
    case F_LOOP:
        return PyLong_FromLong(s->loopcnt);
    default:
        if (!n->hold->attrs)
            Py_RETURN_NONE;
        o = attrs_of(s, n->hold->charset.c_str());
        break;
    }
    if (o == nullptr)
        return nullptr;
    // The children list and the attrs dict may be changed in place: they
    // are the truth from now on.
    if (i == F_CHILDREN || i == F_ATTRS)
        n->own |= 1u << i;
    n->f[i] = o;
    Py_INCREF(o);
    return o;
}

}  // namespace ediprot_py
