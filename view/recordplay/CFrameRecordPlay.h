// The child frame of the record and play options. There is one at most; the
// main frame's "Record/Play" command toggles it: a hidden window comes back
// on top where it was and at its size, a shown one is hidden. Closing it
// hides it as well. Hiding takes the form's settings and writes the
// configuration file; a refused value keeps the window shown.
#pragma once

#include <QMdiSubWindow>

class CFormRecordPlay;
class QMdiArea;

class CFrameRecordPlay : public QMdiSubWindow {
    Q_OBJECT
public:
    explicit CFrameRecordPlay(QWidget* parent = nullptr);
    ~CFrameRecordPlay() override;

    CFormRecordPlay* form() const { return m_form; }

    // The frame that exists, or null.
    static CFrameRecordPlay* instance();
    // "Record/Play": creates and shows the window in `area`, shows it again
    // when hidden, hides it when shown. Returns the frame.
    static CFrameRecordPlay* toggle(QMdiArea* area);
    // Takes the settings and hides; false (still shown) when a value is refused.
    bool hideTakingSettings();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    CFormRecordPlay* m_form;
};
