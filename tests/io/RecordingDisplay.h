// A drawing target for engine tests: keeps every strip-chart column and
// every inverted rectangle, and the set of rectangles that are inverted an
// odd number of times (what would be visible on the screen).
#pragma once

#include <map>
#include <mutex>
#include <ostream>
#include <tuple>
#include <vector>

#include "io/IWaveDisplay.h"

namespace sonmetra {

// Comparisons for the tests' expectations (found by argument lookup).
inline bool operator<(const WaveRect& a, const WaveRect& b) {
    return std::tie(a.left, a.top, a.right, a.bottom) < std::tie(b.left, b.top, b.right, b.bottom);
}
inline bool operator==(const WaveRect& a, const WaveRect& b) { return !(a < b) && !(b < a); }
inline std::ostream& operator<<(std::ostream& out, const WaveRect& r) {
    return out << "{" << r.left << "," << r.top << "," << r.right << "," << r.bottom << "}";
}

}  // namespace sonmetra

namespace sonmetra::test {

struct Column {
    int x, startY, maxY, minY;
    bool operator==(const Column&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Column& c) {
    return out << "{x " << c.x << ": " << c.startY << " -> " << c.maxY << " -> " << c.minY << "}";
}

class RecordingDisplay : public IWaveDisplay {
public:
    explicit RecordingDisplay(WaveRect client = {}) : m_client(client) {}

    WaveRect clientRect() override { return m_client; }
    void drawCaptureColumn(int x, int startY, int maxY, int minY) override {
        std::lock_guard lock(m_mutex);
        m_columns.push_back(Column{x, startY, maxY, minY});
    }
    void invertRect(const WaveRect& rect) override {
        std::lock_guard lock(m_mutex);
        m_inversions.push_back(rect);
        if (++m_visible[rect] % 2 == 0) m_visible.erase(rect);
    }

    std::vector<Column> columns() const {
        std::lock_guard lock(m_mutex);
        return m_columns;
    }
    std::vector<WaveRect> inversions() const {
        std::lock_guard lock(m_mutex);
        return m_inversions;
    }
    // Rectangles currently shown inverted.
    std::vector<WaveRect> visible() const {
        std::lock_guard lock(m_mutex);
        std::vector<WaveRect> shown;
        for (const auto& [rect, count] : m_visible) shown.push_back(rect);
        return shown;
    }

private:
    const WaveRect m_client;
    mutable std::mutex m_mutex;
    std::vector<Column> m_columns;
    std::vector<WaveRect> m_inversions;
    std::map<WaveRect, int> m_visible;
};

}  // namespace sonmetra::test
