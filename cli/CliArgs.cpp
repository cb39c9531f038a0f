#include "CliArgs.h"

#include <charconv>
#include <cmath>

namespace sonmetra::cli {

std::string CliArgs::text(const std::string& name, const std::string& fallback) const {
    const auto it = options.find(name);
    return it == options.end() ? fallback : it->second;
}

std::optional<double> CliArgs::number(const std::string& name) const {
    const auto it = options.find(name);
    if (it == options.end()) return std::nullopt;
    const std::string& s = it->second;
    double v = 0.0;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || end != s.data() + s.size() || !std::isfinite(v))
        throw UsageError("--" + name + " needs a number, not '" + s + "'");
    return v;
}

double CliArgs::number(const std::string& name, double fallback) const { return number(name).value_or(fallback); }

int CliArgs::integer(const std::string& name, int fallback) const {
    const auto v = number(name);
    if (!v) return fallback;
    if (*v != std::trunc(*v) || std::fabs(*v) > 1e9) throw UsageError("--" + name + " needs a whole number");
    return static_cast<int>(*v);
}

CliArgs parseCliArgs(int argc, const char* const* argv, const std::set<std::string>& valueOptions) {
    CliArgs args;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a.size() > 2 && a.compare(0, 2, "--") == 0) {
            const std::string name = a.substr(2);
            if (valueOptions.count(name)) {
                if (i + 1 >= argc) throw UsageError("--" + name + " needs a value");
                args.options[name] = argv[++i];
            } else {
                args.flags.insert(name);
            }
        } else if (a.size() == 2 && a[0] == '-' && valueOptions.count(a.substr(1))) {
            // A one-letter option such as "-o OUT".
            if (i + 1 >= argc) throw UsageError(a + " needs a value");
            args.options[a.substr(1)] = argv[++i];
        } else if (args.command.empty()) {
            args.command = a;
        } else {
            args.positional.push_back(a);
        }
    }
    return args;
}

}  // namespace sonmetra::cli
