// Where a command's result goes: stdout, a file, or a file in a folder.
#ifndef EDI_OUTPUT_H
#define EDI_OUTPUT_H

#include <string>
#include <string_view>

namespace edi {

// Writes `text` to `path` whole or not at all: it goes to a temporary file
// beside `path` that is renamed over it once written and closed.  "" or
// "-" means stdout.  On failure writes "edi: PATH: reason" and returns false.
bool writewhole(const std::string &path, const std::string &text);

// The output name for `input` when OUT is a folder: OUT/<base name>.<ext>.
std::string infolder(const std::string &folder, const std::string &input,
                     const std::string &ext);

bool isfolder(const std::string &path);

// The whole content of a file; on failure "PATH: cannot be read: reason"
// and false.
bool readwhole(const std::string &path, std::string &text);

// The content of an input file, mapped into memory where it is a regular
// file (a tree of tens of MB is then neither copied nor grown), else read
// whole.  `ok` is false after "PATH: cannot be read: reason".
class InputText {
public:
    explicit InputText(const std::string &path);
    ~InputText();
    InputText(const InputText &) = delete;
    InputText &operator=(const InputText &) = delete;

    bool ok = false;
    std::string_view text;

private:
    void *map_ = nullptr;
    size_t mapped_ = 0;
    std::string read_;
};

// A private folder under $TMPDIR (or /tmp) for a file the module writes
// before the command passes it on; removed with that file.  `folder` is
// empty when it could not be made.
struct Scratch {
    std::string folder, file;
    explicit Scratch(const char *name);
    ~Scratch();
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
};

}  // namespace edi

#endif
