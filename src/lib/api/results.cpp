// Options, results and strings of the C interface.
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include <mutex>
#include <new>

#include "api/objects.h"
#include "edihost.h"
#include "files/output.h"
#include "module/capture.h"
#include "module/module.h"
#include "trees/treeload.h"

#ifndef EDIPROT_VERSION
#define EDIPROT_VERSION "unknown"
#endif

edi_result::~edi_result()
{
    if (tree != nullptr)
        freedatatree(tree);
}

namespace edi {

edi_result *newresult()
{
    return new edi_result();
}

char *cstring(const std::string &s, size_t *len)
{
    char *p = static_cast<char *>(malloc(s.size() + 1));
    if (p == nullptr)
        return nullptr;
    memcpy(p, s.data(), s.size());
    p[s.size()] = '\0';
    if (len != nullptr)
        *len = s.size();
    return p;
}

bool takeoptions(const edi_options *opt, Settings &s, std::vector<datatree_t *> &configs,
                 Report &rep)
{
    edi_options defaults;
    edi_options_init(&defaults);
    if (opt == nullptr)
        opt = &defaults;
    s.raw = opt->raw != 0;
    s.keepgoing = opt->keep_going != 0;
    s.trace = opt->trace >= 0 && opt->trace <= 15 ? opt->trace : -1;
    s.servconf = opt->servconf != nullptr ? opt->servconf : "";
    s.directories = opt->directories != nullptr ? opt->directories : "";
    if (opt->size >= offsetof(edi_options, part) + sizeof opt->part && opt->parts > 1 &&
        opt->part >= 0 && opt->part < opt->parts) {
        s.parts = opt->parts;
        s.part = opt->part;
    }
    for (size_t i = 0; i < opt->nconfigs && opt->configs != nullptr; i++) {
        datatree_t *c = opt->configs[i] != nullptr ? loadconfig(opt->configs[i], rep) : nullptr;
        if (c == nullptr) {
            for (datatree_t *k : configs)
                freedatatree(k);
            configs.clear();
            return false;
        }
        configs.push_back(c);
    }
    if (!s.servconf.empty()) {
        // Loaded once here to report a faulty file before anything is read;
        // each read loads it again under the module's lock.
        std::lock_guard<std::recursive_mutex> hold(modulelock());
        StderrCapture cap(true);
        int rc = edihost_loadservconf(s.servconf.c_str());
        edihost_clearservconf();
        for (const std::string &l : cap.lines())
            rep.fail("", l);
        if (rc != 0) {
            for (datatree_t *k : configs)
                freedatatree(k);
            configs.clear();
            return false;
        }
    }
    return true;
}

Settings takewriteoptions(const edi_write_options *opt)
{
    edi_write_options defaults;
    edi_write_options_init(&defaults);
    if (opt == nullptr)
        opt = &defaults;
    Settings s;
    s.message = opt->message != nullptr ? opt->message : "";
    s.sender = opt->sender != nullptr ? opt->sender : "";
    s.recipient = opt->recipient != nullptr ? opt->recipient : "";
    s.reference = opt->reference != nullptr ? opt->reference : "";
    s.test = opt->test != 0;
    // Fields a caller built against an older header does not have.
    auto has = [opt](size_t end) { return opt->size >= end; };
    if (has(offsetof(edi_write_options, group) + sizeof opt->group)) {
        s.syntax = opt->syntax != nullptr ? opt->syntax : "";
        s.applicationref = opt->application_ref != nullptr ? opt->application_ref : "";
        s.ackrequest = opt->ack_request != 0;
        s.group = opt->group != nullptr ? opt->group : "";
    }
    s.exact = opt->exact != 0;
    s.name = opt->name != nullptr && *opt->name != '\0' ? opt->name : "tree";
    s.output = opt->output != nullptr ? opt->output : "";
    s.trace = opt->trace >= 0 && opt->trace <= 15 ? opt->trace : -1;
    s.directories = opt->directories != nullptr ? opt->directories : "";
    // A caller built with an older edi.h has a shorter record.
    if (opt->size >= offsetof(edi_write_options, keep_going) + sizeof opt->keep_going)
        s.keepgoing = opt->keep_going != 0;
    return s;
}

}  // namespace edi

extern "C" {

void edi_options_init(edi_options *opt)
{
    if (opt == nullptr)
        return;
    memset(opt, 0, sizeof *opt);
    opt->size = sizeof *opt;
    opt->trace = -1;
}

void edi_write_options_init(edi_write_options *opt)
{
    if (opt == nullptr)
        return;
    memset(opt, 0, sizeof *opt);
    opt->size = sizeof *opt;
    opt->trace = -1;
}

int edi_result_status(const edi_result *res)
{
    return res != nullptr ? res->status : 1;
}

datatree_t *edi_result_tree(const edi_result *res)
{
    return res != nullptr ? res->tree : nullptr;
}

datatree_t *edi_result_take_tree(edi_result *res)
{
    if (res == nullptr)
        return nullptr;
    datatree_t *tree = res->tree;
    res->tree = nullptr;
    return tree;
}

const char *edi_result_text(const edi_result *res, size_t *len)
{
    if (res == nullptr || !res->hastext) {
        if (len != nullptr)
            *len = 0;
        return nullptr;
    }
    if (len != nullptr)
        *len = res->text.size();
    return res->text.c_str();
}

size_t edi_result_count(const edi_result *res)
{
    return res != nullptr ? res->items.size() : 0;
}

const char *edi_result_item(const edi_result *res, size_t i)
{
    return res != nullptr && i < res->items.size() ? res->items[i].c_str() : nullptr;
}

size_t edi_result_finding_count(const edi_result *res)
{
    return res != nullptr ? res->rep.items().size() : 0;
}

const edi_finding *edi_result_finding(const edi_result *res, size_t i)
{
    return res != nullptr ? res->rep.view(i) : nullptr;
}

void edi_result_free(edi_result *res)
{
    delete res;
}

int edi_result_save(edi_result *res, const char *path)
{
    if (res == nullptr)
        return -1;
    try {
        std::string where = path != nullptr ? path : "-";
        return edi::writewhole(where, res->text, res->rep) ? 0 : -1;
    } catch (const std::bad_alloc &) {
        return -1;
    }
}

edi_result *edi_save(const char *path, const void *data, size_t len)
{
    edi_result *res = nullptr;
    try {
        res = edi::newresult();
        std::string text = data != nullptr ? std::string(static_cast<const char *>(data), len)
                                           : std::string();
        std::string where = path != nullptr ? path : "-";
        res->status = edi::writewhole(where, text, res->rep) ? 0 : 1;
        return res;
    } catch (const std::bad_alloc &) {
        if (res != nullptr)
            res->status = 1;
        return res;
    }
}

void edi_tree_free(datatree_t *tree)
{
    if (tree != nullptr)
        freedatatree(tree);
}

void edi_free(void *p)
{
    free(p);
}

const char *edi_version(void)
{
    return EDIPROT_VERSION;
}

}  // extern "C"
