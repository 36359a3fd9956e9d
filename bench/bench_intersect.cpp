// Cubic Bezier intersections next to lib2geom: curve with curve, and curve with
// an infinite line, on the same inputs in the same run.
//
// Names follow Family/type/Impl for report.py. Every case times the whole set;
// per_item is the time of one pair (one line).
//
// Intersect/<type>: all crossings of two segments.
//     QorMath    FindBezierIntersections (one curve's implicit form, the other
//                substituted, degree-9 roots). By contract it leaves out a
//                crossing at the substituted curve's start (end_miss), and takes
//                a curve within 2 units of a line as that line: its crossings
//                then lie on the chord, up to 2 units off, which at the tiny
//                sizes (and for the nearly straight hard pair) is no match
//     2geom      Geom::CubicBezier::intersect (control-box rejection, then
//                Bezier clipping) at its default precision, 1e-6
//     2geom_e10  the same at precision 1e-10: errors near 1e-8 of the size
//                instead of 1e-6, at about the same cost
//   Types:
//     random  2000 pairs whose eight control points are uniform in one square
//             of 100 to 500 units: most pairs cross, some many times
//     sparse  consecutive curves of the shared random set (2000 pairs spread
//             over 2000 units): mostly apart, the cost of saying no
//     hard    hand-made pairs at 100, 300 and 1000 units and twelve turns: nine
//             crossings, loops, near tangency (overlap and gap of 1e-3 and 1e-6
//             of the size), shared end points and a start on the other curve,
//             nearly straight and exactly straight curves, a closed curve
//     tiny    the same pairs at 0.05 and 0.5 units
//     huge    the same pairs at 1e5 and 1e6 units
//   Reference, computed once before timing: both curves halved together in long
//   double, keeping the pairs of pieces whose control-point boxes touch, down to
//   a parameter width below 1e-12; the surviving leaves are clustered (within
//   1e-9 in both parameters) and each cluster is one crossing. Touching counts.
//   A found point matches the nearest unmatched reference crossing within 1e-5
//   of the pair's size (the larger side of the box of all eight control
//   points). Counters, over the whole set: found, ref (reference crossings),
//   missed, extra, end_miss (the missed ones at an end of either curve, within
//   1e-9) and max_err (the largest distance from its reference crossing, over
//   the matched ones, of the point or of either curve at its reported
//   parameter, relative to the pair's size).
//
// LineIntersect/<type>: the crossings of a curve with an infinite line through
// a uniform point of its control box, in a uniform direction; the random (4000)
// and hard (252) curves of the other Bezier benchmarks.
//     QorMath   FindBezierLineIntersection (the cubic of the signed distance;
//               the line parameter s from the larger component)
//     2geom     the curve turned so that the line is the x axis
//               (Line::rotationToZero, applied in place to a copy), then
//               Curve::roots(0, Y); s by Line::timeAtProjection
//     2geom_sd  Geom::Bezier of the control points' signed distances from the
//               line, Bezier::roots; s as above
//   Reference: the sign changes of the signed distance on 4096 intervals in long
//   double, bisected. A found t matches the nearest unmatched reference root
//   within 1e-6; max_err is the larger of |Δt| and |Δs| over the matched ones.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "QorMath/bezier.h"

#ifdef QORMATH_BENCH_2GEOM
#include <2geom/bezier-curve.h>
#include <2geom/line.h>
#endif

#include "curve_sets.h"

