// Cubic fitting and offset curves next to lib2geom.
//
// Names follow Family/type/Impl for report.py. Every case times the whole set;
// per_item is the time of one fit (one curve).
//
// Fit/<exact|noisy><n>: one cubic fitted to n = 16, 64 or 256 points sampled at
// equal parameter steps from each of the first 200 shared random cubics (100
// to 500 units across); noisy adds seeded Gaussian noise of 1 unit to both
// coordinates of every point, ends included. Every fitter starts from
// chord-length parameters.
//     QorMath       LeastSquares with end tangents, 5 passes
//     QorMath_free  LeastSquares with all four control points free, 5 passes
//     2geom         Geom::bezier_fit_cubic_full with the same end tangents, one
//                   cubic (max_beziers 1)
//     2geom_est     Geom::bezier_fit_cubic: one cubic, its own tangent estimates
//   The end tangents, for both: the generating cubic's, P1 − P0 and P3 − P2
//   made unit (lib2geom takes the end one reversed).
//   lib2geom makes at most 5 passes, as many as ours is given here, but stops
//   at the first whose own error (each point's squared distance at its current
//   parameter) is within its error argument, and makes only one unless the
//   first comes within 3 times that distance. That argument is set, per point
//   set, to the squared error ours reached (2geom to QorMath's, 2geom_est to
//   QorMath_free's): it is asked for exactly our accuracy and no more, and never
//   for less than 1e-9 (it adds that to the argument).
//   Counters, measured once before timing and alike for every fitter: a fit's
//   error is the largest squared distance from a data point to the fitted curve
//   (the nearest of 257 samples, refined by golden-section search, in long
//   double); sq_mean, sq_med and sq_max over the 200 point sets.
//
// Offset/<random|hard>: the shared random (4000) and hard (252) curves offset
// at tolerance 0.1 by d = 5% of the curve's size (the larger side of its control
// points' box), to the left and to the right on alternate curves.
//     QorMath  OffsetBezier: cut at the offset's cusps, pieces halved (down to
//              1/64 of the parameter range) until one cubic fits each
//     2geom    the curve as a piecewise s-basis function plus d times its unit
//              normal (Geom::unitVector of the derivative at tolerance
//              0.05/|d|, turned by Geom::rot90), made cubics by
//              Geom::path_from_piecewise at tolerance 0.05: each error at most
//              half the tolerance
//   Counters: pieces (cubics per curve) and, measured once before timing, the
//   distance from the exact offset (129 points per curve, those at zero speed
//   left out) to the nearest of the curve's output cubics: max_dev (the largest
//   over the set) and over_tol (curves where it passes the tolerance
//   somewhere); for ours also unmet, the curves where OffsetBezier itself
//   reports a miss (false).

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "QorMath/fitting.h"
#include "QorMath/bezier.h"

#ifdef QORMATH_BENCH_2GEOM
#include <2geom/bezier-curve.h>
#include <2geom/bezier-utils.h>
#include <2geom/path.h>
#include <2geom/pathvector.h>
#include <2geom/piecewise.h>
#include <2geom/sbasis-geometric.h>
#include <2geom/sbasis-to-bezier.h>
#endif

#include "curve_sets.h"

namespace {

using QorMath::Point2d;
using QorMath::Vector2d;
namespace CB = QorMath::CubicBezier;

using bench::Cubic;
using bench::kSeed;

constexpr size_t kFitSets = 200;
constexpr double kNoise = 1.0;       // standard deviation, units
constexpr int kPasses = 5;           // lib2geom's most: one pass and four more
constexpr double kOffsetTol = 0.1;   // distance
constexpr double kOffsetShare = 0.05;  // d as a share of the curve's size
constexpr int kOffsetSamples = 128;  // intervals of the exact offset sampled

// ---- Distance to a cubic ---------------------------------------------------------

// A cubic in power basis, sampled at S + 1 equal steps, in F (double or long
// double).
template <typename F>
struct Sampled {
    F k[2][4];  // per coordinate: ((k0·t + k1)·t + k2)·t + k3
    std::vector<F> x, y;

