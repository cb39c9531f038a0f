// The pitch window's computation: a job that copies the tracked channel,
// runs the analysis library's ComputePitchTrack on it, and measures each
// frame's intensity, on one worker thread so that the window stays live.
//
// Why a copy: the worker reads samples while the user may cut, paste or
// record on the interface thread; the copy is also what the window draws its
// waveform pane from, so that the track and the waveform always belong
// together. It is a sample block like the document's (huge pages for long
// signals), so that copying an hour takes a moment, not a second of page
// faults. Each computation runs on a thread of its own, whose analysis
// workspace starts empty: the track is the one the library gives for the
// channel in a fresh process (sonmetra-cli pitch), bit for bit, whatever ran
// before. Two computations never overlap: start() first stops and waits for
// one in progress (it ends after its current frame).
#pragma once

#include <QObject>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "analysis/AnalysisTypes.h"
#include "analysis/PitchTrack.h"
#include "document/MinMaxSummary.h"
#include "document/SampleBlock.h"

namespace sonmetra {
class CKestruneDoc;
}

// Everything a finished computation produced. Frame i stands at
// i × stepSamples (its start), in ms frameMs(i).
struct PitchResults {
    std::shared_ptr<const sonmetra::SampleBlock> samples;  // the channel as it was tracked
    sonmetra::MinMaxSummary summary;                       // of those samples
    int channel = -1;
    double rateHz = 0.0;
    double msPerSample = 0.0;
    double durationMs = 0.0;
    double zeroLevel = 0.0;  // the channel's reference, subtracted by the power measures

    sonmetra::PitchTrackResult track;  // F0 in Hz per frame, 0.0 = no pitch
    std::vector<double> levelDb;       // 10·log10 of each frame's mean power, 0.0 when silent
    sonmetra::PitchSettings settings;  // as used (a lowered window length included)

    int frameCount() const { return track.frameCount; }
    double stepMs() const { return track.stepSamples * msPerSample; }
    double frameMs(int i) const { return i * track.stepSamples * msPerSample; }
    // The frame whose step holds time t (its start at or before t), or -1 outside the track.
    int frameAt(double ms) const;
};

struct PitchJob {
    std::shared_ptr<const sonmetra::SampleBlock> samples;
    int channel = -1;
    double rateHz = 0.0;
    double msPerSample = 0.0;
    double durationMs = 0.0;
    double zeroLevel = 0.0;
    sonmetra::PitchSettings settings;
};

// The job for a channel of the document: a copy of its samples. Throws
// std::bad_alloc when the copy cannot be had.
PitchJob makePitchJob(const sonmetra::CKestruneDoc& doc, int channel, const sonmetra::PitchSettings& settings);

// Runs a job on the calling thread. Failed and Cancelled leave `out` empty.
sonmetra::AnalysisStatus runPitchJob(const PitchJob& job, PitchResults& out,
                                     const sonmetra::AnalysisProgress& progress = {});

// Runs jobs on a worker thread, one at a time; results come back on the
// thread that owns this object (the interface thread).
class PitchComputation : public QObject {
    Q_OBJECT
public:
    using Done = std::function<void(sonmetra::AnalysisStatus, std::shared_ptr<PitchResults>)>;

    explicit PitchComputation(QObject* parent = nullptr);
    ~PitchComputation() override;

    // Starts the job after stopping the one in progress (whose `done` is then
    // never called). `done` runs on the owner's thread when the job ends.
    void start(PitchJob job, Done done);
    // Asks the job in progress to stop after its current frame; its `done`
    // runs with Cancelled.
    void cancel();
    // Stops the job in progress without calling its `done`, and waits for it.
    void abandon();
    bool running() const { return m_thread.joinable(); }
    // Frames done and in all, as the library last reported them.
    int framesDone() const { return m_done.load(); }
    int framesTotal() const { return m_total.load(); }

    // The same job on a fresh thread, waited for (renders, tests): the same
    // results as the window gets.
    static sonmetra::AnalysisStatus runAndWait(const PitchJob& job, PitchResults& out);

private:
    void finished(unsigned generation, sonmetra::AnalysisStatus status, std::shared_ptr<PitchResults> results);

    std::thread m_thread;               // owner thread starts and joins it
    std::atomic<bool> m_cancel{false};  // written by the owner, read by the worker
    std::atomic<int> m_done{0};         // written by the worker, read by the owner
    std::atomic<int> m_total{0};        // written by the worker, read by the owner
    unsigned m_generation = 0;          // owner thread only: which job's result is wanted
    Done m_onDone;                      // owner thread only
};
