#include "WorkspaceShortcuts.h"

#include <QAction>
#include <QChildEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QSet>

namespace {

// Every key of every entry under `actions`, submenus included, shown or not:
// the menus of the contexts not in front still own their keys.
void collectKeys(const QList<QAction*>& actions, QSet<QKeySequence>& keys) {
    for (const QAction* a : actions) {
        for (const QKeySequence& k : a->shortcuts())
            if (!k.isEmpty()) keys.insert(k);
        if (const QMenu* sub = a->menu()) collectKeys(sub->actions(), keys);
    }
}

class WorkspaceWatcher : public QObject {
public:
    WorkspaceWatcher(QMdiArea* area, QMenuBar* bar) : QObject(area), m_bar(bar) {
        area->viewport()->installEventFilter(this);
        connect(area, &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow* w) {
            if (w && m_bar) removeMenuKeysFromSystemMenu(w, m_bar);
        });
        for (QMdiSubWindow* w : area->subWindowList()) removeMenuKeysFromSystemMenu(w, bar);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::ChildAdded && m_bar) {
            if (auto* w = qobject_cast<QMdiSubWindow*>(static_cast<QChildEvent*>(event)->child()))
                removeMenuKeysFromSystemMenu(w, m_bar);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QPointer<QMenuBar> m_bar;
};

}  // namespace

void removeMenuKeysFromSystemMenu(QMdiSubWindow* window, const QMenuBar* bar) {
    const QMenu* system = window ? window->systemMenu() : nullptr;
    if (system == nullptr || bar == nullptr) return;
    QSet<QKeySequence> taken;
    collectKeys(bar->actions(), taken);
    const QList<QKeySequence> closeKeys = QKeySequence::keyBindings(QKeySequence::Close);
    const QKeySequence ctrlF4(Qt::CTRL | Qt::Key_F4);
    for (QAction* a : system->actions()) {
        QList<QKeySequence> kept;
        bool closes = false;
        for (const QKeySequence& k : a->shortcuts()) {
            closes = closes || closeKeys.contains(k);
            if (!taken.contains(k)) kept.push_back(k);
        }
        if (kept.size() == a->shortcuts().size()) continue;
        // Linux desktops close with Ctrl+W alone; the window keeps a key to close with.
        if (kept.isEmpty() && closes && !taken.contains(ctrlF4)) kept.push_back(ctrlF4);
        a->setShortcuts(kept);
    }
}

void keepWindowShortcutsOffMenus(QMdiArea* area, QMenuBar* bar) { new WorkspaceWatcher(area, bar); }
