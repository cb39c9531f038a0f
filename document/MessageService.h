// The one way any layer shows a message box or beeps.
//
// The GUI installs a service that shows a QMessageBox; sonmetra-cli installs
// one that writes to standard error; tests install RecordingMessageService,
// which keeps every text shown and answers from a script. Code below the
// application layer sees only this interface.
#pragma once

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace sonmetra {

enum class MsgButtons { Ok, YesNo, YesNoCancel, OkCancel };
enum class MsgIcon { None, Information, Warning, Error, Question };
enum class MsgAnswer { Ok, Yes, No, Cancel };

class IMessageService {
public:
    virtual ~IMessageService() = default;
    virtual MsgAnswer show(const std::string& text, MsgButtons buttons, MsgIcon icon) = 0;
    virtual void beep() = 0;
};

// The service in force. Until one is installed, messages go to standard
// error and every question is answered with its last button (No/Cancel).
IMessageService& messages();
// Installs a service (nullptr restores the default) and returns the previous one.
IMessageService* setMessageService(IMessageService* service);
// Installs a service for the calling thread alone, in front of the
// process-wide one (nullptr removes it), and returns the previous one. A
// worker that must not show a box itself holds its messages this way while
// the interface goes on showing its own.
IMessageService* setThreadMessageService(IMessageService* service);

// Conveniences over messages(): a text by string number, optionally with one
// %s argument substituted (the titles in the close and record questions).
MsgAnswer showMessage(int stringId, MsgButtons buttons = MsgButtons::Ok, MsgIcon icon = MsgIcon::Warning);
MsgAnswer showMessage(const std::string& text, MsgButtons buttons = MsgButtons::Ok, MsgIcon icon = MsgIcon::Warning);
std::string formatString(int stringId, const std::string& arg);
void beep();

// Keeps every text shown, in order, and answers questions from a queue
// (default answer when the queue is empty: the first button, Yes or Ok).
class RecordingMessageService : public IMessageService {
public:
    MsgAnswer show(const std::string& text, MsgButtons buttons, MsgIcon icon) override;
    void beep() override;

    void queueAnswer(MsgAnswer answer);
    std::vector<std::string> texts() const;
    std::string lastText() const;
    int beeps() const;
    void clear();

private:
    mutable std::mutex m_mutex;  // the capture and playback threads may report too
    std::vector<std::string> m_texts;
    std::deque<MsgAnswer> m_answers;
    int m_beeps = 0;
};

// The calling thread's own service for the lifetime of a scope.
class ScopedThreadMessageService {
public:
    explicit ScopedThreadMessageService(IMessageService* service) : m_previous(setThreadMessageService(service)) {}
    ~ScopedThreadMessageService() { setThreadMessageService(m_previous); }
    ScopedThreadMessageService(const ScopedThreadMessageService&) = delete;
    ScopedThreadMessageService& operator=(const ScopedThreadMessageService&) = delete;

private:
    IMessageService* m_previous;
};

// Installs a service for the lifetime of a scope (tests, the CLI).
class ScopedMessageService {
public:
    explicit ScopedMessageService(IMessageService* service) : m_previous(setMessageService(service)) {}
    ~ScopedMessageService() { setMessageService(m_previous); }
    ScopedMessageService(const ScopedMessageService&) = delete;
    ScopedMessageService& operator=(const ScopedMessageService&) = delete;

private:
    IMessageService* m_previous;
};

}  // namespace sonmetra
