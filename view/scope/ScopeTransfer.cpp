#include "ScopeTransfer.h"

#include <exception>
#include <new>

#include "document/MessageService.h"
#include "document/UserException.h"
#include "io/usb/ScopeSnapshot.h"
#include "res/StringTable.h"

using namespace sonmetra;

ScopeTransfer::ScopeTransfer(QObject* parent) : QObject(parent) {}

ScopeTransfer::~ScopeTransfer() { abandon(); }

void ScopeTransfer::start(const usb::ParameterBlock& block) {
    if (m_running) return;
    m_running = true;
    m_failed = false;
    m_stream.clear();
    m_held.discard();
    const unsigned sequence = ++m_sequence;
    m_worker = std::thread([this, block, sequence] {
        ScopedThreadMessageService hold(&m_held);
        try {
            m_stream = usb::AcquireScopeStream(block);
        } catch (const UserException&) {
            m_failed = true;
        } catch (const std::bad_alloc&) {
            m_failed = true;
            showMessage(IDS_NO_MEMORY);
        } catch (const std::exception& e) {
            m_failed = true;
            showMessage(std::string("The transfer with the unit failed: ") + e.what());
        }
        // Queued to this object's thread; dropped if the object goes first,
        // which it cannot do before it has joined this thread.
        QMetaObject::invokeMethod(
            this, [this, sequence] { deliver(sequence); }, Qt::QueuedConnection);
    });
}

void ScopeTransfer::deliver(unsigned sequence) {
    if (!m_running || sequence != m_sequence) return;  // abandoned meanwhile
    m_worker.join();
    m_running = false;
    emit finished();
}

void ScopeTransfer::abandon() {
    if (m_worker.joinable()) m_worker.join();
    m_running = false;
}
