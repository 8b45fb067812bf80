// Configuration trees generated from the directory data: the message is a
// loop node, groups are loop nodes *SGn, a segment that may repeat on its
// own stands in a loop named after its group and tag (*DTM, *SG2LOC), and a
// repeated element or component gets a name of its own (4440_2) so that the
// writer, which finds values by name, keeps every repetition.
#include "directory/configgen.h"

#include <dirent.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>

#include "directory/directorydata.h"

namespace edi::dirs {

namespace {

using json = nlohmann::ordered_json;

// Length from a representation: an..35 -> 35, n3 -> 3; numeric values get
// room for a sign and a decimal mark.
int maxlen(const std::string &repr)
{
    size_t i = 0;
    while (i < repr.size() && (repr[i] == 'a' || repr[i] == 'n'))
        i++;
    bool numeric = repr.compare(0, i, "n") == 0;
    while (i < repr.size() && repr[i] == '.')
        i++;
    int len = 0;
    for (; i < repr.size() && repr[i] >= '0' && repr[i] <= '9' && len < 100000; i++)
        len = len * 10 + (repr[i] - '0');
    if (len <= 0)
        len = 35;
    return numeric ? len + 2 : len;
}

// Service segments of the message keep the syntax version 3 layout.
const char *const unh_in =
    "$UNH iseditag=1 ediforce=mand\n"
    "  0062 edimaxlen=14\n"
    "  S009\n"
    "    0065 edimaxlen=6\n"
    "    0052 edimaxlen=3\n"
    "    0054 edimaxlen=3\n"
    "    0051 edimaxlen=2\n"
    "    0057 edimaxlen=6\n"
    "  0068 edimaxlen=35\n"
    "  S010\n"
    "    0070 edimaxlen=4\n"
    "    0073 edimaxlen=1\n";

struct Gen {
    const json &j;
    bool out;
    std::string msg, dirname;
    std::string text;
    int sections;  // UNS segments of the message


    std::string elemline(const std::string &name, const std::string &id, bool mand)
    {
        auto &els = j["elements"];
        std::string repr = els.contains(id) ? els[id].value("repr", "an..35") : "an..35";
        // A coded element whose representation the data only guesses from
        // its codes gets room for a partner's longer codes: the writer cuts
        // a value at edimaxlen without a word.
        if (els.contains(id) && els[id].value("reprfrom", "") == "codes")
            repr = "an..35";
        return name + " edimaxlen=" + std::to_string(maxlen(repr)) + (mand ? " ediforce=mand" : "");
    }

    // Names with _2, _3 ... for an id seen before among the same parent.
    static std::string uniq(std::map<std::string, int> &seen, const std::string &id)
    {
        int n = ++seen[id];
        return n == 1 ? id : id + "_" + std::to_string(n);
    }

    void service(int depth, const std::string &tag, const std::string &name)
    {
        std::string block;
        if (tag == "UNH") {
            block = unh_in;
            if (out) {
                std::string d = dirname.substr(1);
                auto put = [&](const std::string &key, const std::string &add) {
                    size_t p = block.find(key);
                    size_t e = block.find('\n', p);
                    block.insert(e, add);
                };
                put("0062 edimaxlen=14", " deffunc=unhcnt ediforce=mand");
                put("0065 edimaxlen=6", " defval=" + msg + " ediforce=mand");
                put("0052 edimaxlen=3", " defval=D ediforce=mand");
                put("0054 edimaxlen=3", " defval=" + d + " ediforce=mand");
                put("0051 edimaxlen=2", " defval=UN ediforce=mand");
            }
        } else if (tag == "UNS") {
            // With two section controls, the first opens the detail (D)
            // and the second the summary (S); one alone opens the summary.
            bool detail = name == "UNS" && sections > 1;
            block = "$" + name + " iseditag=1 ediforce=mand\n  0081 edimaxlen=1";
            block += out ? std::string(" defval=") + (detail ? "D" : "S") + " ediforce=mand\n" : "\n";
        } else {
            block = "$UNT iseditag=1 ediforce=mand\n  0074 edimaxlen=8";
            block += out ? " deffunc=seccnt ediforce=mand\n" : "\n";
            block += "  0062 edimaxlen=14\n";
        }
        size_t start = 0;
        while (start < block.size()) {
            size_t e = block.find('\n', start);
            text.append(size_t(depth) * 2, ' ');
            text.append(block, start, e - start + 1);
            start = e + 1;
        }
    }

