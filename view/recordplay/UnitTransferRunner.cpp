#include "UnitTransferRunner.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QProgressDialog>
#include <QTimer>
#include <atomic>
#include <exception>
#include <thread>

#include "HeldMessages.h"
#include "document/MessageService.h"
#include "document/UserException.h"
#include "res/StringTable.h"

using namespace sonmetra;

namespace {

QString elapsedText(const QString& what, qint64 elapsedMs, double expectedMs) {
    QString text = QStringLiteral("%1...\nElapsed: %2 s").arg(what).arg(elapsedMs / 1000.0, 0, 'f', 1);
    if (expectedMs > 0.0) text += QStringLiteral(" of %1 s").arg(expectedMs / 1000.0, 0, 'f', 1);
    return text;
}

}  // namespace

UnitTransferOutcome runUnitTransfer(QWidget* parent, const QString& what, double expectedMs,
                                    const std::function<void()>& work) {
    HeldMessages held;
    std::atomic<bool> done{false};
    std::atomic<int> ending{0};  // 0 normal, 1 UserException, 2 no memory, 3 other failure
    std::string failure;         // written by the worker before done, read after
    {
        ScopedMessageService hold(&held);
        QProgressDialog progress(parent);
        progress.setWindowTitle(QStringLiteral("Sonmetra"));
        progress.setWindowModality(Qt::ApplicationModal);
        progress.setCancelButton(nullptr);
        progress.setMinimumDuration(0);
        progress.setAutoClose(false);
        progress.setAutoReset(false);
        const int range = expectedMs > 0.0 ? static_cast<int>(std::min(expectedMs, 2.0e9)) : 0;
        progress.setRange(0, range);
        progress.setLabelText(elapsedText(what, 0, expectedMs));
        progress.show();

        QElapsedTimer clock;
        clock.start();
        std::thread worker([&] {
            try {
                work();
            } catch (const UserException&) {
                ending = 1;
            } catch (const std::bad_alloc&) {
                ending = 2;
            } catch (const std::exception& e) {
                failure = e.what();
                ending = 3;
            }
            done = true;
        });
        QEventLoop loop;
        QTimer tick;
        QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
            const qint64 elapsed = clock.elapsed();
            progress.setLabelText(elapsedText(what, elapsed, expectedMs));
            if (range > 0) progress.setValue(static_cast<int>(std::min<qint64>(elapsed, range)));
            if (done) loop.quit();
        });
        tick.start(50);
        if (!done) loop.exec(QEventLoop::ExcludeUserInputEvents);
        worker.join();
        progress.close();
    }
    held.replay();
    if (ending == 2) showMessage(IDS_NO_MEMORY);
    if (ending == 3) showMessage("The transfer with the unit failed: " + failure);
    return {ending == 0, ending == 1};
}
