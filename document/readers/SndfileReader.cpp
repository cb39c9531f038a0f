#include "SndfileReader.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include "AiffReader.h"
#include "ImportDefaults.h"
#include "document/MessageService.h"
#include "document/QuietStderr.h"
#include "res/StringTable.h"

namespace sonmetra {
namespace {

// libsndfile reads through these callbacks instead of opening the path
// again, so that it sees exactly the bytes of the file the sequence opened
// and never reads past its end.
struct VirtualFile {
    BinaryFile* file;
    sf_count_t pos = 0;
};

sf_count_t vioLength(void* user) { return static_cast<sf_count_t>(static_cast<VirtualFile*>(user)->file->size()); }

sf_count_t vioSeek(sf_count_t offset, int whence, void* user) {
    auto* v = static_cast<VirtualFile*>(user);
    const auto size = static_cast<sf_count_t>(v->file->size());
    sf_count_t base = whence == SEEK_CUR ? v->pos : whence == SEEK_END ? size : 0;
    if ((offset > 0 && base > INT64_MAX - offset) || base + offset < 0) return -1;
    v->pos = base + offset;
    return v->pos;
}

sf_count_t vioRead(void* ptr, sf_count_t count, void* user) {
    auto* v = static_cast<VirtualFile*>(user);
    const auto size = static_cast<sf_count_t>(v->file->size());
    if (count <= 0 || v->pos >= size) return 0;
    const sf_count_t want = std::min(count, size - v->pos);
    if (static_cast<sf_count_t>(v->file->position()) != v->pos && !v->file->seek(static_cast<std::uint64_t>(v->pos)))
        return 0;
    const auto got = static_cast<sf_count_t>(v->file->read(ptr, static_cast<std::size_t>(want)));
    v->pos += got;
    return got;
}

sf_count_t vioWrite(const void*, sf_count_t, void*) { return 0; }
sf_count_t vioTell(void* user) { return static_cast<VirtualFile*>(user)->pos; }

// Families with a distinct signature. Formats recognised by weak headers
// (MAT4, HTK, raw MPEG frames, ...) are left out: they would take plain
// number files and raw integer files away from the generic dialog.
bool acceptedFamily(int format) {
    switch (format & SF_FORMAT_TYPEMASK) {
        case SF_FORMAT_WAV:
        case SF_FORMAT_WAVEX:
        case SF_FORMAT_RF64:
        case SF_FORMAT_W64:
        case SF_FORMAT_AIFF:
        case SF_FORMAT_AU:
        case SF_FORMAT_CAF:
        case SF_FORMAT_FLAC:
        case SF_FORMAT_OGG:
        case SF_FORMAT_NIST:
        case SF_FORMAT_IRCAM:
        case SF_FORMAT_VOC:
        case SF_FORMAT_SVX:
            return true;
        default:
            return false;
    }
}

// Encodings whose natural values are floats: read as doubles so that values
// beyond full scale are seen and counted instead of wrapped.
bool floatEncoding(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_FLOAT:
        case SF_FORMAT_DOUBLE:
        case SF_FORMAT_VORBIS:
        case SF_FORMAT_OPUS:
            return true;
        default:
            return false;
    }
}

// Encodings that the WAV and AIFF readers of our own read. Such a file with
// several channels reaches this reader only when the user cancelled the
// channel selection there (or it was malformed before the question), so it
// is declined instead of asking a second time.
bool readByOwnReaders(int format) {
    const int family = format & SF_FORMAT_TYPEMASK;
    const int encoding = format & SF_FORMAT_SUBMASK;
    if (family == SF_FORMAT_WAV)
        return encoding == SF_FORMAT_PCM_U8 || encoding == SF_FORMAT_PCM_16 || encoding == SF_FORMAT_ULAW;
    if (family == SF_FORMAT_AIFF) return encoding == SF_FORMAT_PCM_S8 || encoding == SF_FORMAT_PCM_16;
    return false;
}

struct SndfileCloser {
    void operator()(SNDFILE* s) const {
        QuietStderr quiet;
        sf_close(s);
    }
};

// Reads every frame, keeping channel `chosen`. The claimed frame count is
// only a hint for compressed files, so the block grows as samples arrive.
// Returns false after the memory message.
template <typename T, typename Read, typename Convert>
bool readChosenChannel(SNDFILE* sf, int channels, int chosen, sf_count_t claimedFrames, SampleBlock& out, Read read,
                       Convert convert) {
    // No larger than the claim, and not cleared: the library writes what it
    // delivers, and only that is read. (A short file does not pay for a
    // half-megabyte buffer.)
    const std::size_t framesPerBlock = std::max<std::size_t>(
        1, std::min<std::size_t>(65536 / static_cast<std::size_t>(channels),
                                 static_cast<std::size_t>(std::max<sf_count_t>(claimedFrames, 0))));
    const auto buffer = std::make_unique_for_overwrite<T[]>(framesPerBlock * static_cast<std::size_t>(channels));
    sf_count_t total = 0;
    while (total < claimedFrames) {
        const sf_count_t want = std::min<sf_count_t>(static_cast<sf_count_t>(framesPerBlock), claimedFrames - total);
        const sf_count_t got = read(sf, buffer.get(), want);
        if (got <= 0) break;
        const std::size_t old = out.size();
        if (!allocateImportSamples(out, old + static_cast<std::size_t>(got))) return false;
        for (sf_count_t i = 0; i < got; ++i)
            out[old + static_cast<std::size_t>(i)] = convert(buffer[static_cast<std::size_t>(i * channels + chosen)]);
        total += got;
    }
    return true;
}

}  // namespace

