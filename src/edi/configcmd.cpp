// edi config: the generator of the host layer behind a command, so that a
// user never writes a configuration tree by hand for a standard message.
#include "configcmd.h"

#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "autoconfig.h"
#include "configgen.h"

namespace edi {
namespace {

const char usage_text[] =
    "usage: edi config MESSAGE DIRECTORY [--out] [-o FILE]\n"
    "       edi config --list [DIRECTORY]\n";

}  // namespace

int configcommand(int argc, char **argv)
{
    std::vector<std::string> words;
    bool out = false, list = false;
    std::string output;
    for (int i = 2; i < argc; i++) {
        std::string a = argv[i];
        if (a == "--out")
            out = true;
        else if (a == "--list")
            list = true;
        else if (a == "-o" && i + 1 < argc)
            output = argv[++i];
        else if (a == "-h" || a == "--help") {
            fputs(usage_text, stdout);
            return 0;
        } else if (!a.empty() && a[0] == '-') {
            fprintf(stderr, "edi: unknown option '%s'\n%s", a.c_str(), usage_text);
            return 2;
        } else
            words.push_back(a);
    }
    std::string dir = directoriesdir();
    if (list && words.empty()) {
        auto all = edihost::directories(dir);
        if (all.empty()) {
            fprintf(stderr, "edi: no directories found in %s\n", dir.c_str());
            return 1;
        }
        for (auto &d : all)
            printf("%s\n", d.c_str());
        return 0;
    }
    if (list ? words.size() != 1 : words.size() != 2) {
        fputs(usage_text, stderr);
        return 2;
    }
    std::string directory = list ? words[0] : words[1];
    edihost::Directory d;
    std::string err;
    if (!d.load(dir, directory, err) && !list) {
        fprintf(stderr, "edi: %s\n", missingmessage(words[0], directory, false).c_str());
        return 1;
    }
    if (d.data == nullptr) {
        auto all = edihost::directories(dir);
        std::string have = all.empty() ? "none in " + dir : all.front() + " ... " + all.back();
        fprintf(stderr, "edi: %s (directories: %s; edi config --list)\n", err.c_str(), have.c_str());
        return 1;
    }
    if (list) {
        for (auto &[type, name] : d.messages())
            printf("%-7s %s\n", type.c_str(), name.c_str());
        return 0;
    }
    std::string text;
    if (!d.config(words[0], out, text, err)) {
        fprintf(stderr, "edi: %s\n", missingmessage(words[0], directory, true).c_str());
        return 1;
    }
    FILE *f = output.empty() ? stdout : fopen(output.c_str(), "wb");
    if (!f) {
        fprintf(stderr, "edi: cannot write %s\n", output.c_str());
        return 1;
    }
    bool ok = fwrite(text.data(), 1, text.size(), f) == text.size();
    if (f != stdout)
        ok = fclose(f) == 0 && ok;
    if (!ok) {
        fprintf(stderr, "edi: cannot write %s\n", output.empty() ? "output" : output.c_str());
        return 1;
    }
    return 0;
}

}  // namespace edi
