// Writes a generated ORDERS data tree with 1,000, 10,000 and 100,000 line
// items (loop instances; other counts as arguments) through edifactwrite
// and reports time, size and MB/s of each.  Long loop chains are found
// through the writers' loop index, so the time should grow linearly.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <vector>

#include "ediprot.h"

namespace {

datatree_t *mk(const char *name, const char *data = nullptr)
{
    auto *tp = static_cast<datatree_t *>(calloc(1, sizeof(datatree_t)));
    tp->xmltag = strdup(name);
    tp->data = data != nullptr ? strdup(data) : nullptr;
    return tp;
}

// Appends `kid` to the children of `parent` behind *last, returns kid.
datatree_t *add(datatree_t *parent, datatree_t **last, datatree_t *kid)
{
    if (*last == nullptr)
        parent->child = kid;
    else
        (*last)->next = kid;
    *last = kid;
    return kid;
}

datatree_t *el(datatree_t *parent, datatree_t **last, const char *name,
               const char *defval = nullptr, const char *deffunc = nullptr)
{
    datatree_t *e = add(parent, last, mk(name));
    e->edimaxlen = 35;
    e->defval = defval != nullptr ? strdup(defval) : nullptr;
    e->deffunc = deffunc != nullptr ? strdup(deffunc) : nullptr;
    return e;
}

// edi / *ORDERS / $UNH, $BGM, *SG25 ($LIN, $QTY), $UNT
datatree_t *makeconfig()
{
    datatree_t *root = mk("edi");
    datatree_t *last = nullptr;
    datatree_t *msg = add(root, &last, mk("*ORDERS"));
    datatree_t *mlast = nullptr;
    datatree_t *unh = add(msg, &mlast, mk("$UNH"));
    datatree_t *ulast = nullptr;
    el(unh, &ulast, "0062", nullptr, "unhcnt");
    datatree_t *s009 = add(unh, &ulast, mk("S009"));
    datatree_t *slast = nullptr;
    el(s009, &slast, "0065", "ORDERS");
    el(s009, &slast, "0052", "D");
    el(s009, &slast, "0054", "96A");
    el(s009, &slast, "0051", "UN");
    datatree_t *bgm = add(msg, &mlast, mk("$BGM"));
    datatree_t *blast = nullptr;
    el(bgm, &blast, "1004");
    datatree_t *sg25 = add(msg, &mlast, mk("*SG25"));
    datatree_t *glast = nullptr;
    datatree_t *lin = add(sg25, &glast, mk("$LIN"));
    datatree_t *llast = nullptr;
    el(lin, &llast, "1082");
    el(lin, &llast, "1229");
    datatree_t *c212 = add(lin, &llast, mk("C212"));
    datatree_t *clast = nullptr;
    el(c212, &clast, "7140");
    el(c212, &clast, "7143", "EN");
    datatree_t *qty = add(sg25, &glast, mk("$QTY"));
    datatree_t *qlast = nullptr;
    datatree_t *c186 = add(qty, &qlast, mk("C186"));
    datatree_t *c6last = nullptr;
    el(c186, &c6last, "6063", "21");
    el(c186, &c6last, "6060");
    datatree_t *unt = add(msg, &mlast, mk("$UNT"));
    datatree_t *tlast = nullptr;
    el(unt, &tlast, "0074", nullptr, "seccnt");
    el(unt, &tlast, "0062", "1");
    setparents(root, 0);
    return root;
}

// One message with `n` line items numbered as the writer enumerates them.
datatree_t *makedata(int n)
{
    datatree_t *root = mk("edi");
    datatree_t *last = nullptr;
    datatree_t *msg = add(root, &last, mk("*ORDERS"));
    msg->loopcnt = 1;
    datatree_t *mlast = nullptr;
    datatree_t *bgm = add(msg, &mlast, mk("$BGM"));
    datatree_t *blast = nullptr;
    add(bgm, &blast, mk("1004", "PO4711"));
    char num[32];
    for (int k = 1; k <= n; k++) {
        datatree_t *sg = add(msg, &mlast, mk("*SG25"));
        sg->loopcnt = k;
        datatree_t *glast = nullptr;
        datatree_t *lin = add(sg, &glast, mk("$LIN"));
        datatree_t *llast = nullptr;
        snprintf(num, sizeof num, "%d", k);
        add(lin, &llast, mk("1082", num));
        datatree_t *c212 = add(lin, &llast, mk("C212"));
        datatree_t *clast = nullptr;
        snprintf(num, sizeof num, "40%011d", k);
        add(c212, &clast, mk("7140", num));
        datatree_t *qty = add(sg, &glast, mk("$QTY"));
        datatree_t *qlast = nullptr;
        datatree_t *c186 = add(qty, &qlast, mk("C186"));
        datatree_t *c6last = nullptr;
        snprintf(num, sizeof num, "%d", k % 97 + 1);
        add(c186, &c6last, mk("6060", num));
    }
    setparents(root, 0);
    return root;
}

double seconds(const timespec &a, const timespec &b)
{
    return static_cast<double>(b.tv_sec - a.tv_sec) + static_cast<double>(b.tv_nsec - a.tv_nsec) / 1e9;
}

}  // namespace

int main(int argc, char **argv)
{
    std::vector<int> sizes;
    for (int i = 1; i < argc; i++)
        sizes.push_back(atoi(argv[i]));
    if (sizes.empty())
        sizes = {1000, 10000, 100000};
    char dir[] = "/tmp/ediprot-bench-XXXXXX";
    if (mkdtemp(dir) == nullptr) {
        perror("mkdtemp");
        return 1;
    }
    char out[sizeof dir + 16];
    snprintf(out, sizeof out, "%s/out.edi", dir);

    datatree_t *cf = makeconfig();
    int rc = 0;
    for (int n : sizes) {
        datatree_t *data = makedata(n);
        char sender[] = "SENDER";
        char recipient[] = "RECIPIENT";
        timespec t0, t1;
        clock_gettime(CLOCK_MONOTONIC, &t0);
        int wrc = edifactwrite(data, out, nullptr, nullptr, cf, sender, recipient, 0);
        clock_gettime(CLOCK_MONOTONIC, &t1);
        struct stat st;
        long size = stat(out, &st) == 0 ? static_cast<long>(st.st_size) : -1;
        double t = seconds(t0, t1);
        printf("edifactwrite: %6d loop instances: %9.3f s, %ld bytes, %.1f MB/s, rc %d\n",
               n, t, size, t > 0 ? static_cast<double>(size) / 1e6 / t : 0.0, wrc);
        if (wrc != 0)
            rc = 1;
        freedatatree(data);
    }
    freedatatree(cf);
    unlink(out);
    rmdir(dir);
    return rc;
}
