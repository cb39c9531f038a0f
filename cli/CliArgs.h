// Command line of sonmetra-cli: a command, positional arguments, "--name
// value" options and bare "--flag" switches. Which names take a value is
// declared by the caller, so that "--raw --from-ms 5" parses unambiguously.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonmetra::cli {

// Bad usage: the tool prints the usage line and exits with 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A command that failed after its message was written: exit 1.
class CommandFailed : public std::runtime_error {
public:
    CommandFailed() : std::runtime_error("command failed") {}
};

struct CliArgs {
    std::string command;
    std::vector<std::string> positional;
    std::map<std::string, std::string> options;  // without the leading "--"
    std::set<std::string> flags;

    bool has(const std::string& name) const { return options.count(name) != 0 || flags.count(name) != 0; }
    bool flag(const std::string& name) const { return flags.count(name) != 0; }
    std::string text(const std::string& name, const std::string& fallback = {}) const;
    // A number option; throws UsageError when it is not a number.
    std::optional<double> number(const std::string& name) const;
    double number(const std::string& name, double fallback) const;
    int integer(const std::string& name, int fallback) const;
};

// Parses argv[1..]; names in valueOptions take the next argument as value
// ("--name value", or "-n value" for a one-letter name), every other
// "--name" is a flag. Throws UsageError.
CliArgs parseCliArgs(int argc, const char* const* argv, const std::set<std::string>& valueOptions);

}  // namespace sonmetra::cli
