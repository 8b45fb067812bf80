// ediprot._ediprot: libedi (edi.h) for Python, used by the package's pure
// Python layer.  Trees cross as objects of the package's Node class (name,
// value, children, loop, attrs); names and values are bytes in the library
// and Latin-1 text here, both ways, so every byte survives.  Calls into
// libedi run without the GIL; trees are converted with it.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <stdlib.h>
#include <string.h>

#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <edi.h>
#include <structmember.h>

namespace py = pybind11;

namespace {

// ---- the package's Node class and its attribute names -------------------

PyObject *node_type = nullptr;  // set once by register_node_type
PyObject *a_name, *a_value, *a_children, *a_loop, *a_attrs;

// Where Node keeps its slots: a read makes millions of nodes, and writing
// the slots in place is several times faster than setting attributes.
// Order: name, value, _children, loop, attrs.
Py_ssize_t slot_offsets[5];

PyObject *checked(PyObject *o)
{
    if (o == nullptr)
        throw py::error_already_set();
    return o;
}

void checked(int rc)
{
    if (rc != 0)
        throw py::error_already_set();
}

// An owned reference, released on scope exit.
struct Ref {
    PyObject *p;
    explicit Ref(PyObject *o) : p(checked(o)) {}
    Ref(const Ref &) = delete;
    Ref &operator=(const Ref &) = delete;
    ~Ref() { Py_XDECREF(p); }
    PyObject *release()
    {
        PyObject *o = p;
        p = nullptr;
        return o;
    }
};

PyObject *latin1(const char *s, size_t n)
{
    return checked(PyUnicode_DecodeLatin1(s, static_cast<Py_ssize_t>(n), nullptr));
}

py::object text(const char *s)
{
    s = s != nullptr ? s : "";
    return py::reinterpret_steal<py::object>(latin1(s, strlen(s)));
}

// Names repeat in every message: one str per distinct name, kept between
// calls (the GIL guards it) and dropped whole when it grows too large.
std::unordered_map<std::string, PyObject *> namecache;

PyObject *nameof(const char *s)
{
    auto it = namecache.find(s);
    if (it != namecache.end()) {
        Py_INCREF(it->second);
        return it->second;
    }
    if (namecache.size() >= 16384) {
        for (auto &kv : namecache)
            Py_DECREF(kv.second);
        namecache.clear();
    }
    PyObject *o = latin1(s, strlen(s));
    PyUnicode_InternInPlace(&o);
    namecache.emplace(s, o);
    Py_INCREF(o);
    return o;
}

// ---- the layout fields of a node (configuration trees) ------------------

const char *const editypes[] = {"none", "string", "float", "date", "sdate", "float0", "time"};
const char *const edidatas[] = {"user", "opt"};
const char *const ediforces[] = {"none", "mand", "cond"};
const char *const edialigns[] = {"none", "left", "right"};
const char *const nodetypes[] = {"none", "loop", "next", "bnext", "nc", "ncforeign"};

template <size_t N>
PyObject *word(int v, const char *const (&words)[N])
{
    if (v >= 0 && static_cast<size_t>(v) < N)
        return checked(PyUnicode_FromString(words[v]));
    return checked(PyLong_FromLong(v));
}

template <size_t N>
int fromword(PyObject *o, const char *key, const char *const (&words)[N])
{
    if (PyLong_Check(o))
        return static_cast<int>(PyLong_AsLong(o));
    if (PyUnicode_Check(o)) {
        const char *s = PyUnicode_AsUTF8(o);
        for (size_t i = 0; s != nullptr && i < N; i++)
            if (strcmp(s, words[i]) == 0)
                return static_cast<int>(i);
    }
    throw py::value_error(std::string("attrs: unknown value for ") + key);
}

void setitem(PyObject *d, const char *k, PyObject *v)
{
    Ref value(v);
    checked(PyDict_SetItemString(d, k, value.p));
}

// The fields of `n` that are set, or None when none is.
PyObject *attrsof(const datatree_t *n)
{
    Ref d(PyDict_New());
    auto num = [&](const char *k, int v) {
        if (v != 0)
            setitem(d.p, k, PyLong_FromLong(v));
    };
    num("iseditag", n->iseditag);
    num("edilen", n->edilen);
    num("edimaxlen", n->edimaxlen);
    num("valid", n->valid);
    if (n->editype != et_none)
        setitem(d.p, "editype", word(n->editype, editypes));
    if (n->edidata != ed_user)
        setitem(d.p, "edidata", word(n->edidata, edidatas));
    if (n->ediforce != ef_none)
        setitem(d.p, "ediforce", word(n->ediforce, ediforces));
    if (n->edialign != el_none)
        setitem(d.p, "edialign", word(n->edialign, edialigns));
    if (n->type != nt_none)
        setitem(d.p, "type", word(n->type, nodetypes));
    if (n->defval != nullptr)
        setitem(d.p, "defval", latin1(n->defval, strlen(n->defval)));
    if (n->deffunc != nullptr)
        setitem(d.p, "deffunc", latin1(n->deffunc, strlen(n->deffunc)));
    if (PyDict_Size(d.p) == 0)
        Py_RETURN_NONE;
    return d.release();
}

// ---- datatree_t to Node --------------------------------------------------

// Sets slot `i` of a new Node to `v`, taking the reference.
void setslot(PyObject *obj, int i, PyObject *v)
{
    *reinterpret_cast<PyObject **>(reinterpret_cast<char *>(obj) + slot_offsets[i]) = v;
}

// A new Node for `n`; `*children` is its (borrowed) list of children, or
// NULL for a leaf, which gets none (the Node makes one when asked).
PyObject *newnode(const datatree_t *n, bool attrs, PyObject **children)
{
    auto *type = reinterpret_cast<PyTypeObject *>(node_type);
    Ref obj(type->tp_alloc(type, 0));
    setslot(obj.p, 0, nameof(n->xmltag != nullptr ? n->xmltag : ""));
    if (n->data != nullptr) {
        setslot(obj.p, 1, latin1(n->data, strlen(n->data)));
    } else {
        Py_INCREF(Py_None);
        setslot(obj.p, 1, Py_None);
    }
    *children = nullptr;
    if (n->child != nullptr) {
        *children = checked(PyList_New(0));
        setslot(obj.p, 2, *children);
    } else {
        Py_INCREF(Py_None);
        setslot(obj.p, 2, Py_None);
    }
    setslot(obj.p, 3, checked(PyLong_FromLong(n->loopcnt)));
    if (attrs) {
        setslot(obj.p, 4, attrsof(n));
    } else {
        Py_INCREF(Py_None);
        setslot(obj.p, 4, Py_None);
    }
    return obj.release();
}

// The node `tree` and everything below it (not its followers) as a Node;
// without recursion, so any depth converts.
PyObject *topython(const datatree_t *tree, bool attrs)
{
    PyObject *list = nullptr;
    Ref root(newnode(tree, attrs, &list));
    std::vector<std::pair<const datatree_t *, PyObject *>> todo;
    if (tree->child != nullptr)
        todo.emplace_back(tree->child, list);
    while (!todo.empty()) {
        auto &top = todo.back();
        const datatree_t *n = top.first;
        if (n == nullptr) {
            todo.pop_back();
            continue;
        }
        top.first = n->next;
        PyObject *parent = top.second;
        PyObject *children = nullptr;
        Ref obj(newnode(n, attrs, &children));
        checked(PyList_Append(parent, obj.p));
        if (n->child != nullptr)
            todo.emplace_back(n->child, children);
    }
    return root.release();
}

// A chain of roots as a list of Nodes.
py::list chaintopython(const datatree_t *tree, bool attrs)
{
    py::list out;
    for (const datatree_t *n = tree; n != nullptr; n = n->next)
        out.append(py::reinterpret_steal<py::object>(topython(n, attrs)));
    return out;
}

// ---- Node to datatree_t --------------------------------------------------

// A tree being built: released with edi_tree_free unless handed on.
struct Built {
    datatree_t *root = nullptr;
    Built() = default;
    Built(const Built &) = delete;
    Built &operator=(const Built &) = delete;
    Built(Built &&o) noexcept : root(std::exchange(o.root, nullptr)) {}
    ~Built() { edi_tree_free(root); }
};

// The names from the root to the node being converted (owned by the tree
// being built), for messages.
using Path = std::vector<const char *>;

std::string where(const Path &path)
{
    std::string s;
    for (const char *p : path)
        s += (s.empty() ? "" : "/") + std::string(p);
    return s.empty() ? "tree" : s;
}

// A malloc'd copy of a name or value (str as Latin-1, or bytes); NULL for
// None when allowed.
char *copytext(PyObject *o, const char *what, bool nullable, const Path &path)
{
    if (o == Py_None && nullable)
        return nullptr;
    const char *p = nullptr;
    Py_ssize_t n = 0;
    PyObject *bytes = nullptr;
    if (PyUnicode_Check(o)) {
        bytes = PyUnicode_AsLatin1String(o);
        if (bytes == nullptr) {
            PyErr_Clear();
            throw py::value_error(where(path) + ": the " + what +
                                  " holds a character above U+00FF (values are Latin-1)");
        }
        PyBytes_AsStringAndSize(bytes, const_cast<char **>(&p), &n);
    } else if (PyBytes_Check(o)) {
        PyBytes_AsStringAndSize(o, const_cast<char **>(&p), &n);
    } else {
        throw py::type_error(where(path) + ": the " + what + " must be str" +
                             (nullable ? ", bytes or None" : " or bytes"));
    }
    bool nul = memchr(p, 0, static_cast<size_t>(n)) != nullptr;
    char *copy = nul ? nullptr : static_cast<char *>(malloc(static_cast<size_t>(n) + 1));
    if (copy != nullptr) {
        memcpy(copy, p, static_cast<size_t>(n));
        copy[n] = '\0';
    }
    Py_XDECREF(bytes);
    if (nul)
        throw py::value_error(where(path) + ": the " + what + " holds a NUL character");
    if (copy == nullptr)
        throw std::bad_alloc();
    return copy;
}

int intof(PyObject *o, const Path &path, const char *what)
{
    long v = PyLong_AsLong(o);
    if (v == -1 && PyErr_Occurred()) {
        PyErr_Clear();
        throw py::type_error(where(path) + ": " + what + " must be an int");
    }
    if (v < -2147483647L - 1 || v > 2147483647L)
        throw py::value_error(where(path) + ": " + what + " is out of the range of 32 bits");
    return static_cast<int>(v);
}

void setattrs(datatree_t *n, PyObject *attrs, const Path &path)
{
    if (attrs == Py_None)
        return;
    if (!PyDict_Check(attrs))
        throw py::type_error(where(path) + ": attrs must be a dict or None");
    PyObject *k, *v;
    Py_ssize_t pos = 0;
    while (PyDict_Next(attrs, &pos, &k, &v)) {
        const char *key = PyUnicode_Check(k) ? PyUnicode_AsUTF8(k) : nullptr;
        if (key == nullptr)
            throw py::type_error(where(path) + ": attrs keys must be str");
        if (strcmp(key, "iseditag") == 0)
            n->iseditag = intof(v, path, key);
        else if (strcmp(key, "edilen") == 0)
            n->edilen = intof(v, path, key);
        else if (strcmp(key, "edimaxlen") == 0)
            n->edimaxlen = intof(v, path, key);
        else if (strcmp(key, "valid") == 0)
            n->valid = intof(v, path, key);
        else if (strcmp(key, "editype") == 0)
            n->editype = static_cast<editype_t>(fromword(v, key, editypes));
        else if (strcmp(key, "edidata") == 0)
            n->edidata = static_cast<edidata_t>(fromword(v, key, edidatas));
        else if (strcmp(key, "ediforce") == 0)
            n->ediforce = static_cast<ediforce_t>(fromword(v, key, ediforces));
        else if (strcmp(key, "edialign") == 0)
            n->edialign = static_cast<edialign_t>(fromword(v, key, edialigns));
        else if (strcmp(key, "type") == 0)
            n->type = static_cast<nodetype_t>(fromword(v, key, nodetypes));
        else if (strcmp(key, "defval") == 0)
            n->defval = copytext(v, "defval", true, path);
        else if (strcmp(key, "deffunc") == 0)
            n->deffunc = copytext(v, "deffunc", true, path);
        else
            throw py::value_error(where(path) + ": attrs " + key + ": unknown field");
    }
}

// A node (calloc'd, as the host's nodes are) with the fields of `obj`,
// linked behind `last` below `parent`, so that a failure later leaves a
// whole tree to release.
datatree_t *fromnode(PyObject *obj, datatree_t *parent, datatree_t **last, Built &b,
                     Path &path)
{
    int isnode = PyObject_IsInstance(obj, node_type);
    if (isnode < 0)
        throw py::error_already_set();
    if (isnode == 0)
        throw py::type_error(where(path) + ": a child is not a Node but " +
                             std::string(Py_TYPE(obj)->tp_name));
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
    Ref name(PyObject_GetAttr(obj, a_name));
    n->xmltag = copytext(name.p, "name", false, path);
    path.emplace_back(n->xmltag);
    Ref value(PyObject_GetAttr(obj, a_value));
    n->data = copytext(value.p, "value", true, path);
    Ref loop(PyObject_GetAttr(obj, a_loop));
    n->loopcnt = intof(loop.p, path, "loop");
    Ref attrs(PyObject_GetAttr(obj, a_attrs));
    setattrs(n, attrs.p, path);
    return n;
}

// The Node `obj` and everything below it as a new tree; a Node found
// inside itself is refused.
Built fromnodes(PyObject *obj)
{
    Built b;
    Path path;
    datatree_t *none = nullptr;
    struct Frame {
        PyObject *seq;  // the children, as a fast sequence (owned)
        Py_ssize_t i;
        datatree_t *node, *last;
        PyObject *obj;
    };
    std::vector<Frame> todo;
    std::unordered_set<PyObject *> onpath;
    auto open = [&](PyObject *o, datatree_t *n) {
        Ref children(PyObject_GetAttr(o, a_children));
        if (children.p == Py_None)
            return;
        PyObject *seq = PySequence_Fast(children.p, "children must be a list");
        if (seq == nullptr) {
            PyErr_Clear();
            throw py::type_error(where(path) + ": children must be a list");
        }
        todo.push_back({seq, 0, n, nullptr, o});
        onpath.insert(o);
    };
    try {
        datatree_t *root = fromnode(obj, nullptr, &none, b, path);
        open(obj, root);
        while (!todo.empty()) {
            Frame &f = todo.back();
            if (f.i >= PySequence_Fast_GET_SIZE(f.seq)) {
                onpath.erase(f.obj);
                Py_DECREF(f.seq);
                todo.pop_back();
                path.pop_back();
                continue;
            }
            PyObject *child = PySequence_Fast_GET_ITEM(f.seq, f.i++);
            if (onpath.count(child) != 0)
                throw py::value_error(where(path) + ": the tree holds itself (a Node is its own descendant)");
            datatree_t *n = fromnode(child, f.node, &f.last, b, path);
            open(child, n);
        }
    } catch (...) {
        for (Frame &f : todo)
            Py_DECREF(f.seq);
        throw;
    }
    return b;
}

// ---- findings and results ----------------------------------------------

py::tuple findingtuple(const edi_finding *f)
{
    const char *file = f->file != nullptr ? f->file : "";
    py::object fname = py::reinterpret_steal<py::object>(
        checked(PyUnicode_DecodeFSDefaultAndSize(file, static_cast<Py_ssize_t>(strlen(file)))));
    return py::make_tuple(static_cast<int>(f->kind), static_cast<int>(f->severity), fname,
                          f->message, f->segment, text(f->tag), text(f->element), text(f->text),
                          f->verbose);
}

template <typename Count, typename Get, typename Obj>
py::list findingsof(Obj o, Count count, Get get)
{
    py::list out;
    size_t n = count(o);
    for (size_t i = 0; i < n; i++)
        if (const edi_finding *f = get(o, i))
            out.append(findingtuple(f));
    return out;
}

// (status, trees, text, items, findings) of a result, which is released.
py::tuple takeresult(edi_result *res, bool attrs)
{
    if (res == nullptr)
        throw std::bad_alloc();
    struct Free {
        edi_result *r;
        ~Free() { edi_result_free(r); }
    } hold{res};
    py::object trees = py::none();
    if (const datatree_t *t = edi_result_tree(res))
        trees = chaintopython(t, attrs);
    size_t len = 0;
    const char *t = edi_result_text(res, &len);
    py::object textout = t != nullptr ? py::object(py::bytes(t, len)) : py::object(py::none());
    py::list items;
    for (size_t i = 0; i < edi_result_count(res); i++)
        items.append(text(edi_result_item(res, i)));
    return py::make_tuple(edi_result_status(res), trees, textout, items,
                          findingsof(static_cast<const edi_result *>(res), edi_result_finding_count,
                                     edi_result_finding));
}

// ---- options -------------------------------------------------------------

std::optional<std::string> optpath(const py::object &o)
{
    if (o.is_none())
        return std::nullopt;
    return o.cast<std::string>();
}

struct ReadOptions {
    std::vector<std::string> configs;
    std::optional<std::string> servconf, directories;
    std::vector<const char *> ptrs;
    edi_options opt;
    ReadOptions(bool raw, bool keep_going, bool validate, const std::vector<std::string> &cfgs,
                const py::object &sc, const py::object &dirs)
        : configs(cfgs), servconf(optpath(sc)), directories(optpath(dirs))
    {
        edi_options_init(&opt);
        opt.raw = raw;
        opt.keep_going = keep_going;
        opt.validate = validate;
        for (const std::string &c : configs)
            ptrs.push_back(c.c_str());
        opt.configs = ptrs.empty() ? nullptr : ptrs.data();
        opt.nconfigs = ptrs.size();
        opt.servconf = servconf ? servconf->c_str() : nullptr;
        opt.directories = directories ? directories->c_str() : nullptr;
    }
    // `opt` points into the strings above.
    ReadOptions(const ReadOptions &) = delete;
    ReadOptions &operator=(const ReadOptions &) = delete;
};

struct WriteOptions {
    std::vector<std::string> configs;
    std::optional<std::string> message, sender, recipient, reference, name, output, directories;
    std::vector<const char *> ptrs;
    edi_write_options opt;
    WriteOptions(const py::dict &d)
    {
        edi_write_options_init(&opt);
        auto str = [&](const char *k) -> std::optional<std::string> {
            if (!d.contains(k) || d[k].is_none())
                return std::nullopt;
            return d[k].cast<std::string>();
        };
        if (d.contains("configs"))
            configs = d["configs"].cast<std::vector<std::string>>();
        message = str("message");
        sender = str("sender");
        recipient = str("recipient");
        reference = str("reference");
        name = str("name");
        output = str("output");
        directories = str("directories");
        for (const std::string &c : configs)
            ptrs.push_back(c.c_str());
        opt.configs = ptrs.empty() ? nullptr : ptrs.data();
        opt.nconfigs = ptrs.size();
        auto c = [](const std::optional<std::string> &s) { return s ? s->c_str() : nullptr; };
        opt.message = c(message);
        opt.sender = c(sender);
        opt.recipient = c(recipient);
        opt.reference = c(reference);
        opt.name = c(name);
        opt.output = c(output);
        opt.directories = c(directories);
        opt.test = d.contains("test") && d["test"].cast<bool>();
        opt.exact = d.contains("exact") && d["exact"].cast<bool>();
    }
    WriteOptions(const WriteOptions &) = delete;
    WriteOptions &operator=(const WriteOptions &) = delete;
};

// ---- the reader ----------------------------------------------------------

py::tuple envelopetuple(const edi_envelope *e)
{
    auto ch = [](char c) { return py::reinterpret_steal<py::object>(latin1(&c, 1)); };
    return py::make_tuple(ch(e->component_sep), ch(e->element_sep), ch(e->decimal_mark),
                          ch(e->release_char), ch(e->repetition_sep), ch(e->segment_term),
                          e->has_una != 0, text(e->syntax_id), text(e->syntax_version),
                          text(e->sender), text(e->sender_qualifier), text(e->recipient),
                          text(e->recipient_qualifier), text(e->date), text(e->time),
                          text(e->control_ref), text(e->application_ref),
                          text(e->test_indicator), e->has_ung != 0, text(e->group_id),
                          text(e->group_sender), text(e->group_recipient), text(e->group_ref),
                          e->interchange);
}

// One input read message by message.  A lock keeps one thread at a time
// in the reader, as libedi asks.
class Reader {
public:
    Reader(edi_reader *r) : r_(r)
    {
        if (r_ == nullptr)
            throw std::bad_alloc();
    }
    ~Reader() { edi_close(r_); }

