#include "directory/repeats.h"

#include <algorithm>
#include <mutex>

#include "directory/autoconfig.h"
#include "directory/configgen.h"
#include "directory/directorydata.h"

namespace edi {

bool elementrepeats(const std::string &msgtype, std::map<std::string, std::vector<int>> &out)
{
    out.clear();
    size_t a = msgtype.find(':');
    size_t b = a == std::string::npos ? a : msgtype.find(':', a + 1);
    if (b == std::string::npos)
        return false;
    size_t c = msgtype.find(':', b + 1);
    std::string directory = msgtype.substr(a + 1, b - a - 1) + msgtype.substr(b + 1, c - b - 1);
    // Kept for the process, by data folder and directory: loading one
    // takes 10 to 15 ms, and every working copy asks.
    using Maxima = std::map<std::string, std::vector<int>>;
    static std::mutex lock;
    static std::map<std::string, std::pair<bool, Maxima>> known;
    const std::string key = directoriesdir() + '\n' + directory;
    std::lock_guard<std::mutex> hold(lock);
    auto it = known.find(key);
    if (it == known.end()) {
        dirs::Directory d;
        std::string err;
        Maxima m;
        bool ok = d.load(directoriesdir(), directory, err) && d.data->j.contains("segments");
        // Data of another shape than the shipped one counts as no data.
        try {
            if (ok)
                for (auto &[tag, seg] : d.data->j["segments"].items())
                    for (auto &el : seg.at("elements"))
                        m[tag].push_back(std::clamp(el.value("max", 1), 1, 99));
        } catch (const std::exception &) {
            ok = false;
            m.clear();
        }
        if (known.size() >= 256)
            known.clear();
        it = known.emplace(key, std::make_pair(ok, std::move(m))).first;
    }
    out = it->second.second;
    return it->second.first;
}

}  // namespace edi
