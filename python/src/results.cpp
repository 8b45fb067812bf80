#include "results.h"

#include <string.h>

#include "node.h"
#include "text.h"

namespace ediprot_py {

py::object text(const char *s, const char *charset)
{
    PyObject *o = decode_text(s, charset);
    if (o == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::object>(o);
}

py::tuple finding_tuple(const edi_finding *f)
{
    const char *file = f->file != nullptr ? f->file : "";
    PyObject *fname = PyUnicode_DecodeFSDefaultAndSize(file, static_cast<Py_ssize_t>(strlen(file)));
    if (fname == nullptr)
        throw py::error_already_set();
    return py::make_tuple(static_cast<int>(f->kind), static_cast<int>(f->severity),
                          py::reinterpret_steal<py::object>(fname), f->message, f->segment,
                          text(f->tag), text(f->element), text(f->text), f->verbose);
}

py::tuple take_result(edi_result *res, bool attrs)
{
    if (res == nullptr)
        throw std::bad_alloc();
    struct Free {
        edi_result *r;
        ~Free() { edi_result_free(r); }
    } hold{res};
    py::object roots = py::none();
    if (datatree_t *t = edi_result_take_tree(res)) {
        auto *h = new Holder;
        h->tree = t;
        h->attrs = attrs;
        PyObject *owner = holder_capsule(h);
        if (owner == nullptr)
            throw py::error_already_set();
        py::object own = py::reinterpret_steal<py::object>(owner);
        py::list list;
        for (const datatree_t *n = t; n != nullptr; n = n->next) {
            PyObject *node = node_of(n, owner);
            if (node == nullptr)
                throw py::error_already_set();
            list.append(py::reinterpret_steal<py::object>(node));
        }
        roots = list;
    }
    size_t len = 0;
    const char *t = edi_result_text(res, &len);
    py::object textout = t != nullptr ? py::object(py::bytes(t, len)) : py::object(py::none());
    py::list items;
    for (size_t i = 0; i < edi_result_count(res); i++)
        items.append(text(edi_result_item(res, i)));
    return py::make_tuple(edi_result_status(res), roots, textout, items,
                          findings_of(static_cast<const edi_result *>(res),
                                      edi_result_finding_count, edi_result_finding));
}

py::tuple envelope_tuple(const edi_envelope *e)
{
    const char *cs = e->syntax_id != nullptr ? e->syntax_id : "";
    auto text = [cs](const char *s) { return ediprot_py::text(s, cs); };
    auto ch = [](char c) {
        PyObject *o = decode_text(&c, 1, "");
        if (o == nullptr)
            throw py::error_already_set();
        return py::reinterpret_steal<py::object>(o);
    };
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

}  // namespace ediprot_py
