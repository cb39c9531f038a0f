// The live scope of the external unit: a scrolling view that shows a fresh
// snapshot of every shown channel over and over, so that gains and sources
// can be set in the Record/Play options while watching the signals. It
// records nothing and keeps nothing.
//
// Refresh cycle (timer 1, one-shot, 10 ms):
//   1. the timer is off while the refresh runs;
//   2. the open Record/Play options form's values are taken first; a refused
//      value stops the cycle;
//   3. the snapshot: the parameter block is built from the record options
//      and the transfer started (ScopeTransfer.h); when it has arrived the
//      data-ready flag drops, the stream is split into the channels
//      (io/usb/ScopeSnapshot.h) and the flag rises again;
//   4. the whole client area is redrawn;
//   5. timer 1 is set again.
// Any failure of the snapshot (the unit's messages, "Unknown multiplex
// type.", "Wrong input source...") skips 4 and 5: the scope stands still with
// the last traces on screen until it is opened again.
//
// The unit's size is the one IdentifyDevice gave when the scope opened; it
// is asked again when the unit in use changes in the options.
#pragma once

#include <QAbstractScrollArea>
#include <QTimer>
#include <memory>
#include <vector>

#include "ScopePicture.h"
#include "io/usb/ParameterBlock.h"
#include "io/usb/ScopeSnapshot.h"

class ScopeTransfer;
class QImage;

namespace sonmetra::usb {
class IUsbDriver;
}

class CScopeView : public QAbstractScrollArea {
    Q_OBJECT
public:
    static constexpr int kRefreshTimerId = 1;
    static constexpr int kRefreshPeriodMs = 10;

    // A view of a unit of unitChannels (5, 9, 13, 16, or -1 when none was found).
    explicit CScopeView(int unitChannels, QWidget* parent = nullptr);
    ~CScopeView() override;

    // Start-up: five default bands, a scroll height of 10, timer 1.
    void initialUpdate();
    // Starts the stopped cycle again for a unit of unitChannels.
    void restart(int unitChannels);
    // Stops the cycle; a snapshot under way is waited for and dropped.
    void stopRefresh();

    int unitChannels() const { return m_unitChannels; }
    // Timer 1 is set or a snapshot is under way.
    bool refreshing() const;
    bool snapshotUnderWay() const;
    // Snapshots completed since the view was made.
    int snapshotsTaken() const { return m_snapshots; }
    bool dataReady() const { return m_dataReady != 0; }
    const sonmetra::usb::ScopeChannels& channels() const { return m_channels; }
    const std::vector<ScopeBand>& bands() const { return m_bands; }
    int scrollHeight() const { return m_scrollHeight; }

    // The drawing of the client area (content coordinates) at `size`.
    void drawPicture(QPainter& painter, QSize size) const;
    // The whole picture: the client width by the scroll height (at least the client height).
    QImage picture() const;
    QSize pictureSize() const;

signals:
    // The unit's size was asked again (unitChannels() has the answer).
    void unitIdentified();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void refresh();          // timer 1
    void takeSnapshot();     // steps 1-2 of the snapshot and the transfer's start
    void snapshotArrived();  // the transfer has ended
    void identifyIfUnitChanged();
    ScopePicture currentPicture() const;
    void setScrollHeight(int height);

    QTimer m_timer;  // timer 1
    std::unique_ptr<ScopeTransfer> m_transfer;
    int m_unitChannels;
    std::weak_ptr<sonmetra::usb::IUsbDriver> m_identifiedDriver;  // the driver the size was asked of
    int m_identifiedDeviceSetting = 0;

    std::vector<ScopeBand> m_bands;           // one per shown channel, as last drawn
    sonmetra::usb::ScopeChannels m_channels;  // by channel number, from the last snapshot
    int m_dataReady = 0;                      // 0 while a snapshot is being split, 1 after
    sonmetra::usb::ParameterBlock m_block{};  // of the snapshot under way
    int m_multiplexType = 0;                  // of the snapshot under way
    int m_scrollHeight = 10;
    int m_snapshots = 0;
};
