// The configuration record as the record and play commands and their
// options window see it: the application's record when one is loaded, else
// a record of defaults (tests, a view used without the application).
#pragma once

namespace sonmetra {
class AppConfig;
}

sonmetra::AppConfig& recordPlayConfig();
// Writes the record to its file; a record without a file is left alone, a
// file that cannot be written is reported. False after the report.
bool writeRecordPlayConfig();