    Sampled(const Point2d c[4], int steps) {
        const F p[2][4] = {{c[0].x, c[1].x, c[2].x, c[3].x}, {c[0].y, c[1].y, c[2].y, c[3].y}};
        for (int i = 0; i < 2; ++i) {
            k[i][0] = p[i][3] - 3 * (p[i][2] - p[i][1]) - p[i][0];
            k[i][1] = 3 * (p[i][2] - 2 * p[i][1] + p[i][0]);
            k[i][2] = 3 * (p[i][1] - p[i][0]);
            k[i][3] = p[i][0];
        }
        for (int s = 0; steps > 0 && s <= steps; ++s) {
            x.push_back(At(0, F(s) / steps));
            y.push_back(At(1, F(s) / steps));
        }
    }
    F At(int i, F t) const { return ((k[i][0] * t + k[i][1]) * t + k[i][2]) * t + k[i][3]; }
    F Squared(F t, F qx, F qy) const {
        const F dx = At(0, t) - qx, dy = At(1, t) - qy;
        return dx * dx + dy * dy;
    }
    // The nearest sample, then golden-section search between its neighbours.
    F Nearest(F qx, F qy) const {
        const size_t steps = x.size() - 1;
        size_t best = 0;
        F bestSquared = Squared(0, qx, qy);
        for (size_t s = 0; s <= steps; ++s) {
            const F dx = x[s] - qx, dy = y[s] - qy, d = dx * dx + dy * dy;
            if (d < bestSquared) bestSquared = d, best = s;
        }
        const F g = F(0.6180339887498948482L);
        F lo = F(best == 0 ? 0 : best - 1) / F(steps), hi = F(std::min(best + 1, steps)) / F(steps);
        F a = hi - g * (hi - lo), b = lo + g * (hi - lo);
        F fa = Squared(a, qx, qy), fb = Squared(b, qx, qy);
        for (int it = 0; it < 60; ++it) {
            if (fa < fb) {
                hi = b, b = a, fb = fa, a = hi - g * (hi - lo), fa = Squared(a, qx, qy);
            } else {
                lo = a, a = b, fa = fb, b = lo + g * (hi - lo), fb = Squared(b, qx, qy);
            }
        }
        return std::min({bestSquared, fa, fb});
    }
};

void Items(benchmark::State& s, size_t n) {
    s.SetItemsProcessed(int64_t(s.iterations()) * int64_t(n));
    s.counters["per_item"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate |
                                                               benchmark::Counter::kInvert);
}

void Reg(const std::string& name, std::function<void(benchmark::State&)> fn) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(fn))->Unit(benchmark::kMicrosecond);
}

#ifdef QORMATH_BENCH_2GEOM
Geom::Point G(const Point2d& p) { return {p.x, p.y}; }
Point2d Q(const Geom::Point& p) { return {p[Geom::X], p[Geom::Y]}; }
#endif

// ---- Fitting ---------------------------------------------------------------------

struct FitSet {
    std::vector<Point2d> points;
    Vector2d start, end;  // unit tangents of the generating cubic, in the direction of travel
};

Vector2d Unit(const Point2d& from, const Point2d& to) {
    const double dx = to.x - from.x, dy = to.y - from.y, l = std::hypot(dx, dy);
    return {dx / l, dy / l};
}

std::vector<FitSet> FitSets(int n, bool noisy) {
    const std::vector<Cubic> curves = bench::RandomCubics();
    std::mt19937_64 rng(kSeed + uint64_t(2 * n) + noisy);
    std::normal_distribution<double> noise(0.0, kNoise);
    std::vector<FitSet> sets(kFitSets);
    for (size_t i = 0; i < kFitSets; ++i) {
        const Cubic& c = curves[i];
        FitSet& f = sets[i];
        for (int j = 0; j < n; ++j) {
            const double t = double(j) / (n - 1), s = 1 - t;
            const double w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
            Point2d p{0, 0};
            for (int k = 0; k < 4; ++k) p.x += w[k] * c.p[k].x, p.y += w[k] * c.p[k].y;
            if (noisy) p.x += noise(rng), p.y += noise(rng);
            f.points.push_back(p);
        }
        f.start = Unit(c.p[0], c.p[1]);
        f.end = Unit(c.p[2], c.p[3]);
    }
    return sets;
}

