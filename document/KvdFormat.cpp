#include "KvdFormat.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <system_error>
#include <thread>
#include <vector>

#include "ByteOrder.h"
#include "MessageService.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

std::string fixedText(const std::uint8_t* p, std::size_t width) {
    const auto* c = reinterpret_cast<const char*>(p);
    return std::string(c, strnlen(c, width));
}

void putFixedText(std::uint8_t* p, std::size_t width, const std::string& text) {
    std::memset(p, 0, width);
    std::memcpy(p, text.data(), std::min(text.size(), width - 1));
}

LogFont fontFromRecord(const std::uint8_t* p, bool bigEndian) {
    LogFont f;
    f.height = getI32(p, bigEndian);
    f.width = getI32(p + 4, bigEndian);
    f.escapement = getI32(p + 8, bigEndian);
    f.orientation = getI32(p + 12, bigEndian);
    f.weight = getI32(p + 16, bigEndian);
    f.italic = p[20];
    f.underline = p[21];
    f.strikeOut = p[22];
    f.charSet = p[23];
    f.outPrecision = p[24];
    f.clipPrecision = p[25];
    f.quality = p[26];
    f.pitchAndFamily = p[27];
    std::memcpy(f.faceName.data(), p + 28, f.faceName.size());
    return f;
}

void fontToRecord(const LogFont& f, std::uint8_t* p) {
    putI32(p, f.height);
    putI32(p + 4, f.width);
    putI32(p + 8, f.escapement);
    putI32(p + 12, f.orientation);
    putI32(p + 16, f.weight);
    const std::uint8_t bytes[8] = {f.italic,       f.underline,     f.strikeOut, f.charSet,
                                   f.outPrecision, f.clipPrecision, f.quality,   f.pitchAndFamily};
    std::memcpy(p + 20, bytes, 8);
    std::memcpy(p + 28, f.faceName.data(), f.faceName.size());
}

CLabel labelFromRecord(const std::uint8_t* p, bool bigEndian) {
    CLabel l;
    l.timeMs = getF64(p, bigEndian);
    l.secondCoordinate = getF64(p + 8, bigEndian);
    l.justification = getI32(p + 16, bigEndian);
    l.flag = getI32(p + 20, bigEndian);
    for (int i = 0; i < 4; ++i) l.params[i] = getI32(p + 24 + 4 * i, bigEndian);
    l.red = getI32(p + 40, bigEndian);
    l.green = getI32(p + 44, bigEndian);
    l.blue = getI32(p + 48, bigEndian);
    if (bigEndian) {
        // The colour is formed from the low byte of each word; the font is the
        // default one with only its height taken from the file.
        l.red &= 0xff;
        l.green &= 0xff;
        l.blue &= 0xff;
        l.font = LogFont::defaultFont();
        l.font.height = getI32(p + 52, true);
    } else {
        l.font = fontFromRecord(p + 52, false);
    }
    l.text = fixedText(p + 112, 256);
    return l;
}

void labelToRecord(const CLabel& l, double timeMs, std::uint8_t* p) {
    std::memset(p, 0, kvd::kLabelRecordSize);
    putF64(p, timeMs);
    putF64(p + 8, l.secondCoordinate);
    putI32(p + 16, l.justification);
    putI32(p + 20, l.flag);
    for (int i = 0; i < 4; ++i) putI32(p + 24 + 4 * i, l.params[i]);
    putI32(p + 40, l.red);
    putI32(p + 44, l.green);
    putI32(p + 48, l.blue);
    fontToRecord(l.font, p + 52);
    putFixedText(p + 112, 256, l.text);
}

// Gain and bandwidth are held as doubles but stored truncated; values no
// int32 can hold are limited rather than left to undefined conversion.
std::int32_t truncToInt32(double v) {
    if (std::isnan(v)) return 0;
    return static_cast<std::int32_t>(std::clamp(std::trunc(v), -2147483648.0, 2147483647.0));
}

// Reports sample data that the file does not hold: a message for PC files,
// a silent abandon for Mac files.
ReadStatus shortData(bool bigEndian) {
    if (!bigEndian) showMessage(IDS_INCORRECT_DATA_COUNT);
    return ReadStatus::Abandoned;
}

// A channel header or label record cut short: reported in either byte
// order, since the user would otherwise see the open fail without a word.
ReadStatus shortRecords() {
    showMessage(IDS_INCORRECT_DATA_COUNT);
    return ReadStatus::Abandoned;
}

// Reads n samples from the file's position into `to`, in host order, and
// moves past them; false when the file holds fewer. A long block is shared
// among threads, each reading its own part: what opening costs beyond the copy
// is the kernel zeroing the block's fresh pages, and that is shared too. Every
// part is read in slices converted while they are still in the cache.
constexpr std::size_t kSlice = std::size_t{1} << 18;      // samples
constexpr std::size_t kPerThread = std::size_t{8} << 20;  // samples a thread is worth
constexpr std::size_t kMaxThreads = 4;

