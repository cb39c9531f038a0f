#include "CKestruneApp.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>

#include "Startup.h"
#include "frame/CMainFrame.h"
#include "res/StringTable.h"
#include "view/AppServices.h"
#include "view/recordplay/UsbUnitSetup.h"

CKestruneApp::CKestruneApp(int& argc, char** argv) : m_qapp(std::make_unique<QApplication>(argc, argv)) {
    QApplication::setOrganizationName("Melvarco");
    QApplication::setApplicationName("Sonmetra");
    QApplication::setApplicationVersion("8.9.1");
    sonmetra::setMessageService(&m_messages);
}

CKestruneApp::~CKestruneApp() {
    m_frame.reset();
    sonmetra::setMessageService(nullptr);
    AppServices::instance() = AppServices{};
}

bool CKestruneApp::initInstance() {
    // The shared default font, which the views draw their channel names
    // in; without it they keep the toolkit's font.
    m_defaultFont = Startup::createDefaultFont(QFontDatabase::families());

    QCommandLineParser parser;
    parser.setApplicationDescription("Sonmetra speech and slow-signal workstation");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument("file", "A document or sound file to open.", "[file...]");
    parser.process(*m_qapp);
    m_filesToOpen = parser.positionalArguments();
    // Names on the command line are relative to the folder the program was
    // started in, not to the working folder.
    for (QString& f : m_filesToOpen) f = QDir::current().absoluteFilePath(f);

    QSettings settings;  // organisation "Melvarco", application "Sonmetra"
    const auto folder = Startup::establishWorkingFolder(settings, QDir::currentPath());
    if (!folder) {
        sonmetra::showMessage(sonmetra::IDS_REGISTRY_ERROR, sonmetra::MsgButtons::Ok, sonmetra::MsgIcon::Error);
        return false;
    }
    m_workingFolder = *folder;
    if (const QString reason = Startup::probeWritable(m_workingFolder); !reason.isEmpty())
        sonmetra::showMessage("The working folder '" + m_workingFolder.toStdString() + "' cannot be written:\n" +
                                  reason.toStdString() +
                                  "\nSettings, the configuration file and undo copies will not be kept.",
                              sonmetra::MsgButtons::Ok, sonmetra::MsgIcon::Warning);
    m_tempFolder = Startup::createTempFolder(m_workingFolder);

    m_config.setBuiltInChannelTable();
    const std::string configPath = (m_workingFolder + "/SonmetraConf.cfg").toStdString();
    m_config.readFile(configPath);
    m_config.setFilePath(configPath);
    installUsbUnitFromSettings(m_config);

    AppServices& services = AppServices::instance();
    services.config = &m_config;
    services.clipboard = &m_clipboard;
    services.workingFolder = m_workingFolder.toStdString();
    services.tempFolder = m_tempFolder.toStdString();
    services.defaultFont = m_defaultFont ? &*m_defaultFont : nullptr;

    registerFeatures();
    m_frame = std::make_unique<CMainFrame>();
    for (const QString& f : m_filesToOpen) m_frame->openDocumentFile(f);
    // Without a window manager "maximised" means nothing; take the screen's
    // available area first so that the frame fills it either way.
    if (const QScreen* screen = QGuiApplication::primaryScreen()) m_frame->setGeometry(screen->availableGeometry());
    m_frame->showMaximized();
    return true;
}

int CKestruneApp::runEventLoop() { return QApplication::exec(); }