namespace {

using QorMath::Point2d;
namespace CB = QorMath::CubicBezier;

using bench::Cubic;
using bench::kPi;
using bench::kSeed;

constexpr size_t kPairCount = 2000;
constexpr double kLeafWidth = 1e-12;  // parameter width of the reference's leaves
constexpr double kLink = 1e-9;        // leaves this close in both parameters are one crossing
constexpr double kPairMatch = 1e-5;   // of the pair's size
constexpr double kLineMatch = 1e-6;   // in t

// ---- Long double curves ----------------------------------------------------------

using LD = long double;

struct LPoint {
    LD x, y;
};

LPoint Mid(const LPoint& a, const LPoint& b) { return {(a.x + b.x) / 2, (a.y + b.y) / 2}; }

LPoint At(const Cubic& c, LD t) {  // Bernstein form
    const LD s = 1 - t, w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    LPoint p{0, 0};
    for (int i = 0; i < 4; ++i) p.x += w[i] * c.p[i].x, p.y += w[i] * c.p[i].y;
    return p;
}

LD Distance(const LPoint& a, const LPoint& b) { return std::hypot(a.x - b.x, a.y - b.y); }
LD Distance(const Point2d& a, const LPoint& b) { return Distance(LPoint{a.x, a.y}, b); }

// The larger side of the box of both curves' control points.
double Size(const Cubic& a, const Cubic& b) {
    double x0 = a.p[0].x, x1 = x0, y0 = a.p[0].y, y1 = y0;
    for (const Cubic* c : {&a, &b}) {
        for (const Point2d& p : c->p) {
            x0 = std::min(x0, p.x), x1 = std::max(x1, p.x), y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
        }
    }
    return std::max(x1 - x0, y1 - y0);
}

// ---- Reference crossings of two curves ---------------------------------------------

struct Piece {  // control points of B on [t0, t1]
    LPoint p[4];
    LD t0, t1;
};

Piece Whole(const Cubic& c) {
    Piece w;
    for (int i = 0; i < 4; ++i) w.p[i] = {c.p[i].x, c.p[i].y};
    w.t0 = 0, w.t1 = 1;
    return w;
}

// de Casteljau at the middle.
void Halve(const Piece& in, Piece& left, Piece& right) {
    const LPoint ab = Mid(in.p[0], in.p[1]), bc = Mid(in.p[1], in.p[2]), cd = Mid(in.p[2], in.p[3]);
    const LPoint abc = Mid(ab, bc), bcd = Mid(bc, cd), m = Mid(abc, bcd);
    const LD tm = (in.t0 + in.t1) / 2;
    left = {{in.p[0], ab, abc, m}, in.t0, tm};
    right = {{m, bcd, cd, in.p[3]}, tm, in.t1};
}

struct Box {
    LD x0, x1, y0, y1;
    explicit Box(const Piece& c) : x0(c.p[0].x), x1(x0), y0(c.p[0].y), y1(y0) {
        for (const LPoint& p : c.p) {
            x0 = std::min(x0, p.x), x1 = std::max(x1, p.x), y0 = std::min(y0, p.y), y1 = std::max(y1, p.y);
        }
    }
    bool Touches(const Box& o) const { return x0 <= o.x1 && o.x0 <= x1 && y0 <= o.y1 && o.y0 <= y1; }
};

struct Crossing {
    LD t, u;  // on the first and the second curve
    LPoint point;
    bool atEnd;
};

// Single-linkage clusters of the leaves (t, u): union-find over the pairs within
// kLink in both parameters.
std::vector<Crossing> Cluster(std::vector<std::pair<LD, LD>> leaves, const Cubic& a, const Cubic& b) {
    std::sort(leaves.begin(), leaves.end());
    std::vector<size_t> root(leaves.size());
    std::iota(root.begin(), root.end(), size_t(0));
    const auto find = [&root](size_t i) {
        while (root[i] != i) i = root[i] = root[root[i]];
        return i;
    };
    for (size_t i = 0; i < leaves.size(); ++i) {
        for (size_t j = i + 1; j < leaves.size() && leaves[j].first - leaves[i].first <= kLink; ++j) {
            if (std::fabs(leaves[j].second - leaves[i].second) <= kLink) root[find(j)] = find(i);
        }
    }
    std::vector<Crossing> out;
    std::vector<size_t> index(leaves.size(), SIZE_MAX), count;
    for (size_t i = 0; i < leaves.size(); ++i) {
        size_t& k = index[find(i)];
        if (k == SIZE_MAX) k = out.size(), out.push_back({0, 0, {0, 0}, false}), count.push_back(0);
        out[k].t += leaves[i].first, out[k].u += leaves[i].second, ++count[k];
    }
    for (size_t k = 0; k < out.size(); ++k) {
        Crossing& c = out[k];
        c.t /= LD(count[k]), c.u /= LD(count[k]);
        c.point = Mid(At(a, c.t), At(b, c.u));
        const auto end = [](LD v) { return v <= kLink || v >= 1 - kLink; };
        c.atEnd = end(c.t) || end(c.u);
    }
    return out;
}

std::vector<Crossing> ReferenceCrossings(const Cubic& a, const Cubic& b) {
    std::vector<std::pair<Piece, Piece>> level{{Whole(a), Whole(b)}}, next;
    std::vector<std::pair<LD, LD>> leaves;
    while (!level.empty()) {
        next.clear();
        for (const auto& [pa, pb] : level) {
            if (!Box(pa).Touches(Box(pb))) continue;
            if (pa.t1 - pa.t0 < kLeafWidth) {
                leaves.emplace_back((pa.t0 + pa.t1) / 2, (pb.t0 + pb.t1) / 2);
                continue;
            }
            Piece al, ar, bl, br;
            Halve(pa, al, ar);
            Halve(pb, bl, br);
            next.insert(next.end(), {{al, bl}, {al, br}, {ar, bl}, {ar, br}});
        }
        if (next.size() > 4000000) {  // overlapping curves: no set should hold one
            std::fprintf(stderr, "bench_intersect: a reference pair overlaps along a stretch\n");
            std::exit(1);
        }
        std::swap(level, next);
    }
    return Cluster(std::move(leaves), a, b);
}

// ---- Pair sets ---------------------------------------------------------------------

struct Pair {
    Cubic a, b;
    double size;
    std::vector<Crossing> reference;
};

Pair MakePair(const Cubic& a, const Cubic& b) { return {a, b, Size(a, b), ReferenceCrossings(a, b)}; }

std::vector<Pair> RandomPairs() {
    std::mt19937_64 rng(kSeed + 21);
    std::uniform_real_distribution<double> origin(-1000.0, 1000.0), size(100.0, 500.0), unit(0.0, 1.0);
    std::vector<Pair> pairs;
    for (size_t i = 0; i < kPairCount; ++i) {
        const double ox = origin(rng), oy = origin(rng), s = size(rng);
        Cubic c[2];
        for (Cubic& k : c) {
            for (Point2d& p : k.p) p = {ox + s * unit(rng), oy + s * unit(rng)};
        }
        pairs.push_back(MakePair(c[0], c[1]));
    }
    return pairs;
}

std::vector<Pair> SparsePairs() {
    const std::vector<Cubic> curves = bench::RandomCubics();
    std::vector<Pair> pairs;
    for (size_t i = 0; i + 1 < curves.size() && pairs.size() < kPairCount; i += 2) {
        pairs.push_back(MakePair(curves[i], curves[i + 1]));
    }
    return pairs;
}

// Pairs in a unit frame: the first curve's four points, then the second's.
struct Shape {
    double p[16];
};

std::vector<Shape> HardShapes() {
    std::vector<Shape> shapes = {
        // nine crossings: a steep wave and the same wave turned a quarter
        {{0, 0.1, 0.2, 3, 0.8, -2, 1, 0.9, 0.9, 0, -2, 0.2, 3, 0.8, 0.1, 1}},
        // an S-bend and a nearly flat wave through it: three crossings
        {{0, 0, 0.5, 1, 0.5, -1, 1, 0, -0.1, 0.02, 0.4, -0.02, 0.6, 0.03, 1.1, -0.02}},
        // a loop crossed by a flat curve through the loop and below the double point
        {{0, 0, 1.33, 0.67, -0.33, 0.67, 1, 0, -0.2, 0.25, 0.3, 0.4, 0.7, 0.2, 1.2, 0.35}},
        // a loop and a second loop over it: three crossings
        {{0, 0, 1.33, 0.67, -0.33, 0.67, 1, 0, 0.7, -0.2, 0.03, 1.13, 0.03, -0.33, 0.7, 0.8}},
        // a closed curve (P3 = P0) crossed by an S-bend
        {{0, 0, 1, 1.2, -1, 1.2, 0, 0, -0.6, 0.2, 0.2, 1.2, -0.2, -0.2, 0.6, 0.7}},
        // the second starts where the first ends (P3 = Q0)
        {{0, 0, 0.3, 0.8, 0.7, 0.8, 1, 0, 1, 0, 1.2, 0.6, 1.6, 0.4, 1.8, 0.9}},
        // shared start points (P0 = Q0) and two more crossings
        {{0, 0, 0.3, 1, 0.7, -0.5, 1, 0.3, 0, 0, 0.6, 0.2, 0.4, 0.5, 1, -0.2}},
        // shared end points (P3 = Q3) and one more crossing
        {{0, 0, 0.3, 0.8, 0.7, 0.8, 1, 0, 0.2, 1, 0.4, -0.2, 0.8, 0.3, 1, 0}},
        // nearly straight first curve (bulge 1e-3) crossing a curved one
        {{0, 0, 0.33, 1e-3, 0.67, -1e-3, 1, 0, 0.2, -0.5, 0.4, 0.8, 0.6, 0.8, 0.8, -0.5}},
        // exactly straight first curve, uneven handles
        {{0, 0.1, 0.1, 0.12, 0.8, 0.26, 1, 0.3, 0.2, -0.5, 0.4, 0.8, 0.6, 0.8, 0.8, -0.5}},
        // two nearly straight curves crossing at about 10 degrees
        {{0, 0, 0.33, 2e-3, 0.67, -2e-3, 1, 0, 0, -0.09, 0.33, -0.03, 0.67, 0.03, 1, 0.09}},
    };
    // Near tangency: an arch (top 0.75 at x = 0.5, y ≈ 0.75 − 4/3·(x − 0.5)²) and
    // the arch turned upside down with its lowest point at 0.75 − δ: two crossings
    // √(3δ/8) either side of x = 0.5 when δ > 0, none when δ < 0.
    for (const double d : {1e-3, 1e-6, -1e-3, -1e-6}) {
        const double low = 0.5 - d, high = 1.5 - d;
        shapes.push_back({{0, 0, 0, 1, 1, 1, 1, 0, 0, high, 0, low, 1, low, 1, high}});
    }
    // A start on the other curve's point at 1/2 ((0.5, 0.75), exact in the unit
    // frame, rounded once by the turn), leaving it at an angle.
    shapes.push_back({{0, 0, 0.25, 1, 0.75, 1, 1, 0, 0.5, 0.75, 0.7, 1.2, 0.9, 0.9, 1.1, 1.3}});
    return shapes;
}

std::vector<Pair> HardPairs(std::initializer_list<double> scales) {
    std::vector<Pair> pairs;
    for (const Shape& shape : HardShapes()) {
        for (const double scale : scales) {
            for (int turn = 0; turn < 12; ++turn) {
                // Twelve turns of 30 degrees plus a little, so that no straight
                // piece is axis-aligned by accident; origins moved with the scale.
                const double a = turn * (kPi / 6.0) + 0.01, cs = std::cos(a), sn = std::sin(a);
                const double ox = (0.37 * turn - 2.0) * scale, oy = 0.5 * scale;
                Cubic c[2];
                for (int i = 0; i < 8; ++i) {
                    const double x = scale * shape.p[2 * i], y = scale * shape.p[2 * i + 1];
                    c[i / 4].p[i % 4] = {ox + x * cs - y * sn, oy + x * sn + y * cs};
                }
                pairs.push_back(MakePair(c[0], c[1]));
            }
        }
    }
    return pairs;
}

// ---- Agreement -----------------------------------------------------------------------

struct Found {
    Point2d point;
    double t, u;
};

struct Agreement {
    double found = 0, reference = 0, missed = 0, extra = 0, endMiss = 0, maxError = 0;
};

// Greedy matching, closest pairs first, within tol.
template <typename Dist>
std::vector<size_t> Match(size_t found, size_t reference, double tol, Dist dist) {
    std::vector<std::pair<double, std::pair<size_t, size_t>>> near;
    for (size_t i = 0; i < found; ++i) {
        for (size_t j = 0; j < reference; ++j) {
            const double d = dist(i, j);
            if (d <= tol) near.push_back({d, {i, j}});
        }
    }
    std::sort(near.begin(), near.end());
    std::vector<size_t> of(found, SIZE_MAX);  // the reference index of found i
    std::vector<bool> taken(reference, false);
    for (const auto& [d, ij] : near) {
        if (of[ij.first] != SIZE_MAX || taken[ij.second]) continue;
        of[ij.first] = ij.second, taken[ij.second] = true;
    }
    return of;
}

void Compare(const Pair& p, const std::vector<Found>& found, Agreement& a) {
    const std::vector<Crossing>& ref = p.reference;
    const std::vector<size_t> of = Match(found.size(), ref.size(), kPairMatch * p.size, [&](size_t i, size_t j) {
        return double(Distance(found[i].point, ref[j].point));
    });
    std::vector<bool> matched(ref.size(), false);
    for (size_t i = 0; i < found.size(); ++i) {
        if (of[i] == SIZE_MAX) {
            a.extra += 1;
            continue;
        }
        const Crossing& r = ref[of[i]];
        matched[of[i]] = true;
        const LD e = std::max({Distance(found[i].point, r.point), Distance(At(p.a, found[i].t), r.point),
                               Distance(At(p.b, found[i].u), r.point)});
        a.maxError = std::max(a.maxError, double(e / p.size));
    }
    for (size_t j = 0; j < ref.size(); ++j) {
        if (!matched[j]) a.missed += 1, a.endMiss += ref[j].atEnd;
    }
    a.found += double(found.size());
    a.reference += double(ref.size());
}

void Publish(benchmark::State& s, size_t n, const Agreement& a, bool ends) {
    s.SetItemsProcessed(int64_t(s.iterations()) * int64_t(n));
    s.counters["per_item"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate |
                                                               benchmark::Counter::kInvert);
    s.counters["found"] = a.found;
    s.counters["ref"] = a.reference;
    s.counters["missed"] = a.missed;
    s.counters["extra"] = a.extra;
    if (ends) s.counters["end_miss"] = a.endMiss;
    s.counters["max_err"] = a.maxError;
}

void Reg(const std::string& name, std::function<void(benchmark::State&)> fn) {
    benchmark::RegisterBenchmark(name.c_str(), std::move(fn))->Unit(benchmark::kMicrosecond);
}

#ifdef QORMATH_BENCH_2GEOM
Geom::Point G(const Point2d& p) { return {p.x, p.y}; }
Geom::CubicBezier G(const Cubic& c) { return {G(c.p[0]), G(c.p[1]), G(c.p[2]), G(c.p[3])}; }
#endif

// ---- Curve with curve ----------------------------------------------------------------

void OursPair(const Pair& p, std::vector<double>& t, std::vector<double>& u, std::vector<Point2d>& points) {
    t.clear(), u.clear(), points.clear();  // the straight-curve case appends
    CB::FindBezierIntersections(p.a.p, p.b.p, t, u, points);
}

void RegisterPairs(const std::string& type, const std::vector<Pair>* pairs) {
    const size_t n = pairs->size();
    const std::string base = "Intersect/" + type + "/";

    Agreement ours;
    std::vector<double> t, u;
    std::vector<Point2d> points;
    for (const Pair& p : *pairs) {
        OursPair(p, t, u, points);
        std::vector<Found> found;
        for (size_t i = 0; i < points.size(); ++i) found.push_back({points[i], t[i], u[i]});
        Compare(p, found, ours);
    }
    Reg(base + "QorMath", [=](benchmark::State& s) {
        std::vector<double> t, u;
        std::vector<Point2d> points;
        for (auto _ : s) {
            size_t total = 0;
            for (const Pair& p : *pairs) {
                OursPair(p, t, u, points);
                total += points.size();
            }
            benchmark::DoNotOptimize(total);
        }
        Publish(s, n, ours, true);
    });

#ifdef QORMATH_BENCH_2GEOM
    auto* geom = new std::vector<std::pair<Geom::CubicBezier, Geom::CubicBezier>>();
    for (const Pair& p : *pairs) geom->emplace_back(G(p.a), G(p.b));
    for (const auto& [name, eps] : {std::pair<const char*, double>{"2geom", Geom::EPSILON}, {"2geom_e10", 1e-10}}) {
        Agreement theirs;
        for (size_t k = 0; k < n; ++k) {
            std::vector<Found> found;
            for (const Geom::CurveIntersection& x : (*geom)[k].first.intersect((*geom)[k].second, eps)) {
                found.push_back({{x.point().x(), x.point().y()}, x.first, x.second});
            }
            Compare((*pairs)[k], found, theirs);
        }
        const double precision = eps;
        Reg(base + name, [=](benchmark::State& s) {
            for (auto _ : s) {
                size_t total = 0;
                for (const auto& [a, b] : *geom) total += a.intersect(b, precision).size();
                benchmark::DoNotOptimize(total);
            }
            Publish(s, n, theirs, true);
        });
    }
#endif
}

// ---- Curve with a line -------------------------------------------------------------

struct LineCase {
    Cubic curve;
    Point2d line[2];
    std::vector<LD> t, s;  // reference crossings, ascending in t
};

// The signed distance of B(t) from the line, times the line's length.
LD Side(const LineCase& c, LD t) {
    const LPoint p = At(c.curve, t);
    const LD dx = LD(c.line[1].x) - c.line[0].x, dy = LD(c.line[1].y) - c.line[0].y;
    return (p.x - c.line[0].x) * dy - (p.y - c.line[0].y) * dx;
}

LD LineParameter(const LineCase& c, LD t) {  // projection onto the line
    const LPoint p = At(c.curve, t);
    const LD dx = LD(c.line[1].x) - c.line[0].x, dy = LD(c.line[1].y) - c.line[0].y;
    return ((p.x - c.line[0].x) * dx + (p.y - c.line[0].y) * dy) / (dx * dx + dy * dy);
}

std::vector<LineCase> LineCases(const std::vector<Cubic>& curves, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<LineCase> cases;
    for (const Cubic& k : curves) {
        double x0 = k.p[0].x, x1 = x0, y0 = k.p[0].y, y1 = y0;
        for (const Point2d& q : k.p) {
            x0 = std::min(x0, q.x), x1 = std::max(x1, q.x), y0 = std::min(y0, q.y), y1 = std::max(y1, q.y);
        }
        const Point2d m{x0 + (x1 - x0) * unit(rng), y0 + (y1 - y0) * unit(rng)};
        const double a = 2 * kPi * unit(rng), h = 0.5 * std::max(x1 - x0, y1 - y0);
        const double hx = h * std::cos(a), hy = h * std::sin(a);
        LineCase c{k, {{m.x - hx, m.y - hy}, {m.x + hx, m.y + hy}}, {}, {}};
        constexpr int kIntervals = 4096;
        LD lo = 0, flo = Side(c, 0);
        if (flo == 0) c.t.push_back(0);
        for (int i = 1; i <= kIntervals; ++i) {
            const LD hi = LD(i) / kIntervals, fhi = Side(c, hi);
            if (fhi == 0) {
                c.t.push_back(hi);
            } else if (flo != 0 && (flo < 0) != (fhi < 0)) {
                LD p = lo, q = hi;
                for (int it = 0; it < 80; ++it) {
                    const LD mid = (p + q) / 2;
                    ((Side(c, mid) < 0) == (flo < 0) ? p : q) = mid;
                }
                c.t.push_back((p + q) / 2);
            }
            lo = hi, flo = fhi;
        }
        for (LD t : c.t) c.s.push_back(LineParameter(c, t));
        cases.push_back(c);
    }
    return cases;
}

void CompareLine(const LineCase& c, const std::vector<double>& t, const std::vector<double>& s, Agreement& a) {
    const std::vector<size_t> of =
        Match(t.size(), c.t.size(), kLineMatch, [&](size_t i, size_t j) { return double(std::fabs(t[i] - c.t[j])); });
    std::vector<bool> matched(c.t.size(), false);
    for (size_t i = 0; i < t.size(); ++i) {
        if (of[i] == SIZE_MAX) {
            a.extra += 1;
            continue;
        }
        matched[of[i]] = true;
        const LD e = std::max(std::fabs(t[i] - c.t[of[i]]), std::fabs(s[i] - c.s[of[i]]));
        a.maxError = std::max(a.maxError, double(e));
    }
    for (bool m : matched) a.missed += !m;
    a.found += double(t.size());
    a.reference += double(c.t.size());
}

#ifdef QORMATH_BENCH_2GEOM
struct GeomLine {
    Geom::CubicBezier curve;
    Geom::Line line;
};

// Curve::roots after turning the line onto the x axis.
void GeomRotated(const GeomLine& g, std::vector<double>& t, std::vector<double>& s) {
    Geom::CubicBezier k = g.curve;
    k *= g.line.rotationToZero(Geom::Y);
    t = k.roots(0, Geom::Y);
    s.clear();
    for (double v : t) s.push_back(g.line.timeAtProjection(g.curve.pointAt(v)));
}

// Bezier::roots of the control points' signed distances.
void GeomSigned(const GeomLine& g, std::vector<double>& t, std::vector<double>& s) {
    const Geom::Point d = g.line.vector(), o = g.line.initialPoint();
    const auto side = [&](unsigned i) { return Geom::cross(g.curve.controlPoint(i) - o, d); };
    t = Geom::Bezier(side(0), side(1), side(2), side(3)).roots();
    s.clear();
    for (double v : t) s.push_back(g.line.timeAtProjection(g.curve.pointAt(v)));
}
#endif

void RegisterLines(const std::string& type, const std::vector<LineCase>* cases) {
    const size_t n = cases->size();
    const std::string base = "LineIntersect/" + type + "/";
    Agreement ours;
    std::vector<double> t, s;
    for (const LineCase& c : *cases) {
        CB::FindBezierLineIntersection(c.curve.p, c.line, t, s, false);
        CompareLine(c, t, s, ours);
    }
    Reg(base + "QorMath", [=](benchmark::State& st) {
        std::vector<double> t, s;
        for (auto _ : st) {
            size_t total = 0;
            for (const LineCase& c : *cases) {
                CB::FindBezierLineIntersection(c.curve.p, c.line, t, s, false);
                total += t.size();
            }
            benchmark::DoNotOptimize(total);
        }
        Publish(st, n, ours, false);
    });

#ifdef QORMATH_BENCH_2GEOM
    auto* geom = new std::vector<GeomLine>();
    for (const LineCase& c : *cases) geom->push_back({G(c.curve), Geom::Line(G(c.line[0]), G(c.line[1]))});
    using Method = void (*)(const GeomLine&, std::vector<double>&, std::vector<double>&);
    for (const auto& [name, method] :
         {std::pair<const char*, Method>{"2geom", GeomRotated}, {"2geom_sd", GeomSigned}}) {
        Agreement theirs;
        for (size_t i = 0; i < n; ++i) {
            method((*geom)[i], t, s);
            CompareLine((*cases)[i], t, s, theirs);
        }
        const Method run = method;
        Reg(base + name, [=](benchmark::State& st) {
            std::vector<double> t, s;
            for (auto _ : st) {
                size_t total = 0;
                for (const GeomLine& g : *geom) {
                    run(g, t, s);
                    total += t.size();
                }
                benchmark::DoNotOptimize(total);
            }
            Publish(st, n, theirs, false);
        });
    }
#endif
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static const std::vector<Pair> random = RandomPairs(), sparse = SparsePairs();
    static const std::vector<Pair> hard = HardPairs({100.0, 300.0, 1000.0}), tiny = HardPairs({0.05, 0.5}),
                                   huge = HardPairs({1e5, 1e6});
    RegisterPairs("random", &random);
    RegisterPairs("sparse", &sparse);
    RegisterPairs("hard", &hard);
    RegisterPairs("tiny", &tiny);
    RegisterPairs("huge", &huge);
    static const std::vector<LineCase> randomLines = LineCases(bench::RandomCubics(), kSeed + 31);
    static const std::vector<LineCase> hardLines = LineCases(bench::HardCubics(), kSeed + 37);
    RegisterLines("random", &randomLines);
    RegisterLines("hard", &hardLines);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
