// Generates configuration trees (tree text) for any UN/EDIFACT message from
// a directory's data file (data/directories/DxxX.json).
#pragma once
#include <string>
#include <utility>
#include <vector>

namespace edi::dirs {

// Reads DIR/<directory>.json; false and a message in err when it cannot.
struct DirectoryData;
struct Directory {
    Directory();
    ~Directory();
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;
    bool load(const std::string &dir, const std::string &directory, std::string &err);
    // Message types with their names, in the data's order.
    std::vector<std::pair<std::string, std::string>> messages() const;
    // The inbound or outbound configuration tree of one message; false and a
    // message in err for a message the directory does not have.
    bool config(const std::string &message, bool outbound, std::string &out,
                std::string &err) const;
    DirectoryData *data;
};

// Directory versions present in DIR, in order of publication (D93A ... D10B).
std::vector<std::string> directories(const std::string &dir);

// The directories of DIR that have `message`, in order of publication.
std::vector<std::string> directorieswith(const std::string &dir, const std::string &message);

// Of `have` (in order of publication), the one nearest to `wanted`: the same
// or the next later one, else the latest; empty when `have` is empty.
std::string nearest(const std::vector<std::string> &have, const std::string &wanted);

}  // namespace edi::dirs
