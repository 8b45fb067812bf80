#include "reader.h"

#include "node.h"
#include "results.h"

namespace ediprot_py {

namespace {

// The names and values below `tp`, in order, as one text.
void flatten(const datatree_t *tp, std::string &out)
{
    for (const datatree_t *c = tp != nullptr ? tp->child : nullptr; c != nullptr; c = c->next) {
        out += c->xmltag != nullptr ? c->xmltag : "";
        out += '\x1f';
        out += c->data != nullptr ? c->data : "";
        out += '\x1e';
        flatten(c, out);
    }
}

}  // namespace

Reader::Reader(edi_reader *r) : r_(r)
{
    if (r_ == nullptr)
        throw std::bad_alloc();
}

py::object Reader::next()
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
    auto *h = new Holder;
    h->message = m;
    const edi_envelope *env = edi_message_envelope(m);
    // The set the library read the values in (UTF-8 where a file declares a
    // single-byte set but holds UTF-8), else the declared one.
    if (env != nullptr && env->charset != nullptr && *env->charset != '\0')
        h->charset = env->charset;
    else
        h->charset = env != nullptr && env->syntax_id != nullptr ? env->syntax_id : "";
    PyObject *owner = holder_capsule(h);
    if (owner == nullptr)
        throw py::error_already_set();
    py::object own = py::reinterpret_steal<py::object>(owner);
    py::object tree = py::none();
    if (const datatree_t *t = edi_message_tree(m)) {
        PyObject *node = node_of(t, owner);
        if (node == nullptr)
            throw py::error_already_set();
        tree = py::reinterpret_steal<py::object>(node);
    }
    // The envelope as nodes (#envelope, #group), so that a write sends the
    // partner's envelope back; views into the message's own trees.
    py::list nodes;
    for (const datatree_t *e : {env != nullptr ? env->unb_tree : nullptr,
                                env != nullptr ? env->ung_tree : nullptr}) {
        if (e == nullptr)
            continue;
        PyObject *node = node_of(e, owner);
        if (node == nullptr)
            throw py::error_already_set();
        nodes.append(py::reinterpret_steal<py::object>(node));
    }
    // What tells one group from the next: all its UNG values.
    std::string group;
    if (env != nullptr)
        flatten(env->ung_tree, group);
    const char *cs = h->charset.c_str();
    return py::make_tuple(tree, text(edi_message_reference(m), cs), text(edi_message_type(m)),
                          text(edi_message_version(m)), text(edi_message_release(m)),
                          edi_message_number(m), edi_message_segments(m),
                          envelope_tuple(env),
                          findings_of(static_cast<const edi_message *>(m),
                                      edi_message_finding_count, edi_message_finding),
                          py::make_tuple(h->charset, py::tuple(nodes), py::bytes(group)));
}

py::list Reader::findings()
{
    std::lock_guard<std::mutex> hold(lock_);
    if (r_ == nullptr)
        return py::list();
    return findings_of(static_cast<const edi_reader *>(r_), edi_reader_finding_count,
                       edi_reader_finding);
}

void Reader::close()
{
    py::gil_scoped_release nogil;
    std::lock_guard<std::mutex> hold(lock_);
    edi_close(r_);
    r_ = nullptr;
}

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

}  // namespace ediprot_py