// The largest squared distance from the points to the cubic.
double FitError(const std::vector<Point2d>& points, const Point2d c[4]) {
    for (int i = 0; i < 4; ++i)
        if (!std::isfinite(c[i].x) || !std::isfinite(c[i].y)) return HUGE_VAL;
    const Sampled<long double> curve(c, 256);
    long double worst = 0;
    for (const Point2d& q : points) worst = std::max(worst, curve.Nearest(q.x, q.y));
    return double(worst);
}

struct FitErrors {
    std::vector<double> each;
    double mean = 0, median = 0, max = 0;
    explicit FitErrors(std::vector<double> e) : each(std::move(e)) {
        std::vector<double> sorted = each;
        std::sort(sorted.begin(), sorted.end());
        for (double v : sorted) mean += v / double(sorted.size());
        median = sorted[sorted.size() / 2];
        max = sorted.back();
    }
};

void PublishFit(benchmark::State& s, size_t n, const FitErrors& e) {
    Items(s, n);
    s.counters["sq_mean"] = e.mean;
    s.counters["sq_med"] = e.median;
    s.counters["sq_max"] = e.max;
}

void OursTangents(const FitSet& f, Point2d out[4]) {
    QorMath::LeastSquares(f.points.data(), int(f.points.size()), f.start, f.end, out, kPasses);
}

void OursFree(const FitSet& f, Point2d out[4]) {
    QorMath::LeastSquares(f.points.data(), int(f.points.size()), out, kPasses);
}

#ifdef QORMATH_BENCH_2GEOM
struct GeomSet {
    std::vector<Geom::Point> points;
    Geom::Point start, end;  // end reversed: lib2geom's end tangent points back into the curve
    double error;            // what it is asked for
};

void GeomTangents(const GeomSet& g, Point2d out[4]) {
    Geom::Point b[4];
    Geom::bezier_fit_cubic_full(b, nullptr, g.points.data(), int(g.points.size()), g.start, g.end, g.error, 1);
    for (int i = 0; i < 4; ++i) out[i] = Q(b[i]);
}

void GeomEstimated(const GeomSet& g, Point2d out[4]) {
    Geom::Point b[4];
    Geom::bezier_fit_cubic(b, g.points.data(), int(g.points.size()), g.error);
    for (int i = 0; i < 4; ++i) out[i] = Q(b[i]);
}
#endif

template <typename Set, typename Fit>
void RegisterFitCase(const std::string& name, const std::vector<Set>* sets, const FitErrors& errors, Fit fit) {
    Reg(name, [=](benchmark::State& s) {
        for (auto _ : s) {
            for (const Set& f : *sets) {
                Point2d out[4];
                fit(f, out);
                benchmark::DoNotOptimize(out);
            }
        }
        PublishFit(s, sets->size(), errors);
    });
}

template <typename Set, typename Fit>
FitErrors MeasureFits(const std::vector<FitSet>& data, const std::vector<Set>& sets, Fit fit) {
    std::vector<double> e;
    for (size_t i = 0; i < sets.size(); ++i) {
        Point2d out[4];
        fit(sets[i], out);
        e.push_back(FitError(data[i].points, out));
    }
    return FitErrors(std::move(e));
}

