// The edi command's write conversions against the module call alone:
// a generated ORDERS tree of n line items (`edi write`) and a VDA tree of
// n records (`edi vda-write`), each given to the command as tree text and
// as JSON.  Prints the module's time, the command's (a whole run: start,
// reading configuration and tree, the write, its own corrections) and the
// ratio of the two.  Each time is the least of five runs (the module's
// of three), since a shared machine adds its own delays to single runs.
//
// Usage: bench_edi_convert [records ...]   (default 10000 100000)
// With EDIPROT_BENCH_KEEP set, the configurations and the trees of the
// last size stay in the folder named at the end, to run edi by hand.
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "edihost.h"
#include "trees/jsontree.h"
#include "orderstree.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point t0)
{
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

// vda / *A (n instances) / $S512 (type 3, version 2, text 123).
datatree_t *vdatree(int n, bool config)
{
    using orderstree::add;
    using orderstree::mk;
    datatree_t *root = mk("vda");
    datatree_t *last = nullptr;
    for (int i = 1; i <= (config ? 1 : n); i++) {
        datatree_t *loop = add(root, &last, mk("*A"));
        loop->loopcnt = config ? 0 : i;
        datatree_t *llast = nullptr, *rec = add(loop, &llast, mk("$S512")), *rlast = nullptr;
        char text[16];
        snprintf(text, sizeof text, "%d", i);
        const char *names[] = {"type", "version", "text"}, *values[] = {"512", "01", text};
        const int widths[] = {3, 2, 123};
        for (int k = 0; k < 3; k++)
            add(rec, &rlast, mk(names[k], config ? nullptr : values[k]))->edilen = config ? widths[k] : 0;
    }
    setparents(root, 0);
    return root;
}

bool save(const std::string &fn, const datatree_t *tree, bool json)
{
    FILE *fp = fopen(fn.c_str(), "w");
    if (fp == nullptr)
        return false;
    if (json)
        fputs(edi::treetojson(tree, nullptr).c_str(), fp);
    else
        edihost_writetree(fp, tree);
    return fclose(fp) == 0;
}

double runedi(const std::string &args)
{
    std::string cmd = std::string(EDI_PROGRAM) + " " + args + " >/dev/null 2>&1";
    double best = 0;
    for (int run = 0; run < 5; run++) {
        auto t0 = Clock::now();
        int rc = system(cmd.c_str());
        double t = seconds(t0);
        if (rc != 0)
            printf("  (edi exited with %d: %s)\n", rc, cmd.c_str());
        best = run == 0 || t < best ? t : best;
    }
    return best;
}

}  // namespace

int main(int argc, char **argv)
{
    std::vector<int> sizes;
    for (int i = 1; i < argc; i++)
        sizes.push_back(atoi(argv[i]));
    if (sizes.empty())
        sizes = {10000, 100000};
    char tmpl[] = "/tmp/bench-edi-XXXXXX";
    if (mkdtemp(tmpl) == nullptr) {
        perror("mkdtemp");
        return 1;
    }
    const std::string dir = tmpl;
    const std::string out = dir + "/out";
    // The VDA writer's "dnode" line per record goes to stderr.
    if (freopen("/dev/null", "w", stderr) == nullptr)
        return 1;
    char sender[] = "SENDER", recipient[] = "RECIPIENT";

    for (bool vda : {false, true}) {
        datatree_t *cf = vda ? vdatree(1, true) : orderstree::makeconfig();
        const std::string cfn = dir + (vda ? "/vda-config.tree" : "/edifact-config.tree");
        save(cfn, cf, false);
        for (int n : sizes) {
            datatree_t *data = vda ? vdatree(n, false) : orderstree::makedata(n);
            double tmod = 0;
            for (int run = 0; run < 3; run++) {
                auto t0 = Clock::now();
                (vda ? vdawrite : edifactwrite)(data, const_cast<char *>(out.c_str()), nullptr,
                                                nullptr, cf, sender, recipient, 0);
                double t = seconds(t0);
                tmod = run == 0 || t < tmod ? t : tmod;
            }
            struct stat st;
            long size = stat(out.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
            printf("%s %6d: module %.3f s (%ld bytes)", vda ? "vda-write" : "write    ", n, tmod, size);
            for (bool json : {false, true}) {
                const std::string in = dir + (vda ? "/vda" : "/edifact") + (json ? ".json" : ".tree");
                save(in, data, json);
                double tedi = runedi((vda ? "vda-write " : "write ") + in + " --config " + cfn +
                                     (vda ? "" : " --sender S --recipient R") + " -o " + out);
                printf(", %s %.3f s (x%.1f)", json ? "json" : "tree", tedi, tedi / tmod);
                if (getenv("EDIPROT_BENCH_KEEP") == nullptr)
                    unlink(in.c_str());
            }
            printf("\n");
            fflush(stdout);
            freedatatree(data);
        }
        freedatatree(cf);
    }
    if (getenv("EDIPROT_BENCH_KEEP") != nullptr) {
        // The files of the last size stay, to run the command by hand.
        fprintf(stdout, "files kept in %s\n", dir.c_str());
        return 0;
    }
    unlink(out.c_str());
    unlink((dir + "/vda-config.tree").c_str());
    unlink((dir + "/edifact-config.tree").c_str());
    rmdir(dir.c_str());
    return 0;
}
