// Cubic Bezier analysis next to lib2geom: the closest point, arc length at a
// matched accuracy, and the parameter at a fraction of the length.
//
// Names follow Family/type/Impl for report.py. Types are the data sets: random
// (4000 cubics 100 to 500 units across, the same as the flattening benchmark's)
// and hard (loops, cusps, nearly straight, overshooting, closed and zero-handle
// segments at three sizes and twelve turns). Every case takes control points:
// ours converts them to the power basis inside the timed loop.
//
// Closest/<type>:  one query point per curve, uniform over the control points'
//   box grown by a quarter on each side, so that many lie beyond an end.
//     QorMath  FindClosestPointOnBezier (control points)
//     2geom    Geom::CubicBezier::nearestTime, then pointAt
//   Both are set against a reference in long double (the sign changes of
//   (B − p)·B′ on 4096 intervals, bisected, and both ends). Counters: agree (the
//   share of queries whose distance is within 1e-9 relative of the reference,
//   absolute below 1 unit), end_miss (queries it misses whose nearest point is a
//   curve end where the distance is not stationary: ours does not look at those
//   ends, by contract) and other_miss (every other miss, including a false from
//   ours). pair is the share of queries where ours and 2geom agree within 1e-9.
//
// Length/<type>_g16, Length/<type>_g10:
//     QorMath  Length with the 16-point (10-point) Gauss–Legendre rule
//     2geom    Geom::bezier_length (subdivision until polygon and chord agree
//              within a tolerance in length units)
//   The reference is a composite 16-point rule in long double, split where the
//   speed has a local minimum (cusps and near-cusps); 256 or 1024 pieces agree
//   within 2e-10.
//   2geom's tolerance (tol) is found once before timing: the largest power of
//   √10 whose mean relative error is no worse than ours (2geom_mean), and the
//   same for the median error (2geom_med). The mean is set by a few curves with
//   near-cusps, where a fixed rule does worst; the median by the typical curve. Counters: mean_err and
//   max_err (relative to the reference length).
//
// LengthParam/<type>: one fraction per curve, uniform in (0.02, 0.98).
//     QorMath         GetCurveRelativeLengthParameter, tolerance 1e-9, 16 points
//     PlainBisection  bisection on t with the same prefix length (LeftOf, then
//                     Length with 16 points) until it is within 1e-9 of the
//                     target or 200 steps: what the regula falsi saves
//     2geom           Geom::arcLengthSb (the arc length as a piecewise s-basis
//                     function), then the roots of s(t) − fraction·s(1); lib2geom
//                     has no direct single-curve inverse, this is its nearest
//                     path. Tolerance matched to ours' mean (2geom_mean) and
//                     median (2geom_med) error as for Length.
//   Counters: mean_err and max_err, |s(t) − fraction·L| / L with s and L from
//   the long double reference.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "QorMath/bezier.h"

#ifdef QORMATH_BENCH_2GEOM
#include <2geom/bezier-curve.h>
#include <2geom/piecewise.h>
#include <2geom/sbasis-geometric.h>
#endif

#include "curve_sets.h"

