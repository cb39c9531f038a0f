#include "analysis/Spectrogram.h"

#include <algorithm>
#include <memory>
#include <new>

#include "analysis/FftSpectrum.h"
#include "analysis/LpcSpectrum.h"
#include "analysis/ParallelFrames.h"

namespace sonmetra {
namespace {

constexpr int kColumnsPerPiece = 128;
constexpr double kNoLevel = -1e7;  // start of the search for the largest level

// The largest of v[0..n−1] and `start`, replaced only on strictly larger
// values (a NaN never is). Four running maxima, so that the loop does not wait
// on one comparison after another. With that rule the largest of a run of
// columns is the same value, to the bit, whether it is taken column after
// column or as the larger of the runs' own largest values in column order.
double largestAbove(const double* v, int n, double start) {
    double m[4] = {start, start, start, start};
    int k = 0;
    for (; k + 3 < n; k += 4)
        for (int j = 0; j < 4; ++j) m[j] = v[k + j] > m[j] ? v[k + j] : m[j];
    for (; k < n; ++k) m[0] = v[k] > m[0] ? v[k] : m[0];
    for (int j = 1; j < 4; ++j) m[0] = m[j] > m[0] ? m[j] : m[0];
    return m[0];
}

// The samples column i copies into its LPC block: [first, stop).
struct LpcCopy {
    long first;
    long stop;
};
LpcCopy lpcCopy(double pos, int lpcLength, double total) {
    const long first = static_cast<long>(pos);
    long stop = lpcLength + pos <= total ? static_cast<long>(lpcLength + pos + 5) : static_cast<long>(total - pos);
    // Past the channel's end nothing is read; the block keeps what it held.
    stop = std::min(stop, static_cast<long>(total));
    return {first, stop};
}

// The work blocks of one thread.
struct ColumnBlocks {
    AnalysisWorkspace* ws = nullptr;
    std::unique_ptr<AnalysisWorkspace> own;
    std::array<std::vector<double>, 4> columns;  // blocks of columns made away from their place
    std::vector<double> lpc;
};

}  // namespace

AnalysisStatus ComputeSpectrogram(const SpectrogramInput& in, const SpectrogramSettings& settings, int columns,
                                  int points, bool trackFormants, SpectrogramResult& result,
                                  const AnalysisProgress& progress, AnalysisWorkspace& ws) {
    // The levels of the previous spectrogram are reused when the new ones fit.
    LargeDoubles levels = std::move(result.levels);
    result = SpectrogramResult{};
    if (columns < 1 || points < 1 || settings.fftSizeIndex < 0 || settings.fftSizeIndex > 7 || !(in.rateHz > 0.0))
        return AnalysisStatus::Failed;
    const int n = FftSizeOfIndex(settings.fftSizeIndex);
    const double total = in.sampleCount;
    const double step = (in.endSample - in.startSample) / columns;
    const int order = settings.lpcOrder;
    const int lpcLength = static_cast<int>(in.rateHz * 0.001) * order;
    const std::size_t columnSize = static_cast<std::size_t>(std::max(points, n + 16));
    const std::size_t lpcSize = static_cast<std::size_t>(std::max(lpcLength, 0)) + 20;

    // A column whose LPC copy covers every value LpcSpectrum reads (L + 1 of
    // them with pre-emphasis) does not depend on what the block held. From
    // the first one that does not, the columns run in order on the calling
    // thread, starting with the column before it, whose block they inherit.
    int sequentialFrom = columns - 1;
    if (trackFormants) {
        for (int i = 0; i < columns; ++i) {
            const LpcCopy copy = lpcCopy(i * step + in.startSample, lpcLength, total);
            if (copy.stop - copy.first < static_cast<long>(lpcLength) + 1) {
                sequentialFrom = std::min(sequentialFrom, std::max(0, i - 1));
                break;
            }
        }
    }

    FramePlan plan;
    plan.count = columns;
    plan.sequentialFrom = sequentialFrom;
    plan.chunkFrames = kColumnsPerPiece;
    plan.threads = FrameThreads(in.threads, sequentialFrom, kColumnsPerPiece);
    std::vector<ColumnBlocks> blocks(static_cast<std::size_t>(plan.threads));
    std::vector<double> pieceTop(static_cast<std::size_t>(plan.pieceCount()), kNoLevel);
    std::vector<char> pieceFound(static_cast<std::size_t>(plan.pieceCount()), 0);
    try {
        // Every level is written by its column, so the array is not cleared:
        // the threads that make the columns take its first-touch faults.
        const std::size_t count = static_cast<std::size_t>(columns) * static_cast<std::size_t>(points);
        if (levels.capacity() < count || levels.capacity() / 2 > count) LargeDoubles().swap(levels);
        levels.resize(count);
        result.levels = std::move(levels);
        if (trackFormants) result.formants.assign(static_cast<std::size_t>(columns), {0, 0, 0, 0, 0});
        for (std::size_t t = 0; t < blocks.size(); ++t) {
            if (t == 0) {
                blocks[t].ws = &ws;
            } else {
                blocks[t].own = std::make_unique<AnalysisWorkspace>();
                blocks[t].own->seedFrom(ws);
                blocks[t].ws = blocks[t].own.get();
            }
            for (auto& c : blocks[t].columns) c.assign(columnSize, 0.0);
            if (trackFormants) blocks[t].lpc.assign(lpcSize, 0.0);
        }
    } catch (const std::bad_alloc&) {
        result = SpectrogramResult{};
        return AnalysisStatus::Failed;
    }
    result.columns = columns;
    result.points = points;
    const std::int16_t* s = in.samples;

    const bool direct = points >= n + 10;
    // Column i's block: its own place in the result when that holds the
    // samples the copy writes, otherwise one of the slot's blocks. A short
    // copy leaves the rest of the block as a fresh, zeroed column block would
    // hold it; a whole copy covers every value the transform reads.
    const auto fillBlock = [&](int i, double* block, std::size_t blockSize) {
        const double pos = i * step + in.startSample;
        const long first = static_cast<long>(pos);
        const bool whole = n + pos + 10 <= total;
        const long stop = whole ? static_cast<long>(n + pos + 10) : static_cast<long>(total - pos);
        if (!whole) std::fill(block, block + blockSize, 0.0);
        for (long j = first; j < stop; ++j) block[j - first] = s[j];
    };
    const auto place = [&](int i) {
        return result.levels.data() + static_cast<std::size_t>(i) * static_cast<std::size_t>(points);
    };
    const auto formantsOf = [&](int i, ColumnBlocks& b) {
        const LpcCopy copy = lpcCopy(i * step + in.startSample, lpcLength, total);
        for (long j = copy.first; j < copy.stop; ++j) b.lpc[static_cast<std::size_t>(j - copy.first)] = s[j];
        LpcSpectrum(b.lpc.data(), order, lpcLength, settings.preEmphasis, 1, 0, columns, settings.frequencyRangeHz,
                    in.rateHz, 1, 1, *b.ws);
        const FormantRecord* rec = LastFormants(*b.ws);
        auto& frame = result.formants[static_cast<std::size_t>(i)];
        bool found = false;
        for (int k = 0; k < 5; ++k) {
            const double f = rec ? rec->frequency[k] : 0.0;
            const double bw = rec ? rec->bandwidth[k] : 0.0;
            if ((f + 0.5) / (bw + 0.5) > 1.0) {
                frame[static_cast<std::size_t>(k)] = static_cast<std::int16_t>(f);
                found = true;
            } else {
                frame[static_cast<std::size_t>(k)] = 0;
            }
        }
        return found;
    };
    const auto piece = [&](int slot, int index, int begin, int end, FrameCounter& counter) {
        ColumnBlocks& b = blocks[static_cast<std::size_t>(slot)];
        double top = kNoLevel;
        bool found = false;
        bool going = true;
        // Four columns' spectra at a time where four are left, then each
        // column's maximum and formants in order.
        for (int i = begin; i < end && going;) {
            const int group = end - i >= 4 ? 4 : 1;
            double* blocksOf[4];
            for (int g = 0; g < group; ++g) {
                blocksOf[g] = direct ? place(i + g) : b.columns[static_cast<std::size_t>(g)].data();
                fillBlock(i + g, blocksOf[g], direct ? static_cast<std::size_t>(points) : columnSize);
            }
            const int answer = group == 4 ? FftSpectra(blocksOf, n, settings.preEmphasis, 1, points,
                                                       settings.frequencyRangeHz, in.rateHz, *b.ws)
                                          : FftSpectrum(blocksOf[0], n, settings.preEmphasis, 1, 1, points,
                                                        settings.frequencyRangeHz, in.rateHz, *b.ws);
            if (answer != 0) return false;
            for (int g = 0; g < group && going; ++g, ++i) {
                if (!direct) std::copy(blocksOf[g], blocksOf[g] + points, place(i));
                const double columnTop = largestAbove(place(i), points, kNoLevel);
                if (columnTop > top) top = columnTop;
                if (trackFormants && formantsOf(i, b)) found = true;
                going = counter.frameDone();
            }
        }
        pieceTop[static_cast<std::size_t>(index)] = top;
        pieceFound[static_cast<std::size_t>(index)] = found ? 1 : 0;
        return true;
    };
    const AnalysisStatus status = RunFrames(plan, piece, progress);
    if (status != AnalysisStatus::Ok) {
        result = SpectrogramResult{};
        return status;
    }

    double top = kNoLevel;
    for (const double t : pieceTop) top = t > top ? t : top;
    result.formantsFound = std::find(pieceFound.begin(), pieceFound.end(), 1) != pieceFound.end();

    // Scaling, and the silence gate on the scaled columns, column by column
    // on the same threads.
    const double range = settings.dynamicRangeDb;
    const double threshold = range * 0.3;
    FramePlan scaling;
    scaling.count = columns;
    scaling.sequentialFrom = columns;
    scaling.chunkFrames = kColumnsPerPiece * 4;
    scaling.threads = FrameThreads(in.threads, columns, scaling.chunkFrames);
    RunFrames(scaling,
              [&](int, int, int begin, int end, FrameCounter&) {
                  for (int c = begin; c < end; ++c) {
                      double* col =
                          result.levels.data() + static_cast<std::size_t>(c) * static_cast<std::size_t>(points);
                      for (int k = 0; k < points; ++k) {
                          const double v = col[k] - top + range;
                          col[k] = v >= 0.0 ? v : 0.0;
                      }
                      if (!trackFormants) continue;
                      double m = -100000.0;
                      for (int k = 0; k < points; ++k)
                          if (col[k] > m) m = col[k];
                      if (m < threshold) result.formants[static_cast<std::size_t>(c)] = {0, 0, 0, 0, 0};
                  }
                  return true;
              },
              {});
    return AnalysisStatus::Ok;
}

}  // namespace sonmetra
