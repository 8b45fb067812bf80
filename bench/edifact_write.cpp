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
#include "orderstree.h"

namespace {

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

    datatree_t *cf = orderstree::makeconfig();
    int rc = 0;
    for (int n : sizes) {
        datatree_t *data = orderstree::makedata(n);
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
