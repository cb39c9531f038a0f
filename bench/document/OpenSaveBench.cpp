// Opening and saving a 1-hour document (audio at 44100 Hz plus two data
// channels at 5512 Hz) in both byte orders, against reading the same bytes
// with cat in the same run. Prints each time and its ratio to cat.
//
// Then the opening experiment: the bytes of the RVM_PC file made readable in
// three ways, without parsing, each followed by one touch of every 4 KB page
// (what the first picture of the document does): read into plain memory, read
// into memory advised for 2 MB pages (what opening does), and mapped privately
// from the page cache (copy-on-write, so edits would stay in memory).
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

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

// Reads the whole file into `to` with read(2) calls of 8 MB.
bool readAll(const std::string& path, char* to, std::size_t bytes) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    std::size_t done = 0;
    while (done < bytes) {
        const ssize_t n = ::read(fd, to + done, std::min<std::size_t>(bytes - done, std::size_t{8} << 20));
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    return done == bytes;
}

// One byte of every 4 KB page, summed so the reads are kept.
unsigned touchPages(const char* p, std::size_t bytes) {
    unsigned sum = 0;
    for (std::size_t i = 0; i < bytes; i += 4096) sum += static_cast<unsigned char>(p[i]);
    return sum;
}

enum class Way { PlainRead, HugePageRead, PrivateMap };

double makeReadable(const std::string& path, std::size_t bytes, Way way, unsigned& keep) {
    constexpr std::size_t kHuge = std::size_t{2} << 20;
    const std::size_t rounded = (bytes + kHuge - 1) / kHuge * kHuge;
    const auto t0 = Clock::now();
    if (way == Way::PrivateMap) {
        const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd < 0) std::abort();
        void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE, fd, 0);
        ::close(fd);
        if (p == MAP_FAILED) std::abort();
        keep += touchPages(static_cast<const char*>(p), bytes);
        const double t = seconds(t0, Clock::now());
        munmap(p, bytes);
        return t;
    }
    char* p = static_cast<char*>(way == Way::HugePageRead ? std::aligned_alloc(kHuge, rounded) : std::malloc(bytes));
    if (!p) std::abort();
    if (way == Way::HugePageRead) madvise(p, rounded, MADV_HUGEPAGE);
    if (!readAll(path, p, bytes)) std::abort();
    keep += touchPages(p, bytes);
    const double t = seconds(t0, Clock::now());
    std::free(p);
    return t;
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

    {
        const std::size_t bytes = std::filesystem::file_size(pc);
        unsigned keep = 0;
        for (const auto& [name, way] :
             {std::pair{"bytes: plain read", Way::PlainRead}, std::pair{"bytes: 2 MB pages read", Way::HugePageRead},
              std::pair{"bytes: private map", Way::PrivateMap}}) {
            double best = 1e9, bestCat = 1e9;
            for (int rep = 0; rep < 3; ++rep) {
                best = std::min(best, makeReadable(pc, bytes, way, keep));
                bestCat = std::min(bestCat, catSeconds(pc));
            }
            std::printf("%-22s %10.3f %10.3f %8.2f\n", name, best, bestCat, best / bestCat);
        }
        if (keep == 1) std::printf("\n");  // keeps the touches from being optimised away
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
