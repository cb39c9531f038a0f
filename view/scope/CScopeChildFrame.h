// The child frame of the live scope. There is one at most. "Scope" opens it
// on the unit that IdentifyDevice finds, at the left of the workspace so
// that the Record/Play options fit beside it; Record closes it first, since
// recording and the scope never use the unit together.
#pragma once

#include <QMdiSubWindow>

class CScopeView;
class QMdiArea;

class CScopeChildFrame : public QMdiSubWindow {
    Q_OBJECT
public:
    static inline const QString kCommandContext = QStringLiteral("scope");

    explicit CScopeChildFrame(int unitChannels, QWidget* parent = nullptr);
    ~CScopeChildFrame() override;

    CScopeView* scopeView() const { return m_view; }

    // The open scope, or null.
    static CScopeChildFrame* instance();
    // "Scope": identifies the unit and opens the scope in `area` (a window of
    // its own without one), or brings the open scope to the front and starts
    // its stopped refresh again. Null when the unit's answer failed (its
    // message has been shown).
    static CScopeChildFrame* open(QMdiArea* area);
    // Closes the open scope at once, after a snapshot under way has ended.
    static void closeOpenScope();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showUnit();
    void placeInWorkspace(QMdiArea* area);

    CScopeView* m_view;
};
