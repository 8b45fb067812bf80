// Reads a generated ORDERS interchange of about 10 MB with edifactread and
// reports the throughput and the peak memory of the process.
//
//   bench_edifact_read [megabytes [line items per message [QTY and PRI
//                      per line item]]]      (defaults 10, 5 and 1)
//
// The configuration is configs/orders-d96a-in.tree, handed in as inhead.
// Also times the flat stage alone (reading the segments into the flat
// chain and freeing it), the floor of one allocation per node, name and
// value, and reports the whole read's rate as a share of it.
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "edihost.h"
#include "ediprot.h"
#include "internal.h"

namespace {

// One ORDERS message with `lines` line items; `ref` is its reference.
std::string message(int ref, int lines, int inner)
{
    std::string m;
    int segs = 0;
    auto seg = [&](const std::string &s) {
        m += s;
        m += '\'';
        segs++;
    };
    const std::string r = std::to_string(ref);
    seg("UNH+" + r + "+ORDERS:D:96A:UN");
    seg("BGM+220+PO" + r + "+9");
    seg("DTM+137:20071123:102");
    seg("DTM+2:20071201:102");
    seg("FTX+AAI+++Deliver to gate 3?: ring twice");
    seg("NAD+BY+4012345000009::9");
    seg("NAD+SU+4098765000004::9++Supplier Name+Main Street 1+Springfield++12345+DE");
    seg("RFF+VA:DE123456789");
    seg("CTA+OC+:J. Smith");
    seg("COM+0049301234:TE");
    seg("CUX+2:EUR:9");
    for (int i = 1; i <= lines; i++) {
        const std::string n = std::to_string(i);
        seg("LIN+" + n + "++40008621" + std::to_string(10000 + i) + ":EN");
        seg("PIA+1+A" + n + ":SA");
        seg("IMD+F++:::Screw M" + n);
        for (int k = 0; k < inner; k++) {
            seg("QTY+21:" + std::to_string(i * 10 + k) + ":PCE");
            seg("PRI+AAA:0.25");
        }
    }
    seg("UNS+S");
    seg("CNT+2:" + std::to_string(lines));
    seg("UNT+" + std::to_string(segs + 1) + "+" + r);
    return m;
}

long peakkb()
{
    struct rusage ru;
    getrusage(RUSAGE_SELF, &ru);
    return ru.ru_maxrss;
}

double now()
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec + ts.tv_nsec / 1e9;
}

}  // namespace

int main(int argc, char **argv)
{
    const double wantmb = argc > 1 ? atof(argv[1]) : 10.0;
    const size_t want = static_cast<size_t>(wantmb * 1024 * 1024);
    const int lines = argc > 2 ? atoi(argv[2]) : 5;
    const int inner = argc > 3 ? atoi(argv[3]) : 1;

    std::string text = "UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'";
    int msgs = 0;
    while (text.size() < want)
        text += message(++msgs, lines, inner);
    text += "UNZ+" + std::to_string(msgs) + "+REF1'";

    char fn[] = "/tmp/bench_edifact_read_XXXXXX";
    int fd = mkstemp(fn);
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        perror(fn);
        return 1;
    }
    close(fd);
    const double mb = text.size() / (1024.0 * 1024.0);
    text.clear();
    text.shrink_to_fit();

    datatree_t *conf = edihost_readtree(EDIPROT_CONFIGS "/orders-d96a-in.tree");
    if (conf == nullptr) {
        unlink(fn);
        return 1;
    }
    // The flat stage first, so that the peak below is the whole read's.
    FILE *fp = fopen(fn, "r");
    const double f0 = now();
    datatree_t *flat = fp != nullptr ? ediprot::readseg(fp, fn) : nullptr;
    freedatatree(flat);
    const double f1 = now();
    if (fp != nullptr)
        fclose(fp);
    const long basekb = peakkb();
    envelope_t *ev = nullptr;
    const double t0 = now();
    datatree_t *tree = edifactread(fn, &ev, conf, nullptr);
    const double t1 = now();
    unlink(fn);
    if (tree == nullptr) {
        fprintf(stderr, "edifactread failed\n");
        return 1;
    }
    int copies = 0;
    for (datatree_t *tp = tree->child; tp != nullptr; tp = tp->next)
        copies++;
    const double t2 = now();
    freedatatree(tree);
    const double t3 = now();
    printf("file            %.2f MB, %d messages of %d line items x %d QTY/PRI (%d filled),"
           " key %s\n", mb, msgs, lines, inner, copies,
           ev->servconftag);
    const double whole = t1 - t0 + t3 - t2;
    printf("flat stage      %.3f s, %.1f MB/s\n", f1 - f0, mb / (f1 - f0));
    printf("edifactread     %.3f s, %.1f MB/s\n", t1 - t0, mb / (t1 - t0));
    printf("freedatatree    %.3f s\n", t3 - t2);
    printf("read and free   %.1f MB/s, %.2f of the flat stage's rate\n", mb / whole,
           (f1 - f0) / whole);
    printf("peak memory     %.1f MB (%.1f MB before edifactread), %.0f MB per MB of input\n",
           peakkb() / 1024.0, basekb / 1024.0, peakkb() / 1024.0 / mb);
    free(ev->servconftag);
    free(ev);
    freedatatree(conf);
    return 0;
}
