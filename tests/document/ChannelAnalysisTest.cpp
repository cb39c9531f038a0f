// The intensity and smoothing drivers that act on a document channel in
// place, with the channel's own settings and its reference as the offset.
#include <gtest/gtest.h>

#include <cmath>

#include "document/ChannelAnalysis.h"
#include "document/MessageService.h"

namespace sonmetra {
namespace {

TEST(ChannelAnalysis, IntensityAndSmoothingUseTheChannelsSettings) {
    CChannel ch;
    ch.m_rateHz = 10000.0;
    ASSERT_TRUE(ch.m_samples.resize(5000));
    for (std::size_t i = 0; i < 5000; ++i) ch.m_samples[i] = 110;
    ch.m_sampleCount = 5000;
    ch.m_reference = 10.0;  // the offset: power of 100²
    ASSERT_TRUE(ComputeIntensity(ch));
    EXPECT_EQ(ch.m_intensityValid, 1);
    ASSERT_EQ(ch.m_intensity.size(), 5000u);
    EXPECT_NEAR(ch.m_intensity[2500], 10 * std::log10(201 * 10000 / 200.5), 1e-12);
    ch.m_intensityStepMs = 0.0;
    EXPECT_FALSE(ComputeIntensity(ch));
    EXPECT_EQ(ch.m_intensityValid, 0);

    ch.m_samples[0] = 0;
    ch.m_smoothingOn = 0;
    ASSERT_TRUE(SmoothChannel(ch));
    EXPECT_EQ(ch.m_samples[0], 0);
    ch.m_smoothingOn = 1;
    ch.m_smoothingLength = 2;
    ASSERT_TRUE(SmoothChannel(ch));
    EXPECT_EQ(ch.m_samples[0], 55);

    // No average over less than one sample, nor over a length that is no number.
    for (const double bad : {0.0, 0.5, -3.0, std::nan("")}) {
        ch.m_smoothingLength = bad;
        EXPECT_FALSE(SmoothChannel(ch)) << bad;
        EXPECT_EQ(ch.m_samples[0], 55);
    }
}

TEST(ChannelAnalysis, AllChannelsStopAtAFailureOrACancel) {
    CKestruneDoc doc;
    doc.setChannelCount(3);
    for (int i = 0; i < 3; ++i) {
        CChannel& ch = doc.channel(i);
        ch.m_rateHz = 10000.0;
        ASSERT_TRUE(ch.m_samples.resize(3000));
        ch.m_sampleCount = 3000;
        for (std::size_t k = 0; k < 3000; ++k) ch.m_samples[k] = 100;
    }
    doc.channel(1).m_intensityStepMs = 0.0;  // fails
    EXPECT_EQ(ComputeIntensityAllChannels(doc), AnalysisStatus::Failed);
    EXPECT_EQ(doc.channel(0).m_intensityValid, 1);
    EXPECT_EQ(doc.channel(0).m_intensityShown, 1);
    EXPECT_EQ(doc.channel(2).m_intensityValid, 0);  // never reached
    doc.channel(1).m_intensityStepMs = 10.0;
    EXPECT_EQ(ComputeIntensityAllChannels(doc, [](int done, int) { return done < 2; }), AnalysisStatus::Cancelled);
    EXPECT_EQ(doc.channel(1).m_intensityValid, 1);
    EXPECT_EQ(doc.channel(2).m_intensityValid, 0);

    doc.channel(0).m_samples[0] = 0;
    doc.channel(0).m_smoothingLength = 2;
    doc.channel(1).m_smoothingOn = 0;
    doc.channel(1).m_samples[0] = 0;
    EXPECT_EQ(SmoothAllChannels(doc), AnalysisStatus::Ok);
    EXPECT_EQ(doc.channel(0).m_samples[0], 50);
    EXPECT_EQ(doc.channel(1).m_samples[0], 0);
}

// A channel whose rate no analysis can use fails at once instead of
// counting countless frames, and the loop over the document says why.
TEST(ChannelAnalysis, IntensityRefusesARateOutsideTheRange) {
    RecordingMessageService messages;
    ScopedMessageService install(&messages);
    CKestruneDoc doc;
    for (int i = 0; i < 2; ++i) {
        CChannel& ch = doc.channel(i);
        ASSERT_TRUE(ch.m_samples.resize(62769));
        ch.m_sampleCount = 62769;
        ch.m_rateHz = 11025.0;
        ch.m_name = i == 0 ? "Audio" : "Airflow";
    }
    doc.setChannelCount(2);
    for (const double rate : {6.1e-305, 0.0, -1.0, std::nan(""), HUGE_VAL, 1e300}) {
        doc.channel(1).m_rateHz = rate;
        EXPECT_FALSE(ComputeIntensity(doc.channel(1))) << rate;
        messages.clear();
        EXPECT_EQ(ComputeIntensityAllChannels(doc), AnalysisStatus::Failed) << rate;
        ASSERT_EQ(messages.texts().size(), 1u);
        EXPECT_EQ(messages.texts()[0].rfind("The sample rate of channel 2 (Airflow) ", 0), 0u) << messages.texts()[0];
        EXPECT_EQ(doc.channel(0).m_intensityValid, 1) << "the channel before keeps its contour";
    }
    // A step of a millionth of a sample is refused too.
    doc.channel(0).m_intensityStepMs = 1e-7;
    EXPECT_FALSE(ComputeIntensity(doc.channel(0)));
}

// Settings the options grid accepts (a window of up to 1000 s, a step from
// 1 ms) can ask for a contour that would block the window for hours: it is
// refused before any work, saying what to change, while the same settings
// on a channel too short for one window, and the defaults on a long one, run.
TEST(ChannelAnalysis, IntensityRefusesAContourOfCountlessSums) {
    RecordingMessageService messages;
    ScopedMessageService install(&messages);
    CKestruneDoc doc;
    const std::size_t tenMinutes = 600 * 11025;
    for (int i = 0; i < 2; ++i) {
        CChannel& ch = doc.channel(i);
        ASSERT_TRUE(ch.m_samples.resize(i == 0 ? 400 : tenMinutes));
        ch.setSampleCountFromBlock();
        ch.m_rateHz = 11025.0;
        ch.m_name = i == 0 ? "Audio" : "Airflow";
        ch.m_intensityWindowMs = 100000.0;
        ch.m_intensityStepMs = 1.0;
    }
    doc.setChannelCount(2);
    EXPECT_TRUE(intensityWorkProblem(doc.channel(0), 0).empty());  // no frame fits
    EXPECT_EQ(intensityWorkProblem(doc.channel(1), 1),
              "The intensity contour of channel 2 (Airflow) would sum 5.5e+11 samples (a window of 100000 ms every "
              "1 ms), too many to compute. Make the window shorter or the step longer.");
    EXPECT_EQ(ComputeIntensityAllChannels(doc), AnalysisStatus::Failed);
    ASSERT_EQ(messages.texts().size(), 1u);
    EXPECT_EQ(doc.channel(0).m_intensityValid, 1);
    EXPECT_EQ(doc.channel(1).m_intensityValid, 0);

    doc.channel(1).m_intensityWindowMs = 20.0;
    doc.channel(1).m_intensityStepMs = 10.0;
    EXPECT_TRUE(intensityWorkProblem(doc.channel(1), 1).empty());
    // A step just long enough brings the same window under the bound.
    doc.channel(1).m_intensityWindowMs = 100000.0;
    doc.channel(1).m_intensityStepMs = 300.0;
    EXPECT_TRUE(intensityWorkProblem(doc.channel(1), 1).empty());
}

}  // namespace
}  // namespace sonmetra
