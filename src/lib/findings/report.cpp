#include "findings/report.h"

namespace edi {

Finding &Report::add(edi_finding_kind kind, edi_severity severity, const std::string &file,
                     const std::string &text)
{
    views_.clear();
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
    for (const std::string &l : lines)
        add(EDI_FINDING_MODULE, EDI_SEVERITY_ERROR, file, l);
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
    views_.clear();
    items_.insert(items_.end(), other.items_.begin(), other.items_.end());
}

const edi_finding *Report::view(size_t i) const
{
    if (i >= items_.size())
        return nullptr;
    if (views_.size() != items_.size()) {
        views_.clear();
        views_.reserve(items_.size());
        for (const Finding &f : items_) {
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