    // None at the end or after a failure (state tells which), else
    // (tree, reference, type, version, release, number, segments,
    //  envelope, findings).
    py::object next()
    {
        edi_message *m = nullptr;
        int rc;
        {
            py::gil_scoped_release nogil;
            std::lock_guard<std::mutex> hold(lock_);
            rc = r_ != nullptr ? edi_next(r_, &m) : state_;
            state_ = rc;
        }
        if (rc != 1)
            return py::none();
        struct Free {
            edi_message *m;
            ~Free() { edi_message_free(m); }
        } hold{m};
        const datatree_t *t = edi_message_tree(m);
        py::object tree = t != nullptr ? py::reinterpret_steal<py::object>(topython(t, false))
                                       : py::object(py::none());
        return py::make_tuple(tree, text(edi_message_reference(m)), text(edi_message_type(m)),
                              text(edi_message_version(m)), text(edi_message_release(m)),
                              edi_message_number(m), edi_message_segments(m),
                              envelopetuple(edi_message_envelope(m)),
                              findingsof(static_cast<const edi_message *>(m),
                                         edi_message_finding_count, edi_message_finding));
    }

    int state() const { return state_; }

    py::list findings()
    {
        std::lock_guard<std::mutex> hold(lock_);
        if (r_ == nullptr)
            return py::list();
        return findingsof(static_cast<const edi_reader *>(r_), edi_reader_finding_count,
                          edi_reader_finding);
    }

