#include "AiffReader.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "ImportDefaults.h"
#include "InterleavedData.h"
#include "document/ByteOrder.h"

namespace sonmetra {
namespace {

bool isId(const std::uint8_t* p, const char* id) { return std::memcmp(p, id, 4) == 0; }

struct AiffLayout {
    bool haveComm = false;
    bool haveSound = false;
    int channels = 0;
    std::uint32_t frames = 0;
    int bits = 0;
    double rateHz = 0.0;
    bool littleEndian = false;
    bool compressionKnown = true;
    std::uint64_t soundOffset = 0;
    std::uint64_t soundBytes = 0;  // bytes of sample data present in the file
};

bool readComm(BinaryFile& file, std::uint64_t size, bool aifc, AiffLayout& a) {
    std::uint8_t comm[22];
    const std::size_t need = aifc ? 22 : 18;
    if (size < need || !file.readExact(comm, need)) return false;
    a.channels = static_cast<std::int16_t>(getBe16(comm));
    a.frames = getBe32(comm + 2);
    a.bits = static_cast<std::int16_t>(getBe16(comm + 6));
    a.rateHz = decodeExtended80(comm + 8);
    if (aifc) {
        a.littleEndian = isId(comm + 18, "sowt");
        a.compressionKnown = a.littleEndian || isId(comm + 18, "NONE");
    }
    a.haveComm = true;
    return true;
}

bool readSsnd(BinaryFile& file, std::uint64_t pos, std::uint64_t size, AiffLayout& a) {
    std::uint8_t head[8];
    if (size < 8 || !file.readExact(head, sizeof head)) return false;
    const std::uint64_t offset = getBe32(head);
    const std::uint64_t start = pos + 16 + offset;
    const std::uint64_t end = std::min(pos + 8 + size, file.size());
    a.soundOffset = start;
    a.soundBytes = end > start ? end - start : 0;
    a.haveSound = true;
    return true;
}

// Reads the 12-byte "FORM" header; false when it is not AIFF or AIFC.
bool readFormHeader(BinaryFile& file, bool& aifc) {
    std::uint8_t form[12];
    if (!file.seek(0) || !file.readExact(form, sizeof form) || !isId(form, "FORM")) return false;
    aifc = isId(form + 8, "AIFC");
    return aifc || isId(form + 8, "AIFF");
}

// Walks the chunks after the FORM header until COMM and SSND are both
// found. False when COMM is missing or too short to hold its fields.
bool scanChunks(BinaryFile& file, bool aifc, AiffLayout& a) {
    const std::uint64_t fileSize = file.size();
    std::uint64_t pos = 12;
    while (pos + 8 <= fileSize && !(a.haveComm && a.haveSound)) {
        std::uint8_t head[8];
        if (!file.seek(pos) || !file.readExact(head, sizeof head)) break;
        const std::uint64_t size = getBe32(head + 4);
        if (isId(head, "COMM") && !a.haveComm) {
            if (!readComm(file, size, aifc, a)) return false;
        } else if (isId(head, "SSND") && !a.haveSound) {
            if (!readSsnd(file, pos, size, a)) return false;
        }
        // Everything else is stepped over: "FVER", "MARK", "INST", "MIDI", "AESD",
        // "APPL", "COMT", "NAME", "AUTH", "(c) ", "ANNO", and chunks of newer
        // writers ("ID3 ", "CHAN", ...) that carry nothing the import needs.
        pos += 8 + size + (size & 1);
    }
    return a.haveComm;
}

}  // namespace

double decodeExtended80(const std::uint8_t bytes[10]) {
    const bool negative = (bytes[0] & 0x80) != 0;
    const int exponent = ((bytes[0] & 0x7F) << 8) | bytes[1];
    const std::uint64_t mantissa = getBe64(bytes + 2);
    double value = 0.0;
    if (exponent == 0x7FFF) {
        // The integer bit aside, a zero fraction is infinity, anything else NaN.
        value =
            (mantissa << 1) == 0 ? std::numeric_limits<double>::infinity() : std::numeric_limits<double>::quiet_NaN();
    } else if (mantissa != 0) {
        // value = mantissa × 2^(exponent − bias − 63); ldexp handles under- and overflow.
        value = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
    }
    return negative ? -value : value;
}

double aiffSampleRate(BinaryFile& file) {
    bool aifc = false;
    AiffLayout a;
    if (!readFormHeader(file, aifc) || !scanChunks(file, aifc, a)) return std::numeric_limits<double>::quiet_NaN();
    return a.rateHz;
}

ReadStatus readAiff(BinaryFile& file, CKestruneDoc& doc, ReadContext& context) {
    bool aifc = false;
    if (!readFormHeader(file, aifc)) return ReadStatus::NotMyType;

    AiffLayout a;
    if (!scanChunks(file, aifc, a) || !a.haveSound || !a.compressionKnown) return ReadStatus::NotMyType;
    if (a.channels <= 0 || a.bits < 1 || a.bits > 16 || !plausibleImportRate(a.rateHz)) return ReadStatus::NotMyType;

    // Sizes 1-8 are stored in one byte, 9-16 in two, left-justified.
    const int bytesPerSample = a.bits <= 8 ? 1 : 2;
    const std::uint64_t frameBytes = static_cast<std::uint64_t>(a.channels) * bytesPerSample;
    const auto frames = static_cast<std::size_t>(std::min<std::uint64_t>(a.frames, a.soundBytes / frameBytes));

    // Nothing to choose from: a channel count too large for even one frame.
    if (a.channels > 1 && frames == 0) return ReadStatus::NotMyType;
    const int chosen = chooseImportChannel(context, a.channels);
    if (chosen < 0) return ReadStatus::NotMyType;

    SampleBlock samples;
    if (!allocateImportSamples(samples, frames)) return ReadStatus::Abandoned;
    std::size_t got = 0;
    if (bytesPerSample == 1) {
        got = readInterleavedChannel(file, a.soundOffset, frames, a.channels, 1, chosen, samples,
                                     [](const std::uint8_t* p) { return signed8ToSample(*p); });
    } else if (a.littleEndian) {
        got = readInterleavedChannel(file, a.soundOffset, frames, a.channels, 2, chosen, samples,
                                     [](const std::uint8_t* p) { return static_cast<std::int16_t>(getLe16(p)); });
    } else {
        got = readInterleavedChannel(file, a.soundOffset, frames, a.channels, 2, chosen, samples,
                                     [](const std::uint8_t* p) { return static_cast<std::int16_t>(getBe16(p)); });
    }
    (void)samples.resize(got);
    applyImportDefaults(doc, std::move(samples), a.rateHz, context.fileName, "AIFF");
    return ReadStatus::Accepted;
}

}  // namespace sonmetra