void RegisterFit(int n, bool noisy) {
    const std::string base = std::string("Fit/") + (noisy ? "noisy" : "exact") + std::to_string(n) + "/";
    const auto* sets = new std::vector<FitSet>(FitSets(n, noisy));
    const FitErrors tangents = MeasureFits(*sets, *sets, OursTangents);
    const FitErrors free = MeasureFits(*sets, *sets, OursFree);
    RegisterFitCase(base + "QorMath", sets, tangents, OursTangents);
    RegisterFitCase(base + "QorMath_free", sets, free, OursFree);
#ifdef QORMATH_BENCH_2GEOM
    for (const bool estimated : {false, true}) {
        auto* geom = new std::vector<GeomSet>();
        for (size_t i = 0; i < sets->size(); ++i) {
            const FitSet& f = (*sets)[i];
            GeomSet g{{}, G({f.start.x, f.start.y}), G({-f.end.x, -f.end.y}),
                      (estimated ? free : tangents).each[i]};
            for (const Point2d& p : f.points) g.points.push_back(G(p));
            geom->push_back(std::move(g));
        }
        const auto fit = estimated ? GeomEstimated : GeomTangents;
        RegisterFitCase(base + (estimated ? "2geom_est" : "2geom"), geom, MeasureFits(*sets, *geom, fit), fit);
    }
#endif
}

// ---- Offsets ---------------------------------------------------------------------

double Size(const Cubic& c) {
    double x0 = c.p[0].x, x1 = x0, y0 = c.p[0].y, y1 = y0;
    for (const Point2d& p : c.p) {
        x0 = std::min(x0, p.x), x1 = std::max(x1, p.x), y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
    }
    return std::max(x1 - x0, y1 - y0);
}

std::vector<double> Distances(const std::vector<Cubic>& curves) {
    std::vector<double> d;
    for (size_t i = 0; i < curves.size(); ++i) d.push_back((i % 2 ? -kOffsetShare : kOffsetShare) * Size(curves[i]));
    return d;
}

// The largest distance from the exact offset of c by d to the nearest of the
// output cubics (4 points each).
double OffsetDeviation(const Cubic& c, double d, const std::vector<Point2d>& cubics) {
    if (cubics.empty()) return HUGE_VAL;
    std::vector<Sampled<double>> pieces;
    for (size_t i = 0; i + 3 < cubics.size(); i += 4) pieces.emplace_back(&cubics[i], 32);
    const Sampled<long double> curve(c.p, 0);
    const long double floor = 1e-9L * Size(c);
    double worst = 0;
    for (int s = 0; s <= kOffsetSamples; ++s) {
        const long double t = (long double)s / kOffsetSamples;
        long double v[2];
        for (int i = 0; i < 2; ++i) v[i] = (3 * curve.k[i][0] * t + 2 * curve.k[i][1]) * t + curve.k[i][2];
        const long double speed = std::hypot(v[0], v[1]);
        if (!(speed > floor)) continue;
        const double qx = double(curve.At(0, t) - d * v[1] / speed), qy = double(curve.At(1, t) + d * v[0] / speed);
        double nearest = HUGE_VAL;
        for (const Sampled<double>& p : pieces) nearest = std::min(nearest, p.Nearest(qx, qy));
        worst = std::max(worst, std::sqrt(nearest));
    }
    return worst;
}

struct OffsetQuality {
    double pieces = 0, maxDeviation = 0, overTolerance = 0, unmet = 0;
};

template <typename Offset>
OffsetQuality MeasureOffsets(const std::vector<Cubic>& curves, const std::vector<double>& d, Offset offset) {
    OffsetQuality q;
    std::vector<Point2d> out;
    for (size_t i = 0; i < curves.size(); ++i) {
        out.clear();
        q.unmet += !offset(curves[i], d[i], out);
        q.pieces += double(out.size() / 4) / double(curves.size());
        const double deviation = OffsetDeviation(curves[i], d[i], out);
        q.maxDeviation = std::max(q.maxDeviation, deviation);
        q.overTolerance += !(deviation <= kOffsetTol);
    }
    return q;
}

bool OursOffset(const Cubic& c, double d, std::vector<Point2d>& out) {
    return QorMath::OffsetBezier(c.p, d, kOffsetTol, out);
}

