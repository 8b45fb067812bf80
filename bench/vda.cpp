// Reads and writes generated VDA files of 1,000 and 10,000 records and
// reports the times, so that the growth with the number of records shows.
//
//   read   511 and then 512 and 513 in turn under two loop tags of one
//          depth: every record is linked, each as a new loop node of the
//          root, and each insertion walks the root's growing chain.
//   write  the tree just read, with the same configuration (the writer
//          counts each loop tag from 1, so it writes only the first ones).
//   write  a generated tree of one loop numbered 1 .. n with a 512 record
//          each: every record and every field is looked up from the root.
//
// Usage: bench_vda [records ...]   (default 1000 10000)
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "internal.h"

namespace {

datatree_t *mk(const char *name, int edilen = 0, const char *data = nullptr)
{
    datatree_t *tp = ediprot::newnode();
    tp->xmltag = strdup(name);
    tp->edilen = edilen;
    tp->data = data != nullptr ? strdup(data) : nullptr;
    return tp;
}

datatree_t *kids(datatree_t *parent, std::initializer_list<datatree_t *> list)
{
    datatree_t **tpp = &parent->child;
    for (datatree_t *tp : list) {
        *tpp = tp;
        tpp = &tp->next;
    }
    return parent;
}

// A record of type `type`: record type, version and one text of 123.
datatree_t *recconfig(const char *type)
{
    std::string tag = std::string("$S") + type;
    return kids(mk(tag.c_str()), {mk("type", 3), mk("version", 2), mk("text", 123)});
}

datatree_t *readconfigtree()
{
    datatree_t *cf = kids(mk("vda"), {recconfig("511"), kids(mk("*A"), {recconfig("512")}),
                                      kids(mk("*B"), {recconfig("513")})});
    setparents(cf, 0);
    return cf;
}

datatree_t *writeconfigtree()
{
    datatree_t *cf = kids(mk("vda"), {kids(mk("*A"), {recconfig("512")})});
    setparents(cf, 0);
    return cf;
}

std::string line(const char *type, int n)
{
    char buf[160];
    snprintf(buf, sizeof buf, "%s01%-123d\r\n", type, n);
    return buf;
}

std::string genfile(const std::string &dir, int n)
{
    std::string fn = dir + "/in-" + std::to_string(n) + ".vda";
    FILE *fp = fopen(fn.c_str(), "w");
    fputs(line("511", 0).c_str(), fp);
    for (int i = 1; i < n; i++)
        fputs(line(i % 2 != 0 ? "512" : "513", i).c_str(), fp);
    fclose(fp);
    return fn;
}

// One loop instance per record, numbered 1 .. n, each with a 512 record.
datatree_t *gentree(int n)
{
    datatree_t *root = mk("vda");
    datatree_t **tpp = &root->child;
    for (int i = 1; i <= n; i++) {
        char text[16];
        snprintf(text, sizeof text, "%d", i);
        datatree_t *loop = kids(mk("*A"), {kids(mk("$S512"), {mk("type", 0, "512"),
                                                              mk("version", 0, "01"),
                                                              mk("text", 0, text)})});
        loop->loopcnt = i;
        *tpp = loop;
        tpp = &loop->next;
    }
    setparents(root, 0);
    return root;
}

double seconds(std::chrono::steady_clock::time_point t0)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

}  // namespace

int main(int argc, char **argv)
{
    std::vector<int> sizes;
    for (int i = 1; i < argc; i++)
        sizes.push_back(atoi(argv[i]));
    if (sizes.empty())
        sizes = {1000, 10000};

    char tmpl[] = "/tmp/bench-vda-XXXXXX";
    if (mkdtemp(tmpl) == nullptr) {
        perror("mkdtemp");
        return 1;
    }
    const std::string dir = tmpl;
    // The reader's dumps and the writer's "dnode" lines go to stderr.
    if (freopen("/dev/null", "w", stderr) == nullptr)
        return 1;

    datatree_t *rcf = readconfigtree();
    datatree_t *wcf = writeconfigtree();
    printf("%8s  %10s  %12s  %14s\n", "records", "read s", "write read s", "write n-loop s");
    for (int n : sizes) {
        std::string in = genfile(dir, n);
        std::string out = dir + "/out.vda";

        auto t0 = std::chrono::steady_clock::now();
        datatree_t *tree = vdaread(in.data(), nullptr, rcf, nullptr);
        double tread = seconds(t0);

        t0 = std::chrono::steady_clock::now();
        vdawrite(tree, out.data(), nullptr, nullptr, rcf, nullptr, nullptr, 0);
        double twrite1 = seconds(t0);

        datatree_t *gen = gentree(n);
        t0 = std::chrono::steady_clock::now();
        vdawrite(gen, out.data(), nullptr, nullptr, wcf, nullptr, nullptr, 0);
        double twrite2 = seconds(t0);

        printf("%8d  %10.3f  %12.3f  %14.3f\n", n, tread, twrite1, twrite2);
        fflush(stdout);
        freedatatree(tree);
        freedatatree(gen);
        unlink(in.c_str());
        unlink(out.c_str());
    }
    freedatatree(rcf);
    freedatatree(wcf);
    rmdir(dir.c_str());
    return 0;
}
