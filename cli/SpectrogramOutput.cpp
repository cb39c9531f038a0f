#include "cli/SpectrogramOutput.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

namespace sonmetra::cli {
namespace {

// A file that remembers whether every write succeeded.
class OutFile {
public:
    explicit OutFile(const std::string& path) : m_file(std::fopen(path.c_str(), "wb")) {}
    ~OutFile() {
        if (m_file) std::fclose(m_file);
    }
    OutFile(const OutFile&) = delete;
    OutFile& operator=(const OutFile&) = delete;

    bool isOpen() const { return m_file != nullptr; }
    void write(const void* p, std::size_t n) {
        if (m_ok && n > 0 && std::fwrite(p, 1, n, m_file) != n) m_ok = false;
    }
    bool close() {
        const bool closed = std::fclose(m_file) == 0;
        m_file = nullptr;
        return m_ok && closed;
    }

private:
    std::FILE* m_file;
    bool m_ok = true;
};

void put32(unsigned char* p, std::uint32_t x) {
    p[0] = static_cast<unsigned char>(x >> 24);
    p[1] = static_cast<unsigned char>(x >> 16);
    p[2] = static_cast<unsigned char>(x >> 8);
    p[3] = static_cast<unsigned char>(x);
}

// The zlib stream of the picture in stored (uncompressed) deflate blocks of at
// most 65535 bytes, cut into IDAT chunks of about 1 MB. Raw bytes are fed in
// order; each chunk is written with its CRC when it is full.
class PngStream {
public:
    PngStream(OutFile& file, int width, int height, int channels)
        : m_file(file),
          m_total(static_cast<std::size_t>(height) *
                  (static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) + 1)) {
        static const unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
        m_file.write(kSignature, 8);
        unsigned char header[13];
        put32(header, static_cast<std::uint32_t>(width));
        put32(header + 4, static_cast<std::uint32_t>(height));
        const unsigned char rest[5] = {8, static_cast<unsigned char>(channels == 3 ? 2 : 0), 0, 0, 0};
        std::memcpy(header + 8, rest, 5);
        chunk("IHDR", header, sizeof header);
        m_idat.reserve(kChunkBytes + 65536);
        m_idat = {0x78, 0x01};
    }

    void feed(const unsigned char* p, std::size_t n) {
        m_adler = adler32_z(m_adler, p, n);
        while (n > 0) {
            if (m_blockLeft == 0) startBlock();
            const std::size_t take = std::min(n, m_blockLeft);
            m_idat.insert(m_idat.end(), p, p + take);
            p += take;
            n -= take;
            m_blockLeft -= take;
            m_fed += take;
            if (m_idat.size() >= kChunkBytes) flushIdat();
        }
    }

    void finish() {
        unsigned char a[4];
        put32(a, static_cast<std::uint32_t>(m_adler));
        m_idat.insert(m_idat.end(), a, a + 4);
        flushIdat();
        chunk("IEND", nullptr, 0);
    }

private:
    static constexpr std::size_t kChunkBytes = std::size_t{1} << 20;

    void startBlock() {
        const std::size_t len = std::min<std::size_t>(65535, m_total - m_fed);
        const unsigned char h[5] = {static_cast<unsigned char>(m_fed + len == m_total ? 1 : 0),
                                    static_cast<unsigned char>(len), static_cast<unsigned char>(len >> 8),
                                    static_cast<unsigned char>(~len), static_cast<unsigned char>(~len >> 8)};
        m_idat.insert(m_idat.end(), h, h + 5);
        m_blockLeft = len;
    }
    void flushIdat() {
        chunk("IDAT", m_idat.data(), m_idat.size());
        m_idat.clear();
    }
    void chunk(const char* type, const unsigned char* data, std::size_t n) {
        unsigned char len[4], crc[4];
        put32(len, static_cast<std::uint32_t>(n));
        uLong c = crc32_z(0, reinterpret_cast<const Bytef*>(type), 4);
        if (n > 0) c = crc32_z(c, data, n);  // a null buffer would restart the CRC
        put32(crc, static_cast<std::uint32_t>(c));
        m_file.write(len, 4);
        m_file.write(type, 4);
        m_file.write(data, n);
        m_file.write(crc, 4);
    }