#ifdef QORMATH_BENCH_2GEOM
Geom::PathVector GeomOffsetPaths(const Geom::Piecewise<Geom::D2<Geom::SBasis>>& curve, double d) {
    const auto normal = Geom::rot90(Geom::unitVector(Geom::derivative(curve), 0.5 * kOffsetTol / std::fabs(d)));
    return Geom::path_from_piecewise(curve + normal * d, 0.5 * kOffsetTol, true);
}

Geom::Piecewise<Geom::D2<Geom::SBasis>> GeomCurve(const Cubic& c) {
    return Geom::Piecewise<Geom::D2<Geom::SBasis>>(
        Geom::CubicBezier(G(c.p[0]), G(c.p[1]), G(c.p[2]), G(c.p[3])).toSBasis());
}

// The output as cubics, lines and quadratics raised to degree 3. lib2geom
// reports no miss.
bool GeomOffset(const Cubic& c, double d, std::vector<Point2d>& out) {
    for (const Geom::Path& path : GeomOffsetPaths(GeomCurve(c), d)) {
        for (const Geom::Curve& piece : path) {
            const auto* bezier = dynamic_cast<const Geom::BezierCurve*>(&piece);
            if (!bezier) continue;
            const std::vector<Geom::Point> p = bezier->controlPoints();
            if (p.size() == 4) {
                for (const Geom::Point& q : p) out.push_back(Q(q));
            } else if (p.size() == 3) {
                out.push_back(Q(p[0]));
                out.push_back(Q(p[0] + (p[1] - p[0]) * (2.0 / 3)));
                out.push_back(Q(p[2] + (p[1] - p[2]) * (2.0 / 3)));
                out.push_back(Q(p[2]));
            } else if (p.size() == 2) {
                out.push_back(Q(p[0]));
                out.push_back(Q(p[0] + (p[1] - p[0]) / 3));
                out.push_back(Q(p[0] + (p[1] - p[0]) * (2.0 / 3)));
                out.push_back(Q(p[1]));
            }
        }
    }
    return true;
}
#endif

void PublishOffset(benchmark::State& s, size_t n, const OffsetQuality& q, bool reportsMisses) {
    Items(s, n);
    s.counters["pieces"] = q.pieces;
    s.counters["max_dev"] = q.maxDeviation;
    s.counters["over_tol"] = q.overTolerance;
    if (reportsMisses) s.counters["unmet"] = q.unmet;
}

void RegisterOffset(const std::string& type, const std::vector<Cubic>* curves) {
    const auto* d = new std::vector<double>(Distances(*curves));
    const size_t n = curves->size();
    const OffsetQuality ours = MeasureOffsets(*curves, *d, OursOffset);
    Reg("Offset/" + type + "/QorMath", [=](benchmark::State& s) {
        std::vector<Point2d> out;
        for (auto _ : s) {
            for (size_t i = 0; i < n; ++i) {
                out.clear();
                QorMath::OffsetBezier((*curves)[i].p, (*d)[i], kOffsetTol, out);
                benchmark::DoNotOptimize(out.data());
            }
        }
        PublishOffset(s, n, ours, true);
    });
#ifdef QORMATH_BENCH_2GEOM
    const OffsetQuality theirs = MeasureOffsets(*curves, *d, GeomOffset);
    Reg("Offset/" + type + "/2geom", [=](benchmark::State& s) {
        for (auto _ : s) {
            for (size_t i = 0; i < n; ++i) {
                const Geom::PathVector paths = GeomOffsetPaths(GeomCurve((*curves)[i]), (*d)[i]);
                benchmark::DoNotOptimize(paths.size());
            }
        }
        PublishOffset(s, n, theirs, false);
    });
#endif
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    for (const bool noisy : {false, true})
        for (const int n : {16, 64, 256}) RegisterFit(n, noisy);
    static const std::vector<Cubic> random = bench::RandomCubics();
    static const std::vector<Cubic> hard = bench::HardCubics();
    RegisterOffset("random", &random);
    RegisterOffset("hard", &hard);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