bool readSamples(BinaryFile& file, std::int16_t* to, std::size_t n, bool bigEndian) {
    const std::uint64_t start = file.position();
    const auto part = [&file, to, start, bigEndian](std::size_t from, std::size_t end) {
        for (std::size_t at = from; at < end; at += kSlice) {
            const std::size_t k = std::min(kSlice, end - at);
            if (file.readAt(start + 2 * at, to + at, 2 * k) != 2 * k) return false;
            samplesFromFileOrder(to + at, k, bigEndian);
        }
        return true;
    };
    const std::size_t threads = std::clamp<std::size_t>(
        std::min<std::size_t>(std::thread::hardware_concurrency(), n / kPerThread), 1, kMaxThreads);
    const std::size_t share = (n + threads - 1) / threads;
    std::vector<char> ok(threads, 0);  // one flag per part, written by its thread
    std::vector<std::thread> helpers;
    for (std::size_t t = 1; t < threads; ++t) {
        const std::size_t from = t * share, end = std::min(n, from + share);
        try {
            helpers.emplace_back([&part, &ok, t, from, end] { ok[t] = part(from, end) ? 1 : 0; });
        } catch (const std::system_error&) {
            ok[t] = part(from, end) ? 1 : 0;  // no thread to be had: this one reads the part
        }
    }
    ok[0] = part(0, std::min(n, share)) ? 1 : 0;
    for (std::thread& h : helpers) h.join();
    return std::find(ok.begin(), ok.end(), 0) == ok.end() && file.seek(start + 2 * static_cast<std::uint64_t>(n));
}

ReadStatus readKvd(BinaryFile& file, CKestruneDoc& doc, const char* marker, bool bigEndian) {
    std::uint8_t header[kvd::kFileHeaderSize];
    if (!file.readExact(header, sizeof header)) return ReadStatus::NotMyType;
    if (fixedText(header, 8) != marker) return ReadStatus::NotMyType;

    const std::int32_t count = getI32(header + 8, bigEndian);
    if (count <= 0 || count >= CKestruneDoc::kSlots) {
        showMessage(IDS_WRONG_CHANNEL_NUMBER);
        return ReadStatus::Abandoned;
    }

    doc.clearChannels();
    std::uint8_t ch[kvd::kChannelHeaderSize];
    std::uint8_t rec[kvd::kLabelRecordSize];
    for (int i = 0; i < count; ++i) {
        CChannel& c = doc.channel(i);
        if (!file.readExact(ch, sizeof ch)) return shortRecords();
        c.m_durationMs = getF64(ch, bigEndian);
        c.m_rateHz = getF64(ch + 8, bigEndian);
        c.m_sampleCount = getF64(ch + 16, bigEndian);
        c.m_reference = getF64(ch + 24, bigEndian);
        c.m_c3 = getF64(ch + 32, bigEndian);
        c.m_c2 = getF64(ch + 40, bigEndian);
        c.m_c1 = getF64(ch + 48, bigEndian);
        c.m_c0 = getF64(ch + 56, bigEndian);
        c.m_audio = getI32(ch + 64, bigEndian);
        c.m_bitsPerSample = getI32(ch + 68, bigEndian);
        c.m_reservedA = getI32(ch + 72, bigEndian);
        c.m_reservedB = getI32(ch + 76, bigEndian);
        c.m_number = getI32(ch + 80, bigEndian);
        c.m_gain = getI32(ch + 84, bigEndian);
        c.m_bandwidthHz = getI32(ch + 88, bigEndian);
        const std::int32_t labelCount = getI32(ch + 92, bigEndian);
        c.m_reservedC = getI32(ch + 96, bigEndian);
        c.m_reservedD = getI32(ch + 100, bigEndian);
        c.m_reservedE = getI32(ch + 104, bigEndian);
        c.m_reservedF = getI32(ch + 108, bigEndian);
        c.m_reservedG = getI32(ch + 112, bigEndian);
        c.m_name = fixedText(ch + 116, 64);
        c.m_units = fixedText(ch + 180, 64);
        c.m_inUse = 1;
        c.resetDisplayToWhole();

        // A count the rest of the file cannot hold is short data, never an
        // allocation of that size.
        c.m_labels.clear();
        if (labelCount < 0 || static_cast<std::uint64_t>(labelCount) * kvd::kLabelRecordSize > file.remaining())
            return shortRecords();
        c.m_labels.reserve(static_cast<std::size_t>(labelCount));
        for (std::int32_t k = 0; k < labelCount; ++k) {
            if (!file.readExact(rec, sizeof rec)) return shortRecords();
            c.m_labels.push_back(labelFromRecord(rec, bigEndian));
        }

        const double n = c.m_sampleCount;
        if (!(n >= 0.0) || n != std::trunc(n) || n * 2.0 > static_cast<double>(file.remaining()))
            return shortData(bigEndian);
        const auto samples = static_cast<std::size_t>(n);
        if (!c.m_samples.resizeForOverwrite(samples)) {
            showMessage(IDS_NO_MEMORY);
            return ReadStatus::Abandoned;
        }
        if (!readSamples(file, c.m_samples.data(), samples, bigEndian)) {
            c.m_samples.clear();
            return shortData(bigEndian);
        }
    }

    doc.setChannelCount(count);
    doc.setModified(false);
    doc.setForeignMark(bigEndian);
    applyAudioChannelRule(doc);
    doc.setReaderName(marker);
    return ReadStatus::Accepted;
}

}  // namespace

