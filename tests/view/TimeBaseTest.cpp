// Zoom, scroll bar and selection arithmetic of the waveform view, without widgets.
#include <gtest/gtest.h>

#include "SyntheticDoc.h"
#include "view/TimeBase.h"

using sonmetra::CKestruneDoc;
using timebase::HScrollBar;
using timebase::ScrollRequest;
using timebase::ZoomMode;

namespace {

// One second of audio at 10000 Hz and a data channel at 1000 Hz.
std::unique_ptr<CKestruneDoc> twoRates() {
    auto doc = std::make_unique<CKestruneDoc>();
    synthetic::fillChannel(
        *doc, 0, "Audio", 10000.0, 10000, [](std::size_t i) { return std::int16_t(i % 100); }, true);
    synthetic::fillChannel(*doc, 1, "ch1", 1000.0, 1000, [](std::size_t i) { return std::int16_t(i); });
    return doc;
}

void setRange(CKestruneDoc& doc, double startSample, double endSample) {
    auto& ch = doc.channel(0);
    ch.m_viewStartSample = startSample;
    ch.m_viewEndSample = endSample;
}

}  // namespace

TEST(ZoomTest, InHalvesAboutTheCentreWithoutLowerLimit) {
    auto doc = twoRates();
    setRange(*doc, 10.0, 11.0);
    timebase::zoom(*doc, ZoomMode::In);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 10.25);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 10.75);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartMs, 1.025);
    // The previous range is the one before the command.
    EXPECT_DOUBLE_EQ(doc->channel(0).m_prevViewStartSample, 10.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_prevViewEndSample, 11.0);
}

TEST(ZoomTest, OutAtHomeStaysOnTheWholeSignalAndTheBarGoesIdle) {
    auto doc = twoRates();
    timebase::zoom(*doc, ZoomMode::Out);
    for (int i = 0; i < 2; ++i) {
        EXPECT_DOUBLE_EQ(doc->channel(i).m_viewStartSample, 0.0);
        EXPECT_DOUBLE_EQ(doc->channel(i).m_viewEndSample, doc->channel(i).m_sampleCount);
    }
    const HScrollBar bar = timebase::scrollBarFromRange(*doc);
    EXPECT_EQ(bar.page, HScrollBar::kMax + 1);
    EXPECT_FALSE(bar.scrollable());
}

TEST(ZoomTest, OutIsClampedAtBothEnds) {
    auto doc = twoRates();
    setRange(*doc, 1000.0, 5000.0);
    timebase::zoom(*doc, ZoomMode::Out);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 0.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 7000.0);
    setRange(*doc, 8000.0, 9500.0);
    timebase::zoom(*doc, ZoomMode::Out);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 7250.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 10000.0);
}

TEST(ZoomTest, UnZoomRemembersOneLevelOnly) {
    auto doc = twoRates();
    setRange(*doc, 2000.0, 3000.0);
    timebase::zoom(*doc, ZoomMode::Home);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 10000.0);
    timebase::zoom(*doc, ZoomMode::UnZoom);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 2000.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 3000.0);
    // UnZoom does not save the range it leaves: a second one changes nothing.
    timebase::zoom(*doc, ZoomMode::UnZoom);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 2000.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 3000.0);
}

TEST(ZoomTest, FromCursorNearTheEndRunsPastTheSignal) {
    auto doc = twoRates();
    doc->m_zoomRangeMs = 100.0;
    for (int i = 0; i < 2; ++i) doc->channel(i).setCursorTime(990.0);  // 10 ms before the end
    timebase::zoom(*doc, ZoomMode::FromCursor);
    const auto& audio = doc->channel(0);
    EXPECT_DOUBLE_EQ(audio.m_viewStartSample, 9900.0);
    EXPECT_DOUBLE_EQ(audio.m_viewEndSample, 10900.0);  // not clamped
    EXPECT_DOUBLE_EQ(audio.m_viewEndMs, 1090.0);
    // Every channel shows the same 100 ms in its own samples.
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewStartSample, 990.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewEndSample, 1090.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewEndMs, 1090.0);
}

