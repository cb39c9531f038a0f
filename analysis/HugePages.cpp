#include "analysis/HugePages.h"

#include <cstdint>
#include <cstdlib>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace sonmetra {
namespace {

constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
constexpr std::size_t kWorthAdvising = std::size_t{2} << 20;

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

void* AcquireLarge(std::size_t bytes) {
    if (bytes < kWorthAdvising) return ::operator new(bytes);
    if (bytes > SIZE_MAX - kHugePage) throw std::bad_alloc();
    const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* p = std::aligned_alloc(kHugePage, rounded);
    if (p == nullptr) throw std::bad_alloc();
    AdviseHugePages(p, rounded);
    return p;
}

void ReleaseLarge(void* p, std::size_t bytes) noexcept {
    if (bytes < kWorthAdvising)
        ::operator delete(p);
    else
        std::free(p);
}

}  // namespace sonmetra
