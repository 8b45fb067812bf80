#include "vda/validate.h"

#include <stdlib.h>
#include <string.h>

#include <map>
#include <vector>

#include "edihost.h"
#include "findings/report.h"
#include "text/segments.h"
#include "vda/layout.h"
#include "vda/lines.h"
#include "vda/place.h"

namespace edi {

namespace {

bool digits(const std::string &v)
{
    return !v.empty() && v.find_first_not_of("0123456789") == std::string::npos;
}

std::string trimmed(const std::string &v)
{
    size_t a = v.find_first_not_of(' ');
    if (a == std::string::npos)
        return "";
    return v.substr(a, v.find_last_not_of(' ') - a + 1);
}

// YYMMDD; zeros and a digit repeated six times (222222, 999999) are the
// call-offs' special values and pass.
bool isdate(const std::string &v)
{
    if (v.find_first_not_of(v[0]) == std::string::npos)
        return true;
    int mm = atoi(v.substr(2, 2).c_str()), dd = atoi(v.substr(4, 2).c_str());
    return mm >= 1 && mm <= 12 && dd >= 1 && dd <= 31;
}

bool istime(const std::string &v)
{
    return atoi(v.substr(0, 2).c_str()) <= 23 && atoi(v.substr(2, 2).c_str()) <= 59;
}

struct Checker {
    const std::string &input;
    Report &rep;
    int found = 0;

    std::vector<size_t> offsets;  // of each working line in the file

    void add(size_t line, const std::string &type, const std::string &field,
             const std::string &what, int code, const std::string &value = "")
    {
        std::string where = "line " + std::to_string(line) + " (" + printable(type) + ")";
        if (!field.empty())
            where += ", field " + field;
        Finding &f = rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, input, where + ": " + what);
        f.segment = line;
        f.filesegment = line;
        f.offset = line >= 1 && line <= offsets.size() ? offsets[line - 1] : 0;
        f.tag = type;
        f.element = field;
        f.dataelement = field;
        f.value = value;
        f.code = code;
        found++;
    }

    // The fields of one record, cut by the configuration's widths.
    void fields(size_t lineno, const std::string &line, const datatree_t *record)
    {
        const std::string type = line.substr(0, 3);
        size_t at = 0;
        for (const datatree_t *f = record->child; f != nullptr; f = f->next) {
            size_t width = f->edilen > 0 ? static_cast<size_t>(f->edilen) : 0;
            std::string value = at < line.size() ? line.substr(at, width) : "";
            at += width;
            std::string name = f->xmltag != nullptr ? f->xmltag : "";
            std::string v = trimmed(value);
            if (f->ediforce == ef_mand && v.empty()) {
                add(lineno, type, name, "mandatory, but blank", 13);
                continue;
            }
            if (v.empty())
                continue;
            if (f->edialign == el_right && !digits(v)) {
                add(lineno, type, name, "'" + printable(value) + "' is not a number", 37, value);
                continue;
            }
            if (name.find("date") != std::string::npos && width == 6 && digits(value) &&
                !isdate(value))
                add(lineno, type, name, "'" + value + "' is no date (YYMMDD)", 12, value);
            if (name.find("time") != std::string::npos && width == 4 && digits(value) &&
                !istime(value))
                add(lineno, type, name, "'" + value + "' is no time (HHMM)", 12, value);
        }
    }
};

}  // namespace

int validatevda(const std::string &input, const std::string &bytes, const datatree_t *config,
                Report &rep)
{
    Checker c{input, rep, 0, {}};
    std::map<std::string, const datatree_t *> records = recordnodes(config);
    const VdaFamily *family = familyoftree(config);
    std::vector<std::string> changes;
    std::vector<std::string> lines = workinglines(bytes, false, changes);
    size_t at = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    for (const std::string &l : lines) {
        c.offsets.push_back(at);
        at += l.size();
    }

    // The order is checked by placing empty records as a read places them.
    datatree_t root{};
    char rootname[] = "vda";
    root.xmltag = rootname;
    RecordPlacer placer(config, &root);
    std::map<std::string, size_t> counts;
    bool open = false;  // a transmission without its trailer so far
    size_t lastline = 0;
    for (size_t i = 0; i < lines.size(); i++) {
        const size_t lineno = i + 1;
        std::string line = content(lines[i]);
        if (blankline(line))
            continue;
        lastline = lineno;
        std::string type = line.substr(0, 3);
        if (line.size() != kRecordWidth)
            c.add(lineno, type, "",
                  std::to_string(line.size()) + " characters; a record has 128",
                  line.size() > kRecordWidth ? 16 : 13);
        auto it = records.find("$S" + type);
        if (it == records.end()) {
            c.add(lineno, type, "", "record type not in the layout", 15);
            continue;
        }
        c.fields(lineno, line, it->second);
        if (family != nullptr && type == family->header) {
            if (open)
                c.add(lineno, type, "",
                      "a new transmission begins, but the one before has no trailer " +
                          std::string(family->trailer),
                      13);
            counts.clear();
            open = true;
        }
        counts[type]++;
        datatree_t *node = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
        if (node == nullptr)
            edihost_outofmemory();
        std::vector<const datatree_t *> opened;
        if (!placer.place(node, it->second, &opened)) {
            free(node);
            c.add(lineno, type, "",
                  "out of order: the layout has no place for it behind the records before it",
                  15);
            continue;
        }
        // A group begins with its first record (512 for a call-off, 713 for
        // a delivery note); a group begun by a later one lacks it.
        for (const datatree_t *loop : opened) {
            const datatree_t *first = loop->child;
            while (first != nullptr && !isrecordnode(first) && first->child != nullptr)
                first = first->child;
            if (first != nullptr && first != it->second && isrecordnode(first))
                c.add(lineno, type, "",
                      "begins a group " + std::string(loop->xmltag + 1) + " without its record " +
                          (first->xmltag + 2),
                      13);
        }
        if (family != nullptr && type == family->trailer) {
            open = false;
            for (size_t k = 0; k < family->counted.size(); k++) {
                size_t at = 5 + 7 * k;
                std::string said = at + 7 <= line.size() ? line.substr(at, 7) : "";
                size_t have = counts.count(family->counted[k]) ? counts[family->counted[k]] : 0;
                if (!digits(said) || strtoul(said.c_str(), nullptr, 10) != have)
                    c.add(lineno, type, "count" + family->counted[k],
                          "'" + printable(said) + "', but the transmission holds " +
                              std::to_string(have) + " records " + family->counted[k],
                          29, said);
            }
        }
    }
    if (open && family != nullptr)
        c.add(lastline, family->header, "",
              "the last transmission has no trailer " + std::string(family->trailer), 13);
    if (lastline == 0) {
        rep.add(EDI_FINDING_VALIDATION, EDI_SEVERITY_ERROR, input, "no VDA record");
        c.found++;
    }
    // The scratch placement's nodes: records from calloc, loop nodes with
    // their names; the root is on the stack.
    for (datatree_t *tp = root.child; tp != nullptr;) {
        datatree_t *next = tp->next;
        tp->next = nullptr;
        freedatatree(tp);
        tp = next;
    }
    return c.found;
}

}  // namespace edi
