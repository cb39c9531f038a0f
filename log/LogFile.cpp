#include "LogFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "document/AtomicFileWriter.h"
#include "document/BinaryFile.h"
#include "document/MessageService.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

// Calls fn(begin, end) for every non-empty line; CR, LF and CR LF all end a line.
template <class Fn>
void forEachLine(const std::string& text, Fn fn) {
    std::size_t start = 0;
    const std::size_t n = text.size();
    while (start < n) {
        std::size_t end = start;
        while (end < n && text[end] != '\r' && text[end] != '\n') ++end;
        if (end > start) fn(start, end);
        start = end;
        while (start < n && (text[start] == '\r' || text[start] == '\n')) ++start;
    }
}

std::string cleanText(const std::string& t) {
    std::string s = t;
    std::replace_if(
        s.begin(), s.end(), [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
    return s;
}

}  // namespace

LogReadStatus readLogText(const std::string& path, LogText& out, const std::function<void(int, int)>& progress) {
    out = LogText();
    // Only a regular file: a pipe or a device would block or never end.
    BinaryFile in;
    if (!in.open(path)) return LogReadStatus::OpenError;
    std::string text;
    try {
        text.resize(static_cast<std::size_t>(in.size()));
    } catch (const std::exception&) {
        return LogReadStatus::OpenError;
    }
    text.resize(in.read(text.data(), text.size()));
    if (text.empty()) return LogReadStatus::ZeroLength;

    // Pass 1: lines and the widest line.
    int lineCount = 0;
    int maxTabs = 0;
    int maxCells = 0;
    forEachLine(text, [&](std::size_t b, std::size_t e) {
        ++lineCount;
        const int tabs = static_cast<int>(
            std::count(text.begin() + static_cast<long>(b), text.begin() + static_cast<long>(e), '\t'));
        maxTabs = std::max(maxTabs, tabs);
        // A last cell written without its TAB is a cell too: keep it.
        const int cells = tabs + (text[e - 1] != '\t' ? 1 : 0);
        maxCells = std::max(maxCells, cells);
    });
    if (maxTabs < 3) return LogReadStatus::NotALog;

    // Pass 2: the cells.
    out.columns = std::max(maxTabs, maxCells);
    out.lines.reserve(static_cast<std::size_t>(lineCount));
    int done = 0;
    forEachLine(text, [&](std::size_t b, std::size_t e) {
        std::vector<std::string> cells;
        std::size_t s = b;
        for (std::size_t i = b; i < e; ++i) {
            if (text[i] == '\t') {
                cells.emplace_back(text, s, i - s);
                s = i + 1;
            }
        }
        if (s < e) cells.emplace_back(text, s, e - s);
        out.lines.push_back(std::move(cells));
        ++done;
        if (progress && (done % 256 == 0 || done == lineCount)) progress(done, lineCount);
    });
    return LogReadStatus::Ok;
}

bool readLogFile(const std::string& path, LogText& out, const std::function<void(int, int)>& progress) {
    switch (readLogText(path, out, progress)) {
        case LogReadStatus::Ok:
            return true;
        case LogReadStatus::OpenError:
            showMessage(IDS_FILE_OPEN_ERROR);
            return false;
        case LogReadStatus::ZeroLength:
            beep();
            showMessage(IDS_ZERO_LENGTH_FILE);
            return false;
        case LogReadStatus::NotALog:
            showMessage(IDS_INVALID_LOG_FILE);
            return false;
    }
    return false;
}

std::string formatLogText(const std::vector<LogRow>& rows) {
    std::string out;
    char number[64];
    for (const LogRow& row : rows) {
        for (const LogCell& cell : row) {
            switch (cell.kind) {
                case LogCell::Kind::Empty:
                    break;
                case LogCell::Kind::Text:
                    out += cleanText(cell.text);
                    break;
                case LogCell::Kind::Number:
                    std::snprintf(number, sizeof number, "%30.2f", cell.value);
                    out += number;
                    break;
            }
            out += '\t';
        }
        out += "\r\n";
    }
    return out;
}

bool writeLogFile(const std::string& path, const std::vector<LogRow>& rows) {
    // Like a document: a failed or killed save keeps the previous log, and a
    // read-only one is refused with the failed-save report.
    const std::string text = formatLogText(rows);
    return writeFileAtomically(
        path, [&](std::FILE* f) { return std::fwrite(text.data(), 1, text.size(), f) == text.size(); });
}

bool parseLogNumber(const std::string& cell, double& value) {
    const char* s = cell.c_str();
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(s, &end);
    if (end == s) return false;
    while (*end == ' ') ++end;
    if (*end != '\0') return false;
    value = v;
    return true;
}

}  // namespace sonmetra
