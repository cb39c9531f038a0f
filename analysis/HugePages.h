// Large result arrays on 2 MB pages.
//
// A fresh array of hundreds of megabytes costs one page fault per 4 KB page
// when it is first written, which on some machines is more than the analysis
// that fills it. Advising the kernel to back the array with 2 MB pages (where
// transparent huge pages are available) turns that into one fault per 2 MB.
#pragma once

#include <cstddef>
#include <vector>

namespace sonmetra {

// Advises huge pages for the whole 2 MB pages inside [p, p + bytes); does
// nothing where the system has no such advice.
void AdviseHugePages(void* p, std::size_t bytes);

// Makes v hold n values equal to `value`. Keeps its memory when that is
// between n and 2n values long; otherwise takes fresh memory, advised as above.
void AssignLarge(std::vector<double>& v, std::size_t n, double value);

}  // namespace sonmetra
