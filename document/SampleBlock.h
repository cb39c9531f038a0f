// A channel's samples: one contiguous block of signed 16-bit values.
//
// Growing fills the new part with zeros; a size that cannot be had is
// reported by returning false (the caller shows the memory message), never
// by an exception escaping. The underlying vector grows geometrically, so a
// recording that grows buffer by buffer is not copied at every step.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <vector>

#include "analysis/HugePages.h"

namespace sonmetra {

class SampleBlock {
public:
    SampleBlock() = default;

    std::size_t size() const { return m_samples.size(); }
    bool empty() const { return m_samples.empty(); }
    std::int16_t* data() { return m_samples.data(); }
    const std::int16_t* data() const { return m_samples.data(); }
    std::int16_t& operator[](std::size_t i) { return m_samples[i]; }
    std::int16_t operator[](std::size_t i) const { return m_samples[i]; }
    std::int16_t* begin() { return m_samples.data(); }
    std::int16_t* end() { return m_samples.data() + m_samples.size(); }
    const std::int16_t* begin() const { return m_samples.data(); }
    const std::int16_t* end() const { return m_samples.data() + m_samples.size(); }

    // Resizes to n samples; new samples are zero. False when memory is short.
    [[nodiscard]] bool resize(std::size_t n) noexcept {
        try {
            m_samples.resize(n, 0);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const std::length_error&) {
            return false;
        }
    }
    // Resizes to n samples whose new part the caller overwrites at once
    // (a file read): the new part is not zeroed first.
    [[nodiscard]] bool resizeForOverwrite(std::size_t n) noexcept {
        try {
            m_samples.resize(n);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const std::length_error&) {
            return false;
        }
    }
    // Keeps room for n samples without changing the size.
    [[nodiscard]] bool reserve(std::size_t n) noexcept {
        try {
            m_samples.reserve(n);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const std::length_error&) {
            return false;
        }
    }
    void clear() noexcept {
        m_samples.clear();
        m_samples.shrink_to_fit();
    }

private:
    // Long blocks on 2 MB pages, so that filling an hour of samples costs few
    // page faults (the faults of fresh memory are most of what a file read
    // costs beyond the copy); left uninitialised unless a value is given, so
    // that a block about to be overwritten by a file read is not zeroed first.
    std::vector<std::int16_t, LargeAllocator<std::int16_t>> m_samples;
};

}  // namespace sonmetra
