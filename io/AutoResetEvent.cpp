#include "AutoResetEvent.h"

namespace sonmetra {

void AutoResetEvent::set() {
    {
        std::lock_guard lock(m_mutex);
        if (m_closed) return;
        m_signalled = true;
    }
    m_changed.notify_one();
}

void AutoResetEvent::reset() {
    std::lock_guard lock(m_mutex);
    m_signalled = false;
}

bool AutoResetEvent::wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_signalled || m_closed; });
    if (m_closed) return false;
    m_signalled = false;
    return true;
}

bool AutoResetEvent::waitFor(std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_for(lock, timeout, [this] { return m_signalled || m_closed; })) return false;
    if (m_closed) return false;
    m_signalled = false;
    return true;
}

void AutoResetEvent::close() {
    {
        std::lock_guard lock(m_mutex);
        m_closed = true;
        m_signalled = false;
    }
    m_changed.notify_all();
}

bool AutoResetEvent::pending() const {
    std::lock_guard lock(m_mutex);
    return m_signalled;
}

bool AutoResetEvent::closed() const {
    std::lock_guard lock(m_mutex);
    return m_closed;
}

}  // namespace sonmetra
