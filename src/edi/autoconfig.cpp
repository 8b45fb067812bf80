// Generates the configuration of a message from the directory data, so that
// a standard message reads without a configuration written by hand.
#include "autoconfig.h"

#include <stdlib.h>

#include "configgen.h"
#include "edihost.h"
#include "locations.h"

namespace edi {

std::string directoriesdir()
{
    if (const char *e = getenv("EDIPROT_DIRECTORIES"); e && *e)
        return e;
    return datadir() + "/directories";
}

datatree_t *configformessage(const std::string &msgtype, bool outbound, std::string &err)
{
    // type:version:release:agency; the directory is version + release (D96A).
    size_t a = msgtype.find(':');
    size_t b = a == std::string::npos ? a : msgtype.find(':', a + 1);
    size_t c = b == std::string::npos ? b : msgtype.find(':', b + 1);
    if (b == std::string::npos) {
        err = "the message header gives no directory (" + msgtype + ")";
        return nullptr;
    }
    std::string type = msgtype.substr(0, a);
    std::string directory = msgtype.substr(a + 1, b - a - 1) + msgtype.substr(b + 1, c - b - 1);
    edihost::Directory d;
    if (!d.load(directoriesdir(), directory, err)) {
        err = "no configuration for " + type + ": " + err;
        return nullptr;
    }
    std::string text;
    if (!d.config(type, outbound, text, err))
        return nullptr;
    std::string name = "generated " + type + " " + directory;
    return edihost_parsetree(text.data(), text.size(), name.c_str());
}

}  // namespace edi
