// Bulk matrix paths over a million points, each next to its peers in the same
// run: the same arithmetic written as a plain loop, Eigen where it has an
// equivalent, and memcpy of the same bytes (the memory-bandwidth ceiling).
//
// Names follow Family/type/Impl so that report.py can pair QorMath with each
// peer. Every case reports bytes processed (the size of the point array) and
// allocs, the operator new calls per iteration (the shared library's included;
// Eigen allocates through malloc, so its own would not show).

#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "QorMath/bounds.h"
#include "QorMath/matrix.h"

#ifdef QORMATH_BENCH_EIGEN
#include <Eigen/Geometry>
#endif

namespace {
std::atomic<size_t> g_allocs{0};
}  // namespace

void* operator new(std::size_t n) {
    ++g_allocs;
    if (void* p = std::malloc(n ? n : 1)) return p;
    throw std::bad_alloc();
}
// GCC pairs the free() below with the operator new it sees at the call site
// and warns, although both replacements are malloc-based.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

using QorMath::BoundsT;
using QorMath::Point2d;

constexpr size_t kCount = 1000000;
constexpr uint64_t kSeed = 0x5eed2024;

// A rotation about (250, -125): orthonormal, so applying it in place again and
// again (every iteration works on the previous one's output) keeps the points
// in range, and the integer points drift by rounding only.
constexpr MATRIX kRotation{0.8, -0.6, 125.0, 0.6, 0.8, -175.0};
// A general affine map (scale, skew, translation) for the boxes.
constexpr MATRIX kAffine{1.5, 0.25, -40.0, -0.3, 0.75, 12.0};

std::vector<Point2d> RandomPoints() {
    std::mt19937_64 rng(kSeed);
    std::uniform_real_distribution<double> u(-1e6, 1e6);
    std::vector<Point2d> pts(kCount);
    for (auto& p : pts) p = {u(rng), u(rng)};
    return pts;
}

std::vector<tagPOINT> RandomIntPoints() {
    std::mt19937_64 rng(kSeed + 1);
    std::uniform_int_distribution<int32_t> u(-1000000, 1000000);
    std::vector<tagPOINT> pts(kCount);
    for (auto& p : pts) p = {u(rng), u(rng)};
    return pts;
}

// ---- Peers: the same arithmetic, written out --------------------------------
// The matrix is copied to locals, so the compiler knows that stores to the
// points cannot change it.

void PlainTransform(const MATRIX& m0, Point2d* p, size_t n) {
    const MATRIX m = m0;
    for (size_t i = 0; i < n; ++i) {
        const double x = p[i].x, y = p[i].y;
        p[i].x = m.a * x + m.b * y + m.tx;
        p[i].y = m.c * x + m.d * y + m.ty;
    }
}

void PlainTransform(const MATRIX& m0, tagPOINT* p, size_t n) {
    const MATRIX m = m0;
    for (size_t i = 0; i < n; ++i) {
        const double x = p[i].x, y = p[i].y;
        p[i].x = QorMath::RoundToInt(m.a * x + m.b * y + m.tx);
        p[i].y = QorMath::RoundToInt(m.c * x + m.d * y + m.ty);
    }
}

BoundsT<double> PlainBBox(const MATRIX& m, const Point2d* p, size_t n) {
    BoundsT<double> b;
    QorMath::InitializeEmpty(b);
    for (size_t i = 0; i < n; ++i) {
        const double x = m.a * p[i].x + m.b * p[i].y + m.tx;
        const double y = m.c * p[i].x + m.d * p[i].y + m.ty;
        b.left = x < b.left ? x : b.left;
        b.right = x > b.right ? x : b.right;
        b.bottom = y < b.bottom ? y : b.bottom;
        b.top = y > b.top ? y : b.top;
    }
    return b;
}

// The integer box grows to whole numbers point by point; rounding the extremes
// outward once at the end gives the same edges (ceil and floor are monotonic).
tagRECT PlainBBox(const MATRIX& m, const tagPOINT* p, size_t n) {
    const BoundsT<double> e{2147483647.0, -2147483648.0, -2147483648.0, 2147483647.0};
    double lo_x = e.left, hi_x = e.right, lo_y = e.bottom, hi_y = e.top;
    for (size_t i = 0; i < n; ++i) {
        const double px = p[i].x, py = p[i].y;
        const double x = m.a * px + m.b * py + m.tx, y = m.c * px + m.d * py + m.ty;
        lo_x = x < lo_x ? x : lo_x;
        hi_x = x > hi_x ? x : hi_x;
        lo_y = y < lo_y ? y : lo_y;
        hi_y = y > hi_y ? y : hi_y;
    }
    tagRECT r = QorMath::GetEmptyRect();
    if (hi_x > e.right) r.right = QorMath::RoundToInt(std::ceil(hi_x));
    if (hi_y > e.top) r.top = QorMath::RoundToInt(std::ceil(hi_y));
    if (lo_x < e.left) r.left = QorMath::RoundToInt(std::floor(lo_x));
    if (lo_y < e.bottom) r.bottom = QorMath::RoundToInt(std::floor(lo_y));
    return r;
}

#ifdef QORMATH_BENCH_EIGEN
Eigen::Affine2d ToEigen(const MATRIX& m) {
    Eigen::Affine2d a;
    a.matrix() << m.a, m.b, m.tx, m.c, m.d, m.ty, 0.0, 0.0, 1.0;
    return a;
}

// Column by column over a 2xN map of the same memory: fixed-size products, no
// temporary (a whole-map product would allocate a 2xN result first).
void EigenTransform(const Eigen::Affine2d& a, Point2d* p, size_t n) {
    Eigen::Map<Eigen::Matrix2Xd> m(&p->x, 2, Eigen::Index(n));
    for (Eigen::Index i = 0; i < m.cols(); ++i) m.col(i) = a * m.col(i);
}

