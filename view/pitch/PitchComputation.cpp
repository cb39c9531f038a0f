#include "PitchComputation.h"

#include <QMetaObject>
#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "analysis/FrameIntensity.h"
#include "document/CKestruneDoc.h"

using sonmetra::AnalysisStatus;

int PitchResults::frameAt(double ms) const {
    const double step = stepMs();
    if (frameCount() <= 0 || !(step > 0.0) || ms < 0.0) return -1;
    const auto i = static_cast<long long>(ms / step);
    return i < frameCount() ? static_cast<int>(i) : -1;
}

PitchJob makePitchJob(const sonmetra::CKestruneDoc& doc, int channel, const sonmetra::PitchSettings& settings) {
    const sonmetra::CChannel& ch = doc.channel(channel);
    const std::size_t count = std::min(ch.m_samples.size(), static_cast<std::size_t>(std::max(0.0, ch.m_sampleCount)));
    PitchJob job;
    auto copy = std::make_shared<sonmetra::SampleBlock>();
    if (!copy->resizeForOverwrite(count)) throw std::bad_alloc();
    if (count > 0) std::memcpy(copy->data(), ch.m_samples.data(), count * sizeof(std::int16_t));
    job.samples = std::move(copy);
    job.channel = channel;
    job.rateHz = ch.m_rateHz;
    job.msPerSample = ch.msPerSample();
    job.durationMs = ch.m_durationMs;
    job.zeroLevel = ch.m_reference;
    job.settings = settings;
    return job;
}

AnalysisStatus runPitchJob(const PitchJob& job, PitchResults& out, const sonmetra::AnalysisProgress& progress) {
    out = PitchResults{};
    if (!job.samples) return AnalysisStatus::Failed;
    const sonmetra::SampleBlock& samples = *job.samples;
    sonmetra::PitchTrackInput in;
    in.samples = samples.data();
    in.sampleCount = static_cast<double>(samples.size());
    in.startSample = 0.0;
    in.endSample = in.sampleCount;
    in.rateHz = job.rateHz;
    in.offset = job.zeroLevel;
    PitchResults r;
    r.settings = job.settings;
    try {
        const AnalysisStatus status = sonmetra::ComputePitchTrack(in, r.settings, r.track, progress);
        if (status != AnalysisStatus::Ok) return status;
        const int frames = r.track.frameCount;
        if (frames > 0) {
            // The level of the frames the power gate measured, in dB.
            r.levelDb.assign(static_cast<std::size_t>(frames), 0.0);
            double minimum = 0.0, maximum = 0.0;
            sonmetra::FrameIntensity(in.samples, r.levelDb.data(), minimum, maximum, in.offset, 0.0,
                                     r.track.stepSamples, r.track.stepSamples, frames, 0, 0);
        }
        r.summary.rebuild(samples.data(), samples.size());
    } catch (const std::exception&) {
        return AnalysisStatus::Failed;
    }
    r.samples = job.samples;
    r.channel = job.channel;
    r.rateHz = job.rateHz;
    r.msPerSample = job.msPerSample;
    r.durationMs = job.durationMs;
    r.zeroLevel = job.zeroLevel;
    out = std::move(r);
    return AnalysisStatus::Ok;
}

PitchComputation::PitchComputation(QObject* parent) : QObject(parent) {}

PitchComputation::~PitchComputation() { abandon(); }

void PitchComputation::start(PitchJob job, Done done) {
    abandon();
    m_cancel = false;
    m_done = 0;
    m_total = 0;
    const unsigned generation = ++m_generation;
    m_onDone = std::move(done);
    m_thread = std::thread([this, job = std::move(job), generation] {
        auto results = std::make_shared<PitchResults>();
        AnalysisStatus status = AnalysisStatus::Failed;
        try {
            status = runPitchJob(job, *results, [this](int done, int total) {
                m_done = done;
                m_total = total;
                return !m_cancel.load();
            });
        } catch (...) {
            status = AnalysisStatus::Failed;
        }
        // The owner picks the result up on its own thread; abandon() joins
        // this thread before the owner can go, so `this` is still there.
        QMetaObject::invokeMethod(
            this, [this, generation, status, results] { finished(generation, status, results); }, Qt::QueuedConnection);
    });
}

void PitchComputation::cancel() { m_cancel = true; }

void PitchComputation::abandon() {
    if (m_thread.joinable()) {
        m_cancel = true;
        m_thread.join();
    }
    // A result already posted by the abandoned job is recognised as stale.
    ++m_generation;
    m_onDone = {};
}

void PitchComputation::finished(unsigned generation, AnalysisStatus status, std::shared_ptr<PitchResults> results) {
    if (generation != m_generation) return;
    if (m_thread.joinable()) m_thread.join();
    Done done = std::move(m_onDone);
    m_onDone = {};
    if (done) done(status, status == AnalysisStatus::Ok ? std::move(results) : nullptr);
}

AnalysisStatus PitchComputation::runAndWait(const PitchJob& job, PitchResults& out) {
    AnalysisStatus status = AnalysisStatus::Failed;
    std::thread worker([&] {
        try {
            status = runPitchJob(job, out);
        } catch (...) {
            status = AnalysisStatus::Failed;
        }
    });
    worker.join();
    return status;
}