TEST(ZoomTest, SelectionTakesTheSelectedSamples) {
    auto doc = twoRates();
    timebase::selectRange(*doc, 250.0, 100.0);  // either order
    timebase::zoom(*doc, ZoomMode::Selection);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 1000.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 2500.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewStartMs, 100.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewEndMs, 250.0);
}

TEST(ScrollBarTest, BarFollowsTheFirstPresentChannelAndMovesEveryChannel) {
    auto doc = twoRates();
    timebase::zoom(*doc, ZoomMode::In);
    HScrollBar bar = timebase::scrollBarFromRange(*doc);
    EXPECT_DOUBLE_EQ(bar.position, 7500.0);
    EXPECT_DOUBLE_EQ(bar.page, 15000.0);
    EXPECT_TRUE(bar.scrollable());

    bar.position = timebase::hScrollTarget(bar, ScrollRequest::LineForward, 0);
    EXPECT_DOUBLE_EQ(bar.position, 9000.0);
    timebase::rangeFromScrollBar(*doc, bar);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewStartSample, 3000.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_viewEndSample, 8000.0);
    // The data channel at a tenth of the rate shows the same milliseconds.
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewStartMs, doc->channel(0).m_viewStartMs);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_viewEndMs, doc->channel(0).m_viewEndMs);

    // Page steps stop at the ends of the bar.
    EXPECT_DOUBLE_EQ(timebase::hScrollTarget(bar, ScrollRequest::PageForward, 0), 15000.0);
    EXPECT_DOUBLE_EQ(timebase::hScrollTarget(bar, ScrollRequest::PageBack, 0), 0.0);
    EXPECT_DOUBLE_EQ(timebase::hScrollTarget(bar, ScrollRequest::ThumbTrack, 1234), 1234.0);
    EXPECT_DOUBLE_EQ(timebase::hScrollTarget(bar, ScrollRequest::ThumbPosition, 1234), 9000.0);
    EXPECT_DOUBLE_EQ(timebase::hScrollTarget(bar, ScrollRequest::EndScroll, 0), 9000.0);
}

TEST(ScrollBarTest, OnlyLinePageAndTrackRequestsRepaint) {
    EXPECT_TRUE(timebase::hScrollRepaints(ScrollRequest::LineBack));
    EXPECT_TRUE(timebase::hScrollRepaints(ScrollRequest::PageForward));
    EXPECT_TRUE(timebase::hScrollRepaints(ScrollRequest::ThumbTrack));
    EXPECT_FALSE(timebase::hScrollRepaints(ScrollRequest::ThumbPosition));
    EXPECT_FALSE(timebase::hScrollRepaints(ScrollRequest::EndScroll));
}

TEST(ScrollBarTest, AnHourCanBeScrolledAtOneSamplePerPixel) {
    // 1920 samples of an hour are a fraction of one bar unit; scrolling must keep them.
    auto doc = std::make_unique<CKestruneDoc>();
    const std::size_t n = 3600 * 44100;
    synthetic::fillChannel(
        *doc, 0, "Audio", 44100.0, n, [](std::size_t) { return std::int16_t(0); }, true);
    setRange(*doc, 1000000.0, 1001920.0);
    HScrollBar bar = timebase::scrollBarFromRange(*doc);
    bar.position = timebase::hScrollTarget(bar, ScrollRequest::LineForward, 0);
    timebase::rangeFromScrollBar(*doc, bar);
    EXPECT_NEAR(doc->channel(0).m_viewStartSample, 1000192.0, 1e-3);
    EXPECT_NEAR(doc->channel(0).viewLengthSamples(), 1920.0, 1e-3);
}

