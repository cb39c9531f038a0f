#include "CMainFrame.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMdiArea>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QTimer>
#include <algorithm>
#include <optional>

#include "AboutDialog.h"
#include "CChildFrame.h"
#include "CStatusWindow.h"
#include "CommandMenus.h"
#include "DocumentCommands.h"
#include "ExportChannel.h"
#include "ImportDialogs.h"
#include "LabelFileCommands.h"
#include "MainToolBar.h"
#include "RecordPlayWindowCommand.h"
#include "document/AppConfig.h"
#include "document/CKestruneDoc.h"
#include "document/DocumentOpener.h"
#include "document/MessageService.h"
#include "log/CFrameLog.h"
#include "res/StringTable.h"
#include "view/AppServices.h"
#include "view/FileDialogs.h"
#include "view/ViewCommands.h"

using sonmetra::CKestruneDoc;

namespace {

const char kRecentGroup[] = "Recent File List";

}  // namespace

CMainFrame::CMainFrame(QWidget* parent) : QMainWindow(parent), m_mdi(new QMdiArea(this)) {
    setWindowTitle("Sonmetra");
    setCentralWidget(m_mdi);
    setAcceptDrops(true);
    m_mdi->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_mdi->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_urlOpener = [](const QUrl& url) { return QDesktopServices::openUrl(url); };

    AppServices::instance().mdiArea = m_mdi;
    AppServices::instance().mainWindow = this;

    m_statusWindow = createStatusWindow(this);
    buildFileMenu();
    buildWindowMenu();
    buildHelpMenu();
    m_commandMenus = new CommandMenus(menuBar(), m_windowMenu->menuAction(), m_mdi, [this] { armShortcuts(); });
    connect(m_mdi, &QMdiArea::subWindowActivated, this, [this] { m_commandMenus->followActiveWindow(); });
    addRecordPlayWindowCommand(this, m_mdi);
    m_toolBar = new MainToolBar(this, m_commandMenus, m_fileMenu, [this](QAction* a) { return commandAllowed(a); });
    addToolBar(Qt::TopToolBarArea, m_toolBar);
    addViewToggles(this, m_commandMenus, m_toolBar, m_statusWindow);
    armShortcuts();

    // The document model knows nothing of windows, so the frames look at
    // their documents' modified flags a few times a second for the title mark.
    auto* titles = new QTimer(this);
    connect(titles, &QTimer::timeout, this, [this] {
        for (QMdiSubWindow* w : m_mdi->subWindowList())
            if (auto* frame = qobject_cast<CChildFrame*>(w)) frame->updateTitle();
    });
    titles->start(250);
}

CMainFrame::~CMainFrame() {
    // The workspace outlives this body and reports its windows going as it
    // closes; nothing of this frame may answer by then.
    disconnect(m_mdi, nullptr, this, nullptr);
    // The toolbar asks this frame's rules while it lives; it goes first.
    delete m_toolBar;
    m_toolBar = nullptr;
    if (AppServices::instance().mainWindow == this) {
        AppServices::instance().mainWindow = nullptr;
        AppServices::instance().mdiArea = nullptr;
    }
}

CChildFrame* CMainFrame::activeChildFrame() const { return qobject_cast<CChildFrame*>(m_mdi->activeSubWindow()); }

CKestruneView* CMainFrame::activeView() const {
    CChildFrame* frame = activeChildFrame();
    return frame ? frame->kestruneView() : nullptr;
}

