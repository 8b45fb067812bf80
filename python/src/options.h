// edi_options and edi_write_options from what the Python layer passes,
// with the strings they point into.
#pragma once

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <optional>
#include <string>
#include <vector>

#include <edi.h>

namespace ediprot_py {

namespace py = pybind11;

inline std::optional<std::string> optpath(const py::object &o)
{
    if (o.is_none())
        return std::nullopt;
    return o.cast<std::string>();
}

inline const char *c_str(const std::optional<std::string> &s)
{
    return s ? s->c_str() : nullptr;
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
        opt.servconf = c_str(servconf);
        opt.directories = c_str(directories);
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
    explicit WriteOptions(const py::dict &d)
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
        opt.message = c_str(message);
        opt.sender = c_str(sender);
        opt.recipient = c_str(recipient);
        opt.reference = c_str(reference);
        opt.name = c_str(name);
        opt.output = c_str(output);
        opt.directories = c_str(directories);
        opt.test = d.contains("test") && d["test"].cast<bool>();
        opt.exact = d.contains("exact") && d["exact"].cast<bool>();
    }
    WriteOptions(const WriteOptions &) = delete;
    WriteOptions &operator=(const WriteOptions &) = delete;
};

}  // namespace ediprot_py
