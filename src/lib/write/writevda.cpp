// Writing a VDA record file: the module writes it, counting the records
// for its trailer; the library names what it said by the tree and the
// output the caller gives.
#include <errno.h>
#include <string.h>

#include <mutex>
#include <string>
#include <vector>

#include "edihost.h"
#include "files/output.h"
#include "findings/report.h"
#include "module/capture.h"
#include "write/writeedifact.h"

namespace edi {

namespace {

// The module writes the trailer of a VDA file itself, counting the records
// it wrote; a trailer record read from the file stands under the root and
// would be written as one more record before it.  So it is left out.
void droptrailers(datatree_t *tree)
{
    for (datatree_t *root = tree; root != nullptr; root = root->next) {
        datatree_t **tpp = &root->child;
        while (*tpp != nullptr) {
            datatree_t *tp = *tpp;
            if (tp->xmltag != nullptr && strcmp(tp->xmltag, "$S519") == 0) {
                *tpp = tp->next;
                tp->next = nullptr;
                freedatatree(tp);
            } else {
                tpp = &tp->next;
            }
        }
    }
}

std::vector<char> writable(const std::string &s)
{
    return std::vector<char>(s.c_str(), s.c_str() + s.size() + 1);
}

}  // namespace

// Of what the module says, the "dnode" line it writes for every record is
// a detail (a file of 100,000 records brings 100,000 of them); a sentence
// follows a missing mandatory element (the records are written all the
// same) or a failure.
WriteStatus writevda(const Module &mod, const Settings &opt, datatree_t *tree,
                     datatree_t *config, std::string &result, Report &rep)
{
    droptrailers(tree);
    Scratch scratch("records.txt");
    if (scratch.folder.empty()) {
        rep.fail("", std::string("edi: temporary folder: ") + strerror(errno));
        return write_failed;
    }
    const std::string &written = scratch.file;
    std::vector<char> out = writable(written);
    std::vector<char> sender = writable(opt.sender);
    std::vector<char> recipient = writable(opt.recipient);
    int rc;
    std::vector<std::string> lines;
    {
        std::lock_guard<std::recursive_mutex> hold(modulelock());
        int saved = tracelevel;
        if (opt.trace >= 0)
            tracelevel = static_cast<int>(static_cast<unsigned>(opt.trace) << 28);
        StderrCapture cap(opt.trace < 0);
        rc = mod.vdawrite(tree, out.data(), nullptr, nullptr, config, sender.data(),
                          recipient.data(), opt.test);
        lines = cap.lines();
        tracelevel = saved;
    }
    size_t missing = 0;
    const std::string &name = opt.name;
    for (std::string &line : lines) {
        for (size_t at = line.find(written); at != std::string::npos;
             at = line.find(written, at + opt.output.size()))
            line.replace(at, written.size(), opt.output);
        if (line.find("mandatory element") != std::string::npos)
            missing++;
        Finding &f = rep.add(EDI_FINDING_MODULE, EDI_SEVERITY_ERROR, name, line);
        if (line.compare(0, 7, "dnode: ") == 0) {
            f.severity = EDI_SEVERITY_INFO;
            f.verbose = Finding::detail;
        }
    }
    if (rc != 0) {
        rep.fail(name, "the record file could not be written (see the lines above); nothing "
                       "was kept.");
        return write_failed;
    }
    if (missing > 0)
        rep.add(EDI_FINDING_CHANGED, EDI_SEVERITY_WARNING, name,
                std::to_string(missing) + " mandatory element" +
                    (missing == 1 ? " is" : "s are") +
                    " missing; the VDA writer writes every record all the same, with the "
                    "default or blanks in place of " + (missing == 1 ? "it" : "each") +
                    "; fill " + (missing == 1 ? "it" : "them") +
                    " in the tree or give " + (missing == 1 ? "it" : "them") +
                    " a default in the configuration.");
    return readwhole(written, result, rep) ? write_ok : write_failed;
}

}  // namespace edi
