// The vector field's row-parallel block operations (Blit, Rebound, GetRegion)
// on a 4096 × 4096 field, each against the same call confined to one thread
// (a oneTBB arena of concurrency 1), and bilinear sampling (Get) against a plain
// bilinear loop over a flat array holding the same cells.
//
// Two kinds of field: dense, every cell stored (128 MB of cells), and sparse,
// each row storing a short random run of 0 to 64 cells. Every case runs on
// wall-clock time, since the parallel calls keep more than the calling thread
// busy. Counters: cells_per_s (stored cells moved), rows_per_s, and for Get
// samples_per_s.
//
// Names follow Family/type/Impl: QorMath is the call as the library runs it,
// Serial the same call in one thread (report.py prints the speed-up), Plain the
// flat-array sampler.

#include <benchmark/benchmark.h>
#include <tbb/task_arena.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "QorMath/field.h"

namespace {

using QorMath::VectorField;
using Vec = VectorField::Vector;
using Pos = QorMath::vector2dT<float, 1>;

constexpr int kSize = 4096;
constexpr int kOriginX = -1000, kOriginY = 300;  // any origin: plane and local coordinates differ
constexpr int kWindow = 1024;
constexpr int kSparseMaxRun = 64;
constexpr size_t kSamples = size_t(1) << 20;
constexpr uint64_t kSeed = 0x5eed2024;

struct Source {
    VectorField field;
    size_t cells = 0;
};

// Every cell a random non-zero vector, written row by row so that each run
// grows at its right end.
std::unique_ptr<Source> MakeDense() {
    auto s = std::make_unique<Source>();
    s->field.Initialize(kSize, kSize, kOriginX, kOriginY);
    std::mt19937_64 rng(kSeed);
    std::uniform_real_distribution<float> u(0.5f, 2.0f);
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x) s->field.Set(kOriginX + x, kOriginY + y, {u(rng), -u(rng)});
    s->cells = s->field.GetStoredCellCount();
    return s;
}

// Each row a run of 0..64 cells at a random column.
std::unique_ptr<Source> MakeSparse() {
    auto s = std::make_unique<Source>();
    s->field.Initialize(kSize, kSize, kOriginX, kOriginY);
    std::mt19937_64 rng(kSeed + 1);
    std::uniform_int_distribution<int> len(0, kSparseMaxRun), col(0, kSize - kSparseMaxRun);
    std::uniform_real_distribution<float> u(0.5f, 2.0f);
    for (int y = 0; y < kSize; ++y) {
        const int n = len(rng), c = col(rng);
        for (int x = c; x < c + n; ++x) s->field.Set(kOriginX + x, kOriginY + y, {u(rng), -u(rng)});
    }
    s->cells = s->field.GetStoredCellCount();
    return s;
}

// Built once per process, on first use: the dense one takes a moment.
const Source& Field(bool dense) {
    static std::unique_ptr<Source> d, s;
    auto& f = dense ? d : s;
    if (!f) f = dense ? MakeDense() : MakeSparse();
    return *f;
}

// Runs op either as it is or inside a one-thread arena, where the library's
// parallel loop finds no second worker and runs its rows on this thread. One
// untimed call first: it brings the destination to its steady state (and its
// pages in) and wakes the workers.
template <typename Op>
void Run(benchmark::State& state, bool serial, Op op) {
    tbb::task_arena one(1);
    if (serial) one.initialize();
    if (serial) one.execute(op);
    else op();
    for (auto _ : state) {
        if (serial) one.execute(op);
        else op();
    }
}

void Rate(benchmark::State& state, const char* name, double perIteration) {
    state.counters[name] = benchmark::Counter(perIteration, benchmark::Counter::kIsIterationInvariantRate);
}
void Rates(benchmark::State& state, double cells, double rows) {
    Rate(state, "cells_per_s", cells);
    Rate(state, "rows_per_s", rows);
}

// ---- Blit: source onto a field of the same rectangle ------------------------
// After the first call the destination's runs match the source's, so every
// later call is the steady state: no erasing, no widening, one copy per row.

void Blit(benchmark::State& state, bool dense, bool serial) {
    const Source& src = Field(dense);
    VectorField dst(kSize, kSize, kOriginX, kOriginY);
    bool fits = true;
    Run(state, serial, [&] { fits = dst.Blit(src.field, 0, 0) && fits; });
    if (!fits || dst.GetStoredCellCount() != src.cells) state.SkipWithError("Blit lost cells");
    Rates(state, double(src.cells), kSize);
}

// ---- Rebound: out to a rectangle 16 cells larger on every side and back ----
// Both directions keep every stored cell (the way back reports false: the old
// rectangle sticks out), so each call moves the same cells into a freshly
// built field.

void Rebound(benchmark::State& state, bool dense, bool serial) {
    const Source& src = Field(dense);
    VectorField f;
    f = src.field;
    const tagRECT home = f.GetCGIRECT();
    const tagRECT grown{home.left - 16, home.top + 16, home.right + 16, home.bottom - 16};
    bool out = true;
    Run(state, serial, [&] {
        f.Rebound(out ? grown : home);
        out = !out;
    });
    if (f.GetStoredCellCount() != src.cells) state.SkipWithError("Rebound lost cells");
    Rates(state, double(src.cells), kSize);
}

