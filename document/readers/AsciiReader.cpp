#include "AsciiReader.h"

#include <charconv>
#include <cmath>
#include <new>
#include <string>
#include <vector>

#include "ImportDefaults.h"
#include "document/MessageService.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Rounds half away from zero; what would round beyond 16 bits is clipped.
std::int16_t clipTo16(double v, std::size_t& clippedCount) {
    if (v < 32767.5 && v > -32768.5) return static_cast<std::int16_t>(std::lround(v));
    ++clippedCount;
    return static_cast<std::int16_t>(v > 0 ? 32767 : -32768);
}

// Roughly the decimal exponent of a valid unsigned number: only its sign is
// used, to tell a value too large for a double from one too small, and a
// value that is out of range is hundreds of decades away from 1.
long decimalMagnitude(std::string_view number) {
    const std::size_t expAt = number.find_first_of("eE");
    const std::string_view mantissa = number.substr(0, expAt);
    long magnitude = 0;
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t firstNonZero = mantissa.find_first_of("123456789");
    if (firstNonZero == std::string_view::npos) return -1;  // zero
    magnitude =
        firstNonZero < point ? static_cast<long>(point - firstNonZero) : -static_cast<long>(firstNonZero - point - 1);
    if (expAt != std::string_view::npos) {
        long exponent = 0;
        std::size_t i = expAt + 1;
        const bool negative = i < number.size() && number[i] == '-';
        if (i < number.size() && (number[i] == '+' || number[i] == '-')) ++i;
        for (; i < number.size() && exponent < 100000; ++i) exponent = exponent * 10 + (number[i] - '0');
        magnitude += negative ? -exponent : exponent;
    }
    return magnitude;
}

}  // namespace

std::optional<double> parseAsciiNumber(std::string_view token) {
    std::size_t i = 0;
    if (i < token.size() && (token[i] == '+' || token[i] == '-')) ++i;
    const std::size_t mantissaStart = i;
    std::size_t digits = 0;
    while (i < token.size() && isDigit(token[i])) ++i, ++digits;
    if (i < token.size() && token[i] == '.') {
        ++i;
        while (i < token.size() && isDigit(token[i])) ++i, ++digits;
    }
    if (digits == 0) return std::nullopt;
    if (i < token.size() && (token[i] == 'e' || token[i] == 'E')) {
        ++i;
        if (i < token.size() && (token[i] == '+' || token[i] == '-')) ++i;
        const std::size_t expStart = i;
        while (i < token.size() && isDigit(token[i])) ++i;
        if (i == expStart) return std::nullopt;
    }
    if (i != token.size()) return std::nullopt;

    // from_chars takes no leading '+'; a value too large for a double is
    // still a number, and clips like any other large one.
    double value = 0.0;
    const char* first = token.data() + mantissaStart;
    const auto [ptr, ec] = std::from_chars(first, token.data() + token.size(), value);
    if (ec == std::errc::result_out_of_range) {
        value = decimalMagnitude(token.substr(mantissaStart)) > 0 ? HUGE_VAL : 0.0;
    } else if (ec != std::errc{} || ptr != token.data() + token.size()) {
        return std::nullopt;
    }
    return token[0] == '-' ? -value : value;
}

bool isPlainText(BinaryFile& file) {
    if (!file.seek(0)) return false;
    unsigned char buffer[65536];
    int continuation = 0;  // bytes still owed by the current UTF-8 character
    bool sawAny = false;
    for (;;) {
        const std::size_t got = file.read(buffer, sizeof buffer);
        for (std::size_t i = 0; i < got; ++i) {
            const unsigned char c = buffer[i];
            if (continuation > 0) {
                if ((c & 0xC0) != 0x80) return false;
                --continuation;
                continue;
            }
            if (c >= 0x20 && c < 0x7F) {
                sawAny = true;
            } else if (isSpace(static_cast<char>(c))) {
                sawAny = true;
            } else if (c >= 0xC2 && c <= 0xF4) {
                // The lead byte of a two- to four-byte UTF-8 character.
                continuation = c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
                sawAny = true;
            } else {
                return false;
            }
        }
        if (got < sizeof buffer) break;
    }
    return sawAny && continuation == 0;
}

ReadStatus readAscii(BinaryFile& file, CKestruneDoc& doc, ReadContext&) {
    const double rateHz = doc.m_generic.rateHz;
    if (!plausibleImportRate(rateHz)) {
        showMessage(IDS_GENERIC_READ_ERROR);
        return ReadStatus::Abandoned;
    }
    std::vector<char> text;
    try {
        text.resize(static_cast<std::size_t>(file.size()));
    } catch (const std::bad_alloc&) {
        showMessage(IDS_NO_MEMORY);
        return ReadStatus::Abandoned;
    }
    if (!file.seek(0) || !file.readExact(text.data(), text.size())) {
        showMessage(IDS_GENERIC_READ_ERROR);
        return ReadStatus::Abandoned;
    }

    // Every number needs at least one character and one separator, so half
    // the file's size bounds the count.
    SampleBlock samples;
    if (!samples.reserve(text.size() / 2 + 1)) {
        showMessage(IDS_NO_MEMORY);
        return ReadStatus::Abandoned;
    }
    std::size_t clippedCount = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && isSpace(text[i])) ++i;
        const std::size_t start = i;
        while (i < text.size() && !isSpace(text[i])) ++i;
        if (i == start) break;
        const auto value = parseAsciiNumber(std::string_view(text.data() + start, i - start));
        if (!value) {
            showMessage(IDS_NOT_PURE_ASCII);
            return ReadStatus::Abandoned;
        }
        const std::size_t n = samples.size();
        if (!allocateImportSamples(samples, n + 1)) return ReadStatus::Abandoned;
        samples[n] = clipTo16(*value, clippedCount);
    }
    if (samples.empty()) return ReadStatus::NotMyType;

    applyImportDefaults(doc, std::move(samples), rateHz, "ascii file", "ascii");
    if (clippedCount > 0)
        showMessage(formatString(IDS_SAMPLES_CLIPPED, std::to_string(clippedCount)), MsgButtons::Ok,
                    MsgIcon::Information);
    return ReadStatus::Accepted;
}

}  // namespace sonmetra
