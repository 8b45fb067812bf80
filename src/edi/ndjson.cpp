#include "ndjson.h"

#include <stdio.h>
#include <string.h>

#include <vector>

#include "commands.h"
#include "edi.h"

namespace edi {

Exit readndjson(const Options &opt, const std::string &input, const std::string &out)
{
    std::vector<const char *> configs;
    for (const std::string &c : opt.configs)
        configs.push_back(c.c_str());
    edi_options o = readoptions(opt, configs);
    const bool streaming = out.empty() || out == "-";
    const int form = (opt.full ? EDI_FORM_FULL : EDI_FORM_COMPACT) | EDI_FORM_ONE_LINE;
    edi_reader *r = edi_open_path(input.c_str(), &o);
    if (r == nullptr) {
        fprintf(stderr, "edi: %s: out of memory\n", input.c_str());
        return exit_failed;
    }
    // A file takes its place only when whole; lines go to it as they come.
    edi_output *file = streaming ? nullptr : edi_output_open(out.c_str());
    size_t shown = 0;
    auto findings = [&] {
        for (; shown < edi_reader_finding_count(r); shown++)
            printfinding(edi_reader_finding(r, shown), opt.verbose, stderr);
    };
    edi_message *m = nullptr;
    int rc;
    while ((rc = edi_next(r, &m)) == 1) {
        char *line = edi_message_json(m, form);
        if (line != nullptr && streaming) {
            fputs(line, stdout);
            fflush(stdout);
        } else if (line != nullptr) {
            edi_output_write(file, line, strlen(line));
        }
        edi_free(line);
        edi_message_free(m);
        findings();
    }
    findings();
    edi_close(r);
    Exit status = rc < 0 ? exit_failed : exit_ok;
    if (!streaming) {
        edi_result *saved = edi_output_close(file, status == exit_ok);
        printfindings(saved, opt.verbose, stderr);
        if (edi_result_status(saved) != 0)
            status = exit_failed;
        edi_result_free(saved);
    }
    return status;
}

}  // namespace edi