void applyAudioChannelRule(CKestruneDoc& doc) {
    for (int i = 0; i < doc.channelCount(); ++i)
        if (doc.channel(i).m_audio == 1) return;
    for (int i = 0; i < doc.channelCount(); ++i) {
        if (doc.channel(i).m_rateHz > 8000.0) {
            doc.channel(i).m_audio = 1;
            return;
        }
    }
}

ReadStatus readRvmPc(BinaryFile& file, CKestruneDoc& doc, ReadContext&) {
    return readKvd(file, doc, kvd::kMarkerPc, false);
}

ReadStatus readRvmMac(BinaryFile& file, CKestruneDoc& doc, ReadContext&) {
    return readKvd(file, doc, kvd::kMarkerMac, true);
}

bool writeKvd(std::FILE* file, const CKestruneDoc& doc, bool selectionOnly) {
    int stored = 0;
    for (int i = 0; i < doc.channelCount(); ++i) stored += doc.channel(i).m_inUse ? 1 : 0;

    std::uint8_t header[kvd::kFileHeaderSize] = {};
    std::memcpy(header, kvd::kMarkerPc, sizeof kvd::kMarkerPc);
    putI32(header + 8, stored);
    if (std::fwrite(header, 1, sizeof header, file) != sizeof header) return false;

    std::vector<std::uint8_t> labels;
    for (int i = 0; i < doc.channelCount(); ++i) {
        const CChannel& c = doc.channel(i);
        if (!c.m_inUse) continue;

        double duration = c.m_durationMs;
        double count = c.m_sampleCount;
        double origin = 0.0;  // label times are rebased to this
        std::size_t first = 0;
        if (selectionOnly) {
            duration = c.m_selEndMs - c.m_selStartMs;
            count = std::trunc(c.m_selEndSample - c.m_selStartSample);
            origin = c.m_selStartMs;
            first = static_cast<std::size_t>(std::max(0.0, std::trunc(c.m_selStartSample)));
        }
        // Never write past the samples the channel holds.
        first = std::min(first, c.m_samples.size());
        const std::size_t samples =
            std::min(static_cast<std::size_t>(std::max(0.0, count)), c.m_samples.size() - first);
        if (static_cast<double>(samples) != count) count = static_cast<double>(samples);

        labels.clear();
        std::int32_t labelCount = 0;
        for (const CLabel& l : c.m_labels) {
            if (selectionOnly && !(l.timeMs >= c.m_selStartMs && l.timeMs <= c.m_selEndMs)) continue;
            labels.resize(labels.size() + kvd::kLabelRecordSize);
            labelToRecord(l, l.timeMs - origin, labels.data() + labels.size() - kvd::kLabelRecordSize);
            ++labelCount;
        }

        std::uint8_t ch[kvd::kChannelHeaderSize] = {};
        putF64(ch, duration);
        putF64(ch + 8, c.m_rateHz);
        putF64(ch + 16, count);
        putF64(ch + 24, c.m_reference);
        putF64(ch + 32, c.m_c3);
        putF64(ch + 40, c.m_c2);
        putF64(ch + 48, c.m_c1);
        putF64(ch + 56, c.m_c0);
        putI32(ch + 64, c.m_audio);
        putI32(ch + 68, c.m_bitsPerSample);
        putI32(ch + 72, c.m_reservedA);
        putI32(ch + 76, c.m_reservedB);
        putI32(ch + 80, c.m_number);
        putI32(ch + 84, truncToInt32(c.m_gain));
        putI32(ch + 88, truncToInt32(c.m_bandwidthHz));
        putI32(ch + 92, labelCount);
        putI32(ch + 96, c.m_reservedC);
        putI32(ch + 100, c.m_reservedD);
        putI32(ch + 104, c.m_reservedE);
        putI32(ch + 108, c.m_reservedF);
        putI32(ch + 112, c.m_reservedG);
        putFixedText(ch + 116, 64, c.m_name);
        putFixedText(ch + 180, 64, c.m_units);
        if (std::fwrite(ch, 1, sizeof ch, file) != sizeof ch) return false;
        if (!labels.empty() && std::fwrite(labels.data(), 1, labels.size(), file) != labels.size()) return false;
        if (!writeSamplesLe(file, c.m_samples.data() + first, samples)) return false;
    }
    return true;
}

}  // namespace sonmetra
