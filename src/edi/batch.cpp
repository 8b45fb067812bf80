#include "batch.h"

#include <dirent.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>

#include "paths.h"

namespace edi {

namespace {

struct Child {
    size_t index;
    FILE *out, *err;
};

std::string slurp(FILE *fp)
{
    std::string s;
    rewind(fp);
    char buf[8192];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, fp)) > 0)
        s.append(buf, n);
    fclose(fp);
    return s;
}

// The reason of a failure: the last line the child wrote, without the
// file name in front.
std::string reason(const std::string &err, const std::string &input)
{
    std::string s = err;
    while (!s.empty() && s.back() == '\n')
        s.pop_back();
    size_t nl = s.rfind('\n');
    std::string last = nl == std::string::npos ? s : s.substr(nl + 1);
    if (last.compare(0, input.size() + 2, input + ": ") == 0)
        last.erase(0, input.size() + 2);
    return last.empty() ? "no message" : last;
}

}  // namespace

std::vector<std::string> expandinputs(const std::vector<std::string> &inputs)
{
    std::vector<std::string> out;
    for (const std::string &in : inputs) {
        if (in == "-" || !isfolder(in)) {  // "-" is standard input
            out.push_back(in);
            continue;
        }
        std::vector<std::string> names;
        if (DIR *d = opendir(in.c_str())) {
            while (struct dirent *e = readdir(d)) {
                std::string path = in + "/" + e->d_name;
                struct stat st;
                if (e->d_name[0] != '.' && stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode))
                    names.push_back(path);
            }
            closedir(d);
        }
        std::sort(names.begin(), names.end());
        out.insert(out.end(), names.begin(), names.end());
    }
    return out;
}

Exit readbatch(const std::vector<std::string> &inputs, const Options &opt,
               const std::function<Exit(const std::string &)> &readone)
{
    bool tty = isatty(2);
    std::map<pid_t, Child> running;
    std::vector<std::pair<std::string, std::string>> failed;
    size_t done = 0, next = 0;
    // Several JSON documents on stdout are one array, as without -j.
    const bool array = opt.format == "json" && inputs.size() > 1 &&
                       (opt.output.empty() || opt.output == "-");
    const char *separator = "[\n";
    auto progress = [&] {
        if (tty)
            fprintf(stderr, "\r\033[Kedi: %zu/%zu done, %zu read, %zu failed", done, inputs.size(),
                    done - failed.size(), failed.size());
    };
    while (next < inputs.size() || !running.empty()) {
        if (next < inputs.size() && running.size() < static_cast<size_t>(opt.jobs)) {
            Child c{next, tmpfile(), tmpfile()};
            fflush(stdout);
            fflush(stderr);
            pid_t pid = c.out != nullptr && c.err != nullptr ? fork() : -1;
            if (pid == 0) {
                dup2(fileno(c.out), 1);
                dup2(fileno(c.err), 2);
                Exit rc = readone(inputs[next]);
                fflush(stdout);
                fflush(stderr);
                _exit(rc);
            }
            if (pid < 0) {
                perror("edi: fork");
                if (c.out != nullptr)
                    fclose(c.out);
                if (c.err != nullptr)
                    fclose(c.err);
                failed.emplace_back(inputs[next], "no process could be started");
                done++;
            } else {
                running[pid] = c;
            }
            next++;
            continue;
        }
        int ws = 0;
        pid_t pid = wait(&ws);
        auto it = running.find(pid);
        if (pid < 0 || it == running.end())
            continue;
        Child c = it->second;
        running.erase(it);
        const std::string &input = inputs[c.index];
        std::string out = slurp(c.out), err = slurp(c.err);
        if (tty)
            fputs("\r\033[K", stderr);
        if (array && !out.empty()) {
            fputs(separator, stdout);
            separator = ",\n";
        }
        fwrite(out.data(), 1, out.size(), stdout);
        fflush(stdout);
        fputs(err.c_str(), stderr);
        done++;
        if (!WIFEXITED(ws))
            failed.emplace_back(input, "ended by signal " + std::to_string(WTERMSIG(ws)));
        else if (WEXITSTATUS(ws) != 0)
            failed.emplace_back(input, reason(err, input));
        progress();
    }
    if (tty)
        fputs("\r\033[K", stderr);
    if (array)
        fputs(separator[0] == '[' ? "[\n]\n" : "]\n", stdout);
    for (const auto &[input, why] : failed)
        fprintf(stderr, "%s: failed: %s\n", input.c_str(), why.c_str());
    fprintf(stderr, "edi: %zu files: %zu read, %zu failed\n", inputs.size(),
            inputs.size() - failed.size(), failed.size());
    return failed.empty() ? exit_ok : exit_failed;
}

}  // namespace edi
