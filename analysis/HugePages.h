// Large result arrays on 2 MB pages, handed out without being written.
//
// A fresh array of hundreds of megabytes costs one page fault per 4 KB page
// when it is first written, which on some machines is more than the analysis
// that fills it. Advising the kernel to back the array with 2 MB pages (where
// transparent huge pages are available) turns that into one fault per 2 MB.
// An array that its computation fills completely need not be cleared first:
// clearing it would take every fault on one thread, ahead of the work, where
// the threads that fill it would otherwise take them side by side.
#pragma once

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace sonmetra {

// Advises huge pages for the whole 2 MB pages inside [p, p + bytes); does
// nothing where the system has no such advice.
void AdviseHugePages(void* p, std::size_t bytes);

// Memory for `bytes`: from 2 MB up aligned to 2 MB and advised as above.
// Throws std::bad_alloc when there is none. ReleaseLarge takes the same size.
void* AcquireLarge(std::size_t bytes);
void ReleaseLarge(void* p, std::size_t bytes) noexcept;

// An allocator for vectors whose every element is written before it is
// read: resize() leaves new elements of trivial types uninitialised.
template <class T>
struct LargeAllocator {
    using value_type = T;

    LargeAllocator() = default;
    template <class U>
    LargeAllocator(const LargeAllocator<U>&) noexcept {}

    T* allocate(std::size_t n) { return static_cast<T*>(AcquireLarge(n * sizeof(T))); }
    void deallocate(T* p, std::size_t n) noexcept { ReleaseLarge(p, n * sizeof(T)); }

    template <class U>
    void construct(U* p) noexcept(noexcept(::new (static_cast<void*>(p)) U)) {
        ::new (static_cast<void*>(p)) U;
    }
    template <class U, class... Args>
    void construct(U* p, Args&&... args) {
        ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }

    template <class U>
    bool operator==(const LargeAllocator<U>&) const noexcept {
        return true;
    }
};

using LargeDoubles = std::vector<double, LargeAllocator<double>>;

}  // namespace sonmetra
