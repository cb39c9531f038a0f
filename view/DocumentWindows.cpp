#include "DocumentWindows.h"

#include <map>

#include "CFrameLabelView.h"

namespace {
std::map<const sonmetra::CKestruneDoc*, DocumentWindows>& records() {
    static std::map<const sonmetra::CKestruneDoc*, DocumentWindows> map;
    return map;
}
}  // namespace

DocumentWindows& documentWindows(const sonmetra::CKestruneDoc* doc) { return records()[doc]; }

void forgetDocumentWindows(const sonmetra::CKestruneDoc* doc) {
    auto it = records().find(doc);
    if (it == records().end()) return;
    // The list shows this document's labels and cannot outlive it.
    if (CFrameLabelView* list = it->second.labelList) {
        it->second.labelList = nullptr;
        list->detachDocument();
        list->close();
    }
    records().erase(it);
}

void documentReplaced(const sonmetra::CKestruneDoc* doc) {
    auto it = records().find(doc);
    if (it == records().end()) return;
    if (it->second.pitch) it->second.pitch->recomputePitch();
    if (it->second.labelList) it->second.labelList->refresh();
}

void labelsChanged(const sonmetra::CKestruneDoc* doc) {
    auto it = records().find(doc);
    if (it != records().end() && it->second.labelList) it->second.labelList->refresh();
}
