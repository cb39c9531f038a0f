// Runs a transfer with the unit, which blocks until the unit is done, on a
// worker thread while the interface shows a modal progress dialog with the
// elapsed time: the command still waits for the unit, but the window does
// not freeze silently. Nothing else can be done meanwhile.
//
// Messages the transfer shows (the protocol's failures) are held while it
// runs and shown in order once it has ended, on the interface thread.
#pragma once

#include <QString>
#include <functional>

class QWidget;

struct UnitTransferOutcome {
    bool completed = false;  // the work returned normally
    bool abandoned = false;  // it ended with UserException (its messages have been shown)
};

// `what` heads the dialog ("Recording from the unit"); expectedMs sizes its
// bar (0: a busy bar). std::bad_alloc from the work shows the memory message.
UnitTransferOutcome runUnitTransfer(QWidget* parent, const QString& what, double expectedMs,
                                    const std::function<void()>& work);
