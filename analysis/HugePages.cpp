#include "analysis/HugePages.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace sonmetra {
namespace {

constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
constexpr std::size_t kWorthAdvising = std::size_t{4} << 20;

}  // namespace

void AdviseHugePages(void* p, std::size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    const auto begin = reinterpret_cast<std::uintptr_t>(p);
    const std::uintptr_t first = (begin + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t last = (begin + bytes) & ~(kHugePage - 1);
    if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#else
    (void)p;
    (void)bytes;
#endif
}

void AssignLarge(std::vector<double>& v, std::size_t n, double value) {
    if (v.capacity() < n || v.capacity() / 2 > n) {
        std::vector<double>().swap(v);
        v.reserve(n);
        if (n * sizeof(double) >= kWorthAdvising) AdviseHugePages(v.data(), n * sizeof(double));
    }
    v.assign(n, value);
}

}  // namespace sonmetra
