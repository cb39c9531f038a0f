// The configuration record as the display, zoom and print commands see it:
// the application's record when one is loaded, else a record of defaults
// (tests, a view used without the application).
#pragma once

namespace sonmetra {
class AppConfig;
}

sonmetra::AppConfig& displayConfig();
// Writes the record back to its file after an option dialog's OK. A record
// without a file is left alone; a file that cannot be written is reported.
void writeDisplayConfig();
