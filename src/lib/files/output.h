// Where a command's result goes: stdout, a file, or a file in a folder.
#ifndef EDI_OUTPUT_H
#define EDI_OUTPUT_H

#include <string>
#include <string_view>

namespace edi {

class Report;

// Writes `text` to `path` whole or not at all: it goes to a temporary file
// beside `path` that is renamed over it once written and closed.  "" or
// "-" means stdout.  On failure reports "edi: PATH: reason" and returns false.
bool writewhole(const std::string &path, const std::string &text, Report &rep);

// The whole content of a file; on failure "PATH: cannot be read: reason"
// is reported and the result is false.
bool readwhole(const std::string &path, std::string &text, Report &rep);

// The content of an input file, mapped into memory where it is a regular
// file (a tree of tens of MB is then neither copied nor grown), else read
// whole.  `ok` is false after "PATH: cannot be read: reason".
class InputText {
public:
    InputText(const std::string &path, Report &rep);
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

// A file that a writer (the module) fills by name and that takes the place
// of `path` only once it is whole.  For a plain file it is a temporary
// file beside `path`, renamed into place by keep(), so that a large output
// is not copied once more; for stdout ("" or "-"), a device or a pipe it is
// a scratch file whose content keep() passes on.  Not kept, it is removed.
class OutputFile {
public:
    OutputFile(const std::string &path, Report &rep);
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    // Where the writer writes; empty, after "edi: PATH: reason" is reported, when no
    // file could be made.
    const std::string &name() const { return name_; }
    // Puts the file in place; false after "edi: PATH: reason" is reported.
    bool keep();

private:
    std::string path_, name_;
    Report &rep_;
    bool beside_ = false;  // a temporary file beside path_, else a scratch file
    std::string folder_;   // the scratch file's folder
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