    OutFile& m_file;
    std::size_t m_total;
    std::size_t m_fed = 0;
    std::size_t m_blockLeft = 0;
    std::vector<unsigned char> m_idat;
    uLong m_adler = 1;
};

// The greys of `count` levels in order: 255 at 0 dB and below, 0 at the
// dynamic range and above. A plain loop over contiguous values, which the
// compiler turns into vector instructions.
void greysOf(const double* levels, int count, double scale, unsigned char* grey) {
    for (int i = 0; i < count; ++i) {
        const double v = std::clamp(levels[i] * scale, 0.0, 255.0);
        grey[i] = static_cast<unsigned char>(255 - static_cast<int>(v + 0.5));
    }
}

// Columns [fromColumn, toColumn) of rows [first, first + count) of the
// picture (row 0 at the top, the highest point) into `band`, whose rows start
// with their filter byte. Row y holds point k = h − 1 − y, so a band is a run
// of consecutive points of every column.
// The columns are taken 16 at a time: each column's greys are made in order,
// then the 16 × count tile is turned on its side into the band's rows.
void makeRows(const SpectrogramResult& r, double scale, int rangeHz, bool formants, int first, int count,
              int fromColumn, int toColumn, unsigned char* band) {
    constexpr int kTile = 16;
    const int w = r.columns, h = r.points;
    const int channels = formants ? 3 : 1;
    const std::size_t rowBytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(channels) + 1;
    const int kTop = h - 1 - first;
    const int kLow = kTop - count + 1;
    alignas(64) unsigned char tile[kTile][256];  // tile[j][i]: column c0 + j, point kLow + i
    for (int c0 = fromColumn; c0 < toColumn; c0 += kTile) {
        const int n = std::min(kTile, toColumn - c0);
        // The columns are 8·h bytes apart, too far for the processor to see
        // the pattern: the next tile's part of each is asked for now.
        for (int j = 0; j < kTile && c0 + kTile + j < toColumn; ++j)
            for (int i = 0; i < count; i += 8) __builtin_prefetch(r.column(c0 + kTile + j) + kLow + i);
        for (int j = 0; j < n; ++j) greysOf(r.column(c0 + j) + kLow, count, scale, tile[j]);
        for (int y = 0; y < count; ++y) {
            const int i = count - 1 - y;
            unsigned char* to = band + static_cast<std::size_t>(y) * rowBytes + 1 +
                                static_cast<std::size_t>(c0) * static_cast<std::size_t>(channels);
            if (channels == 1) {
                for (int j = 0; j < n; ++j) to[j] = tile[j][i];
            } else {
                for (int j = 0; j < n; ++j) to[3 * j] = to[3 * j + 1] = to[3 * j + 2] = tile[j][i];
            }
        }
        if (!formants) continue;
        for (int c = c0; c < c0 + n; ++c) {
            for (const std::int16_t fr : r.formants[static_cast<std::size_t>(c)]) {
                if (fr <= 0 || fr >= rangeHz) continue;
                const int k = static_cast<int>(static_cast<double>(fr) * h / rangeHz);
                if (k < kLow || k > kTop) continue;
                unsigned char* px =
                    band + static_cast<std::size_t>(kTop - k) * rowBytes + 1 + static_cast<std::size_t>(c) * 3;
                px[0] = 255;
                px[1] = px[2] = 0;
            }
        }
    }
}

}  // namespace

