// The findings of one input as a JSON document (docs/validation.md): every
// field of every finding under a stable name, texts as UTF-8 (bytes above
// 127 of a value as the characters of the same number).
#ifndef EDI_REPORTJSON_H
#define EDI_REPORTJSON_H

#include <string>

namespace edi {

class Report;

// {"format": "ediprot-findings", "version": 1, "file": ..., "status": ...,
//  "findings": [...]} on one line; `status` is "ok", "findings" or
// "failed".
std::string reportjson(const std::string &file, const std::string &status, const Report &rep);

}  // namespace edi

#endif
