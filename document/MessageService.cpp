#include "MessageService.h"

#include <atomic>
#include <iostream>
#include <utility>

#include "res/StringTable.h"

namespace sonmetra {
namespace {

class StderrMessageService : public IMessageService {
public:
    MsgAnswer show(const std::string& text, MsgButtons buttons, MsgIcon) override {
        std::cerr << text << '\n';
        switch (buttons) {
            case MsgButtons::Ok:
                return MsgAnswer::Ok;
            case MsgButtons::YesNo:
                return MsgAnswer::No;
            case MsgButtons::YesNoCancel:
            case MsgButtons::OkCancel:
                return MsgAnswer::Cancel;
        }
        return MsgAnswer::Cancel;
    }
    void beep() override {}
};

StderrMessageService g_stderrService;
std::atomic<IMessageService*> g_service{nullptr};
thread_local IMessageService* t_service = nullptr;

MsgAnswer firstButton(MsgButtons buttons) {
    return (buttons == MsgButtons::Ok || buttons == MsgButtons::OkCancel) ? MsgAnswer::Ok : MsgAnswer::Yes;
}

}  // namespace

IMessageService& messages() {
    if (t_service != nullptr) return *t_service;
    IMessageService* s = g_service.load();
    return s ? *s : g_stderrService;
}

IMessageService* setMessageService(IMessageService* service) { return g_service.exchange(service); }

IMessageService* setThreadMessageService(IMessageService* service) { return std::exchange(t_service, service); }

MsgAnswer showMessage(int stringId, MsgButtons buttons, MsgIcon icon) {
    return messages().show(loadString(stringId), buttons, icon);
}

MsgAnswer showMessage(const std::string& text, MsgButtons buttons, MsgIcon icon) {
    return messages().show(text, buttons, icon);
}

std::string formatString(int stringId, const std::string& arg) {
    std::string text = loadString(stringId);
    const auto at = text.find("%s");
    if (at != std::string::npos) text.replace(at, 2, arg);
    return text;
}

void beep() { messages().beep(); }

MsgAnswer RecordingMessageService::show(const std::string& text, MsgButtons buttons, MsgIcon) {
    std::lock_guard lock(m_mutex);
    m_texts.push_back(text);
    if (m_answers.empty()) return firstButton(buttons);
    const MsgAnswer answer = m_answers.front();
    m_answers.pop_front();
    return answer;
}

void RecordingMessageService::beep() {
    std::lock_guard lock(m_mutex);
    ++m_beeps;
}

void RecordingMessageService::queueAnswer(MsgAnswer answer) {
    std::lock_guard lock(m_mutex);
    m_answers.push_back(answer);
}

std::vector<std::string> RecordingMessageService::texts() const {
    std::lock_guard lock(m_mutex);
    return m_texts;
}

std::string RecordingMessageService::lastText() const {
    std::lock_guard lock(m_mutex);
    return m_texts.empty() ? std::string() : m_texts.back();
}

int RecordingMessageService::beeps() const {
    std::lock_guard lock(m_mutex);
    return m_beeps;
}

void RecordingMessageService::clear() {
    std::lock_guard lock(m_mutex);
    m_texts.clear();
    m_answers.clear();
    m_beeps = 0;
}

}  // namespace sonmetra