void CMainFrame::buildFileMenu() {
    m_fileMenu = menuBar()->addMenu("&File");
    QMenu* m = m_fileMenu;
    // Adds an entry whose enabled state follows rule (null: always enabled).
    auto add = [this, m](const QString& text, std::function<void()> run, std::function<bool()> rule = {}) {
        QAction* a = actionFromMenuText(m, text);
        connect(a, &QAction::triggered, this, [run, rule] {
            if (!rule || rule()) run();
        });
        if (rule) {
            m_stateUpdaters.push_back([a, rule] { a->setEnabled(rule()); });
            m_ruledActions.push_back(a);
            m_rules.insert(a, rule);
        }
        return a;
    };
    auto doc = [this]() -> CKestruneDoc* {
        CChildFrame* f = activeChildFrame();
        return f ? f->document() : nullptr;
    };
    auto afterSave = [this] {
        if (CChildFrame* f = activeChildFrame()) {
            f->updateTitle();
            if (!f->document()->path().empty()) addRecentFile(QString::fromStdString(f->document()->path()));
        }
    };

    add("&New\tCtrl+N", [this] { newDocument(); });
    add("&Open...\tCtrl+O", [this] { openWithDialog(); });
    add(
        "&Close", [this] { closeActive(); }, [doc] { return doc() != nullptr; });
    m->addSeparator();
    add(
        "&Save\tCtrl+S",
        [this, doc, afterSave] {
            DocumentCommands::save(this, *doc());
            afterSave();
        },
        [doc] { return doc() && doc()->isModified(); });
    add(
        "Save &As...",
        [this, doc, afterSave] {
            DocumentCommands::saveAs(this, *doc());
            afterSave();
        },
        [doc] { return doc() && doc()->holdsData(); });
    add(
        "Save Cop&y As...",
        [this, doc, afterSave] {
            DocumentCommands::saveCopyAs(this, *doc());
            afterSave();
        },
        [doc] { return doc() && doc()->holdsData(); });
    add(
        "Save Se&lection As...", [this, doc] { DocumentCommands::saveSelectionAs(this, *doc()); },
        [doc] { return doc() && doc()->selectionFlag(); });
    add(
        "&Export Channel As...", [this, doc] { exportChannelAs(this, *doc()); },
        [doc] { return doc() && doc()->holdsData(); });
    addLabelFileCommands(
        this, [this] { return activeChildFrame(); }, add);
    m->addSeparator();
    add("New &Log", [this] { newLog(m_mdi); });
    add("Open L&og...", [this] { openLog(m_mdi, this); });
    m->addSeparator();
    add("Load Configuration...", [this] { loadConfiguration(); });
    add("Save Configuration...", [this] { saveConfiguration(); });
    m_recentSeparator = m->addSeparator();
    for (int i = 0; i < kRecentFiles; ++i) {
        QAction* a = m->addAction(QString());
        a->setVisible(false);
        connect(a, &QAction::triggered, this, [this, a] { openDocumentFile(a->data().toString()); });
        m_recentActions.push_back(a);
    }
    m->addSeparator();
    add("E&xit", [this] { close(); });
    connect(m, &QMenu::aboutToShow, this, [this] { updateCommandStates(); });
    connect(m, &QMenu::aboutToHide, this, [this] { armShortcuts(); });
    rebuildRecentMenu();
}

void CMainFrame::buildWindowMenu() {
    m_windowMenu = menuBar()->addMenu("&Window");
    connect(m_windowMenu, &QMenu::aboutToShow, this, [this] {
        m_windowMenu->clear();
        m_windowMenu->addAction("&Cascade", m_mdi, &QMdiArea::cascadeSubWindows);
        m_windowMenu->addAction("&Tile", m_mdi, &QMdiArea::tileSubWindows);
        m_windowMenu->addAction("Close &All", m_mdi, &QMdiArea::closeAllSubWindows);
        const auto windows = m_mdi->subWindowList();
        if (!windows.isEmpty()) m_windowMenu->addSeparator();
        int n = 1;
        for (QMdiSubWindow* w : windows) {
            QString title = w->windowTitle();
            title.replace("[*]", w->isWindowModified() ? "*" : "");
            QAction* a = m_windowMenu->addAction(QString("&%1 %2").arg(n++).arg(title));
            a->setCheckable(true);
            a->setChecked(w == m_mdi->activeSubWindow());
            connect(a, &QAction::triggered, this, [this, w] { m_mdi->setActiveSubWindow(w); });
        }
    });
}

void CMainFrame::buildHelpMenu() {
    QMenu* m = menuBar()->addMenu("&Help");
    connect(m->addAction("&Help Topics"), &QAction::triggered, this, [this] { showHelp(); });
    m->addSeparator();
    connect(m->addAction("&About Sonmetra..."), &QAction::triggered, this, [this] { showAbout(); });
}

void CMainFrame::updateCommandStates() {
    for (const auto& update : m_stateUpdaters) update();
    m_commandMenus->updateStates();
}

void CMainFrame::armShortcuts() {
    // Menus show each entry's rule as it stands when they open. While they
    // are closed every entry stays enabled so that its shortcut always
    // reaches the handler, which applies the rule at that moment.
    for (QAction* a : m_ruledActions) a->setEnabled(true);
    if (m_commandMenus) m_commandMenus->armShortcuts();
}

bool CMainFrame::commandAllowed(QAction* action) const {
    if (const auto rule = m_rules.find(action); rule != m_rules.end()) return rule.value()();
    if (m_fileMenu->actions().contains(action)) return true;
    return m_commandMenus->ruleAllows(action);
}

CChildFrame* CMainFrame::addChildFrame(CChildFrame* frame) {
    m_mdi->addSubWindow(frame);
    // A lone document fills the workspace; further ones open beside it.
    if (m_mdi->subWindowList().size() == 1)
        frame->showMaximized();
    else
        frame->show();
    m_mdi->setActiveSubWindow(frame);
    armShortcuts();
    return frame;
}

CChildFrame* CMainFrame::newDocument() {
    auto doc = std::make_shared<CKestruneDoc>();
    return addChildFrame(new CChildFrame(doc));
}

CChildFrame* CMainFrame::openDocumentFile(const QString& path) {
    const QString absolute = QFileInfo(path).absoluteFilePath();
    for (QMdiSubWindow* w : m_mdi->subWindowList()) {
        auto* frame = qobject_cast<CChildFrame*>(w);
        if (frame && QString::fromStdString(frame->document()->path()) == absolute) {
            m_mdi->setActiveSubWindow(frame);
            return frame;
        }
    }
    auto doc = std::make_shared<CKestruneDoc>();
    CImportDialogs dialogs(this);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool ok = sonmetra::openDocument(*doc, absolute.toStdString(), dialogs, AppServices::instance().config);
    QApplication::restoreOverrideCursor();
    if (!ok) return nullptr;
    addRecentFile(absolute);
    return addChildFrame(new CChildFrame(doc));
}

