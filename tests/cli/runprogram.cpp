#include "runprogram.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "testsupport.h"

extern char **environ;

RunResult runedi(const std::vector<std::string> &args, const std::vector<std::string> &env)
{
    std::string dir = testsupport::tempdir();
    std::string outpath = dir + "/stdout", errpath = dir + "/stderr";
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&fa, 1, outpath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&fa, 2, errpath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<char *> argv;
    std::string prog = EDI_PROGRAM;
    argv.push_back(prog.data());
    std::vector<std::string> copies = args;
    for (std::string &a : copies)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    std::vector<std::string> envcopies = env;
    std::vector<char *> envp;
    for (std::string &e : envcopies)
        envp.push_back(e.data());
    for (char **e = environ; *e != nullptr; e++)
        envp.push_back(*e);
    envp.push_back(nullptr);
    pid_t pid = 0;
    RunResult r;
    if (posix_spawn(&pid, prog.c_str(), &fa, nullptr, argv.data(), envp.data()) != 0) {
        posix_spawn_file_actions_destroy(&fa);
        return r;
    }
    posix_spawn_file_actions_destroy(&fa);
    int ws = 0;
    waitpid(pid, &ws, 0);
    if (WIFEXITED(ws))
        r.status = WEXITSTATUS(ws);
    else if (WIFSIGNALED(ws))
        r.signal = WTERMSIG(ws);
    r.out = testsupport::readfile(outpath);
    r.err = testsupport::readfile(errpath);
    // In the sanitizer build the program is instrumented too: a report of
    // its own fails the test whatever the exit status (a failing run that
    // leaks still exits with 1).
    for (const char *report : {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "runtime error:"})
        if (r.err.find(report) != std::string::npos)
            ADD_FAILURE() << "edi reported a fault:\n" << r.err;
    return r;
}
