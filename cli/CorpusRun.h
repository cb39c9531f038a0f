// Corpus runs: one command over many input files with --out-dir DIR.
//
// The command itself stays a per-file command: for each input it runs on
// a copy of the arguments that names that input alone, and its result is
// written beside the others in DIR, named after the input (x.wav gives
// DIR/x.tsv). A failing input prints its message after its name and the
// run goes on; the exit code is 1 when any input failed. While standard
// error is a terminal a progress bar stands on its last line.
//
// Options that name an output file of their own (--png) take, in a corpus
// run, the ending to put after each input's name: --png .png writes
// DIR/x.png.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "CliArgs.h"

namespace sonmetra::cli {

struct CorpusCommand {
    // Positional arguments that come before the inputs ("export" for labels export).
    std::vector<std::string> leading;
    // The ending of each result's name (".tsv", ".TextGrid").
    std::string resultSuffix;
    // True: the command writes the result itself, to the path given as its
    // last positional argument. False: what it writes to `out` is the result
    // (no file is left when it writes nothing, as with --png).
    bool resultIsArgument = false;
    // Runs the command on one input; throws as the single command does.
    std::function<int(const CliArgs& oneInput, std::ostream& out)> run;
};

bool isCorpusRun(const CliArgs& args);  // --out-dir was given

// Runs the command on every input; returns the exit code (0, or 1 when any
// input failed). Throws UsageError before running anything for bad usage:
// no input, or two inputs that would write the same result.
int runCorpus(const CliArgs& args, const CorpusCommand& command);

}  // namespace sonmetra::cli
