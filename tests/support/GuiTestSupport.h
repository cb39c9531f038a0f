// What the offscreen GUI tests share: answering a modal dialog, waiting with
// events running, pictures for a person to look at, the registered commands
// by their menu text, the menus of the main frame, file dialogs answered by
// the test, the settings and configuration record kept in folders of the
// test's own, and the program run as a user without a display runs it.
#pragma once

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QList>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "document/AppConfig.h"
#include "document/MessageService.h"
#include "view/AppServices.h"
#include "view/CKestruneView.h"
#include "view/FileDialogs.h"
#include "view/ViewCommands.h"
#include "view/WindowCommands.h"

namespace sonmetra::test {

// Calls answer(dialog) as soon as a modal dialog of type T is up (polled
// every 5 ms from the event loop that runs it).
template <class T>
void whenModal(std::function<void(T*)> answer) {
    auto* timer = new QTimer;
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, [timer, answer] {
        if (auto* d = qobject_cast<T*>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            answer(d);
        }
    });
    timer->start();
}

// Clicks the standard button `which` of the dialog's button box.
inline void press(QDialog* dialog, QDialogButtonBox::StandardButton which) {
    dialog->findChild<QDialogButtonBox*>()->button(which)->click();
}

// A waveform view of doc, of `size`, shown (the caller waits for it to be
// exposed where the test needs that).
inline std::unique_ptr<CKestruneView> shownView(sonmetra::CKestruneDoc* doc, QSize size) {
    auto view = std::make_unique<CKestruneView>(doc);
    view->resize(size);
    view->show();
    return view;
}

// Runs the event loop until done() holds, at most timeoutMs; whether it came
// to hold. Results of worker threads and timers arrive as events, so they
// must run while a test waits.
template <class Done>
bool waitFor(Done done, int timeoutMs = 10000) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// Saves a picture as <folder>/<name>.png when SONMETRA_SHOTS names a folder,
// for a person to look at; without it a test run leaves no files.
inline void shoot(const QImage& image, const QString& name) {
    const QString folder = qEnvironmentVariable("SONMETRA_SHOTS");
    if (!folder.isEmpty()) image.save(QDir(folder).filePath(name + ".png"));
}
inline void shoot(QWidget* w, const QString& name) { shoot(w->grab().toImage(), name); }

// The registered waveform-view command whose menu text (shortcut after '\t'
// included) is `text`; null when there is none.
inline const ViewCommand* findViewCommand(const QString& text) {
    for (const ViewCommand& c : ViewCommandRegistry::instance().commands())
        if (c.text == text) return &c;
    return nullptr;
}
// The command of the windows of `context` ("pitch", "spectrum", ...) whose
// menu text is `text`; null when there is none.
inline const WindowCommand* findWindowCommand(const QString& context, const QString& text) {
    for (const WindowCommand& c : WindowCommandRegistry::instance().commands())
        if (c.context == context && c.text == text) return &c;
    return nullptr;
}
// The same, for tests that cannot go on without the command: a missing one
// ends the test program with its text.
inline const ViewCommand& viewCommand(const QString& text) {
    if (const ViewCommand* c = findViewCommand(text)) return *c;
    qFatal("no waveform command %s", qPrintable(text));
}
inline const WindowCommand& windowCommandOf(const QString& context, const QString& text) {
    if (const WindowCommand* c = findWindowCommand(context, text)) return *c;
    qFatal("no %s command %s", qPrintable(context), qPrintable(text));
}
// Whether a command may run on `target`, as its menu entry would show it (a
// command without a rule always may).
template <class Command, class Target>
bool commandEnabled(const Command& c, const Target& target) {
    return !c.enabled || c.enabled(target);
}

// The menu-bar menu titled `title` that is shown now (each kind of window
// has its own menus of the same titles).
inline QMenu* shownMenu(QMenuBar* bar, const QString& title) {
    for (QAction* top : bar->actions())
        if (top->text() == title && top->menu() && top->isVisible()) return top->menu();
    return nullptr;
}
// An entry of a shown menu by its text without the shortcut, after the menu
// applied its rules as when it opens.
inline QAction* findAction(QMenuBar* bar, const QString& title, const QString& text) {
    QMenu* menu = shownMenu(bar, title);
    if (menu == nullptr) return nullptr;
    emit menu->aboutToShow();
    for (QAction* a : menu->actions())
        if (a->text() == text) return a;
    return nullptr;
}

