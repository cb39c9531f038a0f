// Per-view features that draw into the waveform view and take part in its
// mouse handling (labels, recording and playback, editing). The view owns
// one instance of each registered extension and calls the hooks in
// registration order.
#pragma once

#include <QRect>
#include <functional>
#include <memory>
#include <vector>

class QPainter;
class QKeyEvent;
class QMouseEvent;
class CKestruneView;

class IViewExtension {
public:
    virtual ~IViewExtension() = default;
    // After channel `index`'s trace is drawn into the trace layer; strip is
    // its rectangle shifted by the vertical scroll offset.
    virtual void paintChannel(QPainter&, int /*index*/, const QRect& /*strip*/) {}
    // On top of the composite, after the selection and cursor (banners, play cursor).
    virtual void paintOverlay(QPainter&) {}
    // Left button press inside the client area before the view places the
    // cursor; return true to consume it (a press that stops recording).
    virtual bool mousePress(QMouseEvent*) { return false; }
    // Left button release after the view has finished the cursor/selection step.
    virtual void mouseRelease(QMouseEvent*) {}
    // A key the view does not use itself (Space, Escape); return true to take it.
    virtual bool keyPress(QKeyEvent*) { return false; }
    // The view is about to be destroyed.
    virtual void viewClosing() {}
};

using ViewExtensionFactory = std::function<std::unique_ptr<IViewExtension>(CKestruneView&)>;

// Registered once at start-up; every view created afterwards gets one of each.
void registerViewExtension(ViewExtensionFactory factory);
const std::vector<ViewExtensionFactory>& viewExtensionFactories();