    void close()
    {
        py::gil_scoped_release nogil;
        std::lock_guard<std::mutex> hold(lock_);
        edi_close(r_);
        r_ = nullptr;
    }

private:
    edi_reader *r_;
    std::mutex lock_;
    int state_ = 1;
};

std::unique_ptr<Reader> open_path(const std::string &path, const ReadOptions &o)
{
    edi_reader *r;
    {
        py::gil_scoped_release nogil;
        r = edi_open_path(path.c_str(), &o.opt);
    }
    return std::make_unique<Reader>(r);
}

std::unique_ptr<Reader> open_memory(const py::bytes &data, const std::string &name,
                                    const ReadOptions &o)
{
    char *p = nullptr;
    Py_ssize_t n = 0;
    PyBytes_AsStringAndSize(data.ptr(), &p, &n);
    edi_reader *r;
    {
        // `data` is immutable and held by the caller for the call.
        py::gil_scoped_release nogil;
        r = edi_open_memory(p, static_cast<size_t>(n), name.c_str(), &o.opt);
    }
    return std::make_unique<Reader>(r);
}

// ---- whole operations ----------------------------------------------------

template <typename F>
edi_result *nogil(F f)
{
    py::gil_scoped_release release;
    return f();
}

py::tuple write_messages(const py::list &messages, const py::dict &options, bool whole)
{
    WriteOptions o(options);
    std::vector<Built> trees;
    std::vector<datatree_t *> roots;
    for (const py::handle &m : messages) {
        trees.push_back(fromnodes(m.ptr()));
        roots.push_back(trees.back().root);
    }
    if (whole && roots.size() != 1)
        throw py::value_error("one root is written whole");
    edi_result *res = nogil([&] {
        return whole ? edi_write(roots[0], &o.opt)
                     : edi_write_messages(roots.data(), roots.size(), &o.opt);
    });
    return takeresult(res, false);
}

py::tuple vda_write(const py::object &tree, const py::object &config, const py::dict &options)
{
    WriteOptions o(options);
    Built b = fromnodes(tree.ptr());
    std::optional<std::string> conf = optpath(config);
    edi_result *res =
        nogil([&] { return edi_vda_write(b.root, conf ? conf->c_str() : nullptr, &o.opt); });
    return takeresult(res, false);
}

py::tuple vda_read(const std::string &path, const py::object &config, const ReadOptions &o)
{
    std::optional<std::string> conf = optpath(config);
    edi_result *res =
        nogil([&] { return edi_vda_read(path.c_str(), conf ? conf->c_str() : nullptr, &o.opt); });
    return takeresult(res, false);
}

py::tuple validate_path(const std::string &path)
{
    return takeresult(nogil([&] { return edi_validate(path.c_str()); }), false);
}

py::tuple validate_memory(const py::bytes &data, const std::string &name)
{
    char *p = nullptr;
    Py_ssize_t n = 0;
    PyBytes_AsStringAndSize(data.ptr(), &p, &n);
    return takeresult(
        nogil([&] { return edi_validate_memory(p, static_cast<size_t>(n), name.c_str()); }),
        false);
}

py::tuple config(const std::string &message, const std::string &directory, bool outbound)
{
    return takeresult(
        nogil([&] { return edi_config(message.c_str(), directory.c_str(), outbound ? 1 : 0); }),
        true);
}

py::tuple config_list(const py::object &directory)
{
    std::optional<std::string> dir = optpath(directory);
    return takeresult(nogil([&] { return edi_config_list(dir ? dir->c_str() : nullptr); }),
                      false);
}

py::tuple save(const std::string &path, const py::bytes &data)
{
    char *p = nullptr;
    Py_ssize_t n = 0;
    PyBytes_AsStringAndSize(data.ptr(), &p, &n);
    return takeresult(nogil([&] { return edi_save(path.c_str(), p, static_cast<size_t>(n)); }),
                      false);
}

// The tree as tree text (json false) or as the JSON document.
py::bytes tree_dump(const py::object &tree, bool json)
{
    Built b = fromnodes(tree.ptr());
    size_t len = 0;
    char *s;
    {
        py::gil_scoped_release release;
        s = json ? edi_tree_to_json(b.root, &len) : edi_tree_to_text(b.root, &len);
    }
    if (s == nullptr)
        throw std::bad_alloc();
    py::bytes out(s, len);
    edi_free(s);
    return out;
}

std::string directories_path()
{
    char *p = edi_directories_path();
    if (p == nullptr)
        throw std::bad_alloc();
    std::string s = p;
    edi_free(p);
    return s;
}

// Takes the package's Node class, which must keep its five fields in
// __slots__ (name, value, _children, loop, attrs).
void register_node_type(const py::object &type)
{
    if (!PyType_Check(type.ptr()))
        throw py::type_error("a class is needed");
    PyObject *names[] = {a_name, a_value, a_children, a_loop, a_attrs};
    for (int i = 0; i < 5; i++) {
        PyObject *d = PyDict_GetItem(reinterpret_cast<PyTypeObject *>(type.ptr())->tp_dict,
                                     names[i]);
        if (d == nullptr || Py_TYPE(d) != &PyMemberDescr_Type)
            throw py::type_error("Node must keep its fields in __slots__");
        PyMemberDef *m = reinterpret_cast<PyMemberDescrObject *>(d)->d_member;
        if (m->type != T_OBJECT_EX)
            throw py::type_error("Node must keep its fields in __slots__");
        slot_offsets[i] = m->offset;
    }
    Py_XDECREF(node_type);
    node_type = type.ptr();
    Py_INCREF(node_type);
}

// A Node tree through datatree_t and back (tests of the conversion).
py::object roundtrip(const py::object &tree, bool attrs)
{
    Built b = fromnodes(tree.ptr());
    return py::reinterpret_steal<py::object>(topython(b.root, attrs));
}

}  // namespace

