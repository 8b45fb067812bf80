// What an operation of the library found: every sentence the edi command
// prints, kept as a record with its place, in the order it arose.  The
// library never prints; a front end prints the records it wants to show.
#ifndef EDI_REPORT_H
#define EDI_REPORT_H

#include <stddef.h>

#include <deque>
#include <string>
#include <vector>

#include "edi.h"

namespace edi {

struct Finding {
    edi_finding_kind kind = EDI_FINDING_FAILURE;
    edi_severity severity = EDI_SEVERITY_ERROR;
    std::string file;     // the input or output it is about; "" for none
    int message = 0;      // message number in the file, from 1; 0: none
    size_t segment = 0;   // segment position in its message, UNH is 1; 0: none
    std::string tag;      // segment tag or record type; "" for none
    std::string element;  // element name or path; "" for none
    std::string text;     // the sentence, as printed behind "FILE: "
    // 0: always shown; detail: shown on request only; summary: stands for
    // details and is shown only when they are not.
    int verbose = 0;
    static constexpr int detail = 1, summary = 2;
    // The exact place and the syntax error code (0085), where known.
    std::string interchangeref, messageref;
    size_t filesegment = 0, offset = 0;
    int elementpos = 0, componentpos = 0, repetition = 0;
    std::string dataelement, value;
    int code = 0;
};

class Report {
public:
    // Appends a finding and returns it, for the caller to add its place.
    Finding &add(edi_finding_kind kind, edi_severity severity, const std::string &file,
                 const std::string &text);
    // A failure: why the operation did not give its result.
    Finding &fail(const std::string &file, const std::string &text)
    {
        return add(EDI_FINDING_FAILURE, EDI_SEVERITY_ERROR, file, text);
    }
    // The sum of what a read left out of its tree: a warning the read goes
    // on after with keep-going, else the failure that stops it.
    Finding &leftout(const std::string &file, const std::string &text, bool keepgoing)
    {
        return keepgoing ? add(EDI_FINDING_LEFT_OUT, EDI_SEVERITY_WARNING, file, text)
                         : fail(file, text);
    }
    // What the working copy changed: shown on request only.
    Finding &change(const std::string &file, const std::string &text)
    {
        Finding &f = add(EDI_FINDING_CHANGED, EDI_SEVERITY_INFO, file, text);
        f.verbose = Finding::detail;
        return f;
    }
    // The module's own lines, each a finding as the module wrote it; a
    // line end that stands inside a value the module quotes (<...>) joins
    // its pieces again, shown as \x0A, and empty lines carry nothing.
    void module(const std::string &file, const std::vector<std::string> &lines);

    bool failed() const;
    // In the order they arose; a finding stays where it is as more come.
    const std::deque<Finding> &items() const { return items_; }
    void append(const Report &other);

    // The C view of finding i, valid as long as the report: findings and
    // views are never moved, so what a caller holds stays good while more
    // findings are added.  A finding is complete before its view is made.
    const edi_finding *view(size_t i) const;

private:
    std::deque<Finding> items_;
    mutable std::deque<edi_finding> views_;
};

}  // namespace edi

#endif
