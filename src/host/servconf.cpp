// Placeholder until the service-configuration loader lands.
#include "edihost.h"

extern "C" {

int edihost_loadservconf(const char *fn)
{
    fprintf(stderr, "%s:0: service configurations not available\n", fn);
    return -1;
}

void edihost_clearservconf(void) {}

servconf_t *getservconf(char *tag)
{
    (void)tag;
    return nullptr;
}

}
