// Label work done after an edit, kept through the edit's Undo.
//
// Undo reads back the copy of the document written before the edit, so on
// its own it would also take back every label entered, changed or deleted
// since. To keep that work, the edit notes what it left behind: the labels
// of each channel and where it moved samples (an EditSpan). At Undo the
// labels differing from that note are the user's later work; each is
// carried back through the span to the time of the same sample before the
// edit and applied to the restored labels.
#pragma once

#include <cstddef>
#include <vector>

#include "CLabel.h"

namespace sonmetra {

// What an edit did to one channel: `removed` samples at `first` gave way to
// `inserted` new ones (both 0 for an edit that moved no sample).
struct EditSpan {
    std::size_t first = 0;
    std::size_t removed = 0;
    std::size_t inserted = 0;
};

// The time before the edit of the sample that stands at `ms` after it. A
// time on inserted samples, which Undo takes away, goes to the point where
// they were inserted.
double timeBeforeEdit(double ms, const EditSpan& span, double msPerSample);

// Two labels are the same label when every stored field matches (the drawn
// placement does not count).
bool sameLabel(const CLabel& a, const CLabel& b);

// The restored labels with the work since the edit applied: the labels of
// `now` that `afterEdit` lacks are added, those of `afterEdit` that `now`
// lacks are removed, each at its time before the edit. Sorted by time.
std::vector<CLabel> carryLabelWork(const std::vector<CLabel>& restored, const std::vector<CLabel>& afterEdit,
                                   const std::vector<CLabel>& now, const EditSpan& span, double msPerSample);

}  // namespace sonmetra
