// The main frame: the workspace of document windows, the toolbar, the menus (File, the
// commands of the active view, Window, Help), the recent-file list, and
// files dropped on it.
#pragma once

#include <QHash>
#include <QMainWindow>
#include <QUrl>
#include <functional>

class QMdiArea;
class QMenu;
class QAction;
class CChildFrame;
class CKestruneView;
class CommandMenus;
class CStatusWindow;
class MainToolBar;

class CMainFrame : public QMainWindow {
    Q_OBJECT
public:
    static constexpr int kRecentFiles = 5;

    explicit CMainFrame(QWidget* parent = nullptr);
    ~CMainFrame() override;

    QMdiArea* mdiArea() const { return m_mdi; }
    CommandMenus* commandMenus() const { return m_commandMenus; }
    MainToolBar* toolBar() const { return m_toolBar; }
    CStatusWindow* statusWindow() const { return m_statusWindow; }
    CChildFrame* activeChildFrame() const;
    CKestruneView* activeView() const;

    // File > New: an empty untitled document in its own frame.
    CChildFrame* newDocument();
    // File > Open of one file (also the command line and drops). A file that
    // is already open only brings its window to the front. nullptr when the
    // file could not be read; the reason has been shown.
    CChildFrame* openDocumentFile(const QString& path);
    QStringList recentFiles() const;

    // Help: the user manual's first page, or the message that it is missing.
    // Tests replace the opener of the desktop ("false" = it could not open).
    void showHelp();
    void setUrlOpener(std::function<bool(const QUrl&)> opener) { m_urlOpener = std::move(opener); }

    // Re-applies every menu entry's enabling rule (done before a menu opens).
    void updateCommandStates();
    // Enables every ruled entry while the menus are closed, so that
    // shortcuts reach their handlers, which check the rule themselves.
    void armShortcuts();
    // Whether an entry of the menus may run now by its rule (the toolbar's
    // enabling); entries without a rule always may.
    bool commandAllowed(QAction* action) const;

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildFileMenu();
    void buildWindowMenu();
    void buildHelpMenu();
    void openWithDialog();
    void closeActive();
    void addRecentFile(const QString& path);
    void rebuildRecentMenu();
    void loadConfiguration();
    void saveConfiguration();
    void showAbout();
    CChildFrame* addChildFrame(CChildFrame* frame);

    QMdiArea* m_mdi = nullptr;
    CommandMenus* m_commandMenus = nullptr;  // the menus of the active window's commands
    CStatusWindow* m_statusWindow = nullptr;
    MainToolBar* m_toolBar = nullptr;
    QMenu* m_fileMenu = nullptr;
    QMenu* m_windowMenu = nullptr;
    QList<QAction*> m_recentActions;
    QAction* m_recentSeparator = nullptr;
    std::vector<std::function<void()>> m_stateUpdaters;  // one per action with a rule
    QList<QAction*> m_ruledActions;
    QHash<QAction*, std::function<bool()>> m_rules;  // of the File entries with a rule
    std::function<bool(const QUrl&)> m_urlOpener;
};
