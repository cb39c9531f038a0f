// Shared pieces of the main frame's menu and toolbar tests: documents
// written as .kvd files and opened through the frame, the menu entries by
// their titles, scripted file dialogs, and the answering of modal dialogs.
#pragma once

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>
#include <QtTest>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "document/CKestruneDoc.h"
#include "view/FileDialogs.h"

namespace menutest {

// Answers file dialogs from a queue (none left: cancelled), recording each request.
class ScriptedFileDialogs : public IFileDialogs {
public:
    QList<FileDialogRequest> requests;
    QList<std::optional<FileDialogAnswer>> answers;
    std::optional<FileDialogAnswer> ask(QWidget*, const FileDialogRequest& r) override {
        requests.push_back(r);
        return answers.isEmpty() ? std::nullopt : answers.takeFirst();
    }
};

struct ChannelSpec {
    std::string name;
    std::vector<std::int16_t> samples;
    bool audio = false;
};

// A document of the given channels at rateHz, written to path.
inline bool writeDocument(const QString& path, const std::vector<ChannelSpec>& channels, double rateHz) {
    sonmetra::CKestruneDoc doc;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        sonmetra::CChannel& c = doc.channel(static_cast<int>(i));
        c.m_inUse = 1;
        c.m_audio = channels[i].audio ? 1 : 0;
        c.m_rateHz = rateHz;
        c.m_number = static_cast<std::int32_t>(i + 1);
        c.m_name = channels[i].name;
        if (!c.m_samples.resize(channels[i].samples.size())) return false;
        for (std::size_t k = 0; k < channels[i].samples.size(); ++k) c.m_samples[k] = channels[i].samples[k];
        c.setSampleCountFromBlock();
        c.resetDisplayToWhole();
    }
    doc.setChannelCount(static_cast<int>(channels.size()));
    doc.setHoldsData(true);
    return doc.saveAs(path.toStdString(), 1);
}

inline std::vector<std::int16_t> constant(std::size_t n, std::int16_t value) {
    return std::vector<std::int16_t>(n, value);
}

inline std::vector<std::int16_t> samplesOf(const sonmetra::CChannel& c) {
    return std::vector<std::int16_t>(c.m_samples.data(), c.m_samples.data() + c.m_samples.size());
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

// Runs answer(dialog) once a modal dialog of type T is up.
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

// Saves a picture of w when SONMETRA_SCREENSHOTS names a folder.
inline void shoot(QWidget* w, const QString& name) {
    const QString folder = qEnvironmentVariable("SONMETRA_SCREENSHOTS");
    if (!folder.isEmpty()) w->grab().save(QDir(folder).filePath(name + ".png"));
}

}  // namespace menutest
