// edi config: the library's configuration generator behind a command, so that a
// user never writes a configuration tree by hand for a standard message.
#include "configcmd.h"

#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include "commands.h"
#include "edi.h"

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
    if (list ? words.size() > 1 : words.size() != 2) {
        fputs(usage_text, stderr);
        return 2;
    }
    edi_result *res = list ? edi_config_list(words.empty() ? nullptr : words[0].c_str())
                           : edi_config(words[0].c_str(), words[1].c_str(), out);
    printfindings(res, false, stderr);
    int status = edi_result_status(res);
    if (status != 0) {
        edi_result_free(res);
        return 1;
    }
    if (list) {
        for (size_t i = 0; i < edi_result_count(res); i++) {
            std::string item = edi_result_item(res, i);
            size_t tab = item.find('\t');
            if (tab == std::string::npos)
                printf("%s\n", item.c_str());
            else
                printf("%-7s %s\n", item.substr(0, tab).c_str(), item.c_str() + tab + 1);
        }
        edi_result_free(res);
        return 0;
    }
    size_t len = 0;
    const char *t = edi_result_text(res, &len);
    std::string text(t != nullptr ? t : "", len);
    edi_result_free(res);
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
