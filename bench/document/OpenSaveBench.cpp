// Opening and saving a 1-hour document (audio at 44100 Hz plus two data
// channels at 5512 Hz) in both byte orders, against reading the same bytes
// with cat in the same run. Prints each time and its ratio to cat.
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "document/ByteOrder.h"
#include "document/CKestruneDoc.h"
#include "document/DocumentOpener.h"
#include "document/KvdFormat.h"
#include "document/MessageService.h"

using namespace sonmetra;
using Clock = std::chrono::steady_clock;

namespace {

double seconds(Clock::time_point a, Clock::time_point b) { return std::chrono::duration<double>(b - a).count(); }

void fill(CChannel& c, double rate, double seconds, int seed) {
    const auto n = static_cast<std::size_t>(rate * seconds);
    if (!c.m_samples.resize(n)) std::abort();
    std::uint32_t x = static_cast<std::uint32_t>(seed) * 2654435761u;
    for (auto& s : c.m_samples) {
        x = x * 1664525u + 1013904223u;
        s = static_cast<std::int16_t>(x >> 16);
    }
    c.m_rateHz = rate;
    c.setSampleCountFromBlock();
    c.m_inUse = 1;
    c.m_name = "ch" + std::to_string(seed);
}

// Rewrites a little-endian document file in big-endian order ("RVM_Mac").
void toBigEndian(const std::string& from, const std::string& to) {
    std::ifstream in(from, std::ios::binary);
    std::vector<std::uint8_t> b((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    auto swap = [&](std::size_t at, int width) { std::reverse(b.begin() + at, b.begin() + at + width); };
    std::memcpy(b.data(), "RVM_Mac\0", 8);
    const std::int32_t channels = getI32(b.data() + 8, false);
    swap(8, 4);
    std::size_t at = 512;
    for (int i = 0; i < channels; ++i) {
        const double count = getF64(b.data() + at + 16, false);
        const std::int32_t labels = getI32(b.data() + at + 92, false);
        for (int k = 0; k < 8; ++k) swap(at + 8 * k, 8);
        for (int k = 0; k < 13; ++k) swap(at + 64 + 4 * k, 4);
        at += 248 + 368 * static_cast<std::size_t>(labels);
        for (std::size_t s = 0; s < static_cast<std::size_t>(count); ++s) swap(at + 2 * s, 2);
        at += 2 * static_cast<std::size_t>(count);
    }
    std::ofstream(to, std::ios::binary)
        .write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
}

double catSeconds(const std::string& path, const std::string& to = "/dev/null") {
    const auto t0 = Clock::now();
    const int status = std::system(("cat '" + path + "' > '" + to + "'").c_str());
    const auto t1 = Clock::now();
    if (status != 0) std::abort();
    return seconds(t0, t1);
}

}  // namespace

int main() {
    RecordingMessageService quiet;
    ScopedMessageService install(&quiet);
    const auto dir = std::filesystem::temp_directory_path() / "sonmetra-bench-open-save";
    std::filesystem::create_directories(dir);
    const std::string pc = (dir / "hour-pc.kvd").string(), mac = (dir / "hour-mac.kvd").string(),
                      out = (dir / "hour-saved.kvd").string();

    {
        CKestruneDoc doc;
        fill(doc.channel(0), 44100.0, 3600.0, 1);
        doc.channel(0).m_audio = 1;
        fill(doc.channel(1), 5512.0, 3600.0, 2);
        fill(doc.channel(2), 5512.0, 3600.0, 3);
        doc.setChannelCount(3);
        if (!doc.saveAs(pc, 1)) return 1;
    }
    toBigEndian(pc, mac);
    const double megabytes = static_cast<double>(std::filesystem::file_size(pc)) / 1e6;
    std::printf("1-hour document: 44100 Hz audio + 2 x 5512 Hz, %.1f MB\n", megabytes);
    std::printf("%-22s %10s %10s %8s\n", "operation", "ours (s)", "cat (s)", "ratio");

    for (const auto& [name, path] : {std::pair{"open RVM_PC", pc}, std::pair{"open RVM_Mac", mac}}) {
        catSeconds(path);  // both read from the page cache
        double best = 1e9, bestCat = 1e9;
        for (int rep = 0; rep < 3; ++rep) {
            CKestruneDoc doc;
            DefaultImportDialogs dialogs;
            const auto t0 = Clock::now();
            if (!openDocument(doc, path, dialogs)) return 1;
            best = std::min(best, seconds(t0, Clock::now()));
            bestCat = std::min(bestCat, catSeconds(path));
        }
        std::printf("%-22s %10.3f %10.3f %8.2f\n", name, best, bestCat, best / bestCat);
    }

    CKestruneDoc doc;
    DefaultImportDialogs dialogs;
    if (!openDocument(doc, pc, dialogs)) return 1;
    double best = 1e9, bestCat = 1e9, bestCopy = 1e9;
    const std::string copy = (dir / "cat-copy.kvd").string();
    for (int rep = 0; rep < 3; ++rep) {
        const auto t0 = Clock::now();
        if (!doc.saveCopyAs(out)) return 1;
        best = std::min(best, seconds(t0, Clock::now()));
        bestCat = std::min(bestCat, catSeconds(out));
        std::filesystem::remove(copy);
        bestCopy = std::min(bestCopy, catSeconds(pc, copy));
    }
    std::printf("%-22s %10.3f %10.3f %8.2f\n", "save RVM_PC", best, bestCat, best / bestCat);
    // Writing is bound by the kernel's write path: the fair yardstick is cat
    // writing the same bytes to a new file.
    std::printf("%-22s %10.3f %10.3f %8.2f   (cat IN > OUT)\n", "save RVM_PC vs copy", best, bestCopy, best / bestCopy);
    std::filesystem::remove_all(dir);
    return 0;
}
