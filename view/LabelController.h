// Labels in the waveform view: label entry mode, hit testing, the "Label
// entry" dialog on a click, and drawing each channel's labels after its
// trace in their font, colour and justification, with their line.
//
// A label stands at the top of its strip below the channel name (lower
// down when it would cover a label drawn before it): Left
// starts its text at the label's time, Center centres it there, Right ends
// it there. With "Add line" a line in the label's colour runs from the text
// down to the bottom of the strip at the label's time. The rectangle that
// the text takes is kept in the label for hit testing.
#pragma once

#include <QPoint>

#include "ViewExtension.h"
#include "document/CLabel.h"

namespace sonmetra {
class CKestruneDoc;
}

class LabelController : public IViewExtension {
public:
    explicit LabelController(CKestruneView& view);
    ~LabelController() override;

    bool labelMode() const { return m_labelMode; }
    void setLabelMode(bool on) { m_labelMode = on; }
    // The settings of the last label entered, the defaults of the next one.
    const sonmetra::CLabel& labelTemplate() const { return m_template; }

    // The label whose drawn rectangle holds p: channel and index, or false.
    bool hitTest(QPoint p, int* channel, int* index) const;

    void paintChannel(QPainter& painter, int index, const QRect& strip) override;
    bool mousePress(QMouseEvent* event) override;
    void mouseRelease(QMouseEvent* event) override;
    void viewClosing() override;

    // Record turns label mode off and clears every channel's labels.
    void clearForRecording();

private:
    void enterNewLabel(int channel);
    void editLabel(int channel, int index);
    void afterChange();
    void reportDrawingFailure();

    CKestruneView& m_view;
    sonmetra::CKestruneDoc* m_doc;
    bool m_labelMode = false;
    sonmetra::CLabel m_template;
    int m_hitChannel = -1;  // the label under the last press
    int m_hitIndex = -1;
    bool m_failureReported = false;
};

// Registers the label extension and the "&Label" menu (label mode, "View
// Labels", and the three measurement entries that go to the open log).
void registerLabelCommands();
