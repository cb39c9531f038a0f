#include "HeldMessages.h"

using namespace sonmetra;

MsgAnswer HeldMessages::show(const std::string& text, MsgButtons buttons, MsgIcon icon) {
    std::lock_guard lock(m_mutex);
    m_items.push_back({false, text, buttons, icon});
    return buttons == MsgButtons::Ok || buttons == MsgButtons::OkCancel ? MsgAnswer::Ok : MsgAnswer::Yes;
}

void HeldMessages::beep() {
    std::lock_guard lock(m_mutex);
    m_items.push_back({true, {}, MsgButtons::Ok, MsgIcon::None});
}

void HeldMessages::replay() {
    std::vector<Item> items;
    {
        std::lock_guard lock(m_mutex);
        items.swap(m_items);
    }
    for (const Item& i : items) {
        if (i.beep)
            sonmetra::beep();
        else
            messages().show(i.text, i.buttons, i.icon);
    }
}

void HeldMessages::discard() {
    std::lock_guard lock(m_mutex);
    m_items.clear();
}

bool HeldMessages::empty() const {
    std::lock_guard lock(m_mutex);
    return m_items.empty();
}