    // `always`: a valid message has this segment wherever the writer walks
    // its tag node, so its mandatory elements can be marked (the writer
    // drops the whole file for a marked element without a value).  That
    // holds for a mandatory segment of the message and for a segment in a
    // loop of its own, which exists only with data.  It does not hold
    // inside a group: the reader's fill can leave a group occurrence
    // without its trigger (a later child took a segment, e.g. a LOC that
    // is the next group's trigger), and its segments are then absent.
    void segment(int depth, const std::string &tag, const std::string &name, bool mand,
                 bool always)
    {
        if (tag == "UNH" || tag == "UNT" || tag == "UNS")
            return service(depth, tag, name);
        std::string head = "$" + name + " iseditag=1";
        if (mand)
            head += " ediforce=mand";
        text.append(size_t(depth) * 2, ' ') += head + "\n";
        if (!j["segments"].contains(tag))
            return;
        std::map<std::string, int> seen;
        for (auto &el : j["segments"][tag]["elements"]) {
            std::string id = el.value("id", "");
            int reps = std::clamp(el.value("max", 1), 1, 99);
            // Only the first of repeated elements can be mandatory; a
            // component only in a mandatory composite.
            bool elmand = always && el.value("req", "C") == "M";
            for (int r = 0; r < reps; r++) {
                std::string name = uniq(seen, id);
                if (j["composites"].contains(id)) {
                    text.append(size_t(depth + 1) * 2, ' ') += name + "\n";
                    std::map<std::string, int> cseen;
                    for (auto &c : j["composites"][id]["components"]) {
                        std::string cid = c.value("id", "");
                        bool cmand = elmand && r == 0 && c.value("req", "C") == "M";
                        text.append(size_t(depth + 2) * 2, ' ') +=
                            elemline(uniq(cseen, cid), cid, cmand) + "\n";
                    }
                } else {
                    text.append(size_t(depth + 1) * 2, ' ') +=
                        elemline(name, id, elmand && r == 0) + "\n";
                }
            }
        }
    }

    // Entries of a message or group; prefix names the loops of repeating
    // segments inside a group (SG2 + LOC).
    // A tag or loop name that comes twice among the same siblings gets _2:
    // the writer finds values by path, and one path for both would give
    // the second the values of the first (the reader matches tags on their
    // first four characters, so $UNS_2 still takes a UNS).
    void entries(int depth, const json &list, const std::string &prefix, bool top)
    {
        std::map<std::string, int> seen;
        for (auto &e : list) {
            int max = e.value("max", 1);
            bool mand = e.value("req", "C") == "M";
            if (e.contains("group")) {
                std::string g = e.value("group", "");
                text.append(size_t(depth) * 2, ' ') += "*" + uniq(seen, g) + "\n";
                entries(depth + 1, e["children"], g, false);
            } else {
                std::string tag = e.value("segment", "");
                if (max != 1) {
                    text.append(size_t(depth) * 2, ' ') += "*" + uniq(seen, prefix + tag) + "\n";
                    segment(depth + 1, tag, tag, false, true);
                } else {
                    // Only message-level segments are marked: the reader
                    // tests a marked tag when the input has ended, which in
                    // the empty copy behind a group's last occurrence would
                    // refuse a complete message without UNT.
                    segment(depth, tag, uniq(seen, "$" + tag).substr(1), mand && top, mand && top);
                }
            }
        }
    }
};

}  // namespace

Directory::Directory() : data(nullptr) {}
Directory::~Directory() { delete data; }

bool Directory::load(const std::string &dir, const std::string &directory, std::string &err)
{
    // The name comes from a partner's message header: letters and digits
    // only, so that it names a file of the data folder and nothing else
    // (a NUL, a slash or dots would reach another file, or the folder).
    if (directory.empty() || directory.size() > 8 ||
        directory.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                    "0123456789") != std::string::npos) {
        err = "directory " + directory + " not found";
        for (char &c : err)
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
                c = '?';
        return false;
    }
    std::string path = dir + "/" + directory + ".json";
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        err = "directory " + directory + " not found";
        return false;
    }
    auto *d = new DirectoryData;
    try {
        d->j = json::parse(in, nullptr, false);
    } catch (const std::exception &) {
        // A folder or a file that cannot be read as it is opened.
        d->j = json();
    }
    if (d->j.is_discarded() || !d->j.is_object() || !d->j.contains("messages")) {
        delete d;
        err = "cannot read " + path;
        return false;
    }
    d->name = directory;
    d->path = path;
    delete data;
    data = d;
    return true;
}

