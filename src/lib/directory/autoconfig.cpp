// Generates the configuration of a message from the directory data, so that
// a standard message reads and writes without a configuration written by hand.
#include "directory/autoconfig.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "directory/configgen.h"
#include "edihost.h"
#include "module/locations.h"

namespace edi {

namespace {

std::string joined(const std::vector<std::string> &v)
{
    std::string r;
    for (const std::string &s : v)
        r += (r.empty() ? "" : " ") + s;
    return r;
}

// The child of `tp` whose name begins with `name` (case ignored for tags).
const datatree_t *child(const datatree_t *tp, const char *name)
{
    size_t n = strlen(name);
    for (const datatree_t *c = tp != nullptr ? tp->child : nullptr; c != nullptr; c = c->next)
        if (c->xmltag != nullptr && strncasecmp(c->xmltag, name, n) == 0)
            return c;
    return nullptr;
}

std::string value(const datatree_t *tp)
{
    return tp != nullptr && tp->data != nullptr ? tp->data : "";
}

}  // namespace

namespace {

// The directory data a caller named for the call in progress on this
// thread ("" for the default).
thread_local std::string chosen;

}  // namespace

DirectoriesInUse::DirectoriesInUse(const std::string &folder) : saved_(chosen)
{
    if (!folder.empty())
        chosen = folder;
}

DirectoriesInUse::~DirectoriesInUse()
{
    chosen = saved_;
}

std::string directoriesdir()
{
    if (!chosen.empty())
        return chosen;
    if (const char *e = getenv("EDIPROT_DIRECTORIES"); e && *e)
        return e;
    return datadir() + "/directories";
}

std::string missingmessage(const std::string &type, const std::string &directory, bool havedir)
{
    std::string dir = directoriesdir();
    std::string what = havedir ? "directory " + directory + " has no message " + type
                               : "no directory " + directory + " for " + type;
    std::vector<std::string> with = edi::dirs::directorieswith(dir, type);
    if (with.empty()) {
        std::vector<std::string> all = edi::dirs::directories(dir);
        return what + " (no directory has " + type + "; directories: " +
               (all.empty() ? "none in " + dir : all.front() + " ... " + all.back()) +
               "; edi config --list)";
    }
    std::string near = edi::dirs::nearest(with, directory);
    std::string in = with.size() <= 6 ? joined(with)
                                      : std::to_string(with.size()) + " directories, " +
                                            with.front() + " ... " + with.back();
    return what + " (nearest with it: " + near + "; " + type + " is in " + in + ")";
}

datatree_t *configformessage(const std::string &msgtype, bool outbound, std::string &err)
{
    // type:version:release:agency; the directory is version + release (D96A).
    size_t a = msgtype.find(':');
    size_t b = a == std::string::npos ? a : msgtype.find(':', a + 1);
    size_t c = b == std::string::npos ? b : msgtype.find(':', b + 1);
    std::string type = msgtype.substr(0, a);
    if (b == std::string::npos || type.empty()) {
        err = "the message header names no " +
              std::string(type.empty() ? "message type" : "directory") + " (" + msgtype +
              "), so no configuration can be generated; give one with --config";
        return nullptr;
    }
    std::string directory = msgtype.substr(a + 1, b - a - 1) + msgtype.substr(b + 1, c - b - 1);
    std::string agency =
        c == std::string::npos ? "" : msgtype.substr(c + 1, msgtype.find(':', c + 1) - c - 1);
    if (!agency.empty() && agency != "UN") {
        err = "the message header names " + msgtype + ", of agency " + agency +
              ": only UN directories are known; give a configuration with --config";
        return nullptr;
    }
    // Generated texts are kept for the process, by data folder, message
    // and direction: loading a directory's data takes 10 to 15 ms, and a
    // program reading many files of a few message types needs each once.
    static std::mutex lock;
    static std::map<std::string, std::pair<std::string, std::string>> made;  // text, error
    const std::string key = directoriesdir() + '\n' + type + '\n' + directory +
                            (outbound ? "\nout" : "\nin");
    std::string text;
    {
        std::lock_guard<std::mutex> hold(lock);
        auto it = made.find(key);
        if (it == made.end()) {
            edi::dirs::Directory d;
            std::string e;
            if (!d.load(directoriesdir(), directory, e))
                e = missingmessage(type, directory, false);
            else if (!d.config(type, outbound, text, e))
                e = missingmessage(type, directory, true);
            else
                e.clear();
            // At most a few hundred kinds in a process; past that the
            // cache starts afresh rather than grow without bound.
            if (made.size() >= 1024)
                made.clear();
            it = made.emplace(key, std::make_pair(e.empty() ? text : "", e)).first;
        }
        text = it->second.first;
        err = it->second.second;
    }
    if (!err.empty())
        return nullptr;
    std::string name = "generated " + type + " " + directory;
    return edihost_parsetree(text.data(), text.size(), name.c_str());
}

std::string messageid(const datatree_t *message, const std::string &given, std::string &err)
{
    std::string type =
        message->xmltag != nullptr && message->xmltag[0] == '*' ? message->xmltag + 1 : "";
    if (!given.empty() && given.compare(0, type.size() + 1, type + ":") == 0 && !type.empty()) {
        std::string rest = given.substr(type.size() + 1);
        // ORDERS:D96A is ORDERS:D:96A.
        if (rest.find(':') == std::string::npos && rest.size() > 1)
            rest = rest.substr(0, 1) + ":" + rest.substr(1);
        return type + ":" + rest;
    }
    const datatree_t *s009 = child(child(message, "$UNH"), "S009");
    std::string version = value(child(s009, "0052")), release = value(child(s009, "0054"));
    if (type.empty() || version.empty() || release.empty()) {
        err = "the messages " + std::string(message->xmltag != nullptr ? message->xmltag : "") +
              " name no directory in their UNH (S009 0052, 0054); name it with --message " +
              (type.empty() ? "TYPE" : type) + ":D96A, or give --config";
        return "";
    }
    return type + ":" + version + ":" + release;
}

}  // namespace edi
