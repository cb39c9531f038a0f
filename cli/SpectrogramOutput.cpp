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

// Rows [first, first + count) of the picture (row 0 at the top, the highest
// point), each with its filter byte 0, into `band`.
void makeRows(const SpectrogramResult& r, double scale, int rangeHz, bool formants, int first, int count,
              unsigned char* band) {
    const int w = r.columns, h = r.points;
    const int channels = formants ? 3 : 1;
    const std::size_t rowBytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(channels) + 1;
    for (int y = 0; y < count; ++y) band[static_cast<std::size_t>(y) * rowBytes] = 0;
    // Row y holds point k = h − 1 − y: a band is a run of consecutive points of
    // every column, read in order and spread over the band's rows.
    const int kTop = h - 1 - first;
    const int kLow = kTop - count + 1;
    unsigned char grey[256];
    for (int c = 0; c < w; ++c) {
        const double* col = r.column(c) + kLow;
        for (int done = 0; done < count; done += 256) {
            const int len = std::min(256, count - done);
            for (int i = 0; i < len; ++i) {
                const double v = std::clamp(col[done + i] * scale, 0.0, 255.0);
                grey[i] = static_cast<unsigned char>(255 - static_cast<int>(v + 0.5));
            }
            for (int i = 0; i < len; ++i) {
                const int y = count - 1 - (done + i);
                unsigned char* px = band + static_cast<std::size_t>(y) * rowBytes + 1 +
                                    static_cast<std::size_t>(c) * static_cast<std::size_t>(channels);
                px[0] = grey[i];
                if (channels == 3) px[1] = px[2] = grey[i];
            }
        }
        if (!formants) continue;
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

}  // namespace

bool WriteSpectrogramPng(const std::string& path, const SpectrogramResult& r, double dynamicRangeDb, int rangeHz,
                         bool formants) {
    OutFile file(path);
    if (!file.isOpen()) return false;
    const int w = r.columns, h = r.points;
    const int channels = formants ? 3 : 1;
    const double scale = dynamicRangeDb > 0.0 ? 255.0 / dynamicRangeDb : 0.0;
    const std::size_t rowBytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(channels) + 1;
    // Bands of about 8 MB, 64 rows or more for pictures up to 130000 columns:
    // one is made while the one before is written.
    const int bandRows = static_cast<int>(std::clamp<std::size_t>((std::size_t{8} << 20) / rowBytes, 1, 256));
    std::array<std::vector<unsigned char>, 2> bands;
    try {
        for (auto& b : bands) b.resize(rowBytes * static_cast<std::size_t>(bandRows));
    } catch (const std::bad_alloc&) {
        return false;
    }
    PngStream png(file, w, h, channels);
    const auto rowsAt = [&](int first) { return std::min(bandRows, h - first); };
    makeRows(r, scale, rangeHz, formants, 0, rowsAt(0), bands[0].data());
    for (int first = 0, which = 0; first < h; first += bandRows, which ^= 1) {
        const int next = first + bandRows;
        std::thread maker;
        if (next < h) {
            const auto make = [&, next, which] {
                makeRows(r, scale, rangeHz, formants, next, rowsAt(next), bands[which ^ 1].data());
            };
            try {
                maker = std::thread(make);
            } catch (const std::system_error&) {
                make();  // no thread to be had: made here, before this band is written
            }
        }
        png.feed(bands[static_cast<std::size_t>(which)].data(), rowBytes * static_cast<std::size_t>(rowsAt(first)));
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
