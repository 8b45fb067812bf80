#include "findings/reportjson.h"

#include <nlohmann/json.hpp>

#include "findings/report.h"

namespace edi {

namespace {

using json = nlohmann::ordered_json;

// Bytes as the characters of the same number, so that any value is valid
// UTF-8 in the document.
std::string utf8(const std::string &bytes)
{
    std::string out;
    for (unsigned char c : bytes) {
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

const char *kindname(edi_finding_kind k)
{
    switch (k) {
    case EDI_FINDING_FAILURE:
        return "failure";
    case EDI_FINDING_MODULE:
        return "module";
    case EDI_FINDING_LEFT_OUT:
        return "left-out";
    case EDI_FINDING_CHANGED:
        return "changed";
    case EDI_FINDING_VALIDATION:
        return "validation";
    case EDI_FINDING_NOTE:
        return "note";
    }
    return "note";
}

json orNull(const std::string &s)
{
    return s.empty() ? json(nullptr) : json(utf8(s));
}

template <typename N>
json orNull(N n)
{
    return n == 0 ? json(nullptr) : json(n);
}

}  // namespace

std::string reportjson(const std::string &file, const std::string &status, const Report &rep)
{
    json doc;
    doc["format"] = "ediprot-findings";
    doc["version"] = 1;
    doc["file"] = utf8(file);
    doc["status"] = status;
    json list = json::array();
    for (const Finding &f : rep.items()) {
        json j;
        j["kind"] = kindname(f.kind);
        j["severity"] = f.severity == EDI_SEVERITY_ERROR     ? "error"
                        : f.severity == EDI_SEVERITY_WARNING ? "warning"
                                                             : "info";
        j["code"] = orNull(f.code);
        j["interchange_ref"] = orNull(f.interchangeref);
        j["message"] = orNull(f.message);
        j["message_ref"] = orNull(f.messageref);
        j["segment"] = orNull(f.segment);
        j["file_segment"] = orNull(f.filesegment);
        j["offset"] = f.filesegment == 0 ? json(nullptr) : json(f.offset);
        j["tag"] = orNull(f.tag);
        j["element"] = orNull(f.elementpos);
        j["component"] = orNull(f.componentpos);
        j["repetition"] = orNull(f.repetition);
        j["data_element"] = orNull(f.dataelement.empty() ? f.element : f.dataelement);
        j["value"] = orNull(f.value);
        j["text"] = utf8(f.text);
        list.push_back(std::move(j));
    }
    doc["findings"] = std::move(list);
    return doc.dump() + "\n";
}

}  // namespace edi
