#include "parallelndjson.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "edi.h"
#include "ndjson.h"

namespace edi {

namespace {

// The message number a line names ("message":N); 0 when none.
long messageof(std::string_view line)
{
    size_t at = line.find("\"message\":");
    return at == std::string_view::npos ? 0 : strtol(line.data() + at + 10, nullptr, 10);
}

bool nextline(FILE *f, std::string &line)
{
    char *buf = nullptr;
    size_t cap = 0;
    ssize_t n = getline(&buf, &cap, f);
    if (n > 0)
        line.assign(buf, static_cast<size_t>(n));
    else
        line.clear();
    free(buf);
    return n > 0;
}

struct Worker {
    pid_t pid = -1;
    FILE *out = nullptr, *err = nullptr;
    // The next line of its output and the message it names, read into a
    // buffer kept for all its lines.
    char *line = nullptr;
    size_t cap = 0, len = 0;
    long message = 0;
    bool more = false;
    void next()
    {
        ssize_t n = getline(&line, &cap, out);
        more = n > 0;
        len = more ? static_cast<size_t>(n) : 0;
        message = more ? messageof(std::string_view(line, len)) : 0;
    }
};

}  // namespace

Exit readndjsonparallel(const Options &opt, const std::string &input, const std::string &out)
{
    const int n = opt.jobs;
    std::vector<Worker> workers(static_cast<size_t>(n));
    Exit status = exit_ok;
    fflush(stdout);
    fflush(stderr);
    for (int k = 0; k < n; k++) {
        Worker &w = workers[static_cast<size_t>(k)];
        w.out = tmpfile();
        w.err = tmpfile();
        w.pid = w.out != nullptr && w.err != nullptr ? fork() : -1;
        if (w.pid == 0) {
            dup2(fileno(w.out), 1);
            dup2(fileno(w.err), 2);
            Options mine = opt;
            mine.parts = n;
            mine.part = k;
            Exit rc = readndjson(mine, input, "-");
            fflush(stdout);
            fflush(stderr);
            _exit(rc);
        }
        if (w.pid < 0) {
            perror("edi: fork");
            status = exit_failed;
        }
    }
    for (Worker &w : workers) {
        int ws = 0;
        if (w.pid > 0 && waitpid(w.pid, &ws, 0) == w.pid) {
            Exit rc = WIFEXITED(ws) ? static_cast<Exit>(WEXITSTATUS(ws)) : exit_failed;
            if (rc != exit_ok && status == exit_ok)
                status = rc;
        }
    }
    // Each worker says what holds for the input as a whole; it is shown once.
    std::set<std::string> shown;
    for (Worker &w : workers) {
        if (w.err == nullptr)
            continue;
        rewind(w.err);
        std::string line;
        while (nextline(w.err, line))
            if (shown.insert(line).second)
                fputs(line.c_str(), stderr);
    }
    edi_output *file = out.empty() || out == "-" ? nullptr : edi_output_open(out.c_str());
    for (Worker &w : workers)
        if (w.out != nullptr) {
            rewind(w.out);
            w.next();
        }
    // Each worker's lines rise in message number: the least first.
    for (;;) {
        Worker *least = nullptr;
        for (Worker &w : workers)
            if (w.more && (least == nullptr || w.message < least->message))
                least = &w;
        if (least == nullptr)
            break;
        if (file != nullptr)
            edi_output_write(file, least->line, least->len);
        else
            fwrite(least->line, 1, least->len, stdout);
        least->next();
    }
    for (Worker &w : workers) {
        free(w.line);
        if (w.out != nullptr)
            fclose(w.out);
        if (w.err != nullptr)
            fclose(w.err);
    }
    if (file != nullptr) {
        edi_result *saved = edi_output_close(file, status == exit_ok);
        for (size_t i = 0; i < edi_result_finding_count(saved); i++)
            fprintf(stderr, "%s\n", edi_result_finding(saved, i)->text);
        if (edi_result_status(saved) != 0)
            status = exit_failed;
        edi_result_free(saved);
    } else {
        fflush(stdout);
    }
    return status;
}

}  // namespace edi
