#include "plain.h"

#include <string.h>

#include "node.h"
#include "text.h"

namespace ediprot_py {

namespace {

PyObject *hash_value;  // "#value"

// Owned reference, released on scope exit.
struct Ref {
    PyObject *p;
    explicit Ref(PyObject *o = nullptr) : p(o) {}
    Ref(const Ref &) = delete;
    Ref &operator=(const Ref &) = delete;
    ~Ref() { Py_XDECREF(p); }
};

// One child's entry: `key` the name without $ or *, `loop` whether it is
// a loop instance, `v` its plain value.  Loops gather in a list; a name
// that repeats outside loops turns into a list too.
bool put(PyObject *out, PyObject *key, bool loop, PyObject *v)
{
    PyObject *have = PyDict_GetItemWithError(out, key);
    if (have == nullptr && PyErr_Occurred())
        return false;
    if (have == nullptr && !loop)
        return PyDict_SetItem(out, key, v) == 0;
    if (have != nullptr && PyList_CheckExact(have))
        return PyList_Append(have, v) == 0;
    Ref list(PyList_New(0));
    if (list.p == nullptr || (have != nullptr && PyList_Append(list.p, have) != 0) ||
        PyList_Append(list.p, v) != 0)
        return false;
    return PyDict_SetItem(out, key, list.p) == 0;
}

// The key of a name and whether it marks a loop.
PyObject *key_of(PyObject *name, bool *loop)
{
    *loop = false;
    if (!PyUnicode_Check(name) || PyUnicode_GET_LENGTH(name) == 0) {
        Py_INCREF(name);
        return name;
    }
    Py_UCS4 c = PyUnicode_READ_CHAR(name, 0);
    if (c != '$' && c != '*') {
        Py_INCREF(name);
        return name;
    }
    *loop = c == '*';
    return PyUnicode_Substring(name, 1, PyUnicode_GET_LENGTH(name));
}

PyObject *key_of(const char *name, bool *loop)
{
    name = name != nullptr ? name : "";
    *loop = name[0] == '*';
    if (name[0] == '$' || name[0] == '*')
        name++;
    return name_of(name);
}

PyObject *plain_c(const datatree_t *n, bool skip, const char *charset);

// A child of a C tree: its plain value, or NULL with *skipped for one
// left out (no exception then).
PyObject *entry_c(const datatree_t *c, bool skip, const char *charset, bool *skipped)
{
    *skipped = false;
    if (c->child != nullptr) {
        PyObject *v = plain_c(c, skip, charset);
        if (v != nullptr && skip && PyDict_GET_SIZE(v) == 0) {
            Py_DECREF(v);
            *skipped = true;
            return nullptr;
        }
        return v;
    }
    if (c->data == nullptr) {
        *skipped = skip;
        if (skip)
            return nullptr;
        Py_RETURN_NONE;
    }
    return decode_text(c->data, charset);
}

// The children of a node of a C tree (below it nothing is a Python node).
PyObject *plain_c(const datatree_t *n, bool skip, const char *charset)
{
    if (Py_EnterRecursiveCall(" in to_dict") != 0)
        return nullptr;
    Ref out(PyDict_New());
    bool ok = out.p != nullptr;
    if (ok && n->data != nullptr && n->child != nullptr) {
        Ref v(decode_text(n->data, charset));
        ok = v.p != nullptr && PyDict_SetItem(out.p, hash_value, v.p) == 0;
    }
    for (const datatree_t *c = n->child; ok && c != nullptr; c = c->next) {
        bool skipped, loop;
        Ref v(entry_c(c, skip, charset, &skipped));
        if (skipped)
            continue;
        Ref k(v.p != nullptr ? key_of(c->xmltag, &loop) : nullptr);
        ok = k.p != nullptr && put(out.p, k.p, loop, v.p);
    }
    Py_LeaveRecursiveCall();
    if (!ok)
        return nullptr;
    Py_INCREF(out.p);
    return out.p;
}

PyObject *plain_py(PyObject *obj, bool skip);

// Whether node `o` has children, without making them.
int has_children(NodeObject *o)
{
    if (o->src != nullptr && !owns(o, F_CHILDREN))
        return o->src->child != nullptr;
    PyObject *list = o->f[F_CHILDREN];
    if (list == nullptr || list == Py_None)
        return 0;
    Py_ssize_t n = PyObject_Length(list);
    return n < 0 ? -1 : n > 0;
}

PyObject *plain_py(PyObject *obj, bool skip)
{
    auto *n = reinterpret_cast<NodeObject *>(obj);
    if (n->src != nullptr && !owns(n, F_CHILDREN) && !owns(n, F_VALUE))
        return plain_c(n->src, skip, n->hold->charset.c_str());
    if (Py_EnterRecursiveCall(" in to_dict") != 0)
        return nullptr;
    Ref out(PyDict_New());
    Ref kids(node_field(n, F_CHILDREN));
    Ref value(node_field(n, F_VALUE));
    int has = has_children(n);
    bool ok = out.p != nullptr && kids.p != nullptr && value.p != nullptr && has >= 0;
    if (ok && value.p != Py_None && has > 0)
        ok = PyDict_SetItem(out.p, hash_value, value.p) == 0;
    Ref seq(ok && kids.p != Py_None ? PySequence_Fast(kids.p, "_children must be a list")
                                     : nullptr);
    ok = ok && (kids.p == Py_None || seq.p != nullptr);
    Py_ssize_t count = seq.p != nullptr ? PySequence_Fast_GET_SIZE(seq.p) : 0;
    for (Py_ssize_t i = 0; ok && i < count; i++) {
        PyObject *c = PySequence_Fast_GET_ITEM(seq.p, i);
        if (!is_node(c)) {
            PyErr_Format(PyExc_TypeError, "a child is not a Node but %s", Py_TYPE(c)->tp_name);
            ok = false;
            break;
        }
        auto *cn = reinterpret_cast<NodeObject *>(c);
        int ch = has_children(cn);
        Ref v(ch > 0 ? plain_py(c, skip) : ch == 0 ? node_field(cn, F_VALUE) : nullptr);
        if (v.p == nullptr) {
            ok = false;
            break;
        }
        if (skip && (ch > 0 ? PyDict_Check(v.p) && PyDict_GET_SIZE(v.p) == 0 : v.p == Py_None))
            continue;
        Ref name(node_field(cn, F_NAME));
        bool loop = false;
        Ref k(name.p != nullptr ? key_of(name.p, &loop) : nullptr);
        ok = k.p != nullptr && put(out.p, k.p, loop, v.p);
    }
    Py_LeaveRecursiveCall();
    if (!ok)
        return nullptr;
    Py_INCREF(out.p);
    return out.p;
}

}  // namespace

PyObject *to_plain(PyObject *obj, bool skip_empty)
{
    if (hash_value == nullptr && (hash_value = PyUnicode_InternFromString("#value")) == nullptr)
        return nullptr;
    if (!is_node(obj)) {
        PyErr_SetString(PyExc_TypeError, "to_dict needs a Node");
        return nullptr;
    }
    return plain_py(obj, skip_empty);
}

}  // namespace ediprot_py
