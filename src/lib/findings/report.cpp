#include "findings/report.h"

#include <algorithm>

namespace edi {

Finding &Report::add(edi_finding_kind kind, edi_severity severity, const std::string &file,
                     const std::string &text)
{
    Finding f;
    f.kind = kind;
    f.severity = severity;
    f.file = file;
    f.text = text;
    items_.push_back(std::move(f));
    return items_.back();
}

void Report::module(const std::string &file, const std::vector<std::string> &lines)
{
    std::string pending;
    auto open = [](const std::string &l) {
        return std::count(l.begin(), l.end(), '<') > std::count(l.begin(), l.end(), '>');
    };
    for (size_t i = 0; i < lines.size(); i++) {
        pending += lines[i];
        if (open(pending) && i + 1 < lines.size()) {
            pending += "\\x0A";
            continue;
        }
        if (!pending.empty())
            add(EDI_FINDING_MODULE, EDI_SEVERITY_ERROR, file, pending);
        pending.clear();
    }
}

bool Report::failed() const
{
    for (const Finding &f : items_)
        if (f.kind == EDI_FINDING_FAILURE)
            return true;
    return false;
}

void Report::append(const Report &other)
{
    items_.insert(items_.end(), other.items_.begin(), other.items_.end());
}

const edi_finding *Report::view(size_t i) const
{
    if (i >= items_.size())
        return nullptr;
    while (views_.size() <= i) {
        const Finding &f = items_[views_.size()];
        {
            edi_finding v{};
            v.kind = f.kind;
            v.severity = f.severity;
            v.file = f.file.c_str();
            v.message = f.message;
            v.segment = f.segment;
            v.tag = f.tag.c_str();
            v.element = f.element.c_str();
            v.text = f.text.c_str();
            v.verbose = f.verbose;
            v.interchange_ref = f.interchangeref.c_str();
            v.message_ref = f.messageref.c_str();
            v.file_segment = f.filesegment;
            v.offset = f.offset;
            v.element_pos = f.elementpos;
            v.component_pos = f.componentpos;
            v.repetition = f.repetition;
            v.data_element = f.dataelement.c_str();
            v.value = f.value.c_str();
            v.code = f.code;
            views_.push_back(v);
        }
    }
    return &views_[i];
}

}  // namespace edi
