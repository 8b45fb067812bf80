// Writes and reads generated VDA files of 1,000, 10,000 and 100,000
// records and reports times, sizes and MB/s, so that the growth with the
// number of records shows.
//
//   write  a tree of one loop numbered 1 .. n with a 512 record each:
//          every record and every field is looked up from the root.
//   read   511 and then 512 and 513 in turn under two loop tags of one
//          depth: every record becomes a new loop node of the root.
//
// vdaread links the whole growing tree (setparents) after every line, so
// its time grows with the square of the records while the module's own
// work (findsatz, makerecord, insrecord) grows linearly.  A wrapper around
// our host layer's setparents times that share.  Above 10,000 records it
// runs only every 100th call in full, times that and scales it by 100
// ("est."); the skipped calls cost nothing, so the read's time is then the
// module's own work plus the sampled links.  --full links after every
// line at every size (100,000 records then take minutes).
//
// Usage: bench_vda [--full] [records ...]
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "tree/tree.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point t0)
{
    return std::chrono::duration<double>(Clock::now() - t0).count();
}

// The wrapper's state: every `stride`-th call is run and timed.
struct Links {
    long stride = 1;
    long calls = 0;
    double timed = 0;  // seconds in the calls run
} links;

}  // namespace

// Stands in for the host layer's setparents (the bench's own definition
// wins over the shared library's) and hands on to it.
extern "C" void setparents(datatree_t *tree, int flag)
{
    using Fn = void (*)(datatree_t *, int);
    static Fn real = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "setparents"));
    if (links.calls++ % links.stride != 0)
        return;
    auto t0 = Clock::now();
    real(tree, flag);
    links.timed += seconds(t0);
}

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

std::string genfile(const std::string &dir, int n)
{
    std::string fn = dir + "/in-" + std::to_string(n) + ".vda";
    FILE *fp = fopen(fn.c_str(), "w");
    for (int i = 0; i < n; i++)
        fprintf(fp, "%s01%-123d\r\n", i == 0 ? "511" : i % 2 != 0 ? "512" : "513", i);
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

double mbs(long bytes, double t)
{
    return t > 0 ? static_cast<double>(bytes) / 1e6 / t : 0.0;
}

long filesize(const std::string &fn)
{
    struct stat st;
    return stat(fn.c_str(), &st) == 0 ? static_cast<long>(st.st_size) : -1;
}

}  // namespace

int main(int argc, char **argv)
{
    bool full = false;
    std::vector<int> sizes;
    for (int i = 1; i < argc; i++) {
        if (strcmp(argv[i], "--full") == 0)
            full = true;
        else
            sizes.push_back(atoi(argv[i]));
    }
    if (sizes.empty())
        sizes = {1000, 10000, 100000};

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
    int rc = 0;
    for (int n : sizes) {
        links = Links{};
        std::string out = dir + "/out.vda";
        datatree_t *gen = gentree(n);
        auto t0 = Clock::now();
        int wrc = vdawrite(gen, out.data(), nullptr, nullptr, wcf, nullptr, nullptr, 0);
        double tw = seconds(t0);
        long wsize = filesize(out);
        printf("vdawrite: %6d records: %8.3f s, %ld bytes, %.1f MB/s, rc %d\n", n, tw, wsize,
               mbs(wsize, tw), wrc);
        freedatatree(gen);
        if (wrc != 0)
            rc = 1;

        std::string in = genfile(dir, n);
        links.stride = full || n <= 10000 ? 1 : 100;
        t0 = Clock::now();
        datatree_t *tree = vdaread(in.data(), nullptr, rcf, nullptr);
        double tr = seconds(t0);
        double own = tr - links.timed;
        double linked = links.timed * static_cast<double>(links.stride);
        long rsize = filesize(in);
        printf("vdaread:  %6d records: %8.3f s%s, %ld bytes, %.1f MB/s; own work %.3f s "
               "(%.1f MB/s), setparents %.3f s = %.0f %%\n",
               n, own + linked, links.stride > 1 ? " est." : "", rsize, mbs(rsize, own + linked), own,
               mbs(rsize, own), linked, 100.0 * linked / (own + linked));
        fflush(stdout);
        if (tree == nullptr)
            rc = 1;
        freedatatree(tree);
        unlink(in.c_str());
        unlink(out.c_str());
    }
    freedatatree(rcf);
    freedatatree(wcf);
    rmdir(dir.c_str());
    return rc;
}
