#include "MainToolBar.h"

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QEvent>
#include <QIcon>
#include <QMainWindow>
#include <QMenu>
#include <QSettings>
#include <QTimer>

#include "CommandMenus.h"

namespace {

const char kSettingsGroup[] = "Windows";
constexpr int kPollMs = 250;

QString withoutAmpersand(QString text) { return text.remove('&'); }

}  // namespace

const std::vector<MainToolBar::Item>& MainToolBar::items() {
    static const std::vector<Item> list = {
        {"New", "document-new", "new.svg", "Creates a new, empty document", true, false},
        {"Open...", "document-open", "open.svg", "Opens a document or a sound file", true, false},
        {"Save", "document-save", "save.svg", "Saves the active document", true, false},
        {"Print...", "document-print", "print.svg", "Prints the active window", false, false},
        {"Cut", "edit-cut", "cut.svg", "Cuts the selection of every channel", false, true},
        {"Copy", "edit-copy", "copy.svg", "Copies the selection of every channel", false, false},
        {"Paste", "edit-paste", "paste.svg", "Inserts the copied channels", false, false},
        {"Undo", "edit-undo", "undo.svg", "Undoes the last edit", false, false},
        {"In", "zoom-in", "zoom-in.svg", "Zoom in: shows half the displayed stretch, about its centre", false, true},
        {"Out", "zoom-out", "zoom-out.svg", "Zoom out: shows twice the displayed stretch, about its centre", false,
         false},
        {"Selection", "", "zoom-selection.svg", "Zoom to the selection", false, false},
        {"Home", "zoom-fit-best", "zoom-home.svg", "Zoom home: shows the whole signal", false, false},
        {"UnZoom", "", "unzoom.svg", "Goes back to the stretch shown before the last zoom", false, false},
        {"From Cursor for Duration", "", "zoom-cursor.svg", "Shows the zoom range from the cursor on", false, false},
        {"Record", "media-record", "record.svg", "Records into this document", false, true},
        {"Play All", "media-playback-start", "play-all.svg", "Plays the whole signal", false, false},
        {"Play Selection", "", "play-selection.svg", "Plays the selection", false, false},
        {"Stop", "media-playback-stop", "stop.svg", "Stops playing or recording", false, false},
        {"FFT/LPC", "", "fft-lpc.svg", "FFT and LPC spectrum at the cursor", false, true},
        {"Spectrogram All", "", "spectrogram.svg", "Spectrogram of the whole signal", false, false},
        {"Pitch", "", "pitch.svg", "Pitch track of the signal", false, false},
        {"Intensity", "", "intensity.svg", "Intensity contour of every channel", false, false},
    };
    return list;
}

// Resources of a static library are linked in only when named.
static void initToolbarIcons() { Q_INIT_RESOURCE(toolbar); }

QIcon toolbarIcon(const QString& themeName, const QString& bundledName) {
    static const bool initialised = (initToolbarIcons(), true);
    (void)initialised;
    const QIcon bundled(QStringLiteral(":/toolbar/") + bundledName);
    return themeName.isEmpty() ? bundled : QIcon::fromTheme(themeName, bundled);
}

MainToolBar::MainToolBar(QMainWindow* frame, CommandMenus* menus, QMenu* fileMenu,
                         std::function<bool(QAction*)> allowed)
    : QToolBar(QStringLiteral("Toolbar"), frame),
      m_menus(menus),
      m_allowed(std::move(allowed)),
      m_poll(new QTimer(this)) {
    setObjectName(QStringLiteral("MainToolBar"));
    for (const Item& item : items()) {
        Button b;
        b.item = &item;
        if (item.fromFileMenu) {
            for (QAction* a : fileMenu->actions())
                if (withoutAmpersand(a->text()) == item.text) b.fileAction = a;
            if (b.fileAction == nullptr) continue;
        } else if (m_menus->action(QString(), item.text) == nullptr) {
            continue;  // not in this build
        }
        if (item.separatorBefore && !m_buttons.empty()) addSeparator();
        b.button = addAction(toolbarIcon(item.themeIcon, item.bundledIcon), item.text);
        b.button->setObjectName(item.text);
        connect(b.button, &QAction::triggered, this, [this, index = m_buttons.size()] {
            QAction* target = targetOf(m_buttons[index]);
            if (target != nullptr && m_allowed(target)) target->trigger();
            scheduleRefresh();
        });
        m_buttons.push_back(b);
    }

    connect(m_menus, &CommandMenus::contextChanged, this, [this] { refresh(); });
    connect(qApp, &QApplication::focusChanged, this, [this] { scheduleRefresh(); });
    qApp->installEventFilter(this);
    connect(m_poll, &QTimer::timeout, this, [this] { refresh(); });
    m_poll->start(kPollMs);
    refresh();
}