namespace {

using QorMath::Point2d;
namespace CB = QorMath::CubicBezier;

constexpr double kParamTolerance = 1e-9;
constexpr double kAgree = 1e-9;

using bench::Cubic;
using bench::kPi;
using bench::kSeed;
using bench::HardCubics;
using bench::RandomCubics;

std::vector<Point2d> QueryPoints(const std::vector<Cubic>& curves, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> unit(-0.25, 1.25);
    std::vector<Point2d> points;
    for (const Cubic& c : curves) {
        double x0 = c.p[0].x, x1 = x0, y0 = c.p[0].y, y1 = y0;
        for (const Point2d& q : c.p) {
            x0 = std::min(x0, q.x), x1 = std::max(x1, q.x), y0 = std::min(y0, q.y), y1 = std::max(y1, q.y);
        }
        const double u = unit(rng), v = unit(rng);
        points.push_back({x0 + (x1 - x0) * u, y0 + (y1 - y0) * v});
    }
    return points;
}

std::vector<double> Fractions(size_t n, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> unit(0.02, 0.98);
    std::vector<double> f(n);
    for (double& v : f) v = unit(rng);
    return f;
}

// ---- Long double reference -------------------------------------------------------

using LD = long double;

struct Exact {  // B(t) = ((a·t + b)·t + c)·t + d per coordinate, in long double
    LD a[2], b[2], c[2], d[2];
    explicit Exact(const Cubic& k) {
        const LD p[4][2] = {{k.p[0].x, k.p[0].y}, {k.p[1].x, k.p[1].y}, {k.p[2].x, k.p[2].y}, {k.p[3].x, k.p[3].y}};
        for (int i = 0; i < 2; ++i) {
            a[i] = p[3][i] - 3 * (p[2][i] - p[1][i]) - p[0][i];
            b[i] = 3 * (p[2][i] - 2 * p[1][i] + p[0][i]);
            c[i] = 3 * (p[1][i] - p[0][i]);
            d[i] = p[0][i];
        }
    }
    LD At(int i, LD t) const { return ((a[i] * t + b[i]) * t + c[i]) * t + d[i]; }
    LD Slope(int i, LD t) const { return (3 * a[i] * t + 2 * b[i]) * t + c[i]; }
    LD Speed(LD t) const { return std::sqrt(Slope(0, t) * Slope(0, t) + Slope(1, t) * Slope(1, t)); }
    LD Distance(LD t, const Point2d& q) const { return std::hypot(At(0, t) - q.x, At(1, t) - q.y); }
    LD Stationary(LD t, const Point2d& q) const {  // (B − q)·B′
        return (At(0, t) - q.x) * Slope(0, t) + (At(1, t) - q.y) * Slope(1, t);
    }
};

// Nodes and weights of the n-point Gauss–Legendre rule on [−1, 1], by Newton's
// method on the Legendre polynomial.
void GaussLegendre(int n, std::vector<LD>& x, std::vector<LD>& w) {
    x.assign(size_t(n), 0);
    w.assign(size_t(n), 0);
    for (int i = 0; i < n; ++i) {
        LD z = std::cos(LD(kPi) * (i + 0.75L) / (n + 0.5L)), dp = 0;
        for (int it = 0; it < 100; ++it) {
            LD p0 = 1, p1 = 0;
            for (int j = 1; j <= n; ++j) {
                const LD p2 = p1;
                p1 = p0;
                p0 = ((2 * j - 1) * z * p1 - (j - 1) * p2) / j;
            }
            dp = n * (z * p0 - p1) / (z * z - 1);
            const LD step = p0 / dp;
            z -= step;
            if (std::fabs(step) < 1e-19L) break;
        }
        x[size_t(i)] = z;
        w[size_t(i)] = 2 / ((1 - z * z) * dp * dp);
    }
}

// Length of [0, t]: split where the speed has a local minimum (where B′·B″
// changes sign from − to +, a cusp or near-cusp kink), then the 16-point rule
// on `pieces` equal pieces of each part.
LD ReferenceLength(const Exact& e, LD t, int pieces) {
    static std::vector<LD> x, w;
    if (x.empty()) GaussLegendre(16, x, w);
    const auto turn = [&e](LD u) {
        return e.Slope(0, u) * (6 * e.a[0] * u + 2 * e.b[0]) + e.Slope(1, u) * (6 * e.a[1] * u + 2 * e.b[1]);
    };
    std::vector<LD> cuts{0};
    constexpr int kSamples = 1024;
    for (int k = 0; k < kSamples; ++k) {
        LD lo = t * k / kSamples, hi = t * (k + 1) / kSamples;
        if (!(turn(lo) < 0 && turn(hi) >= 0)) continue;
        for (int it = 0; it < 80; ++it) (turn((lo + hi) / 2) < 0 ? lo : hi) = (lo + hi) / 2;
        cuts.push_back((lo + hi) / 2);
    }
    cuts.push_back(t);
    LD sum = 0;
    for (size_t c = 1; c < cuts.size(); ++c) {
        const LD h = (cuts[c] - cuts[c - 1]) / pieces;
        for (int k = 0; k < pieces; ++k) {
            const LD mid = cuts[c - 1] + (k + 0.5L) * h;
            LD part = 0;
            for (size_t i = 0; i < x.size(); ++i) part += w[i] * e.Speed(mid + 0.5L * h * x[i]);
            sum += part * 0.5L * h;
        }
    }
    return sum;
}

struct Nearest {
    LD distance;
    bool atEnd;  // the nearest point is an end where the distance is not stationary
};

Nearest ReferenceNearest(const Cubic& c, const Point2d& q) {
    const Exact e(c);
    constexpr int kIntervals = 4096;
    Nearest best{std::min(e.Distance(0, q), e.Distance(1, q)), true};
    LD lo = 0, flo = e.Stationary(0, q);
    for (int k = 1; k <= kIntervals; ++k) {
        LD hi = LD(k) / kIntervals, fhi = e.Stationary(hi, q);
        if ((flo < 0) != (fhi < 0)) {
            LD a = lo, b = hi;
            for (int it = 0; it < 80; ++it) {
                const LD m = (a + b) / 2;
                ((e.Stationary(m, q) < 0) == (flo < 0) ? a : b) = m;
            }
            const LD d = e.Distance((a + b) / 2, q);
            if (d < best.distance) best = {d, false};
        }
        lo = hi, flo = fhi;
    }
    return best;
}

bool Agrees(double d, LD reference) {
    return std::fabs(LD(d) - reference) <= kAgree * std::max<LD>(reference, 1);
}

void Items(benchmark::State& s, size_t n) { s.SetItemsProcessed(int64_t(s.iterations()) * int64_t(n)); }

void Reg(const std::string& name, std::function<void(benchmark::State&)> fn) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(fn))->Unit(benchmark::kMicrosecond);
}

