// "sonmetra-cli unit identify|record|play": the external acquisition unit
// from the command line, on the workstation's own protocol code, for
// scripting and for diagnosing a unit.
//
//   unit identify [--unit simulated:N|usb] [--trace FILE]
//   unit record OUT.kvd --ms T [--mux 1|2|3] [--source Mic|Line] [--rate HZ] [--unit ...] [--trace FILE]
//   unit play FILE [--channel N] [--unit ...] [--trace FILE]
//
// The unit, its USB ids and the device name come from the workstation's
// settings and configuration record (UsbUnitSettings.h); --unit and
// SONMETRA_UNIT override the choice of unit. A recording takes every input
// the multiplex row samples, at the rates of the configuration record's
// channel table (the rate the row carries where a row has none).
#pragma once

#include <ostream>
#include <set>
#include <string>

#include "cli/CliArgs.h"

namespace sonmetra::cli {

const std::set<std::string>& unitValueOptions();
// Runs "unit ..."; throws UsageError for bad usage and CommandFailed or
// UserException after a message. Returns the exit code.
int runUnitCommand(const CliArgs& args, std::ostream& out);
const char* unitUsage();

}  // namespace sonmetra::cli
