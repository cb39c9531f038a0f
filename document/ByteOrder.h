// Little- and big-endian field access for the file formats, independent of
// the host's byte order.
#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace sonmetra {

inline std::uint16_t getLe16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }
inline std::uint32_t getLe32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
inline std::uint64_t getLe64(const std::uint8_t* p) {
    return static_cast<std::uint64_t>(getLe32(p)) | (static_cast<std::uint64_t>(getLe32(p + 4)) << 32);
}
inline std::uint16_t getBe16(const std::uint8_t* p) { return static_cast<std::uint16_t>((p[0] << 8) | p[1]); }
inline std::uint32_t getBe32(const std::uint8_t* p) {
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | static_cast<std::uint32_t>(p[3]);
}
inline std::uint64_t getBe64(const std::uint8_t* p) {
    return (static_cast<std::uint64_t>(getBe32(p)) << 32) | static_cast<std::uint64_t>(getBe32(p + 4));
}
inline std::int32_t getI32(const std::uint8_t* p, bool bigEndian) {
    return static_cast<std::int32_t>(bigEndian ? getBe32(p) : getLe32(p));
}
inline double getF64(const std::uint8_t* p, bool bigEndian) {
    return std::bit_cast<double>(bigEndian ? getBe64(p) : getLe64(p));
}

inline void putLe16(std::uint8_t* p, std::uint16_t v) {
    p[0] = static_cast<std::uint8_t>(v);
    p[1] = static_cast<std::uint8_t>(v >> 8);
}
inline void putLe32(std::uint8_t* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline void putLe64(std::uint8_t* p, std::uint64_t v) {
    for (int i = 0; i < 8; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline void putI32(std::uint8_t* p, std::int32_t v) { putLe32(p, static_cast<std::uint32_t>(v)); }
inline void putF64(std::uint8_t* p, double v) { putLe64(p, std::bit_cast<std::uint64_t>(v)); }

inline std::int16_t swap16(std::int16_t v) {
    const auto u = static_cast<std::uint16_t>(v);
    return static_cast<std::int16_t>(static_cast<std::uint16_t>((u >> 8) | (u << 8)));
}

// Converts n samples in place from the given file byte order to the host's.
inline void samplesFromFileOrder(std::int16_t* s, std::size_t n, bool bigEndian) {
    if (bigEndian == (std::endian::native == std::endian::big)) return;
    auto* u = reinterpret_cast<std::uint16_t*>(s);
    std::size_t i = 0;
#if defined(__SSE2__)
    // Eight samples per step: both bytes of every 16-bit lane trade places.
    for (; i + 8 <= n; i += 8) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(u + i));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(u + i), _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8)));
    }
#endif
    for (; i < n; ++i) u[i] = __builtin_bswap16(u[i]);
}

// Writes n samples little-endian; false when the write fails.
inline bool writeSamplesLe(std::FILE* f, const std::int16_t* s, std::size_t n) {
    if constexpr (std::endian::native == std::endian::little) {
        return std::fwrite(s, 2, n, f) == n;
    } else {
        std::uint8_t buf[8192];
        while (n > 0) {
            const std::size_t k = std::min<std::size_t>(n, sizeof buf / 2);
            for (std::size_t i = 0; i < k; ++i) putLe16(buf + 2 * i, static_cast<std::uint16_t>(s[i]));
            if (std::fwrite(buf, 2, k, f) != k) return false;
            s += k;
            n -= k;
        }
        return true;
    }
}

}  // namespace sonmetra
