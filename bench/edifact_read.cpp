// Reads a generated ORDERS interchange of about 10 MB with edifactread and
// reports the throughput and the peak memory of the process.
//
//   bench_edifact_read [megabytes [line items per message [QTY and PRI
//                      per line item]]]      (defaults 10, 5 and 1)
//
// The configuration is configs/orders-d96a-in.tree, handed in as inhead.
// Also times the flat stage alone (reading the segments into the flat
// chain and freeing it), the floor of one allocation per node, name and
// value, and reports the whole read's rate as a share of it, in bytes and
// per node of each one's result, also against a plain flat reader (one
// node and one value a segment, element and component); then reads one
// message of 10,000 and one of 100,000 line items and reports the growth.
// Built with -DEDIPROT_BENCH_MIMALLOC=ON it runs on mimalloc, as edi does.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "edifact/edifact.h"
#include "trees/compacttree.h"
#include "trees/jsontree.h"
#include "edihost.h"
#include "ediprot.h"

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
        // The quantities, then the prices (a group of their own in the
        // layout): the order in which the configuration places them.
        for (int k = 0; k < inner; k++)
            seg("QTY+21:" + std::to_string(i * 10 + k) + ":PCE");
        for (int k = 0; k < inner; k++)
            seg("PRI+AAA:0." + std::to_string(25 + k));
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

// Nodes of the tree below `tp` (the node, what lies below, what follows).
long countnodes(const datatree_t *tp)
{
    long n = 0;
    for (; tp != nullptr; tp = tp->next)
        n += 1 + countnodes(tp->child);
    return n;
}

// True if every message of `tree` reached its UNT: a segment that the
// configuration has no place for stops the fill, and the rest of the
// message would not be read at all.
bool allplaced(const datatree_t *tree)
{
    for (const datatree_t *msg = tree->child; msg != nullptr; msg = msg->next) {
        const datatree_t *unt = msg->child;
        while (unt != nullptr && strcmp(unt->xmltag, "$UNT") != 0)
            unt = unt->next;
        if (unt == nullptr || unt->child == nullptr || unt->child->data == nullptr)
            return false;
    }
    return true;
}