std::vector<std::pair<std::string, std::string>> Directory::messages() const
{
    std::vector<std::pair<std::string, std::string>> r;
    if (data)
        for (auto &[k, v] : data->j["messages"].items())
            r.emplace_back(k, v.value("name", ""));
    return r;
}

bool Directory::config(const std::string &message, bool outbound, std::string &out,
                       std::string &err) const
{
    if (!data || !data->j["messages"].contains(message)) {
        err = "message " + message + " not found in directory " + (data ? data->name : "?");
        return false;
    }
    Gen g{data->j, outbound, message, data->name, {}, 0};
    for (auto &e : data->j["messages"][message]["structure"])
        g.sections += e.value("segment", "") == "UNS";
    g.text = std::string("# ") + (outbound ? "Outbound " : "Inbound ") + message +
             ", directory " + data->name + " (UN), syntax version 3; generated.\n";
    g.text += "# Groups are loops *SGn, a segment that repeats on its own has a loop of its\n"
              "# own (*DTM, *SG2LOC), repetitions of one name are name_2, name_3 ...\n";
    if (outbound)
        g.text += "# Where the data tree has no value: UNH 0062 counts messages (unhcnt),\n"
                  "# S009 from message and directory, UNS D or S, UNT 0074 counts the tag\n"
                  "# nodes entered (seccnt; edi write corrects it); UNT 0062 has none.\n";
    g.text += "edi\n  *" + message + "\n";
    g.entries(2, data->j["messages"][message]["structure"], "", true);
    out = std::move(g.text);
    return true;
}

namespace {
// In order of publication: D93A ... D99B, then D00A ... (years 19xx first).
std::string publication(const std::string &n)
{
    return n.size() < 2 ? n : (n[1] >= '9' ? "19" : "20") + n.substr(1);
}
}  // namespace

std::vector<std::string> directorieswith(const std::string &dir, const std::string &message)
{
    // A message entry is a line of its own, ` "ORDERS": {`; no segment,
    // composite or element key has six letters, so a text search suffices
    // and spares parsing 36 files for an error message.
    std::vector<std::string> r;
    if (message.empty())
        return r;
    std::string key = "\n \"" + message + "\": {";
    for (const std::string &d : directories(dir)) {
        std::ifstream in(dir + "/" + d + ".json", std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        if (text.find(key) != std::string::npos)
            r.push_back(d);
    }
    return r;
}

std::string nearest(const std::vector<std::string> &have, const std::string &wanted)
{
    for (const std::string &d : have)
        if (publication(d) >= publication(wanted))
            return d;
    return have.empty() ? "" : have.back();
}

std::vector<std::string> directories(const std::string &dir)
{
    std::vector<std::string> r;
    if (DIR *d = opendir(dir.c_str())) {
        while (dirent *e = readdir(d)) {
            std::string n = e->d_name;
            if (n.size() == 9 && n[0] == 'D' && n.compare(4, 5, ".json") == 0)
                r.push_back(n.substr(0, 4));
        }
        closedir(d);
    }
    std::sort(r.begin(), r.end(), [](const std::string &a, const std::string &b) {
        return publication(a) < publication(b);
    });
    return r;
}

}  // namespace edi::dirs
