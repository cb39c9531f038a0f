#include "DocumentWindows.h"

#include <map>
#include <vector>

namespace {

struct Record {
    std::map<QString, AttachedWindow> windows;
    int views = 0;
};

std::map<const sonmetra::CKestruneDoc*, Record>& records() {
    static std::map<const sonmetra::CKestruneDoc*, Record> map;
    return map;
}

// The hooks of every window of the document, taken before any runs, since a
// hook may attach or detach windows.
std::vector<AttachedWindow> windowsOf(const sonmetra::CKestruneDoc* doc) {
    std::vector<AttachedWindow> list;
    auto it = records().find(doc);
    if (it == records().end()) return list;
    for (const auto& [role, window] : it->second.windows)
        if (window.frame) list.push_back(window);
    return list;
}

}  // namespace

void attachWindow(const sonmetra::CKestruneDoc* doc, const QString& role, AttachedWindow window) {
    records()[doc].windows[role] = std::move(window);
}

void detachWindow(const sonmetra::CKestruneDoc* doc, const QString& role) {
    auto it = records().find(doc);
    if (it != records().end()) it->second.windows.erase(role);
}

QWidget* attachedWindow(const sonmetra::CKestruneDoc* doc, const QString& role) {
    auto it = records().find(doc);
    if (it == records().end()) return nullptr;
    auto w = it->second.windows.find(role);
    return w == it->second.windows.end() ? nullptr : w->second.frame.data();
}

void viewOpened(const sonmetra::CKestruneDoc* doc) { ++records()[doc].views; }

void viewClosed(const sonmetra::CKestruneDoc* doc) {
    auto it = records().find(doc);
    if (it == records().end() || --it->second.views > 0) return;
    // The windows show this document and cannot outlive it.
    for (const AttachedWindow& w : windowsOf(doc))
        if (w.documentClosing) w.documentClosing();
    records().erase(doc);
}

void documentReplaced(const sonmetra::CKestruneDoc* doc) {
    for (const AttachedWindow& w : windowsOf(doc))
        if (w.samplesReplaced) w.samplesReplaced();
}

void labelsChanged(const sonmetra::CKestruneDoc* doc) {
    for (const AttachedWindow& w : windowsOf(doc))
        if (w.labelsChanged) w.labelsChanged();
}

void cursorStepped(const sonmetra::CKestruneDoc* doc, int step, double ms) {
    for (const AttachedWindow& w : windowsOf(doc))
        if (w.cursorStep) w.cursorStep(step, ms);
}