QAction* MainToolBar::targetOf(const Button& b) const {
    if (m_menus == nullptr) return nullptr;
    if (b.fileAction != nullptr) return b.fileAction;
    return m_menus->action(m_menus->activeContext(), b.item->text);
}

QAction* MainToolBar::entryFor(const QAction* button) const {
    for (const Button& b : m_buttons)
        if (b.button == button) return targetOf(b);
    return nullptr;
}

QAction* MainToolBar::button(const QString& text) const {
    for (const Button& b : m_buttons)
        if (b.item->text == text) return b.button;
    return nullptr;
}

QList<QAction*> MainToolBar::buttons() const {
    QList<QAction*> list;
    for (const Button& b : m_buttons) list.push_back(b.button);
    return list;
}

void MainToolBar::refresh() {
    m_refreshQueued = false;
    for (const Button& b : m_buttons) {
        QAction* target = targetOf(b);
        b.button->setEnabled(target != nullptr && m_allowed(target));
        // The prompt of the entry the button runs, with its shortcut.
        QString tip = target != nullptr && !target->statusTip().isEmpty() ? target->statusTip() : b.item->prompt;
        if (target != nullptr && !target->shortcut().isEmpty())
            tip += QStringLiteral(" (%1)").arg(target->shortcut().toString(QKeySequence::NativeText));
        if (b.button->toolTip() != tip) {
            b.button->setToolTip(tip);
            b.button->setStatusTip(tip);
        }
    }
}

void MainToolBar::scheduleRefresh() {
    if (m_refreshQueued) return;
    m_refreshQueued = true;
    QTimer::singleShot(0, this, [this] { refresh(); });
}

bool MainToolBar::eventFilter(QObject* watched, QEvent* event) {
    // After each click or key the rules may read differently: a selection
    // made, a cursor placed, a clipboard filled.
    switch (event->type()) {
        case QEvent::MouseButtonRelease:
        case QEvent::KeyRelease:
            scheduleRefresh();
            break;
        default:
            break;
    }
    return QToolBar::eventFilter(watched, event);
}

void addViewToggles(QMainWindow* frame, CommandMenus* menus, QToolBar* toolBar, QDockWidget* statusWindow) {
    QAction* toolBarToggle = toolBar->toggleViewAction();
    toolBarToggle->setText(QStringLiteral("&Toolbar"));
    toolBarToggle->setStatusTip(QStringLiteral("Shows or hides the toolbar"));
    QAction* statusToggle = statusWindow->toggleViewAction();
    statusToggle->setText(QStringLiteral("&Status Window"));
    statusToggle->setStatusTip(QStringLiteral("Shows or hides the status window"));
    menus->addToEveryContext(QStringLiteral("&View"), {toolBarToggle, statusToggle});

    // What the user chose last time; only the user's own choices are kept,
    // not the hiding that comes with closing the program.
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    toolBar->setVisible(settings.value(QStringLiteral("Toolbar"), true).toBool());
    statusWindow->setVisible(settings.value(QStringLiteral("StatusWindow"), true).toBool());
    const auto remember = [](const QString& key) {
        return [key](bool shown) {
            QSettings s;
            s.beginGroup(kSettingsGroup);
            s.setValue(key, shown);
        };
    };
    QObject::connect(toolBarToggle, &QAction::triggered, frame, remember(QStringLiteral("Toolbar")));
    QObject::connect(statusToggle, &QAction::triggered, frame, remember(QStringLiteral("StatusWindow")));
    // Closing the status window with its own button counts as the user's choice too.
    QObject::connect(statusWindow, &QDockWidget::visibilityChanged, frame, [statusWindow, remember](bool) {
        if (statusWindow->isHidden() && statusWindow->parentWidget()->isVisible())
            remember(QStringLiteral("StatusWindow"))(false);
    });
}