TEST(VerticalScrollTest, StepsStayInsideTheColumn) {
    // Column 1000 px, client 300 px: positions 0..700.
    EXPECT_EQ(timebase::vScrollTarget(0, 1000, 300, ScrollRequest::LineForward, 0), 30);
    EXPECT_EQ(timebase::vScrollTarget(30, 1000, 300, ScrollRequest::LineBack, 0), 0);
    // A step that would leave the column is not taken, not even partly.
    EXPECT_EQ(timebase::vScrollTarget(10, 1000, 300, ScrollRequest::LineBack, 0), 10);
    EXPECT_EQ(timebase::vScrollTarget(690, 1000, 300, ScrollRequest::LineForward, 0), 690);
    EXPECT_EQ(timebase::vScrollTarget(300, 1000, 300, ScrollRequest::PageForward, 0), 600);
    EXPECT_EQ(timebase::vScrollTarget(600, 1000, 300, ScrollRequest::PageForward, 0), 600);
    EXPECT_EQ(timebase::vScrollTarget(0, 1000, 300, ScrollRequest::ThumbTrack, 420), 420);
    EXPECT_EQ(timebase::vScrollTarget(420, 1000, 300, ScrollRequest::Bottom, 0), 700);
    EXPECT_EQ(timebase::vScrollTarget(420, 1000, 300, ScrollRequest::Top, 0), 0);
}

TEST(SelectionTest, FivePixelsIsAClickSixIsASelection) {
    EXPECT_FALSE(timebase::isSelectionDrag(100, 105));
    EXPECT_FALSE(timebase::isSelectionDrag(100, 95));
    EXPECT_TRUE(timebase::isSelectionDrag(100, 106));
    EXPECT_TRUE(timebase::isSelectionDrag(100, 94));
}

TEST(SelectionTest, WindowAndAllCoverEveryChannelInItsOwnSamples) {
    auto doc = twoRates();
    setRange(*doc, 2000.0, 4000.0);
    doc->channel(1).m_viewStartSample = 200.0;
    doc->channel(1).m_viewEndSample = 400.0;
    doc->channel(0).m_viewStartMs = 200.0;
    doc->channel(0).m_viewEndMs = 400.0;
    doc->channel(1).m_viewStartMs = 200.0;
    doc->channel(1).m_viewEndMs = 400.0;
    timebase::selectWindow(*doc);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_selStartSample, 2000.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_selEndSample, 400.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_selEndMs, 400.0);
    timebase::selectAll(*doc);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_selEndSample, 10000.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_selEndSample, 1000.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_selEndMs, 1000.0);
    // A drag past the end is limited to the signal.
    timebase::selectRange(*doc, 900.0, 1500.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_selEndSample, 10000.0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_selEndMs, 1000.0);
}

TEST(ReferenceTest, AllSkipsTheAudioChannelAndZeroRecomputesDerivedCurves) {
    auto doc = twoRates();
    timebase::placeCursor(*doc, 123.45);  // audio sample 1234 (value 34), data sample 123
    timebase::setReferenceAll(*doc);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_reference, 0.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_reference, 123.0);

    timebase::setReferenceFor(*doc, 0);
    EXPECT_DOUBLE_EQ(doc->channel(0).m_reference, 34.0);

    doc->channel(1).m_intensityValid = 1;
    std::vector<int> recomputed;
    timebase::setReferenceAllToZero(*doc, [&](int i) { recomputed.push_back(i); });
    EXPECT_DOUBLE_EQ(doc->channel(0).m_reference, 0.0);
    EXPECT_DOUBLE_EQ(doc->channel(1).m_reference, 0.0);
    EXPECT_EQ(recomputed, std::vector<int>{1});
}

TEST(GridTest, FixedStepIsKeptAndAutomaticStepsAreOneTwoFive) {
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(25.0, 1000.0, 800.0), 25.0);
    // 1000 ms over 800 px with 80 px spacing needs at least 100 ms.
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(0.0, 1000.0, 800.0), 100.0);
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(0.0, 1100.0, 800.0), 200.0);
    EXPECT_DOUBLE_EQ(timebase::gridStepMs(0.0, 0.0, 800.0), 0.0);
}