PYBIND11_MODULE(_ediprot, m)
{
    m.doc() = "libedi for Python: the extension under the ediprot package.";
    a_name = checked(PyUnicode_InternFromString("name"));
    a_value = checked(PyUnicode_InternFromString("value"));
    a_children = checked(PyUnicode_InternFromString("_children"));
    a_loop = checked(PyUnicode_InternFromString("loop"));
    a_attrs = checked(PyUnicode_InternFromString("attrs"));

    py::class_<ReadOptions>(m, "ReadOptions")
        .def(py::init<bool, bool, bool, const std::vector<std::string> &, const py::object &,
                      const py::object &>(),
             py::arg("raw") = false, py::arg("keep_going") = false, py::arg("validate") = false,
             py::arg("configs") = std::vector<std::string>(), py::arg("servconf") = py::none(),
             py::arg("directories") = py::none());

    py::class_<Reader>(m, "Reader")
        .def("next", &Reader::next)
        .def_property_readonly("state", &Reader::state)
        .def("findings", &Reader::findings)
        .def("close", &Reader::close);

    m.def("register_node_type", &register_node_type);
    m.def("open_path", &open_path, py::arg("path"), py::arg("options"));
    m.def("open_memory", &open_memory, py::arg("data"), py::arg("name"), py::arg("options"));
    m.def("write_messages", &write_messages, py::arg("messages"), py::arg("options"),
          py::arg("whole") = false);
    m.def("vda_read", &vda_read, py::arg("path"), py::arg("config"), py::arg("options"));
    m.def("vda_write", &vda_write, py::arg("tree"), py::arg("config"), py::arg("options"));
    m.def("validate_path", &validate_path);
    m.def("validate_memory", &validate_memory);
    m.def("config", &config);
    m.def("config_list", &config_list);
    m.def("save", &save);
    m.def("tree_dump", &tree_dump);
    m.def("directories_path", &directories_path);
    m.def("roundtrip", &roundtrip);
    m.def("version", [] { return std::string(edi_version()); });
}
