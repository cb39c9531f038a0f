// sonmetra-cli: opens any file the workstation opens, with the same readers
// in the same order, and reports, converts or analyses it without a window.
#include <cstdio>
#include <iostream>
#include <string>

#include "AnalysisCommands.h"
#include "CliArgs.h"
#include "CliCommon.h"
#include "CorpusRun.h"
#include "JsonInfo.h"
#include "LabelCommands.h"
#include "document/AtomicFileWriter.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "document/WavWriter.h"

namespace {

using namespace sonmetra;
using namespace sonmetra::cli;

const char* kUsage =
    "usage: sonmetra-cli info FILE | samples FILE [--channel N] | convert IN OUT.kvd|OUT.wav [--channel N] "
    "[--from-ms A --to-ms B]\n"
    "       shared options: --wav-channel N  --raw-header BYTES --raw-rate HZ --raw-bits 8|16 --raw-order low|high";

bool endsWith(const std::string& s, const std::string& suffix) {
    return s.size() >= suffix.size() && s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

void requirePositional(const CliArgs& args, std::size_t n) {
    if (args.positional.size() != n) throw UsageError(args.command + " takes " + std::to_string(n) + " file name(s)");
}

int runSamples(const CliArgs& args, CKestruneDoc& doc) {
    const CChannel& c = doc.channel(chosenChannel(doc, args));
    std::string out;
    out.reserve(c.m_samples.size() * 7);
    for (const std::int16_t s : c.m_samples) {
        out += std::to_string(s);
        out += '\n';
    }
    std::cout << out;
    return 0;
}

int runConvert(const CliArgs& args, CKestruneDoc& doc) {
    const std::string& outPath = args.positional[1];
    const bool selection = applySelectionOptions(doc, args);
    if (endsWith(outPath, ".kvd")) {
        doc.setFileTypeIndex(1);
        if (selection ? !doc.saveSelectionAs(outPath) : !doc.saveCopyAs(outPath)) throw CommandFailed();
        return 0;
    }
    if (endsWith(outPath, ".wav")) {
        const CChannel& c = doc.channel(chosenChannel(doc, args));
        if (!writeFileAtomically(outPath, [&](std::FILE* f) { return writeWavChannel(f, c, selection); })) {
            beep();
            showMessage("Error in save operation.");
            throw CommandFailed();
        }
        return 0;
    }
    throw UsageError("convert writes OUT.kvd or OUT.wav");
}

// An analysis command over many files: each table goes to DIR/NAME.tsv.
int runAnalysisCorpus(const CliArgs& args) {
    const std::string& c = args.command;
    if (c != "spectrum" && c != "lpc" && c != "pitch" && c != "spectrogram" && c != "intensity")
        throw UsageError(c + " does not take --out-dir");
    CorpusCommand command;
    command.resultSuffix = ".tsv";
    command.run = [](const CliArgs& one, std::ostream& out) {
        CKestruneDoc doc;
        openForCli(one.positional[0], one, doc);
        return runAnalysisCommand(one, doc, out);
    };
    return runCorpus(args, command);
}

int run(int argc, char** argv) {
    std::set<std::string> valueOptions = {"channel",  "wav-channel", "raw-header", "raw-rate",
                                          "raw-bits", "raw-order",   "from-ms",    "to-ms"};
    for (const auto& name : analysisValueOptions()) valueOptions.insert(name);
    for (const auto& name : labelsValueOptions()) valueOptions.insert(name);
    const CliArgs args = parseCliArgs(argc, argv, valueOptions);
    if (args.command.empty()) throw UsageError("no command given");

    const bool known = args.command == "info" || args.command == "samples" || args.command == "convert" ||
                       args.command == "labels" || isAnalysisCommand(args.command);
    if (!known) throw UsageError("unknown command '" + args.command + "'");
    if (args.command == "labels") return runLabelsCommand(args);
    if (isCorpusRun(args)) return runAnalysisCorpus(args);
    if (args.positional.empty()) throw UsageError(args.command + " needs a FILE");

    CKestruneDoc doc;
    if (args.command == "info") {
        requirePositional(args, 1);
        openForCli(args.positional[0], args, doc);
        std::cout << documentInfoJson(doc) << '\n';
        return 0;
    }
    if (args.command == "samples") {
        requirePositional(args, 1);
        openForCli(args.positional[0], args, doc);
        return runSamples(args, doc);
    }
    if (args.command == "convert") {
        requirePositional(args, 2);
        openForCli(args.positional[0], args, doc);
        return runConvert(args, doc);
    }
    openForCli(args.positional[0], args, doc);
    return runAnalysisCommand(args, doc, std::cout);
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        return run(argc, argv);
    } catch (const UsageError& e) {
        std::cerr << "sonmetra-cli: " << e.what() << '\n' << kUsage;
        std::cerr << '\n' << analysisUsage();
        std::cerr << '\n' << labelsUsage();
        std::cerr << '\n';
        return 2;
    } catch (const CommandFailed&) {
        return 1;
    } catch (const UserException&) {
        return 1;
    } catch (const std::exception& e) {
        std::cerr << "sonmetra-cli: " << e.what() << '\n';
        return 1;
    }
}
