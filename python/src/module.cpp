// ediprot._ediprot: libedi (edi.h) for Python, used by the package's pure
// Python layer.  Trees cross as nodes of the package's Node class (a
// subclass of NodeBase, node.h): those of the library stand for its C
// trees and decode on access; names and values are decoded and encoded in
// text.cpp alone.  Calls into libedi run without the GIL.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <optional>
#include <string>
#include <vector>

#include <edi.h>

#include "node.h"
#include "options.h"
#include "plain.h"
#include "reader.h"
#include "results.h"
#include "text.h"
#include "to_tree.h"

namespace py = pybind11;
using namespace ediprot_py;

namespace {

template <typename F>
edi_result *nogil(F f)
{
    py::gil_scoped_release release;
    return f();
}

// The data of a bytes object (held by the caller for the call).
std::pair<const char *, size_t> bytes_of(const py::bytes &data)
{
    char *p = nullptr;
    Py_ssize_t n = 0;
    PyBytes_AsStringAndSize(data.ptr(), &p, &n);
    return {p, static_cast<size_t>(n)};
}

py::tuple write_messages(const py::list &messages, const py::dict &options, bool whole)
{
    WriteOptions o(options);
    std::vector<Built> trees;
    std::vector<datatree_t *> roots;
    for (const py::handle &m : messages) {
        trees.push_back(to_tree(m.ptr()));
        roots.push_back(trees.back().root);
    }
    if (whole && roots.size() != 1)
        throw py::value_error("one root is written whole");
    edi_result *res = nogil([&] {
        return whole ? edi_write(roots[0], &o.opt)
                     : edi_write_messages(roots.data(), roots.size(), &o.opt);
    });
    return take_result(res, false);
}

py::tuple vda_write(const py::object &tree, const py::object &config, const py::dict &options)
{
    WriteOptions o(options);
    Built b = to_tree(tree.ptr());
    std::optional<std::string> conf = optpath(config);
    return take_result(nogil([&] { return edi_vda_write(b.root, c_str(conf), &o.opt); }), false);
}

py::tuple vda_read(const std::string &path, const py::object &config, const ReadOptions &o)
{
    std::optional<std::string> conf = optpath(config);
    return take_result(nogil([&] { return edi_vda_read(path.c_str(), c_str(conf), &o.opt); }),
                       false);
}

py::tuple vda_read_memory(const py::bytes &data, const std::string &name,
                          const py::object &config, const ReadOptions &o)
{
    std::optional<std::string> conf = optpath(config);
    auto [p, n] = bytes_of(data);
    return take_result(
        nogil([&] { return edi_vda_read_memory(p, n, name.c_str(), c_str(conf), &o.opt); }),
        false);
}

py::tuple validate_path(const std::string &path)
{
    return take_result(nogil([&] { return edi_validate(path.c_str()); }), false);
}

py::tuple validate_memory(const py::bytes &data, const std::string &name)
{
    auto [p, n] = bytes_of(data);
    return take_result(nogil([&] { return edi_validate_memory(p, n, name.c_str()); }), false);
}

py::tuple config(const std::string &message, const std::string &directory, bool outbound)
{
    return take_result(
        nogil([&] { return edi_config(message.c_str(), directory.c_str(), outbound ? 1 : 0); }),
        true);
}

py::tuple config_list(const py::object &directory)
{
    std::optional<std::string> dir = optpath(directory);
    return take_result(nogil([&] { return edi_config_list(c_str(dir)); }), false);
}

py::tuple save(const std::string &path, const py::bytes &data)
{
    auto [p, n] = bytes_of(data);
    return take_result(nogil([&] { return edi_save(path.c_str(), p, n); }), false);
}

// The tree as tree text (json false) or as the JSON document.
py::bytes tree_dump(const py::object &tree, bool json)
{
    Built b = to_tree(tree.ptr());
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

// The class new nodes get: the package's Node.
void register_node_type(const py::object &type)
{
    if (!PyType_Check(type.ptr()) ||
        !PyType_IsSubtype(reinterpret_cast<PyTypeObject *>(type.ptr()), &NodeBase_Type))
        throw py::type_error("a subclass of NodeBase is needed");
    Py_INCREF(type.ptr());
    if (node_class != &NodeBase_Type)
        Py_DECREF(reinterpret_cast<PyObject *>(node_class));
    node_class = reinterpret_cast<PyTypeObject *>(type.ptr());
}

// A tree through datatree_t and back (tests of the conversion).
py::object roundtrip(const py::object &tree, bool attrs)
{
    Built b = to_tree(tree.ptr());
    auto *h = new Holder;
    h->tree = b.take();
    h->attrs = attrs;
    py::object owner = py::reinterpret_steal<py::object>(holder_capsule(h));
    if (!owner)
        throw py::error_already_set();
    PyObject *node = node_of(h->tree, owner.ptr());
    if (node == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::object>(node);
}

// A text argument as libedi gets it (text.h).
py::bytes encode(const py::object &o)
{
    if (!PyUnicode_Check(o.ptr()) && !PyBytes_Check(o.ptr()))
        throw py::type_error("a text must be str or bytes");
    std::string s;
    if (!encode_text(o.ptr(), s))
        throw py::value_error(std::string("holds ") + encode_refusal);
    return py::bytes(s);
}

py::object to_dict(const py::object &node, bool skip_empty)
{
    PyObject *o = to_plain(node.ptr(), skip_empty);
    if (o == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::object>(o);
}

}  // namespace

PYBIND11_MODULE(_ediprot, m)
{
    m.doc() = "libedi for Python: the extension under the ediprot package.";
    if (!node_type_ready())
        throw py::error_already_set();
    Py_INCREF(&NodeBase_Type);
    m.add_object("NodeBase", reinterpret_cast<PyObject *>(&NodeBase_Type));

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
    m.def("vda_read_memory", &vda_read_memory, py::arg("data"), py::arg("name"),
          py::arg("config"), py::arg("options"));
    m.def("vda_write", &vda_write, py::arg("tree"), py::arg("config"), py::arg("options"));
    m.def("validate_path", &validate_path);
    m.def("validate_memory", &validate_memory);
    m.def("config", &config);
    m.def("config_list", &config_list);
    m.def("save", &save);
    m.def("tree_dump", &tree_dump);
    m.def("encode_text", &encode);
    m.def("to_dict", &to_dict, py::arg("node"), py::arg("skip_empty") = false);
    m.def("directories_path", &directories_path);
    m.def("roundtrip", &roundtrip);
    m.def("version", [] { return std::string(edi_version()); });
}
