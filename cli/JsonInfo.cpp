#include "JsonInfo.h"

#include <cmath>
#include <cstdio>

#include "CliCommon.h"
#include "document/FileText.h"

namespace sonmetra::cli {
namespace {

// A JSON string of a text field: UTF-8 (from the file's 8-bit encoding
// where it is not UTF-8 already), with quotes and control bytes escaped.
std::string quoted(const std::string& field) {
    const std::string s = fileTextToUtf8(field);
    std::string out = "\"";
    for (const char ch : s) {
        const auto c = static_cast<unsigned char>(ch);
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (c < 0x20) {
                    char buf[8];
                    std::snprintf(buf, sizeof buf, "\\u%04x", c);
                    out += buf;
                } else {
                    out += ch;
                }
        }
    }
    return out + "\"";
}

// JSON has no NaN or infinity: a file may hold them, and they become null.
std::string num(double v) { return std::isfinite(v) ? formatNumber(v) : "null"; }

}  // namespace

std::string documentInfoJson(const CKestruneDoc& doc) {
    std::string j = "{\"reader\": " + quoted(doc.readerName()) + ", \"channels\": [";
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& c = doc.channel(i);
        if (i) j += ", ";
        j += "{\"number\": " + std::to_string(c.m_number) + ", \"name\": " + quoted(c.m_name) +
             ", \"units\": " + quoted(c.m_units) + ", \"audio\": " + std::to_string(c.m_audio) +
             ", \"rate\": " + num(c.m_rateHz) + ", \"samples\": " + num(c.m_sampleCount) +
             ", \"duration_ms\": " + num(c.m_durationMs) + ", \"bits\": " + std::to_string(c.m_bitsPerSample) +
             ", \"gain\": " + num(c.m_gain) + ", \"bandwidth\": " + num(c.m_bandwidthHz) +
             ", \"reference\": " + num(c.m_reference) + ", \"calibration\": [" + num(c.m_c3) + ", " + num(c.m_c2) +
             ", " + num(c.m_c1) + ", " + num(c.m_c0) + "], \"reserved\": {\"A\": " + std::to_string(c.m_reservedA) +
             ", \"B\": " + std::to_string(c.m_reservedB) + ", \"C\": " + std::to_string(c.m_reservedC) +
             ", \"D\": " + std::to_string(c.m_reservedD) + ", \"E\": " + std::to_string(c.m_reservedE) +
             ", \"F\": " + std::to_string(c.m_reservedF) + ", \"G\": " + std::to_string(c.m_reservedG) +
             "}, \"labels\": [";
        for (std::size_t k = 0; k < c.m_labels.size(); ++k) {
            if (k) j += ", ";
            j += "{\"time_ms\": " + num(c.m_labels[k].timeMs) + ", \"text\": " + quoted(c.m_labels[k].text) + "}";
        }
        j += "]}";
    }
    return j + "]}";
}

}  // namespace sonmetra::cli
