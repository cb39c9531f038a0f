// An auto-reset event: set() lets exactly one wait() through (or the next
// one, if nobody waits yet); several sets before a wait count as one.
// Closing wakes every waiter, and from then on every wait reports "not
// signalled" at once, so a worker blocked on a closed event always ends.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

namespace sonmetra {

class AutoResetEvent {
public:
    explicit AutoResetEvent(std::string name = {}) : m_name(std::move(name)) {}
    AutoResetEvent(const AutoResetEvent&) = delete;
    AutoResetEvent& operator=(const AutoResetEvent&) = delete;

    void set();
    void reset();
    // True when the event was signalled (the signal is consumed); false once closed.
    bool wait();
    // As wait(), but false also when the time runs out.
    bool waitFor(std::chrono::milliseconds timeout);
    void close();
    bool closed() const;
    // True while a signal waits to be taken (for devices that pace themselves).
    bool pending() const;
    const std::string& name() const { return m_name; }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_signalled = false;  // guarded by m_mutex
    bool m_closed = false;     // guarded by m_mutex
    const std::string m_name;
};

}  // namespace sonmetra