// Reads one interchange of a single message with `lines` line items of
// `inner` QTY/PRI pairs each, in a child process of its own so that the
// earlier runs leave no memory behind, and returns the seconds of read and
// free.
double onemessage(const datatree_t *conf, int lines, int inner)
{
    std::string text = "UNA:+.? 'UNB+UNOA:3+BUYERCORP:14+SUPPLIERCO:14+071123:1015+REF1'";
    text += message(1, lines, inner) + "UNZ+1+REF1'";
    char fn[] = "/tmp/bench_edifact_read_XXXXXX";
    int fd = mkstemp(fn);
    if (fd < 0 || write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        perror(fn);
        exit(1);
    }
    close(fd);
    fflush(stdout);
    int pipefd[2];
    if (pipe(pipefd) != 0) {
        perror("pipe");
        exit(1);
    }
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipefd[0]);
        envelope_t *ev = nullptr;
        const double t0 = now();
        datatree_t *tree = edifactread(fn, &ev, const_cast<datatree_t *>(conf), nullptr);
        const double t1 = now();
        const bool placed = tree != nullptr && allplaced(tree);
        const long nodes = tree != nullptr ? countnodes(tree) : 0;
        const double t2 = now();
        freedatatree(tree);
        const double t3 = now();
        if (tree == nullptr || !placed) {
            fprintf(stderr, tree == nullptr ? "edifactread failed\n" : "segments left out\n");
            _exit(1);
        }
        const double t = t1 - t0 + t3 - t2;
        printf("one message     %d line items x %d QTY/PRI, %.2f MB: %.3f s, %ld result nodes,"
               " peak %.0f MB\n", lines, inner, text.size() / (1024.0 * 1024.0), t, nodes,
               peakkb() / 1024.0);
        fflush(stdout);
        if (write(pipefd[1], &t, sizeof t) != static_cast<ssize_t>(sizeof t))
            _exit(1);
        _exit(0);
    }
    close(pipefd[1]);
    double t = -1;
    const bool got = read(pipefd[0], &t, sizeof t) == static_cast<ssize_t>(sizeof t);
    close(pipefd[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    unlink(fn);
    if (!got || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        exit(1);
    return t;
}

// A flat reader as any program would write one: a node allocated for each
// segment, element and component (the value copied into it), all of them
// chained, then freed.  Default service characters, no release handling
// beyond skipping the released character.  Returns the nodes it made.
struct FlatNode {
    FlatNode *next;
    char *value;
};

long flatread(const std::string &text)
{
    FlatNode *head = nullptr;
    FlatNode **tail = &head;
    long nodes = 0;
    auto add = [&](size_t from, size_t to) {
        auto *n = static_cast<FlatNode *>(malloc(sizeof(FlatNode)));
        n->next = nullptr;
        n->value = static_cast<char *>(malloc(to - from + 1));
        memcpy(n->value, text.data() + from, to - from);
        n->value[to - from] = '\0';
        *tail = n;
        tail = &n->next;
        nodes++;
    };
    size_t seg = 0, el = 0, cmp = 0;
    for (size_t i = 0; i < text.size(); i++) {
        const char c = text[i];
        if (c == '?') {
            i++;
            continue;
        }
        if (c == ':' || c == '+' || c == '\'') {
            add(cmp, i);  // the component
            cmp = i + 1;
        }
        if (c == '+' || c == '\'') {
            add(el, i);  // the element
            el = i + 1;
        }
        if (c == '\'') {
            add(seg, i);  // the segment
            seg = el = cmp = i + 1;
        }
    }
    while (head != nullptr) {
        FlatNode *n = head->next;
        free(head->value);
        free(head);
        head = n;
    }
    return nodes;
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
    const double r0 = now();
    const long plainnodes = flatread(text);
    const double plainsecs = now() - r0;
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
    const double c0 = now();
    const long flatnodes = countnodes(flat);
    const double c1 = now();
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
    if (!allplaced(tree)) {
        fprintf(stderr, "segments left out: the benchmark's messages must fit the configuration\n");
        return 1;
    }
    int copies = 0;
    for (datatree_t *tp = tree->child; tp != nullptr; tp = tp->next)
        copies++;
    const long resultnodes = countnodes(tree);
    {
        // The JSON forms of the first 100 messages: compact against full.
        datatree_t *last = tree->child;
        for (int k = 1; k < 100 && last != nullptr && last->next != nullptr; k++)
            last = last->next;
        datatree_t *rest = last != nullptr ? last->next : nullptr;
        if (last != nullptr)
            last->next = nullptr;
        const size_t full = edi::treetojson(tree, nullptr).size();
        const size_t compact = edi::compactjson(tree, nullptr, {}, false).size();
        if (last != nullptr)
            last->next = rest;
        printf("JSON            100 messages: full %zu bytes, compact %zu (%.3f of full)\n", full,
               compact, static_cast<double>(compact) / static_cast<double>(full));
    }
    const double t2 = now();
    freedatatree(tree);
    const double t3 = now();
    printf("file            %.2f MB, %d messages of %d line items x %d QTY/PRI (%d filled),"
           " key %s\n", mb, msgs, lines, inner, copies,
           ev->servconftag);
    const double whole = t1 - t0 + t3 - t2;
    printf("flat stage      %.3f s, %.1f MB/s, %ld nodes\n", f1 - f0 - (c1 - c0),
           mb / (f1 - f0 - (c1 - c0)), flatnodes);
    printf("edifactread     %.3f s, %.1f MB/s\n", t1 - t0, mb / (t1 - t0));
    printf("freedatatree    %.3f s\n", t3 - t2);
    printf("read and free   %.1f MB/s, %.2f of the flat stage's rate\n", mb / whole,
           (f1 - f0 - (c1 - c0)) / whole);
    // Per node of each one's result: what the module makes in a second
    // against what the flat readers make.
    const double modulerate = resultnodes / whole;
    printf("per node        edifactread %.2f M result nodes/s (read and free); module's flat"
           " stage %.2f M/s (%.2f); plain flat reader %.2f M/s (%.2f)\n",
           modulerate / 1e6, flatnodes / (f1 - f0 - (c1 - c0)) / 1e6,
           modulerate / (flatnodes / (f1 - f0 - (c1 - c0))), plainnodes / plainsecs / 1e6,
           modulerate / (plainnodes / plainsecs));
    printf("peak memory     %.1f MB (%.1f MB before edifactread), %.0f MB per MB of input\n",
           peakkb() / 1024.0, basekb / 1024.0, peakkb() / 1024.0 / mb);
    printf("result          %ld nodes (%.0f per message): the empty elements and tags that\n"
           "                pruning keeps are most of them\n",
           resultnodes, static_cast<double>(resultnodes) / copies);
    free(ev->servconftag);
    free(ev);
    // Growth with the length of one message: each line item repeats its
    // inner loops, which the fill must not copy again for every item.
    const double t10k = onemessage(conf, 10000, 2);
    const double t100k = onemessage(conf, 100000, 2);
    printf("growth          100,000 / 10,000 line items: %.1f times the time\n", t100k / t10k);
    freedatatree(conf);
    return 0;
}
