// Messages and beeps held back while a worker thread talks to the unit, and
// shown later, in order, on the interface thread. A worker installs one as
// its thread's message service (ScopedThreadMessageService) or, while the
// interface is modal, as the process-wide one.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "document/MessageService.h"

class HeldMessages : public sonmetra::IMessageService {
public:
    // Questions get their first button: a worker asks none that matter.
    sonmetra::MsgAnswer show(const std::string& text, sonmetra::MsgButtons buttons, sonmetra::MsgIcon icon) override;
    void beep() override;

    // Shows what was held through the service in force and forgets it.
    void replay();
    // Forgets what was held.
    void discard();
    bool empty() const;

private:
    struct Item {
        bool beep;
        std::string text;
        sonmetra::MsgButtons buttons;
        sonmetra::MsgIcon icon;
    };
    mutable std::mutex m_mutex;
    std::vector<Item> m_items;  // written by the worker, replayed by the interface thread; guarded by m_mutex
};
