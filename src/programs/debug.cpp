#include "debug.h"

#include <sys/time.h>
#include <time.h>

namespace ediprot {

void trace_prefix(int line)
{
    struct timeval tv;
    gettimeofday(&tv, nullptr);
    time_t secs = tv.tv_sec;
    struct tm tmv;
    localtime_r(&secs, &tmv);
    fprintf(stderr, "%02d:%02d:%02d.%03d (%-14.14s:%04d): ", tmv.tm_hour,
            tmv.tm_min, tmv.tm_sec, static_cast<int>(tv.tv_usec / 1000),
            "ediprot", line);
}

}  // namespace ediprot
