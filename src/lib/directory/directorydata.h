// The parsed directory data behind edi::dirs::Directory, shared by the
// generator and the validator of the host layer.
#pragma once
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace edi::dirs {

struct DirectoryData {
    nlohmann::ordered_json j;
    nlohmann::json codes;      // DxxX.codes.json, read when first needed
    bool codesread = false;
    std::map<std::string, std::vector<std::string>> codelists;  // sorted, by element
    std::string name;          // D96A
    std::string path;          // .../D96A.json
};

}  // namespace edi::dirs
