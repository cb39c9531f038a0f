#include "analysis/ParallelFrames.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace sonmetra {
namespace {

// How often the calling thread reports progress while it waits for the workers.
constexpr auto kWaitReport = std::chrono::milliseconds(20);

// State shared by the calling thread and the workers of one run.
struct SharedRun {
    std::atomic<int> nextChunk{0};  // next piece before sequentialFrom; taken by any thread
    std::atomic<int> done{0};       // frames finished; incremented by every thread
    std::atomic<bool> stop{false};  // set by any thread on failure, by the calling thread on cancel
    std::atomic<bool> failed{false};
    std::mutex mutex;  // guards running
    std::condition_variable finished;
    int running = 0;  // workers still at work; written under mutex
};

class WorkerCounter final : public FrameCounter {
public:
    explicit WorkerCounter(SharedRun& run) : m_run(run) {}
    bool frameDone() override {
        m_run.done.fetch_add(1, std::memory_order_relaxed);
        return !m_run.stop.load(std::memory_order_relaxed);
    }

private:
    SharedRun& m_run;
};

// The calling thread's counter: reports every frame it finishes.
class CallerCounter final : public FrameCounter {
public:
    CallerCounter(SharedRun& run, int total, const AnalysisProgress& progress)
        : m_run(run), m_total(total), m_progress(progress) {}
    bool frameDone() override {
        const int done = m_run.done.fetch_add(1, std::memory_order_relaxed) + 1;
        report(done);
        return !m_run.stop.load(std::memory_order_relaxed);
    }
    // Reports `done` if it moved on since the last report.
    void report(int done) {
        if (!m_progress || m_cancelled || done == m_reported) return;
        m_reported = done;
        if (!m_progress(done, m_total)) {
            m_cancelled = true;
            m_run.stop.store(true, std::memory_order_relaxed);
        }
    }
    bool cancelled() const { return m_cancelled; }

private:
    SharedRun& m_run;
    int m_total;
    const AnalysisProgress& m_progress;
    int m_reported = 0;
    bool m_cancelled = false;
};

bool runPiece(const FramePiece& piece, SharedRun& run, FrameCounter& counter, int slot, int index, int begin, int end) {
    bool ok = false;
    try {
        ok = piece(slot, index, begin, end, counter);
    } catch (const std::exception&) {
        ok = false;
    }
    if (!ok) {
        run.failed.store(true, std::memory_order_relaxed);
        run.stop.store(true, std::memory_order_relaxed);
    }
    return ok;
}

// Takes pieces before sequentialFrom until none is left or the run stops.
void takeChunks(const FramePlan& plan, const FramePiece& piece, SharedRun& run, FrameCounter& counter, int slot) {
    const int chunks = plan.chunkCount();
    while (!run.stop.load(std::memory_order_relaxed)) {
        const int c = run.nextChunk.fetch_add(1, std::memory_order_relaxed);
        if (c >= chunks) return;
        const int begin = c * plan.chunkFrames;
        const int end = std::min(begin + plan.chunkFrames, plan.sequentialFrom);
        if (!runPiece(piece, run, counter, slot, c, begin, end)) return;
    }
}

}  // namespace

int FrameThreads(int requested, int count, int chunkFrames) {
    int threads = requested > 0 ? requested : static_cast<int>(std::thread::hardware_concurrency());
    if (threads < 1) threads = 1;
    const int pieces = chunkFrames > 0 ? (count + chunkFrames - 1) / chunkFrames : 1;
    return std::max(1, std::min(threads, pieces));
}

AnalysisStatus RunFrames(const FramePlan& plan, const FramePiece& piece, const AnalysisProgress& progress) {
    SharedRun run;
    CallerCounter caller(run, plan.count, progress);
    std::vector<std::thread> workers;
    const int wanted = std::min(plan.threads - 1, plan.chunkCount());
    for (int slot = 1; slot <= wanted; ++slot) {
        {
            std::lock_guard<std::mutex> lock(run.mutex);
            ++run.running;
        }
        try {
            workers.emplace_back([&plan, &piece, &run, slot] {
                WorkerCounter counter(run);
                takeChunks(plan, piece, run, counter, slot);
                std::lock_guard<std::mutex> lock(run.mutex);
                --run.running;
                run.finished.notify_all();
            });
        } catch (const std::system_error&) {
            // No more threads to be had: the ones running share the work.
            std::lock_guard<std::mutex> lock(run.mutex);
            --run.running;
            break;
        }
    }

    takeChunks(plan, piece, run, caller, 0);
    if (!run.stop.load(std::memory_order_relaxed) && plan.sequentialFrom < plan.count)
        runPiece(piece, run, caller, 0, plan.chunkCount(), plan.sequentialFrom, plan.count);

    // The progress bar keeps moving while the workers finish their pieces.
    {
        std::unique_lock<std::mutex> lock(run.mutex);
        while (run.running > 0) {
            run.finished.wait_for(lock, kWaitReport);
            lock.unlock();
            caller.report(run.done.load(std::memory_order_relaxed));
            lock.lock();
        }
    }
    for (std::thread& t : workers) t.join();
    caller.report(run.done.load(std::memory_order_relaxed));
    if (run.failed.load()) return AnalysisStatus::Failed;
    if (caller.cancelled()) return AnalysisStatus::Cancelled;
    return AnalysisStatus::Ok;
}

}  // namespace sonmetra
