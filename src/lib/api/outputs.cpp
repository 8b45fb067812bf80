// Files written piece by piece that take the place of their path only when
// whole: NDJSON of a large input, one message at a time, without holding
// the whole text in memory.
#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <memory>
#include <new>
#include <string>

#include "api/objects.h"
#include "edi.h"
#include "files/output.h"

struct edi_output {
    edi::Report rep;
    std::string path;
    std::unique_ptr<edi::OutputFile> file;  // NULL for standard output
    FILE *fp = nullptr;
    bool failed = false;
};

extern "C" {

edi_output *edi_output_open(const char *path)
{
    auto *o = new (std::nothrow) edi_output();
    if (o == nullptr)
        return nullptr;
    try {
        o->path = path != nullptr ? path : "-";
        if (o->path == "-" || o->path.empty()) {
            o->fp = stdout;
            return o;
        }
        o->file = std::make_unique<edi::OutputFile>(o->path, o->rep);
        if (o->file->name().empty()) {
            o->failed = true;
            return o;
        }
        o->fp = fopen(o->file->name().c_str(), "wb");
        if (o->fp == nullptr) {
            o->rep.fail("", "edi: " + o->path + ": " + strerror(errno));
            o->failed = true;
        }
    } catch (const std::bad_alloc &) {
        o->failed = true;
    }
    return o;
}

int edi_output_write(edi_output *o, const void *data, size_t len)
{
    if (o == nullptr || o->failed || o->fp == nullptr)
        return -1;
    if (len > 0 && fwrite(data, 1, len, o->fp) != len) {
        o->rep.fail("", "edi: " + o->path + ": " + strerror(errno));
        o->failed = true;
        return -1;
    }
    return 0;
}

edi_result *edi_output_close(edi_output *o, int keep)
{
    auto *res = new (std::nothrow) edi_result();
    if (o == nullptr) {
        if (res != nullptr)
            res->status = 2;
        return res;
    }
    bool ok = !o->failed;
    if (o->fp == stdout) {
        ok = fflush(stdout) == 0 && ok;
    } else if (o->fp != nullptr) {
        // A file not closed cleanly (a full disk shows here) is not kept.
        if (fclose(o->fp) != 0 && ok) {
            o->rep.fail("", "edi: " + o->path + ": " + strerror(errno));
            ok = false;
        }
        if (ok && keep != 0)
            ok = o->file->keep();
    }
    if (res != nullptr) {
        res->status = ok ? 0 : 1;
        for (const edi::Finding &f : o->rep.items())
            res->rep.add(f.kind, f.severity, f.file, f.text) = f;
    }
    delete o;  // an OutputFile not kept removes its file
    return res;
}

}  // extern "C"
