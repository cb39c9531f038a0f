// "sonmetra-cli labels": a document's labels to and from the label files
// of other tools (TextGrid, tab-separated label text).
//
//   labels export DOC OUT.TextGrid|OUT.txt [--channel N] [--tier NAME] [--kind interval|point]
//   labels export DOC... --out-dir DIR [--format TextGrid|txt]
//   labels import DOC IN.TextGrid|IN.txt -o OUT.kvd [--tier NAME] [--channel N]
#pragma once

#include <set>
#include <string>

#include "cli/CliArgs.h"

namespace sonmetra::cli {

const std::set<std::string>& labelsValueOptions();
// Runs "labels export" or "labels import" (a corpus run with --out-dir).
// Throws UsageError for bad usage, CommandFailed after its message.
int runLabelsCommand(const CliArgs& args);
const char* labelsUsage();

}  // namespace sonmetra::cli
