#include "CorpusRun.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>

#include "document/MessageService.h"
#include "document/UserException.h"

namespace sonmetra::cli {
namespace {

namespace fs = std::filesystem;

// Options whose value names a file the command writes besides its table.
const std::set<std::string>& outputFileOptions() {
    static const std::set<std::string> names = {"png", "npy"};
    return names;
}

// The progress bar on the last line of a terminal: "[#####     ] 12/40 name".
class ProgressBar {
public:
    explicit ProgressBar(std::size_t total) : m_total(total), m_shown(isatty(STDERR_FILENO) != 0) {}
    ~ProgressBar() { clear(); }

    void show(std::size_t done, const std::string& name) {
        if (!m_shown) return;
        constexpr std::size_t kWidth = 30;
        const std::size_t filled = m_total ? done * kWidth / m_total : kWidth;
        std::string line = "\r[" + std::string(filled, '#') + std::string(kWidth - filled, ' ') + "] " +
                           std::to_string(done) + "/" + std::to_string(m_total) + " " + name.substr(0, 40);
        std::cerr << line << "\033[K" << std::flush;
        m_drawn = true;
    }
    // Takes the bar off its line, so that a message can stand there.
    void clear() {
        if (m_drawn) std::cerr << "\r\033[K" << std::flush;
        m_drawn = false;
    }

private:
    std::size_t m_total;
    bool m_shown;
    bool m_drawn = false;
};

// Writes each message after the name of the input it is about; questions
// get the answer the tool gives without a corpus (the last button).
class CorpusMessages : public IMessageService {
public:
    explicit CorpusMessages(ProgressBar& bar) : m_bar(bar) {}
    void setInput(const std::string& name) { m_input = name; }

    MsgAnswer show(const std::string& text, MsgButtons buttons, MsgIcon) override {
        report(text);
        if (buttons == MsgButtons::Ok) return MsgAnswer::Ok;
        return buttons == MsgButtons::YesNo ? MsgAnswer::No : MsgAnswer::Cancel;
    }
    void beep() override {}

    void report(const std::string& text) {
        m_bar.clear();
        std::cerr << m_input << ": " << text << '\n' << std::flush;
    }

private:
    ProgressBar& m_bar;
    std::string m_input;
};

// The arguments of one input's run.
CliArgs argsForInput(const CliArgs& args, const CorpusCommand& command, const std::string& input,
                     const fs::path& resultBase) {
    CliArgs one = args;
    one.options.erase("out-dir");
    one.positional = command.leading;
    one.positional.push_back(input);
    if (command.resultIsArgument) one.positional.push_back(resultBase.string() + command.resultSuffix);
    for (const std::string& name : outputFileOptions()) {
        const auto it = one.options.find(name);
        if (it != one.options.end()) it->second = resultBase.string() + it->second;
    }
    return one;
}

// Runs one input; true when it succeeded. Its result replaces an earlier
// one only when complete: a table goes to a ".part" file first.
bool runInput(const CliArgs& one, const CorpusCommand& command, const fs::path& result, CorpusMessages& messages) {
    const fs::path part = result.string() + ".part";
    bool ok = false;
    try {
        if (command.resultIsArgument) {
            std::ostream none(nullptr);
            ok = command.run(one, none) == 0;
        } else {
            std::ofstream out(part, std::ios::binary | std::ios::trunc);
            if (!out) {
                messages.report("Cannot create the file '" + part.string() + "'.");
                return false;
            }
            ok = command.run(one, out) == 0;
            out.close();
            if (ok && !out) {
                messages.report("Cannot write the file '" + part.string() + "'.");
                ok = false;
            }
        }
    } catch (const UsageError& e) {
        messages.report(e.what());
    } catch (const CommandFailed&) {
    } catch (const UserException&) {
    } catch (const std::exception& e) {
        messages.report(e.what());
    }
    std::error_code ec;
    if (!command.resultIsArgument) {
        if (ok && fs::file_size(part, ec) > 0 && !ec) {
            fs::rename(part, result, ec);
            if (ec) {
                messages.report("Cannot write the file '" + result.string() + "': " + ec.message());
                ok = false;
            }
        }
        fs::remove(part, ec);
    }
    return ok;
}

}  // namespace

bool isCorpusRun(const CliArgs& args) { return args.has("out-dir"); }

int runCorpus(const CliArgs& args, const CorpusCommand& command) {
    const std::string dirText = args.text("out-dir");
    if (dirText.empty()) throw UsageError("--out-dir needs a folder");
    const fs::path dir(dirText);
    if (args.positional.size() <= command.leading.size()) throw UsageError(args.command + " needs input files");
    const std::vector<std::string> inputs(args.positional.begin() + static_cast<long>(command.leading.size()),
                                          args.positional.end());
    for (const std::string& name : outputFileOptions()) {
        const std::string value = args.text(name);
        if (args.has(name) && (value.empty() || value[0] != '.'))
            throw UsageError("in a corpus run --" + name + " takes the ending of each file's name, e.g. --" + name +
                             " ." + name);
    }
    // Each result is named after its input: two inputs must not share a name.
    std::map<std::string, std::string> takenBy;
    for (const std::string& input : inputs) {
        const std::string stem = fs::path(input).stem().string();
        const auto [it, fresh] = takenBy.emplace(stem, input);
        if (!fresh)
            throw UsageError("'" + it->second + "' and '" + input + "' would both write " + stem +
                             command.resultSuffix + " in " + dirText);
    }
    std::error_code ec;
    fs::create_directories(dir, ec);
    if (ec || !fs::is_directory(dir)) {
        std::cerr << "Cannot create the folder '" << dirText << "'" << (ec ? ": " + ec.message() : "") << ".\n";
        return 1;
    }

    ProgressBar bar(inputs.size());
    CorpusMessages messages(bar);
    ScopedMessageService install(&messages);
    std::size_t failed = 0;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const std::string& input = inputs[i];
        const std::string name = fs::path(input).filename().string();
        bar.show(i, name);
        messages.setInput(input);
        const fs::path base = dir / fs::path(input).stem();
        if (!runInput(argsForInput(args, command, input, base), command, base.string() + command.resultSuffix,
                      messages))
            ++failed;
    }
    bar.show(inputs.size(), "");
    bar.clear();
    if (failed > 0) {
        std::cerr << failed << " of " << inputs.size() << " inputs failed.\n";
        return 1;
    }
    return 0;
}

}  // namespace sonmetra::cli