// ---- GetRegion: a 1024 × 1024 window from the middle -------------------------

void GetRegion(benchmark::State& state, bool dense, bool serial) {
    const Source& src = Field(dense);
    const int left = kOriginX + (kSize - kWindow) / 2, bottom = kOriginY + (kSize - kWindow) / 2;
    const tagRECT window{left, bottom + kWindow - 1, left + kWindow - 1, bottom};
    size_t cells = 0;
    Run(state, serial, [&] {
        cells = src.field.GetRegion(window).GetStoredCellCount();
    });
    Rates(state, double(cells), kWindow);
}

// ---- Get: bilinear samples at random positions -------------------------------

std::vector<Pos> SamplePositions() {
    std::mt19937_64 rng(kSeed + 2);
    std::uniform_real_distribution<float> ux(kOriginX, kOriginX + kSize - 1.0f), uy(kOriginY, kOriginY + kSize - 1.0f);
    std::vector<Pos> p(kSamples);
    for (auto& q : p) q = {ux(rng), uy(rng)};
    return p;
}

void Sample(benchmark::State& state, bool dense) {
    const VectorField& f = Field(dense).field;
    const std::vector<Pos> pos = SamplePositions();
    for (auto _ : state) {
        float sx = 0, sy = 0;
        for (const Pos& p : pos) {
            const Vec v = f.Get(p);
            sx += v.x, sy += v.y;
        }
        benchmark::DoNotOptimize(sx);
        benchmark::DoNotOptimize(sy);
    }
    Rate(state, "samples_per_s", double(kSamples));
}

// The same sampler over a flat row-major copy of every cell: what the sparse
// rows cost against plain storage. The clamps and the interpolation order are
// the field's, so both sides do the same arithmetic.
class Flat {
public:
    explicit Flat(const VectorField& f) : w_(f.width()), h_(f.height()), ox_(f.GetCGIRECT().left),
                                          oy_(f.GetCGIRECT().bottom), cells_(size_t(w_) * size_t(h_)) {
        for (int r = 0; r < h_; ++r)
            for (int c = 0; c < w_; ++c) cells_[size_t(r) * size_t(w_) + size_t(c)] = f.Get_nooffset(c, r);
    }
    Vec Get(Pos p) const {
        const float fx = p.x - float(ox_), fy = p.y - float(oy_);
        const float cx = fx < 0 ? 0.0f : std::fmin(float(w_) - 2.0f, fx);
        const float cy = fy < 0 ? 0.0f : std::fmin(float(h_) - 2.0f, fy);
        const int ix = int(cx), iy = int(cy);
        const float sx = cx - float(ix), sy = cy - float(iy);
        const Vec* r0 = &cells_[size_t(iy) * size_t(w_) + size_t(ix)];
        const Vec* r1 = r0 + w_;
        const float ax = (r0[1].x - r0[0].x) * sx + r0[0].x, ay = (r0[1].y - r0[0].y) * sx + r0[0].y;
        const float bx = (r1[1].x - r1[0].x) * sx + r1[0].x, by = (r1[1].y - r1[0].y) * sx + r1[0].y;
        return {(bx - ax) * sy + ax, (by - ay) * sy + ay};
    }

private:
    int w_, h_, ox_, oy_;
    std::vector<Vec> cells_;
};

void SamplePlain(benchmark::State& state, bool dense) {
    const VectorField& f = Field(dense).field;
    const Flat flat(f);
    const std::vector<Pos> pos = SamplePositions();
    // Both samplers must agree, or the comparison compares different work.
    for (size_t i = 0; i < 4096; ++i) {
        const Vec a = f.Get(pos[i]), b = flat.Get(pos[i]);
        const auto off = [](float u, float v) { return std::fabs(u - v) > 1e-5f * (1 + std::fabs(u)); };
        if (off(a.x, b.x) || off(a.y, b.y)) {
            state.SkipWithError("the flat sampler disagrees with Get");
            return;
        }
    }
    for (auto _ : state) {
        float sx = 0, sy = 0;
        for (const Pos& p : pos) {
            const Vec v = flat.Get(p);
            sx += v.x, sy += v.y;
        }
        benchmark::DoNotOptimize(sx);
        benchmark::DoNotOptimize(sy);
    }
    Rate(state, "samples_per_s", double(kSamples));
}

void Register() {
    using benchmark::RegisterBenchmark;
    for (const bool dense : {true, false}) {
        const std::string kind = dense ? "/dense/" : "/sparse/";
        const struct {
            const char* family;
            void (*fn)(benchmark::State&, bool, bool);
        } ops[] = {{"FieldBlit", Blit}, {"FieldRebound", Rebound}, {"FieldGetRegion", GetRegion}};
        for (const auto& op : ops)
            for (const bool serial : {false, true})
                RegisterBenchmark((op.family + kind + (serial ? "Serial" : "QorMath")).c_str(), op.fn, dense, serial)
                    ->UseRealTime()
                    ->Unit(benchmark::kMillisecond);
        RegisterBenchmark(("FieldGet" + kind + "QorMath").c_str(), Sample, dense)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
        RegisterBenchmark(("FieldGet" + kind + "Plain").c_str(), SamplePlain, dense)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    }
}

}  // namespace

int main(int argc, char** argv) {
    Register();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
