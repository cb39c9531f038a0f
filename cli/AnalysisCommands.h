// The analysis commands of sonmetra-cli: spectrum, lpc, pitch, spectrogram,
// intensity and smooth. Each runs the workstation's own computation on one
// channel of an opened document and writes tab-separated tables (one header
// line each) with numbers in the shortest form that reads back to the same
// double.
#pragma once

#include <ostream>
#include <set>
#include <string>

#include "cli/CliArgs.h"
#include "document/CKestruneDoc.h"

namespace sonmetra::cli {

// Names of options that take a value for the analysis commands (e.g. "at-ms", "order", "png", ...).
const std::set<std::string>& analysisValueOptions();
bool isAnalysisCommand(const std::string& command);  // spectrum lpc pitch spectrogram intensity smooth
// Runs the command on the opened document (selection options not yet applied); tables to out.
// Throws UsageError for bad usage, CommandFailed after writing a message on failure. Returns the exit code (0).
int runAnalysisCommand(const CliArgs& args, CKestruneDoc& doc, std::ostream& out);
// One usage line per analysis command, for the tool's usage text.
const char* analysisUsage();

}  // namespace sonmetra::cli