std::int16_t scaleFloatTo16(double x, bool& clipped) {
    if (std::isnan(x)) {
        clipped = true;
        return 0;
    }
    const double scaled = std::nearbyint(x * 32767.0);
    if (scaled > 32767.0 || scaled < -32767.0) {
        clipped = true;
        return static_cast<std::int16_t>(scaled > 0 ? 32767 : -32767);
    }
    return static_cast<std::int16_t>(scaled);
}

ReadStatus readSndfile(BinaryFile& file, CKestruneDoc& doc, ReadContext& context) {
    if (file.size() == 0) return ReadStatus::NotMyType;
    VirtualFile vf{&file, 0};
    SF_VIRTUAL_IO io{vioLength, vioSeek, vioRead, vioWrite, vioTell};
    SF_INFO info{};
    std::unique_ptr<SNDFILE, SndfileCloser> sf;
    {
        // Probing a file that is not MPEG makes the MPEG decoder talk.
        QuietStderr quiet;
        sf.reset(sf_open_virtual(&io, SFM_READ, &info, &vf));
    }
    if (!sf) return ReadStatus::NotMyType;
    if (!acceptedFamily(info.format) || info.channels <= 0 || info.frames < 0 || !plausibleImportRate(info.samplerate))
        return ReadStatus::NotMyType;
    // Several channels but no frames: nothing to choose from.
    if (info.channels > 1 && (readByOwnReaders(info.format) || info.frames == 0)) return ReadStatus::NotMyType;
    // libsndfile reports an AIFF rate of 0 as 1 Hz and a non-finite one as a
    // large number; the rate in the file decides.
    if ((info.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_AIFF && !plausibleImportRate(aiffSampleRate(file)))
        return ReadStatus::NotMyType;

    const int chosen = chooseImportChannel(context, info.channels);
    if (chosen < 0) return ReadStatus::NotMyType;

    SampleBlock samples;
    // A hint only: never more samples than the file has bytes.
    if (!samples.reserve(
            static_cast<std::size_t>(std::min<std::uint64_t>(static_cast<std::uint64_t>(info.frames), file.size())))) {
        showMessage(IDS_NO_MEMORY);
        return ReadStatus::Abandoned;
    }
    std::size_t clippedCount = 0;
    bool ok = false;
    if (floatEncoding(info.format)) {
        sf_command(sf.get(), SFC_SET_NORM_DOUBLE, nullptr, SF_TRUE);
        ok = readChosenChannel<double>(sf.get(), info.channels, chosen, info.frames, samples, sf_readf_double,
                                       [&clippedCount](double x) {
                                           bool clipped = false;
                                           const std::int16_t s = scaleFloatTo16(x, clipped);
                                           clippedCount += clipped ? 1 : 0;
                                           return s;
                                       });
    } else {
        ok = readChosenChannel<int>(sf.get(), info.channels, chosen, info.frames, samples, sf_readf_int,
                                    [](int v) { return roundIntTo16(v); });
    }
    if (!ok) return ReadStatus::Abandoned;

    applyImportDefaults(doc, std::move(samples), info.samplerate, context.fileName, "sndfile");
    if (clippedCount > 0)
        showMessage(formatString(IDS_SAMPLES_CLIPPED, std::to_string(clippedCount)), MsgButtons::Ok,
                    MsgIcon::Information);
    return ReadStatus::Accepted;
}

}  // namespace sonmetra