void CMainFrame::openWithDialog() {
    FileDialogRequest request;
    request.title = "Open";
    request.filters = {"Sonmetra files (*.kvd)", "Wave files (*.wav)", "CSL files (*.NSP)",
                       "AIFF files (*.aiff *)",  "ASCII files (*)",    "Generic files (*)"};
    if (const auto answer = fileDialogs().ask(this, request)) openDocumentFile(answer->path);
}

void CMainFrame::closeActive() {
    if (CChildFrame* frame = activeChildFrame()) frame->close();
}

QStringList CMainFrame::recentFiles() const {
    QSettings settings;
    settings.beginGroup(kRecentGroup);
    QStringList files;
    for (int i = 1; i <= kRecentFiles; ++i) {
        const QString f = settings.value(QString("File%1").arg(i)).toString();
        if (!f.isEmpty()) files.push_back(f);
    }
    return files;
}

void CMainFrame::addRecentFile(const QString& path) {
    QStringList files = recentFiles();
    files.removeAll(path);
    files.prepend(path);
    QSettings settings;
    settings.beginGroup(kRecentGroup);
    for (int i = 1; i <= kRecentFiles; ++i)
        settings.setValue(QString("File%1").arg(i), i <= files.size() ? files.at(i - 1) : QString());
    rebuildRecentMenu();
}

void CMainFrame::rebuildRecentMenu() {
    const QStringList files = recentFiles();
    for (int i = 0; i < kRecentFiles; ++i) {
        QAction* a = m_recentActions.at(i);
        a->setVisible(i < files.size());
        if (i < files.size()) {
            a->setText(QString("&%1 %2").arg(i + 1).arg(QFileInfo(files.at(i)).fileName()));
            a->setData(files.at(i));
            a->setStatusTip(files.at(i));
        }
    }
    m_recentSeparator->setVisible(!files.isEmpty());
}

// The dialog of Load and Save Configuration; nullopt when cancelled.
static std::optional<std::string> askConfigurationFile(QWidget* parent, bool save, const QString& title) {
    FileDialogRequest request;
    request.save = save;
    request.title = title;
    request.defaultName = "User_Configuration";
    request.defaultSuffix = "cfg";
    request.filters = {"Configuration files (*.cfg)"};
    const auto answer = fileDialogs().ask(parent, request);
    if (!answer) return std::nullopt;
    return answer->path.toStdString();
}

void CMainFrame::loadConfiguration() {
    sonmetra::AppConfig* config = AppServices::instance().config;
    const auto path = askConfigurationFile(this, false, "Load a Configuration file");
    if (!path || !config) return;
    if (!config->readFile(*path))
        sonmetra::showMessage(
            "'" + *path + "' is not a Sonmetra configuration file of version 8.9.1.\nIts settings were not taken.",
            sonmetra::MsgButtons::Ok, sonmetra::MsgIcon::Warning);
}

void CMainFrame::saveConfiguration() {
    sonmetra::AppConfig* config = AppServices::instance().config;
    const auto path = askConfigurationFile(this, true, "Save Configuration As");
    if (!path || !config) return;
    if (!config->writeFile(*path)) {
        sonmetra::beep();
        sonmetra::showMessage(sonmetra::IDS_SAVE_ERROR);
    }
}

void CMainFrame::showHelp() {
    const QString base = QString::fromStdString(AppServices::instance().workingFolder) + "/Manual/HelpIndex.";
    for (const char* ext : {"html", "htm"}) {
        const QString page = base + ext;
        // A page that is not there counts as a failure of the desktop to open it.
        if (QFileInfo::exists(page) && m_urlOpener(QUrl::fromLocalFile(page))) return;
    }
    sonmetra::showMessage(sonmetra::IDS_NO_HELP_FILE, sonmetra::MsgButtons::Ok, sonmetra::MsgIcon::Information);
}

void CMainFrame::showAbout() {
    AboutDialog dialog(this);
    dialog.exec();
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    for (QMdiSubWindow* w : m_mdi->subWindowList()) {
        auto* frame = qobject_cast<CChildFrame*>(w);
        if (frame && !frame->canClose()) {
            event->ignore();
            return;
        }
    }
    // Every question has been answered: the frames close without asking again.
    for (QMdiSubWindow* w : m_mdi->subWindowList())
        if (auto* frame = qobject_cast<CChildFrame*>(w)) frame->document()->setModified(false);
    m_mdi->closeAllSubWindows();
    event->accept();
}

void CMainFrame::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void CMainFrame::dropEvent(QDropEvent* event) {
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) openDocumentFile(url.toLocalFile());
    event->acceptProposedAction();
}
