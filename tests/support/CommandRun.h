// A shell command run the way a user or a script runs it, for the tests of
// the command-line program: its exit status and both of its outputs. No Qt.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace sonmetra::test {

// How a command ended: its exit status (-1 when it did not exit normally)
// and what it wrote to standard output and to standard error.
struct CommandRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs `command` through the shell with its standard error sent to errFile,
// which is read back afterwards; without errFile standard error is left to
// the command line (" 2>&1" in it joins it to the output).
inline CommandRun runCommand(const std::string& command, const std::string& errFile = {}) {
    CommandRun r;
    std::FILE* pipe = popen((errFile.empty() ? command : command + " 2>" + errFile).c_str(), "r");
    if (pipe == nullptr) return r;
    char buf[4096];
    std::size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) r.out.append(buf, n);
    const int status = pclose(pipe);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (errFile.empty()) return r;
    std::ifstream err(errFile, std::ios::binary);
    r.err.assign(std::istreambuf_iterator<char>(err), std::istreambuf_iterator<char>());
    return r;
}

}  // namespace sonmetra::test
