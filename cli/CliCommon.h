// Helpers shared by the commands of sonmetra-cli: number output in the
// shortest form that reads back to the same double, channel choice, and the
// document's time-to-sample rule.
#pragma once

#include <ostream>
#include <string>

#include "CliArgs.h"
#include "document/CKestruneDoc.h"

namespace sonmetra::cli {

// Shortest round-trip text of a double (std::to_chars).
std::string formatNumber(double v);
void writeNumber(std::ostream& out, double v);

// The channel chosen by --channel N (1-based); default the audio channel,
// else channel 1. Throws UsageError for a channel the document lacks.
int chosenChannel(const CKestruneDoc& doc, const CliArgs& args);

// A time in ms as a sample position: truncation of t × count ÷ duration.
double msToSample(const CChannel& ch, double ms);

// Applies --from-ms/--to-ms as the channel selection of every channel (both
// needed together; UsageError otherwise). Returns false when neither is given.
bool applySelectionOptions(CKestruneDoc& doc, const CliArgs& args);

// Opens FILE with the workstation's reader sequence, answering the channel
// selection and generic file dialogs from --wav-channel and --raw-*.
// Writes the workstation's message on failure and throws CommandFailed.
void openForCli(const std::string& path, const CliArgs& args, CKestruneDoc& doc);

}  // namespace sonmetra::cli
