#include "to_tree.h"

#include <pybind11/pybind11.h>

#include <stdlib.h>
#include <string.h>

#include <string>
#include <unordered_set>
#include <vector>

#include "layout.h"
#include "node.h"
#include "text.h"

namespace py = pybind11;

namespace ediprot_py {

namespace {

// The names from the root to the node being converted, for messages.
using Path = std::vector<const char *>;

std::string where(const Path &path)
{
    std::string s;
    for (const char *p : path) {
        if (!s.empty())
            s += '/';
        s.append(p);
    }
    return s.empty() ? "tree" : s;
}

char *dup(const char *s)
{
    char *p = strdup(s);
    if (p == nullptr)
        throw std::bad_alloc();
    return p;
}

// A malloc'd copy of a name or value given as str or bytes; NULL for None
// when `nullable`.
char *copytext(PyObject *o, const char *what, bool nullable, const Path &path,
               const char *charset = "")
{
    if (o == Py_None && nullable)
        return nullptr;
    if (!PyUnicode_Check(o) && !PyBytes_Check(o))
        throw py::type_error(where(path) + ": the " + what + " must be str" +
                             (nullable ? ", bytes or None" : " or bytes"));
    std::string s;
    if (!encode_text(o, s, charset))
        throw py::value_error(where(path) + ": the " + what + " holds " + encode_refusal);
    if (s.find('\0') != std::string::npos)
        throw py::value_error(where(path) + ": the " + what + " holds a NUL character");
    return dup(s.c_str());
}

// A new node linked behind `last` below `parent` (or as the root of `b`),
// so that a failure later leaves a whole tree to release.
datatree_t *link(datatree_t *parent, datatree_t **last, Built &b)
{
    auto *n = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    if (n == nullptr)
        throw std::bad_alloc();
    n->parent = parent;
    if (parent == nullptr)
        b.root = n;
    else if (*last == nullptr)
        parent->child = n;
    else
        (*last)->next = n;
    *last = n;
    return n;
}

// Copies the chain below `from` (a C tree's node) under `to`, without
// recursion; layout fields only with `attrs`.
void copy_below(const datatree_t *from, datatree_t *to, bool attrs, Built &b)
{
    std::vector<std::pair<const datatree_t *, datatree_t *>> todo;  // source, copy's last
    std::vector<datatree_t *> parents;
    if (from->child == nullptr)
        return;
    todo.emplace_back(from->child, nullptr);
    parents.push_back(to);
    while (!todo.empty()) {
        const datatree_t *s = todo.back().first;
        if (s == nullptr) {
            todo.pop_back();
            parents.pop_back();
            continue;
        }
        todo.back().first = s->next;
        datatree_t *n = link(parents.back(), &todo.back().second, b);
        n->xmltag = dup(s->xmltag != nullptr ? s->xmltag : "");
        n->data = s->data != nullptr ? dup(s->data) : nullptr;
        n->loopcnt = s->loopcnt;
        if (attrs && !copy_layout(n, s))
            throw std::bad_alloc();
        if (s->child != nullptr) {
            todo.emplace_back(s->child, nullptr);
            parents.push_back(n);
        }
    }
}

// The fields of node `obj` into `n` (its children are the caller's).
void fill(datatree_t *n, PyObject *obj, Path &path)
{
    auto *o = reinterpret_cast<NodeObject *>(obj);
    const datatree_t *s = o->src;
    if (s != nullptr && !owns(o, F_NAME)) {
        n->xmltag = dup(s->xmltag != nullptr ? s->xmltag : "");
    } else {
        py::object name = py::reinterpret_steal<py::object>(node_field(o, F_NAME));
        n->xmltag = copytext(name.ptr(), "name", false, path);
    }
    path.push_back(n->xmltag);
    if (s != nullptr && !owns(o, F_VALUE)) {
        n->data = s->data != nullptr ? dup(s->data) : nullptr;
    } else {
        py::object value = py::reinterpret_steal<py::object>(node_field(o, F_VALUE));
        // A value changed in a read tree goes back in the set it came in.
        n->data = copytext(value.ptr(), "value", true, path,
                           o->hold != nullptr ? o->hold->charset.c_str() : "");
    }
    if (s != nullptr && !owns(o, F_LOOP)) {
        n->loopcnt = s->loopcnt;
    } else {
        py::object loop = py::reinterpret_steal<py::object>(node_field(o, F_LOOP));
        long v = PyLong_Check(loop.ptr()) ? PyLong_AsLong(loop.ptr()) : -1;
        if (!PyLong_Check(loop.ptr()) || (v == -1 && PyErr_Occurred())) {
            PyErr_Clear();
            throw py::type_error(where(path) + ": loop must be an int");
        }
        if (v < -2147483647L - 1 || v > 2147483647L)
            throw py::value_error(where(path) + ": loop is out of the range of 32 bits");
        n->loopcnt = static_cast<int>(v);
    }
    if (s != nullptr && !owns(o, F_ATTRS)) {
        if (o->hold->attrs && !copy_layout(n, s))
            throw std::bad_alloc();
    } else {
        py::object attrs = py::reinterpret_steal<py::object>(node_field(o, F_ATTRS));
        set_layout(n, attrs.ptr(), where(path));
    }
}

void need_node(PyObject *obj, const Path &path)
{
    if (!is_node(obj))
        throw py::type_error(where(path) + ": a child is not a Node but " +
                             std::string(Py_TYPE(obj)->tp_name));
}

}  // namespace

Built to_tree(PyObject *obj)
{
    Built b;
    Path path;
    struct Frame {
        PyObject *list;  // the children (owned)
        Py_ssize_t i;
        datatree_t *node, *last;
        PyObject *obj;
    };
    std::vector<Frame> todo;
    std::unordered_set<PyObject *> onpath;
    // Children of `o` into `n`: copied from its C tree while they are its,
    // else a frame for the list.
    auto open = [&](PyObject *o, datatree_t *n) {
        auto *no = reinterpret_cast<NodeObject *>(o);
        if (no->src != nullptr && !owns(no, F_CHILDREN)) {
            copy_below(no->src, n, no->hold->attrs, b);
            path.pop_back();
            return;
        }
        PyObject *list = no->f[F_CHILDREN];
        if (list == nullptr || list == Py_None || PyList_GET_SIZE(list) == 0) {
            path.pop_back();
            return;
        }
        Py_INCREF(list);
        todo.push_back({list, 0, n, nullptr, o});
        onpath.insert(o);
    };
    try {
        need_node(obj, path);
        datatree_t *none = nullptr;
        datatree_t *root = link(nullptr, &none, b);
        fill(root, obj, path);
        open(obj, root);
        while (!todo.empty()) {
            Frame &f = todo.back();
            if (f.i >= PyList_GET_SIZE(f.list)) {
                onpath.erase(f.obj);
                Py_DECREF(f.list);
                todo.pop_back();
                path.pop_back();
                continue;
            }
            PyObject *child = PyList_GET_ITEM(f.list, f.i++);
            need_node(child, path);
            if (onpath.count(child) != 0)
                throw py::value_error(where(path) +
                                      ": the tree holds itself (a Node is its own descendant)");
            datatree_t *n = link(f.node, &f.last, b);
            fill(n, child, path);
            open(child, n);
        }
    } catch (...) {
        for (Frame &f : todo)
            Py_DECREF(f.list);
        throw;
    }
    return b;
}

}  // namespace ediprot_py
