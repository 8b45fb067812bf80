// Times the generator: loading a directory's data, generating one message's
// configuration (inbound and outbound) and parsing it into a tree, over
// every message of a few directories.
//
// Usage: bench_configgen [DIRECTORY ...]   (default D96A D01B D10B)
#include <stdio.h>

#include <chrono>
#include <string>
#include <vector>

#include "directory/configgen.h"
#include "edihost.h"

namespace {

using clk = std::chrono::steady_clock;

double ms(clk::time_point a, clk::time_point b)
{
    return std::chrono::duration<double, std::milli>(b - a).count();
}

}  // namespace

int main(int argc, char **argv)
{
    std::string dir = std::string(EDIPROT_CONFIGS) + "/../data/directories";
    std::vector<std::string> names(argv + 1, argv + argc);
    if (names.empty())
        names = {"D96A", "D01B", "D10B"};
    for (const std::string &name : names) {
        edi::dirs::Directory d;
        std::string err, text;
        auto t0 = clk::now();
        if (!d.load(dir, name, err)) {
            fprintf(stderr, "%s\n", err.c_str());
            return 1;
        }
        auto t1 = clk::now();
        size_t n = 0, bytes = 0;
        double gen = 0, parse = 0;
        for (auto &[type, title] : d.messages()) {
            for (bool out : {false, true}) {
                auto a = clk::now();
                d.config(type, out, text, err);
                auto b = clk::now();
                datatree_t *t = edihost_parsetree(text.data(), text.size(), type.c_str());
                auto c = clk::now();
                if (t != nullptr)
                    freedatatree(t);
                gen += ms(a, b);
                parse += ms(b, c);
                bytes += text.size();
                n++;
            }
        }
        printf("%s: load %.1f ms; %zu configurations, %.3f ms each to generate, %.3f ms each "
               "to parse (%.0f KB each)\n",
               name.c_str(), ms(t0, t1), n, gen / double(n), parse / double(n),
               double(bytes) / double(n) / 1024.0);
    }
    return 0;
}
