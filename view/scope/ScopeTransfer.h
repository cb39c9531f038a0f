// One snapshot's transfer with the unit, run on a worker thread.
//
// The unit needs real time to deliver a snapshot's 44,032 words: at an
// audio rate of 11,000 Hz from 0.25 s (16 channels) to 2 s (5 channels,
// multiplex type 1), 0.5 s for the usual 9 channels of type 2. Waiting for
// that on the interface thread, over and over with 10 ms in between, would
// leave the workstation all but frozen while the scope runs. So the
// transfer runs on its own thread while the interface goes on, and the scope
// takes the stream up on the interface thread once `finished` arrives; the
// scope's channels and pictures are only ever touched there, so a paint
// never meets a half-made snapshot.
//
// The protocol's messages from the worker are held (the thread has its own
// message service) and shown by the scope on the interface thread. Other
// operations on the unit wait for a transfer under way (UsbProtocol.h).
#pragma once

#include <QObject>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "io/usb/ParameterBlock.h"
#include "view/recordplay/HeldMessages.h"

class ScopeTransfer : public QObject {
    Q_OBJECT
public:
    explicit ScopeTransfer(QObject* parent = nullptr);
    // Waits for a transfer under way.
    ~ScopeTransfer() override;

    // Starts acquiring a snapshot with the block; `finished` follows on the
    // interface thread. Only when none is under way.
    void start(const sonmetra::usb::ParameterBlock& block);
    bool running() const { return m_running; }
    // Waits for the transfer under way and drops its result (no `finished`).
    void abandon();

    // After `finished`: whether the transfer failed (its messages are held),
    // and the stream of a transfer that did not.
    bool failed() const { return m_failed; }
    std::vector<std::uint8_t> takeStream() { return std::move(m_stream); }
    HeldMessages& heldMessages() { return m_held; }

signals:
    void finished();

private:
    void deliver(unsigned sequence);  // interface thread, posted by the worker

    std::thread m_worker;
    bool m_running = false;   // interface thread only
    unsigned m_sequence = 0;  // interface thread only: which start a posted delivery belongs to
    // Written by the worker before it ends; read by the interface thread only
    // after joining it.
    std::vector<std::uint8_t> m_stream;
    bool m_failed = false;
    HeldMessages m_held;  // filled by the worker, replayed by the interface thread
};
