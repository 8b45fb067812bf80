#include "commands.h"

#include <stdio.h>
#include <stdlib.h>
#include <errno.h>
#include <string.h>
#include <sys/stat.h>

#include <vector>

#include "allocator.h"
#include "batch.h"
#include "ndjson.h"
#include "parallelndjson.h"
#include "edi.h"
#include "paths.h"

namespace edi {

namespace {

// The pointers of a list of strings, for the library's options.
std::vector<const char *> pointers(const std::vector<std::string> &v)
{
    std::vector<const char *> p;
    for (const std::string &s : v)
        p.push_back(s.c_str());
    return p;
}

}  // namespace

edi_options readoptions(const Options &opt, const std::vector<const char *> &configs)
{
    edi_options o;
    edi_options_init(&o);
    o.raw = opt.raw;
    o.keep_going = opt.keepgoing;
    o.trace = opt.trace;
    o.servconf = opt.servconf.empty() ? nullptr : opt.servconf.c_str();
    o.max_findings = opt.maxerrors;
    o.configs = configs.data();
    o.nconfigs = configs.size();
    o.validate = opt.validate;
    o.parts = opt.parts;
    o.part = opt.part;
    return o;
}

namespace {

// Exit status of a result: 0, 1 or 2 as the library says, 1 for none.
Exit statusof(const edi_result *res)
{
    switch (edi_result_status(res)) {
    case 0:
        return exit_ok;
    case 2:
        return exit_usage;
    default:
        return exit_failed;
    }
}

}  // namespace

void printfinding(const edi_finding *f, bool verbose, FILE *out)
{
    if ((f->verbose == 1 && !verbose) || (f->verbose == 2 && verbose))
        return;
    if (f->file[0] != '\0')
        fprintf(out, "%s: %s\n", f->file, f->text);
    else
        fprintf(out, "%s\n", f->text);
}

void printfindings(const edi_result *res, bool verbose, FILE *out)
{
    for (size_t i = 0; i < edi_result_finding_count(res); i++)
        printfinding(edi_result_finding(res, i), verbose, out);
}

// `separator`, when given, goes in front of the document and becomes the
// one between documents (several JSON documents on stdout as one array).
Exit readone(const Options &opt, const std::string &input, const std::string &out,
             std::string *separator)
{
    bool vda = opt.command == "vda-read";
    std::vector<const char *> configs = pointers(opt.configs);
    edi_options o = readoptions(opt, configs);
    if (vda) {  // the VDA reader takes its one configuration apart
        o.configs = nullptr;
        o.nconfigs = 0;
        o.validate = 0;
    }
    const char *vdaconfig = opt.configs.empty() ? nullptr : opt.configs.back().c_str();
    edi_result *res = vda ? edi_vda_read(input.c_str(), vdaconfig, &o) : edi_read(input.c_str(), &o);
    // Read findings on stderr; validation findings come behind the tree.
    std::vector<const edi_finding *> validation;
    for (size_t i = 0; i < edi_result_finding_count(res); i++) {
        const edi_finding *f = edi_result_finding(res, i);
        if (f->kind == EDI_FINDING_VALIDATION)
            validation.push_back(f);
        else
            printfinding(f, opt.verbose, stderr);
    }
    Exit status = statusof(res);
    if (edi_result_tree(res) != nullptr) {
        size_t len = 0;
        char *text = nullptr;
        const int form = opt.full ? EDI_FORM_FULL : EDI_FORM_COMPACT;
        if (opt.format == "json") {
            text = edi_result_json_opt(res, form);
            len = text != nullptr ? strlen(text) : 0;
        } else {
            text = edi_tree_to_text_opt(edi_result_tree(res), form, &len);
            for (size_t k = 0; k < edi_result_count(res); k++)
                fprintf(stderr, "edi: %s: key %s\n", input.c_str(), edi_result_item(res, k));
        }
        if (separator != nullptr) {
            fputs(separator->c_str(), stdout);
            *separator = ",\n";
        }
        edi_result *saved = edi_save(out.c_str(), text, len);
        printfindings(saved, opt.verbose, stderr);
        if (edi_result_status(saved) != 0)
            status = exit_failed;
        edi_result_free(saved);
        edi_free(text);
    }
    for (const edi_finding *f : validation)
        printfinding(f, opt.verbose, stderr);
    if (!opt.report.empty()) {
        // --report names one file; with several inputs, one per input.
        std::string where = opt.report;
        if (where != "-" && isfolder(where))
            where = infolder(where, input, "findings.json");
        char *doc = edi_result_report(res, input.c_str());
        edi_result *saved = edi_save(where.c_str(), doc, doc != nullptr ? strlen(doc) : 0);
        printfindings(saved, opt.verbose, stderr);
        if (edi_result_status(saved) != 0)
            status = exit_failed;
        edi_result_free(saved);
        edi_free(doc);
    }
    edi_result_free(res);
    return status;
}

Exit validatecommand(const Options &opt)
{
    Exit status = exit_ok;
    edi_options o;
    edi_options_init(&o);
    o.max_findings = opt.maxerrors;
    for (const std::string &input : expandinputs(opt.inputs)) {
        edi_result *res = edi_validate_opt(input.c_str(), &o);
        if (opt.format == "json") {
            // One document per input, on one line: the findings are the
            // command's result.
            char *doc = edi_result_report(res, input.c_str());
            if (doc != nullptr)
                fputs(doc, stdout);
            edi_free(doc);
            if (edi_result_status(res) != 0)
                status = exit_failed;
            edi_result_free(res);
            continue;
        }
        // Findings on stdout: they are the command's result; a file that
        // cannot be read is a failure on stderr.
        for (size_t i = 0; i < edi_result_finding_count(res); i++) {
            const edi_finding *f = edi_result_finding(res, i);
            printfinding(f, opt.verbose, f->kind == EDI_FINDING_VALIDATION ? stdout : stderr);
        }
        if (edi_result_status(res) != 0)
            status = exit_failed;
        edi_result_free(res);
    }
    return status;
}

Exit ackcommand(const Options &opt)
{
    std::vector<std::string> inputs = expandinputs(opt.inputs);
    bool tofolder = !opt.output.empty() && (inputs.size() > 1 || isfolder(opt.output));
    if (tofolder && !isfolder(opt.output)) {
        fprintf(stderr, "edi: %s: not a folder (several inputs need a folder for -o)\n",
                opt.output.c_str());
        return exit_usage;
    }
    edi_options o;
    edi_options_init(&o);
    o.max_findings = opt.maxerrors;
    Exit status = exit_ok;
    for (const std::string &input : inputs) {
        edi_result *res = edi_ack(input.c_str(), &o, opt.errorsonly,
                                  opt.reference.empty() ? nullptr : opt.reference.c_str());
        // The findings behind the CONTRL, as validate prints them.
        printfindings(res, opt.verbose, stderr);
        size_t len = 0;
        const char *text = edi_result_text(res, &len);
        std::string out = tofolder ? infolder(opt.output, input, "contrl.edi") : opt.output;
        if (text != nullptr && (len > 0 || !out.empty())) {
            edi_result *saved = edi_save(out.empty() ? "-" : out.c_str(), text, len);
            printfindings(saved, opt.verbose, stderr);
            if (edi_result_status(saved) != 0)
                status = exit_failed;
            edi_result_free(saved);
        }
        if (edi_result_status(res) != 0)
            status = exit_failed;
        edi_result_free(res);
    }
    return status;
}

Exit readcommand(const Options &opt)
{
    std::vector<std::string> inputs = expandinputs(opt.inputs);
    bool fromfolder = false;
    for (const std::string &in : opt.inputs)
        fromfolder = fromfolder || (in != "-" && isfolder(in));
    bool tofolder = !opt.output.empty() && opt.output != "-" &&
                    (inputs.size() > 1 || fromfolder || isfolder(opt.output));
    // Several inputs into a folder that is not there yet: it is made.
    if (tofolder && !isfolder(opt.output) && mkdir(opt.output.c_str(), 0777) != 0) {
        fprintf(stderr, "edi: %s: not a folder and cannot be made one (%s)\n",
                opt.output.c_str(), strerror(errno));
        return exit_failed;
    }
    auto one = [&](const std::string &input) {
        std::string out = tofolder ? infolder(opt.output, input, opt.format) : opt.output;
        return opt.format == "ndjson" ? readndjson(opt, input, out)
                                      : readone(opt, input, out, nullptr);
    };
    // One interchange on several cores: its messages shared out.
    if (opt.jobs > 0 && inputs.size() == 1 && opt.format == "ndjson" && inputs[0] != "-" &&
        !fromfolder)
        return readndjsonparallel(opt, inputs[0],
                                  tofolder ? infolder(opt.output, inputs[0], opt.format)
                                           : opt.output);
    if (opt.jobs > 0)
        return readbatch(inputs, opt, one);
    // Several JSON documents on stdout are one array, so that what a
    // program reads there is one valid document.
    bool array = opt.format == "json" && inputs.size() > 1 &&
                 (opt.output.empty() || opt.output == "-");
    std::string separator;
    if (array)
        fputs("[\n", stdout);
    Exit status = exit_ok;
    for (const std::string &input : inputs) {
        Exit rc = array ? readone(opt, input, "-", &separator) : one(input);
        if (rc != exit_ok)
            status = rc;
    }
    if (array)
        fputs("]\n", stdout);
    return status;
}

Exit writecommand(const Options &opt)
{
    bool vda = opt.command == "vda-write";
    const std::string &name = opt.inputs[0];
    edi_result *loaded = edi_tree_load(name.c_str());
    printfindings(loaded, opt.verbose, stderr);
    datatree_t *tree = edi_result_take_tree(loaded);
    edi_result_free(loaded);
    if (tree == nullptr)
        return exit_failed;

    std::vector<const char *> configs = pointers(opt.configs);
    edi_write_options w;
    edi_write_options_init(&w);
    w.configs = configs.data();
    w.nconfigs = configs.size();
    w.message = opt.message.empty() ? nullptr : opt.message.c_str();
    w.sender = opt.sender.c_str();
    w.recipient = opt.recipient.c_str();
    w.reference = opt.reference.empty() ? nullptr : opt.reference.c_str();
    w.test = opt.test;
    w.syntax = opt.syntax.empty() ? nullptr : opt.syntax.c_str();
    w.application_ref = opt.applicationref.empty() ? nullptr : opt.applicationref.c_str();
    w.ack_request = opt.ackrequest;
    w.group = opt.group.empty() ? nullptr : opt.group.c_str();
    w.exact = opt.exact;
    w.name = name.c_str();
    w.output = opt.output.c_str();
    w.trace = opt.trace;
    w.keep_going = opt.keepgoing;
    const char *vdaconfig = opt.config.empty() ? nullptr : opt.config.c_str();
    edi_result *res = vda ? edi_vda_write(tree, vdaconfig, &w) : edi_write(tree, &w);
    freeatexit(tree);
    printfindings(res, opt.verbose, stderr);
    Exit status = statusof(res);
    if (status == exit_ok && edi_result_save(res, opt.output.empty() ? "-" : opt.output.c_str()) != 0) {
        // The failure to save is the last finding.
        size_t n = edi_result_finding_count(res);
        printfinding(edi_result_finding(res, n - 1), opt.verbose, stderr);
        status = exit_failed;
    }
    edi_result_free(res);
    return status;
}

}  // namespace edi
