// Runs the frames of a track or the columns of a spectrogram on several
// threads, with progress and cancellation on the calling thread.
//
// The frames [0, count) are cut into pieces: the frames before
// `sequentialFrom` into pieces of `chunkFrames`, which the worker threads and
// the calling thread take in any order; then the frames [sequentialFrom,
// count) as one last piece, which the calling thread runs itself, in order,
// after it has run out of other pieces. The drivers put there what must see
// the work buffers in the state an ordinary frame-by-frame run leaves them:
// the frames that read what their predecessors left behind, and always the
// last frame, so that the caller's workspace ends as that run would end it.
//
// Pieces are numbered in frame order (the last piece has the highest number),
// so that a driver can keep one partial result per piece and combine them in
// frame order. Slot 0 is the calling thread; slots 1 .. threads − 1 are the
// workers, each with its own buffers set up by the driver before the run.
//
// The progress callback runs on the calling thread only: after each of its
// own frames, and while it waits for the workers, with the number of frames
// finished by all threads. When it answers false, or a piece fails, every
// thread stops at its next frame; the run then answers Cancelled or Failed.
#pragma once

#include <functional>

#include "analysis/AnalysisTypes.h"

namespace sonmetra {

class FrameCounter;

struct FramePlan {
    int count = 0;           // frames in all
    int sequentialFrom = 0;  // start of the calling thread's last piece, 0 .. count
    int chunkFrames = 64;    // frames per piece before sequentialFrom
    int threads = 1;         // slots, the calling thread included

    int chunkCount() const { return sequentialFrom > 0 ? (sequentialFrom + chunkFrames - 1) / chunkFrames : 0; }
    int pieceCount() const { return chunkCount() + (sequentialFrom < count ? 1 : 0); }
};

// A piece: frames [begin, end) on `slot`. It calls counter.frameDone() after
// every frame and stops (answering true) when that answers false; it answers
// false when the analysis fails.
using FramePiece = std::function<bool(int slot, int piece, int begin, int end, FrameCounter& counter)>;

// Threads for a run: `requested` (0 for one per processor core), no more
// than there are pieces to share.
int FrameThreads(int requested, int count, int chunkFrames);

AnalysisStatus RunFrames(const FramePlan& plan, const FramePiece& piece, const AnalysisProgress& progress);

// Counts finished frames; owned by RunFrames.
class FrameCounter {
public:
    virtual ~FrameCounter() = default;
    // Counts one frame; false once the run is to stop.
    virtual bool frameDone() = 0;
};

}  // namespace sonmetra
