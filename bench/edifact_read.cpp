// Reads a generated ORDERS interchange of about 10 MB with edifactread and
// reports the throughput and the peak memory of the process.
//
//   bench_edifact_read [megabytes [line items per message]]
//                                  (defaults 10 and 5)
//
// The configuration is configs/orders-d96a-in.tree, handed in as inhead.
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "edihost.h"
#include "ediprot.h"

namespace {

// One ORDERS message with `lines` line items; `ref` is its reference.
std::string message(int ref, int lines)
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
        seg("QTY+21:" + std::to_string(i * 10) + ":PCE");
        seg("PRI+AAA:0.25");
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

    std::string text = "UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'";
    int msgs = 0;
    while (text.size() < want)
        text += message(++msgs, lines);
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
    printf("file            %.2f MB, %d messages of %d line items (%d filled), key %s\n", mb,
           msgs, lines, copies,
           ev->servconftag);
    printf("edifactread     %.3f s, %.1f MB/s\n", t1 - t0, mb / (t1 - t0));
    printf("freedatatree    %.3f s\n", t3 - t2);
    printf("peak memory     %.1f MB (%.1f MB before the read)\n", peakkb() / 1024.0,
           basekb / 1024.0);
    free(ev->servconftag);
    free(ev);
    freedatatree(conf);
    return 0;
}
