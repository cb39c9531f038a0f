// Fft against FFTW on the same sizes (complex, double, forward), printed as
// a ratio after the Google Benchmark table.
#include <benchmark/benchmark.h>
#include <fftw3.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "BuildContext.h"
#include "analysis/Fft.h"

namespace {

void BM_Fft(benchmark::State& state, int m) {
    const std::size_t n = std::size_t{1} << m;
    std::vector<double> re(n), im(n);
    for (std::size_t i = 0; i < n; ++i) {
        re[i] = static_cast<double>(i % 17) - 8.0;
        im[i] = 0.0;
    }
    for (auto _ : state) {
        sonmetra::Fft(re.data(), im.data(), m);
        benchmark::DoNotOptimize(re.data());
        benchmark::ClobberMemory();
    }
}

void BM_Fftw(benchmark::State& state, int m) {
    const int n = 1 << m;
    fftw_complex* data = fftw_alloc_complex(static_cast<std::size_t>(n));
    fftw_plan plan = fftw_plan_dft_1d(n, data, data, FFTW_FORWARD, FFTW_MEASURE);
    for (int i = 0; i < n; ++i) {
        data[i][0] = static_cast<double>(i % 17) - 8.0;
        data[i][1] = 0.0;
    }
    for (auto _ : state) {
        fftw_execute(plan);
        benchmark::DoNotOptimize(data);
        benchmark::ClobberMemory();
    }
    fftw_destroy_plan(plan);
    fftw_free(data);
}

// Keeps the time per iteration of every run for the ratio table.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration) m_ns[r.benchmark_name()] = r.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void printRatios() const {
        std::printf("\n%8s %12s %12s %8s\n", "N", "Fft ns cpu", "FFTW ns cpu", "ratio");
        for (int m = 5; m <= 12; ++m) {
            const auto a = m_ns.find("BM_Fft/" + std::to_string(m));
            const auto b = m_ns.find("BM_Fftw/" + std::to_string(m));
            if (a == m_ns.end() || b == m_ns.end()) continue;
            std::printf("%8d %12.1f %12.1f %8.2f\n", 1 << m, a->second, b->second, a->second / b->second);
        }
    }

private:
    std::map<std::string, double> m_ns;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    sonmetra::bench::AddBuildContext();
    // Each size of both transforms back to back, so that a change of machine
    // load touches both sides of a ratio alike.
    for (int m = 5; m <= 12; ++m) {
        benchmark::RegisterBenchmark(("BM_Fft/" + std::to_string(m)).c_str(), BM_Fft, m);
        benchmark::RegisterBenchmark(("BM_Fftw/" + std::to_string(m)).c_str(), BM_Fftw, m);
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatios();
    benchmark::Shutdown();
    return 0;
}