bool WriteSpectrogramPng(const std::string& path, const SpectrogramResult& r, double dynamicRangeDb, int rangeHz,
                         bool formants) {
    OutFile file(path);
    if (!file.isOpen()) return false;
    const int w = r.columns, h = r.points;
    const int channels = formants ? 3 : 1;
    const double scale = dynamicRangeDb > 0.0 ? 255.0 / dynamicRangeDb : 0.0;
    const std::size_t rowBytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(channels) + 1;
    // Bands of about 2 MB, 16 rows for a picture of 120000 columns: one is
    // written while the next is made, each half of its columns on a thread.
    const int bandRows = static_cast<int>(std::clamp<std::size_t>((std::size_t{2} << 20) / rowBytes, 1, 256));
    const std::size_t bandBytes = rowBytes * static_cast<std::size_t>(bandRows);
    // makeRows writes every byte of a band, so the bands are not cleared
    // first: that would fault in their pages one by one before any work.
    std::vector<unsigned char, LargeAllocator<unsigned char>> memory;
    try {
        memory.resize(2 * bandBytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    const auto band = [&](int which) { return memory.data() + static_cast<std::size_t>(which) * bandBytes; };
    const auto rowsAt = [&](int first) { return std::min(bandRows, h - first); };
    const int half = std::min(w, (w / 2 + 15) / 16 * 16);
    const auto makeBand = [&](int first, unsigned char* into) {
        for (int y = 0; y < rowsAt(first); ++y) into[static_cast<std::size_t>(y) * rowBytes] = 0;  // no filter
        const auto right = [&] { makeRows(r, scale, rangeHz, formants, first, rowsAt(first), half, w, into); };
        std::thread other;
        try {
            other = std::thread(right);
        } catch (const std::system_error&) {
            right();  // no thread to be had: both halves here
        }
        makeRows(r, scale, rangeHz, formants, first, rowsAt(first), 0, half, into);
        if (other.joinable()) other.join();
    };
    PngStream png(file, w, h, channels);
    makeBand(0, band(0));
    for (int first = 0, which = 0; first < h; first += bandRows, which ^= 1) {
        const int next = first + bandRows;
        std::thread maker;
        if (next < h) {
            const auto make = [&, next, which] { makeBand(next, band(which ^ 1)); };
            try {
                maker = std::thread(make);
            } catch (const std::system_error&) {
                make();  // no thread to be had: made here, before this band is written
            }
        }
        png.feed(band(which), rowBytes * static_cast<std::size_t>(rowsAt(first)));
        if (maker.joinable()) maker.join();
    }
    png.finish();
    return file.close();
}

bool WriteSpectrogramNpy(const std::string& path, const SpectrogramResult& r) {
    OutFile file(path);
    if (!file.isOpen()) return false;
    // Magic, version 1.0, header length, then the header dictionary padded
    // with blanks and a newline so that the data starts on a multiple of 64.
    std::string dict = "{'descr': '<f4', 'fortran_order': False, 'shape': (" + std::to_string(r.columns) + ", " +
                       std::to_string(r.points) + "), }";
    const std::size_t preamble = 10;
    const std::size_t total = (preamble + dict.size() + 1 + 63) / 64 * 64;
    dict.append(total - preamble - dict.size() - 1, ' ');
    dict += '\n';
    const unsigned char head[10] = {0x93,
                                    'N',
                                    'U',
                                    'M',
                                    'P',
                                    'Y',
                                    1,
                                    0,
                                    static_cast<unsigned char>(dict.size()),
                                    static_cast<unsigned char>(dict.size() >> 8)};
    file.write(head, sizeof head);
    file.write(dict.data(), dict.size());
    // float32 in slices that stay in the cache.
    constexpr std::size_t kSlice = 16384;
    std::vector<float> slice(kSlice);
    const std::size_t n = r.levels.size();
    for (std::size_t at = 0; at < n; at += kSlice) {
        const std::size_t k = std::min(kSlice, n - at);
        for (std::size_t i = 0; i < k; ++i) slice[i] = static_cast<float>(r.levels[at + i]);
        if constexpr (std::endian::native == std::endian::little) {
            file.write(slice.data(), k * sizeof(float));
        } else {
            unsigned char bytes[4 * 64];
            for (std::size_t i = 0; i < k;) {
                const std::size_t m = std::min<std::size_t>(64, k - i);
                for (std::size_t j = 0; j < m; ++j) {
                    const auto u = std::bit_cast<std::uint32_t>(slice[i + j]);
                    for (int b = 0; b < 4; ++b) bytes[4 * j + b] = static_cast<unsigned char>(u >> (8 * b));
                }
                file.write(bytes, 4 * m);
                i += m;
            }
        }
    }
    return file.close();
}

}  // namespace sonmetra::cli
