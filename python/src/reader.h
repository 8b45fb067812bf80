// One EDIFACT input read message by message (edi_reader).
#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <string>

#include <edi.h>

#include "options.h"

namespace ediprot_py {

namespace py = pybind11;

// A lock keeps one thread at a time in the reader, as libedi asks.
class Reader {
public:
    explicit Reader(edi_reader *r);
    ~Reader() { edi_close(r_); }

    // None at the end or after a failure (state tells which), else
    // (tree, reference, type, version, release, number, segments,
    //  envelope, findings).  The tree is a node standing for the
    // message's own tree, which it keeps.
    py::object next();
    int state() const { return state_; }
    py::list findings();
    void close();

private:
    edi_reader *r_;
    std::mutex lock_;
    int state_ = 1;
};

std::unique_ptr<Reader> open_path(const std::string &path, const ReadOptions &o);
std::unique_ptr<Reader> open_memory(const py::bytes &data, const std::string &name,
                                    const ReadOptions &o);

}  // namespace ediprot_py