void EigenTransform(const Eigen::Affine2d& a, tagPOINT* p, size_t n) {
    Eigen::Map<Eigen::Matrix<int32_t, 2, Eigen::Dynamic>> m(&p->x, 2, Eigen::Index(n));
    const auto round = [](double v) { return QorMath::RoundToInt(v); };
    for (Eigen::Index i = 0; i < m.cols(); ++i) m.col(i) = (a * m.col(i).cast<double>()).unaryExpr(round);
}
#endif

// ---- Runners -----------------------------------------------------------------

void Finish(benchmark::State& s, size_t bytes, size_t allocs) {
    s.SetBytesProcessed(int64_t(s.iterations()) * int64_t(bytes));
    s.counters["allocs"] = benchmark::Counter(double(allocs), benchmark::Counter::kAvgIterations);
}

// fn(points, count) rewrites a private copy of input in place, every iteration.
template <typename P, typename Fn>
void InPlace(benchmark::State& s, const std::vector<P>& input, Fn fn) {
    std::vector<P> pts = input;
    const size_t a0 = g_allocs;
    for (auto _ : s) {
        fn(pts.data(), pts.size());
        benchmark::ClobberMemory();
    }
    const size_t allocs = g_allocs - a0;
    Finish(s, pts.size() * sizeof(P), allocs);
}

template <typename P>
void Memcpy(benchmark::State& s, const std::vector<P>& input) {
    std::vector<P> dst(input.size());
    const size_t a0 = g_allocs;
    for (auto _ : s) {
        std::memcpy(dst.data(), input.data(), input.size() * sizeof(P));
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    const size_t allocs = g_allocs - a0;
    Finish(s, input.size() * sizeof(P), allocs);
}

template <typename P, typename Fn>
void BBox(benchmark::State& s, const std::vector<P>& input, Fn fn) {
    const size_t a0 = g_allocs;
    for (auto _ : s) {
        auto box = fn(input.data(), input.size());
        benchmark::DoNotOptimize(box);
    }
    const size_t allocs = g_allocs - a0;
    Finish(s, input.size() * sizeof(P), allocs);
}

// The matrix as the benchmarks see it: a value the compiler cannot fold into
// the peers' loops (the library cannot fold it either).
MATRIX Opaque(const MATRIX& m) {
    MATRIX c = m;
    benchmark::DoNotOptimize(c);
    return c;
}

bool Same(const void* p, const void* q, size_t bytes) { return std::memcmp(p, q, bytes) == 0; }

// The peers must compute exactly what the library does, or the ratio compares
// different work: checked once on the benchmark data before anything is timed.
template <typename P>
bool PlainTransformMatches(const std::vector<P>& input) {
    std::vector<P> ours = input, plain = input;
    kRotation.TransformPoints(ours.data(), ours.size());
    PlainTransform(kRotation, plain.data(), plain.size());
    return Same(ours.data(), plain.data(), ours.size() * sizeof(P));
}

template <typename P>
bool PlainBBoxMatches(const std::vector<P>& input) {
    const auto ours = QorMath::GetTransformedPointsBBox(input.data(), input.size(), kAffine);
    const auto plain = PlainBBox(kAffine, input.data(), input.size());
    return Same(&ours, &plain, sizeof ours);
}

template <typename P>
void Register(const std::string& type, const std::vector<P>* input) {
    const std::string tp = "TransformPoints/" + type + "/", bb = "TransformedPointsBBox/" + type + "/";
    const bool transformOk = PlainTransformMatches(*input), bboxOk = PlainBBoxMatches(*input);
    const auto check = [](benchmark::State& s, bool ok) {
        if (!ok) s.SkipWithError("the plain loop does not reproduce the library's result");
        return ok;
    };
    const auto reg = [](const std::string& name, auto fn) {
        benchmark::RegisterBenchmark(name.c_str(), fn)->Unit(benchmark::kMillisecond);
    };

    reg(tp + "QorMath", [=](benchmark::State& s) {
        const MATRIX m = Opaque(kRotation);
        InPlace(s, *input, [&m](P* p, size_t n) { m.TransformPoints(p, n); });
    });
    reg(tp + "PlainLoop", [=](benchmark::State& s) {
        const MATRIX m = Opaque(kRotation);
        if (check(s, transformOk)) InPlace(s, *input, [&m](P* p, size_t n) { PlainTransform(m, p, n); });
    });
#ifdef QORMATH_BENCH_EIGEN
    reg(tp + "Eigen", [=](benchmark::State& s) {
        const Eigen::Affine2d a = ToEigen(Opaque(kRotation));
        InPlace(s, *input, [&a](P* p, size_t n) { EigenTransform(a, p, n); });
    });
#endif
    reg(tp + "memcpy", [=](benchmark::State& s) { Memcpy(s, *input); });

    reg(bb + "QorMath", [=](benchmark::State& s) {
        const MATRIX m = Opaque(kAffine);
        BBox(s, *input, [&m](const P* p, size_t n) { return QorMath::GetTransformedPointsBBox(p, n, m); });
    });
    reg(bb + "PlainLoop", [=](benchmark::State& s) {
        const MATRIX m = Opaque(kAffine);
        if (check(s, bboxOk)) BBox(s, *input, [&m](const P* p, size_t n) { return PlainBBox(m, p, n); });
    });
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static const std::vector<Point2d> points = RandomPoints();
    static const std::vector<tagPOINT> intPoints = RandomIntPoints();
    Register("double", &points);
    Register("int", &intPoints);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