#ifdef QORMATH_BENCH_2GEOM
Geom::Point G(const Point2d& p) { return {p.x, p.y}; }
#endif

// ---- Closest point ---------------------------------------------------------------

struct ClosestAgreement {
    double agree = 0, endMiss = 0, otherMiss = 0;
};

void Tally(ClosestAgreement& a, bool ok, double d, const Nearest& ref) {
    if (ok && Agrees(d, ref.distance)) {
        a.agree += 1;
    } else {
        (ref.atEnd ? a.endMiss : a.otherMiss) += 1;
    }
}

void RegisterClosest(const std::string& type, const std::vector<Cubic>* curves) {
    const auto* points = new std::vector<Point2d>(QueryPoints(*curves, kSeed + 7));
    const size_t n = curves->size();
    std::vector<Nearest> reference;
    for (size_t i = 0; i < n; ++i) reference.push_back(ReferenceNearest((*curves)[i], (*points)[i]));

    std::vector<double> oursDistance(n);
    ClosestAgreement ours;
    for (size_t i = 0; i < n; ++i) {
        double t, dd;
        Point2d nearest;
        const bool ok = CB::FindClosestPointOnBezier((*curves)[i].p, (*points)[i], t, nearest, dd);
        oursDistance[i] = ok ? std::sqrt(dd) : HUGE_VAL;
        Tally(ours, ok, oursDistance[i], reference[i]);
    }
    const auto finish = [n](benchmark::State& s, const ClosestAgreement& a, double pair) {
        Items(s, n);
        s.counters["agree"] = a.agree / double(n);
        s.counters["end_miss"] = a.endMiss;
        s.counters["other_miss"] = a.otherMiss;
        if (pair >= 0) s.counters["pair"] = pair;
    };

    double pair = -1;
#ifdef QORMATH_BENCH_2GEOM
    auto* geom = new std::vector<Geom::CubicBezier>();
    for (const Cubic& c : *curves) geom->emplace_back(G(c.p[0]), G(c.p[1]), G(c.p[2]), G(c.p[3]));
    ClosestAgreement theirs;
    pair = 0;
    for (size_t i = 0; i < n; ++i) {
        const Geom::Point q = G((*points)[i]);
        const double d = Geom::distance((*geom)[i].pointAt((*geom)[i].nearestTime(q)), q);
        Tally(theirs, true, d, reference[i]);
        pair += std::fabs(d - oursDistance[i]) <= kAgree * std::max(d, 1.0);
    }
    pair /= double(n);
    Reg("Closest/" + type + "/2geom", [=](benchmark::State& s) {
        for (auto _ : s) {
            double sum = 0;
            for (size_t i = 0; i < n; ++i) {
                const Geom::Point q = G((*points)[i]);
                sum += Geom::distance((*geom)[i].pointAt((*geom)[i].nearestTime(q)), q);
            }
            benchmark::DoNotOptimize(sum);
        }
        finish(s, theirs, pair);
    });
#endif
    Reg("Closest/" + type + "/QorMath", [=](benchmark::State& s) {
        for (auto _ : s) {
            double sum = 0;
            for (size_t i = 0; i < n; ++i) {
                double t, dd = 0;
                Point2d nearest;
                CB::FindClosestPointOnBezier((*curves)[i].p, (*points)[i], t, nearest, dd);
                sum += dd;
            }
            benchmark::DoNotOptimize(sum);
        }
        finish(s, ours, pair);
    });
}

