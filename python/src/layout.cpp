#include "layout.h"

#include <pybind11/pybind11.h>

#include <stdlib.h>
#include <string.h>

#include "text.h"

namespace py = pybind11;

namespace ediprot_py {

namespace {

const char *const editypes[] = {"none", "string", "float", "date", "sdate", "float0", "time"};
const char *const edidatas[] = {"user", "opt"};
const char *const ediforces[] = {"none", "mand", "cond"};
const char *const edialigns[] = {"none", "left", "right"};
const char *const nodetypes[] = {"none", "loop", "next", "bnext", "nc", "ncforeign"};

template <size_t N>
PyObject *word(int v, const char *const (&words)[N])
{
    if (v >= 0 && static_cast<size_t>(v) < N)
        return PyUnicode_FromString(words[v]);
    return PyLong_FromLong(v);
}

template <size_t N>
int fromword(PyObject *o, const char *key, const char *const (&words)[N], const std::string &where)
{
    if (PyLong_Check(o)) {
        long v = PyLong_AsLong(o);
        if (v == -1 && PyErr_Occurred())
            throw py::error_already_set();
        if (v >= 0 && v < 256)
            return static_cast<int>(v);
    } else if (PyUnicode_Check(o)) {
        const char *s = PyUnicode_AsUTF8(o);
        if (s == nullptr)
            throw py::error_already_set();
        for (size_t i = 0; i < N; i++)
            if (strcmp(s, words[i]) == 0)
                return static_cast<int>(i);
    }
    throw py::value_error(where + ": attrs: unknown value for " + key);
}

int intof(PyObject *o, const char *key, const std::string &where)
{
    long v = PyLong_Check(o) ? PyLong_AsLong(o) : -1;
    if (!PyLong_Check(o) || (v == -1 && PyErr_Occurred())) {
        PyErr_Clear();
        throw py::type_error(where + ": " + key + " must be an int of 32 bits");
    }
    if (v < -2147483647L - 1 || v > 2147483647L)
        throw py::value_error(where + ": " + key + " is out of the range of 32 bits");
    return static_cast<int>(v);
}

char *copytext(PyObject *o, const char *key, const std::string &where)
{
    if (o == Py_None)
        return nullptr;
    std::string s;
    if (!(PyUnicode_Check(o) || PyBytes_Check(o)))
        throw py::type_error(where + ": attrs " + key + " must be str, bytes or None");
    if (!encode_text(o, s))
        throw py::value_error(where + ": attrs " + key + " holds " + encode_refusal);
    if (s.find('\0') != std::string::npos)
        throw py::value_error(where + ": attrs " + key + " holds a NUL character");
    char *p = strdup(s.c_str());
    if (p == nullptr)
        throw std::bad_alloc();
    return p;
}

bool put(PyObject *d, const char *k, PyObject *v)
{
    if (v == nullptr)
        return false;
    int rc = PyDict_SetItemString(d, k, v);
    Py_DECREF(v);
    return rc == 0;
}

}  // namespace

PyObject *attrs_of(const datatree_t *n, const char *charset)
{
    PyObject *d = PyDict_New();
    if (d == nullptr)
        return nullptr;
    bool ok = true;
    auto num = [&](const char *k, int v) {
        if (ok && v != 0)
            ok = put(d, k, PyLong_FromLong(v));
    };
    num("iseditag", n->iseditag);
    num("edilen", n->edilen);
    num("edimaxlen", n->edimaxlen);
    num("valid", n->valid);
    if (ok && n->editype != et_none)
        ok = put(d, "editype", word(n->editype, editypes));
    if (ok && n->edidata != ed_user)
        ok = put(d, "edidata", word(n->edidata, edidatas));
    if (ok && n->ediforce != ef_none)
        ok = put(d, "ediforce", word(n->ediforce, ediforces));
    if (ok && n->edialign != el_none)
        ok = put(d, "edialign", word(n->edialign, edialigns));
    if (ok && n->type != nt_none)
        ok = put(d, "type", word(n->type, nodetypes));
    if (ok && n->defval != nullptr)
        ok = put(d, "defval", decode_text(n->defval, charset));
    if (ok && n->deffunc != nullptr)
        ok = put(d, "deffunc", decode_text(n->deffunc, charset));
    if (!ok || PyDict_Size(d) == 0) {
        Py_DECREF(d);
        if (!ok)
            return nullptr;
        Py_RETURN_NONE;
    }
    return d;
}

void set_layout(datatree_t *n, PyObject *attrs, const std::string &where)
{
    if (attrs == Py_None)
        return;
    if (!PyDict_Check(attrs))
        throw py::type_error(where + ": attrs must be a dict or None");
    PyObject *k, *v;
    Py_ssize_t pos = 0;
    while (PyDict_Next(attrs, &pos, &k, &v)) {
        const char *key = PyUnicode_Check(k) ? PyUnicode_AsUTF8(k) : nullptr;
        if (key == nullptr) {
            PyErr_Clear();
            throw py::type_error(where + ": attrs keys must be str");
        }
        if (strcmp(key, "iseditag") == 0)
            n->iseditag = intof(v, key, where);
        else if (strcmp(key, "edilen") == 0)
            n->edilen = intof(v, key, where);
        else if (strcmp(key, "edimaxlen") == 0)
            n->edimaxlen = intof(v, key, where);
        else if (strcmp(key, "valid") == 0)
            n->valid = intof(v, key, where);
        else if (strcmp(key, "editype") == 0)
            n->editype = static_cast<editype_t>(fromword(v, key, editypes, where));
        else if (strcmp(key, "edidata") == 0)
            n->edidata = static_cast<edidata_t>(fromword(v, key, edidatas, where));
        else if (strcmp(key, "ediforce") == 0)
            n->ediforce = static_cast<ediforce_t>(fromword(v, key, ediforces, where));
        else if (strcmp(key, "edialign") == 0)
            n->edialign = static_cast<edialign_t>(fromword(v, key, edialigns, where));
        else if (strcmp(key, "type") == 0)
            n->type = static_cast<nodetype_t>(fromword(v, key, nodetypes, where));
        else if (strcmp(key, "defval") == 0)
            n->defval = copytext(v, key, where);
        else if (strcmp(key, "deffunc") == 0)
            n->deffunc = copytext(v, key, where);
        else
            throw py::value_error(where + ": attrs " + key + ": unknown field");
    }
}

bool copy_layout(datatree_t *to, const datatree_t *from)
{
    to->iseditag = from->iseditag;
    to->edilen = from->edilen;
    to->edimaxlen = from->edimaxlen;
    to->valid = from->valid;
    to->editype = from->editype;
    to->edidata = from->edidata;
    to->ediforce = from->ediforce;
    to->edialign = from->edialign;
    to->type = from->type;
    to->defval = from->defval != nullptr ? strdup(from->defval) : nullptr;
    to->deffunc = from->deffunc != nullptr ? strdup(from->deffunc) : nullptr;
    return (from->defval == nullptr || to->defval != nullptr) &&
           (from->deffunc == nullptr || to->deffunc != nullptr);
}

}  // namespace ediprot_py
