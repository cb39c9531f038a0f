// The application object: owns the QApplication, the settings, the
// configuration record, the edit clipboard and the main frame, and runs
// start-up in its fixed order.
#pragma once

#include <QFont>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

#include "QtMessageService.h"
#include "document/AppConfig.h"
#include "document/EditClipboard.h"

class QApplication;
class CMainFrame;

class CKestruneApp {
public:
    CKestruneApp(int& argc, char** argv);
    ~CKestruneApp();

    // Start-up: settings key, recent files, working folder and its write
    // probe, temporary folder, channel table, configuration file, main frame,
    // command line, shown maximised. False when the program must not run.
    bool initInstance();
    // The event loop, until the main frame closes.
    int runEventLoop();

    CMainFrame* mainFrame() const { return m_frame.get(); }
    sonmetra::AppConfig& config() { return m_config; }
    const QString& workingFolder() const { return m_workingFolder; }
    const QString& tempFolder() const { return m_tempFolder; }

    // Registers every feature's menu commands and view extensions (once per process).
    static void registerFeatures();

private:
    std::unique_ptr<QApplication> m_qapp;
    QtMessageService m_messages;
    sonmetra::AppConfig m_config;
    sonmetra::EditClipboard m_clipboard;
    std::unique_ptr<CMainFrame> m_frame;
    QString m_workingFolder;
    QString m_tempFolder;
    QStringList m_filesToOpen;
    std::optional<QFont> m_defaultFont;  // the shared start-up font
};