// ---- Arc length ------------------------------------------------------------------

struct Errors {
    std::vector<double> all;
    double mean = 0, median = 0, max = 0;
    void Add(LD value, LD reference) { Add(double(std::fabs(value - reference) / reference)); }
    void Add(double e) { all.push_back(e); }
    void Finish() {
        for (double e : all) mean += e / double(all.size());
        std::sort(all.begin(), all.end());
        median = all[all.size() / 2];
        max = all.back();
    }
};

double OursLength(const Cubic& c, QorMath::LengthAccuracy accuracy) {
    Point2d a, b, cc, d;
    CB::GetPowerBasis(c.p, a, b, cc, d);
    return CB::Length(a, b, cc, accuracy);
}

void Publish(benchmark::State& s, size_t n, const Errors& e, double tol = 0) {
    Items(s, n);
    s.counters["mean_err"] = e.mean;
    s.counters["med_err"] = e.median;
    s.counters["max_err"] = e.max;
    if (tol > 0) s.counters["tol"] = tol;
}

// The largest tolerance 10^(k/2), k from 6 (1000 units) down to `lowest`,
// whose mean (or median) relative error is at most ours; the last tried if none is.
template <typename Run>
double MatchTolerance(const Errors& ours, bool median, int lowest, Run errorsAt, Errors& errors) {
    double tol = 1;
    for (int k = 6; k >= lowest; --k) {
        tol = std::pow(10.0, k / 2.0);
        errors = errorsAt(tol);
        if (median ? errors.median <= ours.median : errors.mean <= ours.mean) break;
    }
    return tol;
}

void RegisterLength(const std::string& type, const std::vector<Cubic>* curves, const std::vector<LD>& reference) {
    const size_t n = curves->size();
    for (const auto accuracy : {QorMath::LengthAccuracy::Gauss16, QorMath::LengthAccuracy::Gauss10}) {
        const std::string base = "Length/" + type + (accuracy == QorMath::LengthAccuracy::Gauss16 ? "_g16/" : "_g10/");
        Errors ours;
        for (size_t i = 0; i < n; ++i) ours.Add(OursLength((*curves)[i], accuracy), reference[i]);
        ours.Finish();
        Reg(base + "QorMath", [=](benchmark::State& s) {
            for (auto _ : s) {
                double sum = 0;
                for (const Cubic& c : *curves) sum += OursLength(c, accuracy);
                benchmark::DoNotOptimize(sum);
            }
            Publish(s, n, ours);
        });
#ifdef QORMATH_BENCH_2GEOM
        const auto geomLength = [](const Cubic& c, double tol) {
            return Geom::bezier_length(G(c.p[0]), G(c.p[1]), G(c.p[2]), G(c.p[3]), tol);
        };
        for (const bool median : {false, true}) {
            Errors theirs;
            const double tol = MatchTolerance(ours, median, -24, [&](double t) {
                Errors e;
                for (size_t i = 0; i < n; ++i) e.Add(geomLength((*curves)[i], t), reference[i]);
                e.Finish();
                return e;
            }, theirs);
            Reg(base + (median ? "2geom_med" : "2geom_mean"), [=](benchmark::State& s) {
                for (auto _ : s) {
                    double sum = 0;
                    for (const Cubic& c : *curves) sum += geomLength(c, tol);
                    benchmark::DoNotOptimize(sum);
                }
                Publish(s, n, theirs, tol);
            });
        }
#endif
    }
}

// ---- Parameter at a length fraction ----------------------------------------------