// The program's file dialogs are `dialogs` while the object lives.
class ScopedFileDialogs {
public:
    explicit ScopedFileDialogs(IFileDialogs* dialogs) : m_previous(setFileDialogs(dialogs)) {}
    ~ScopedFileDialogs() { setFileDialogs(m_previous); }
    Q_DISABLE_COPY(ScopedFileDialogs)

private:
    IFileDialogs* m_previous;
};

// Answers file dialogs from a queue (none left: cancelled), keeping each request.
class ScriptedFileDialogs : public IFileDialogs {
public:
    QList<FileDialogRequest> requests;
    QList<std::optional<FileDialogAnswer>> answers;
    std::optional<FileDialogAnswer> ask(QWidget*, const FileDialogRequest& r) override {
        requests.push_back(r);
        return answers.isEmpty() ? std::nullopt : answers.takeFirst();
    }
};

// Answers every file dialog with `path` and filter `filterIndex` (cancelled
// while path is empty), keeping each request.
class AnsweringFileDialogs : public IFileDialogs {
public:
    QString path;
    int filterIndex = 1;
    QList<FileDialogRequest> requests;
    std::optional<FileDialogAnswer> ask(QWidget*, const FileDialogRequest& r) override {
        requests.push_back(r);
        if (path.isEmpty()) return std::nullopt;
        return FileDialogAnswer{path, filterIndex};
    }
    // The last request; an empty one before any.
    FileDialogRequest asked() const { return requests.isEmpty() ? FileDialogRequest{} : requests.last(); }
    QStringList titles() const {
        QStringList t;
        for (const FileDialogRequest& r : requests) t << r.title;
        return t;
    }
};

// The base of a test that stands in for the user: what the program shows is
// kept in m_messages, and its file dialogs are m_dialogs (a
// ScriptedFileDialogs or AnsweringFileDialogs), both in force while the test
// object lives.
template <class Dialogs>
class AnsweringTest : public QObject {
protected:
    RecordingMessageService m_messages;
    Dialogs m_dialogs;

private:
    ScopedMessageService m_messagesInForce{&m_messages};
    ScopedFileDialogs m_dialogsInForce{&m_dialogs};
};

// The program's QSettings go to INI files in `folder`, away from the user's own.
inline void keepSettingsIn(const QString& folder) {
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder);
}

// The program's QSettings and its temporary files go to `folder`.
inline void keepFilesIn(const QString& folder) {
    keepSettingsIn(folder);
    AppServices::instance().tempFolder = folder.toStdString() + "/";
}

// The configuration record in force while the object lives, kept in a
// temporary folder of its own (SonmetraConf.cfg there), so that what the
// program writes to it never reaches the user's.
struct ScopedConfig {
    QTemporaryDir folder;
    AppConfig config;
    ScopedConfig() {
        config.setFilePath(folder.filePath("SonmetraConf.cfg").toStdString());
        AppServices::instance().config = &config;
    }
    ~ScopedConfig() { AppServices::instance().config = nullptr; }
    Q_DISABLE_COPY(ScopedConfig)
};

// How a run of a program ended: whether it did within a minute, its exit
// code (-1 when it did not) and what it wrote to standard error.
struct ProgramRun {
    bool finished = false;
    int exitCode = -1;
    QString errors;
};

// Runs `program` with `arguments` in `home`, which is also its home and
// settings folder, without a display: neither the user's settings nor the
// test's own screen reach it.
inline ProgramRun runProgram(const QString& program, const QStringList& arguments, const QTemporaryDir& home) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", home.path());
    env.insert("XDG_CONFIG_HOME", home.path() + "/config");
    env.remove("DISPLAY");
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(home.path());
    process.start(program, arguments);
    if (!process.waitForFinished(60000)) return {};
    return {true, process.exitCode(), QString::fromLocal8Bit(process.readAllStandardError())};
}

}  // namespace sonmetra::test
