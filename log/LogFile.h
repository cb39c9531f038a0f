// The measurement log's file: plain text, one table row per line, cells
// separated by TAB characters.
//
//   writing: every cell is followed by a TAB; numbers are formatted "%30.2f";
//            each row ends with CR LF; TAB, CR and LF inside a text become blanks
//   reading: lines may end with CR, LF or both; empty lines are ignored;
//            pass 1 counts the lines and the largest number of TABs in one
//            line (fewer than 3 everywhere: not a log file), pass 2 splits
//            the cells; every cell is read as text and the caller converts
//            the numeric columns (parseLogNumber)
//
// No Qt here, so the format can be checked on its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace sonmetra {

struct LogCell {
    enum class Kind { Empty, Text, Number };
    Kind kind = Kind::Empty;
    std::string text;
    double value = 0.0;

    static LogCell makeText(std::string t) { return {Kind::Text, std::move(t), 0.0}; }
    static LogCell makeNumber(double v) { return {Kind::Number, {}, v}; }
};
using LogRow = std::vector<LogCell>;

enum class LogReadStatus { Ok, OpenError, ZeroLength, NotALog };

struct LogText {
    std::vector<std::vector<std::string>> lines;  // the cells of every non-empty line
    int columns = 0;  // the largest number of TABs in a line (a last cell without its TAB counts too)
};

// Reads and splits a log file. progress(done, total) is called during pass 2.
LogReadStatus readLogText(const std::string& path, LogText& out, const std::function<void(int, int)>& progress = {});
// Reads and, on failure, beeps where the message asks for it and shows its
// message: "Error in opening the file.", "The file has zero length.",
// "This is not a valid log file.". True on success.
bool readLogFile(const std::string& path, LogText& out, const std::function<void(int, int)>& progress = {});

// The text of a table in the file format.
std::string formatLogText(const std::vector<LogRow>& rows);
// Writes the table; false when the file cannot be written.
bool writeLogFile(const std::string& path, const std::vector<LogRow>& rows);

// The standard text-to-double conversion of a cell ("   12.50" → 12.5);
// false when the cell is blank or holds more than a number.
bool parseLogNumber(const std::string& cell, double& value);

}  // namespace sonmetra