double OursParameter(const Cubic& c, double fraction) {
    Point2d a, b, cc, d;
    CB::GetPowerBasis(c.p, a, b, cc, d);
    return CB::GetCurveRelativeLengthParameter(fraction, a, b, cc, kParamTolerance, QorMath::LengthAccuracy::Gauss16);
}

double PrefixLength(const Cubic& c, double t) {
    Point2d left[4], a, b, cc, d;
    CB::LeftOf(t, c.p, left);
    CB::GetPowerBasis(left, a, b, cc, d);
    return CB::Length(a, b, cc, QorMath::LengthAccuracy::Gauss16);
}

double BisectionParameter(const Cubic& c, double fraction) {
    const double target = OursLength(c, QorMath::LengthAccuracy::Gauss16) * fraction;
    double lo = 0, hi = 1, t = 0.5;
    for (int i = 0; i < 200; ++i) {
        t = 0.5 * (lo + hi);
        const double l = PrefixLength(c, t);
        if (std::fabs(l - target) <= kParamTolerance) break;
        (l > target ? hi : lo) = t;
    }
    return t;
}

#ifdef QORMATH_BENCH_2GEOM
double GeomParameter(const Geom::D2<Geom::SBasis>& m, double fraction, double tol) {
    const Geom::Piecewise<Geom::SBasis> s = Geom::arcLengthSb(m, tol);
    const std::vector<double> r = Geom::roots(s - s.lastValue() * fraction);
    return r.empty() ? -1 : r.front();
}
#endif

void RegisterParameter(const std::string& type, const std::vector<Cubic>* curves, const std::vector<LD>& reference) {
    const size_t n = curves->size();
    const auto* fractions = new std::vector<double>(Fractions(n, kSeed + 11));
    const std::string base = "LengthParam/" + type + "/";
    const auto errorsOf = [=, &reference](auto parameter) {
        Errors e;
        for (size_t i = 0; i < n; ++i) {
            const double t = parameter(i);
            const LD got = t < 0 ? 0 : ReferenceLength(Exact((*curves)[i]), t, 64);
            e.Add(double(std::fabs(got / reference[i] - (*fractions)[i])));
        }
        e.Finish();
        return e;
    };
    const auto run = [=](auto parameter, const Errors& errors, double tol) {
        return [=](benchmark::State& s) {
            for (auto _ : s) {
                double sum = 0;
                for (size_t i = 0; i < n; ++i) sum += parameter(i);
                benchmark::DoNotOptimize(sum);
            }
            Publish(s, n, errors, tol);
        };
    };

    const auto ours = [=](size_t i) { return OursParameter((*curves)[i], (*fractions)[i]); };
    const Errors oursErrors = errorsOf(ours);
    Reg(base + "QorMath", run(ours, oursErrors, 0));
    const auto plain = [=](size_t i) { return BisectionParameter((*curves)[i], (*fractions)[i]); };
    Reg(base + "PlainBisection", run(plain, errorsOf(plain), 0));
#ifdef QORMATH_BENCH_2GEOM
    auto* sb = new std::vector<Geom::D2<Geom::SBasis>>();
    for (const Cubic& c : *curves) sb->push_back(Geom::CubicBezier(G(c.p[0]), G(c.p[1]), G(c.p[2]), G(c.p[3])).toSBasis());
    for (const bool median : {false, true}) {
        Errors theirs;
        const double tol = MatchTolerance(oursErrors, median, -12, [&](double t) {
            return errorsOf([=](size_t i) { return GeomParameter((*sb)[i], (*fractions)[i], t); });
        }, theirs);
        Reg(base + (median ? "2geom_med" : "2geom_mean"),
            run([=](size_t i) { return GeomParameter((*sb)[i], (*fractions)[i], tol); }, theirs, tol));
    }
#endif
}

void RegisterAll(const std::string& type, const std::vector<Cubic>* curves) {
    RegisterClosest(type, curves);
    std::vector<LD> lengths;
    for (const Cubic& c : *curves) lengths.push_back(ReferenceLength(Exact(c), 1, 256));
    RegisterLength(type, curves, lengths);
    RegisterParameter(type, curves, lengths);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static const std::vector<Cubic> random = RandomCubics();
    static const std::vector<Cubic> hard = HardCubics();
    RegisterAll("random", &random);
    RegisterAll("hard", &hard);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
