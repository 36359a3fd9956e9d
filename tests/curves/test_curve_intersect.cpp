#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using namespace QorMath::CubicBezier;
using qtest::LongPoint;

namespace {

using P = Point2d;
using LD = long double;
using Ctl = std::array<LongPoint, 4>;

LongPoint At(const P p[4], LD t, bool slope = false) { return qtest::BernsteinAt(p, t, slope); }
LD Dist(LongPoint a, P b) { return std::hypot(a.x - b.x, a.y - b.y); }

struct Crossing { LD t, u, sine; };

// Reference crossings, sorted by u: both control polygons halved together to depth 14 while their boxes overlap,
// then Newton on Bp(t) = Bq(u) in long double from every surviving pair, duplicates merged. False when a pair does
// not converge close by: the curves pass near without a clean crossing.
bool Crossings(const P p[4], const P q[4], std::vector<Crossing>& out) {
    out.clear();
    std::vector<std::array<LD, 2>> seeds;
    const auto half = [](const Ctl& c, Ctl& l, Ctl& r) {
        const auto mid = [](LongPoint a, LongPoint b) { return LongPoint{(a.x + b.x) / 2, (a.y + b.y) / 2}; };
        const LongPoint a = mid(c[0], c[1]), b = mid(c[1], c[2]), d = mid(c[2], c[3]), e = mid(a, b), f = mid(b, d);
        l = {c[0], a, e, mid(e, f)}, r = {mid(e, f), f, d, c[3]};
    };
    const auto apart = [](const Ctl& a, const Ctl& b, LD LongPoint::*k) {
        const auto lo = [k](const Ctl& c) { return std::min({c[0].*k, c[1].*k, c[2].*k, c[3].*k}); };
        const auto hi = [k](const Ctl& c) { return std::max({c[0].*k, c[1].*k, c[2].*k, c[3].*k}); };
        return lo(a) > hi(b) || lo(b) > hi(a);
    };
    const auto seed = [&](auto& self, const Ctl& a, LD t0, const Ctl& b, LD u0, LD w, int depth) -> void {
        if (seeds.size() > 4000 || apart(a, b, &LongPoint::x) || apart(a, b, &LongPoint::y)) return;
        if (depth == 14) return seeds.push_back({t0 + w / 2, u0 + w / 2});
        Ctl ab[2], bb[2];
        half(a, ab[0], ab[1]), half(b, bb[0], bb[1]);
        for (int i = 0; i < 4; ++i) self(self, ab[i / 2], t0 + (i / 2) * w / 2, bb[i % 2], u0 + (i % 2) * w / 2, w / 2, depth + 1);
    };
    Ctl cp, cq;
    for (int i = 0; i < 4; ++i) cp[i] = {p[i].x, p[i].y}, cq[i] = {q[i].x, q[i].y};
    seed(seed, cp, 0, cq, 0, 1, 0);
    if (seeds.size() > 4000) return false;
    for (const auto& s : seeds) {
        LD t = s[0], u = s[1], fx = 0, fy = 0;
        for (int k = 0; k < 40; ++k) {
            const LongPoint a = At(p, t), b = At(q, u), da = At(p, t, true), db = At(q, u, true);
            const LD det = db.x * da.y - da.x * db.y;
            fx = a.x - b.x, fy = a.y - b.y;
            if (det == 0) break;
            t += (fx * db.y - db.x * fy) / det, u += (da.y * fx - da.x * fy) / det;
        }
        if (!(std::hypot(fx, fy) < 1e-12L && std::fabs(t - s[0]) < 1e-2L && std::fabs(u - s[1]) < 1e-2L)) return false;
        if (t < -1e-12L || t > 1 + 1e-12L || u < -1e-12L || u > 1 + 1e-12L ||
            std::any_of(out.begin(), out.end(), [&](const Crossing& c) { return std::fabs(c.t - t) + std::fabs(c.u - u) < 1e-9L; }))
            continue;
        const LongPoint da = At(p, t, true), db = At(q, u, true);
        out.push_back({t, u, std::fabs(da.x * db.y - da.y * db.x) / std::hypot(da.x, da.y) / std::hypot(db.x, db.y)});
    }
    std::sort(out.begin(), out.end(), [](const Crossing& a, const Crossing& b) { return a.u < b.u; });
    return true;
}

// Crossings clear of the ends, of each other and of tangency: any method should find exactly these.
bool WellConditioned(const std::vector<Crossing>& cs) {
    for (size_t i = 0; i < cs.size(); ++i) {
        if (cs[i].sine < 0.02L || std::min({cs[i].t, cs[i].u, 1 - cs[i].t, 1 - cs[i].u}) < 1e-3L) return false;
        for (size_t j = 0; j < i; ++j)
            if (std::fabs(cs[i].t - cs[j].t) < 1e-3L || std::fabs(cs[i].u - cs[j].u) < 1e-3L) return false;
    }
    return true;
}

struct Result {
    std::vector<double> first, second;
    std::vector<P> points;
};
template <typename T>
Result Intersect(const T* p, const T* q, Result r = {}) {
    FindBezierIntersections(p, q, r.first, r.second, r.points);
    EXPECT_TRUE(r.first.size() == r.points.size() && r.second.size() == r.points.size());
    return r;
}

// The result against the reference, in root order on the substituted curve (the second unless bySecond is false):
// parameters to 1e-9, points to 1e-8.
void ExpectMatches(const P q[4], const Result& r, std::vector<Crossing> ref, bool bySecond, const std::string& what) {
    if (!bySecond) std::sort(ref.begin(), ref.end(), [](const Crossing& a, const Crossing& b) { return a.t < b.t; });
    ASSERT_EQ(r.points.size(), ref.size()) << what;
    for (size_t i = 0; i < ref.size(); ++i)
        EXPECT_TRUE(std::fabs(r.first[i] - ref[i].t) < 1e-9 && std::fabs(r.second[i] - ref[i].u) < 1e-9 &&
                    Dist(At(q, ref[i].u), r.points[i]) < 1e-8)
            << what << " #" << i << ": " << r.first[i] << ", " << r.second[i] << " vs " << double(ref[i].t) << ", "
            << double(ref[i].u);
}

tagPOINT ToI(P v) { return {int(v.x), int(v.y)}; }

}  // namespace

TEST(BezierCurves, RandomPairsAgainstSubdivision) {
    // General case only (neither curve within 2 units of a line): count, parameters and points against the
    // long-double reference; stale contents cleared; the integer forms equal the double forms.
    std::mt19937 rng(17);
    const auto point = [&rng] { const P v = qtest::RandomPoint(rng); return P{std::round(v.x * 10), std::round(v.y * 10)}; };
    int compared = 0, crossings = 0;
    for (int i = 0; i < 300; ++i) {
        P p[4], q[4];
        tagPOINT ip[4], iq[4];
        for (int j = 0; j < 4; ++j) p[j] = point(), q[j] = point(), ip[j] = ToI(p[j]), iq[j] = ToI(q[j]);
        if (AreCollinear(p, 4, 4.0) || AreCollinear(q, 4, 4.0)) continue;
        const Result r = Intersect(p, q, {{1, 2}, {3}, {{4, 4}}});
        if (std::vector<Crossing> ref; Crossings(p, q, ref) && WellConditioned(ref)) {
            ++compared, crossings += int(ref.size());
            ExpectMatches(q, r, ref, true, "pair " + std::to_string(i));
        }
        const Result ir = Intersect(ip, iq);
        EXPECT_TRUE(ir.first == r.first && ir.second == r.second && ir.points == r.points) << "pair " << i;
        EXPECT_TRUE(DoBeziersIntersect(ip, iq) == !r.first.empty() && DoBeziersIntersect(p, q) == !r.first.empty());
    }
    EXPECT_GT(compared, 200);
    EXPECT_GT(crossings, 200);
}

TEST(BezierCurves, CurveAndItsMirrorImage) {
    // x = 90t and y = k(t − r1)(t − r2)(t − r3): with x monotonic the curve meets its mirror image in the x axis
    // only where y = 0, at the same parameter on both. Both are then moved rigidly.
    const std::array<double, 4> cases[] = {{0.27, 0.52, 0.81, 0}, {0.2, 0.55, 0.9, 0.7}, {0.3, 0.6, 1.7, 2.1},
                                           {-0.4, 0.45, 1.6, -1}, {-2, 1.3, 1.5, 0.4}};  // r1, r2, r3, angle
    for (const auto& [r1, r2, r3, angle] : cases) {
        // Power basis a = (0, k), b = (0, −k·Σr), c = (90, k·Σrr), d = (0, −k·Πr), as control points.
        const double k = 400, s1 = r1 + r2 + r3, s2 = r1 * r2 + r2 * r3 + r1 * r3, s3 = r1 * r2 * r3;
        const double y[4] = {-k * s3, -k * s3 + k * s2 / 3, -k * s3 + 2 * k * s2 / 3 - k * s1 / 3, k * (1 - s1 + s2 - s3)};
        const double cs = std::cos(angle), sn = std::sin(angle);
        const auto move = [cs, sn](P v) { return P{cs * v.x - sn * v.y + 17, sn * v.x + cs * v.y - 5}; };
        P p[4], q[4];
        for (int j = 0; j < 4; ++j) p[j] = move({30.0 * j, y[j]}), q[j] = move({30.0 * j, -y[j]});
        const Result r = Intersect(p, q);
        std::vector<double> want;
        for (double t : {r1, r2, r3})
            if (t > 0 && t < 1) want.push_back(t);
        ASSERT_EQ(r.points.size(), want.size()) << r1 << " " << r2 << " " << r3;
        for (size_t i = 0; i < want.size(); ++i)
            EXPECT_TRUE(std::fabs(r.first[i] - want[i]) < 1e-9 && std::fabs(r.second[i] - want[i]) < 1e-9 &&
                        qtest::Near(r.points[i], move({90 * want[i], 0}), 1e-8))
                << want[i] << ": " << r.first[i] << ", " << r.second[i];
    }
}

TEST(BezierCurves, NearlyStraightCurveTakenAsItsChord) {
    // L lies within 2 units of a line; K crosses L's chord y = 0 at (6, 0), about half a unit off L. The crossing
    // is taken on the chord and appended; L's parameter is that of its point nearest to it: no sample is nearer,
    // and (L(t) − X)·L′(t) vanishes.
    const P L[4] = {{0, 0}, {10, 2}, {20, -2}, {30, 0}}, K[4] = {{6, -10}, {2, -3}, {10, 3}, {6, 10}};
    const Result stale{{-1}, {-2}, {{-3, -3}}};
    for (const bool straightFirst : {true, false}) {
        const Result r = straightFirst ? Intersect(L, K, stale) : Intersect(K, L, stale);
        ASSERT_EQ(r.points.size(), 2u);
        EXPECT_TRUE(r.first[0] == -1 && r.second[0] == -2 && r.points[0] == stale.points[0]);
        const double tL = straightFirst ? r.first[1] : r.second[1], tK = straightFirst ? r.second[1] : r.first[1];
        const P X = r.points[1];
        const LongPoint b = At(L, tL), v = At(L, tL, true);
        EXPECT_TRUE(qtest::Near(X, {6, 0}, 1e-12) && std::fabs(tK - 0.5) < 1e-12) << tK;
        EXPECT_NEAR(double(((b.x - X.x) * v.x + (b.y - X.y) * v.y) / (v.x * v.x + v.y * v.y)), 0, 1e-9);
        for (int i = 0; i <= 1000; ++i) EXPECT_GE(Dist(At(L, i / 1000.0L), X), Dist(b, X) - 1e-12L) << i;
        EXPECT_TRUE(Dist(b, X) > 0.3 && Dist(b, X) < 2) << double(Dist(b, X));
    }
    // Crossing the chord's line beyond L's end: rejected, and the general case (no crossing) clears.
    const P far[4] = {{40, -10}, {36, -3}, {44, 3}, {40, 10}};
    const Result r = Intersect(L, far, stale);
    EXPECT_TRUE(r.first.empty() && r.second.empty() && r.points.empty());
}

TEST(BezierCurves, GeneralCaseEdges) {
    // A raised quadratic (no t³ term), first or second: the roots come on it, in its order, and the first vector
    // holds the first curve's parameters either way.
    const P arch[4] = {{0, 0}, {20, 40}, {40, 40}, {60, 0}}, wave[4] = {{-10, 10}, {20, 45}, {40, -5}, {70, 30}};
    std::vector<Crossing> ref;
    ASSERT_TRUE(Crossings(arch, wave, ref) && WellConditioned(ref) && ref.size() >= 2);
    ExpectMatches(wave, Intersect(arch, wave), ref, false, "raised quadratic first");
    ASSERT_TRUE(Crossings(wave, arch, ref));
    ExpectMatches(arch, Intersect(wave, arch), ref, true, "raised quadratic second");

    // The second curve starts on the first, at B(0.5) = (20, 30), and crosses it once more: the start makes the
    // substituted polynomial's constant term zero and is not reported.
    const P hump[4] = {{0, 0}, {0, 40}, {40, 40}, {40, 0}}, from[4] = {{20, 30}, {30, 50}, {50, 20}, {30, -10}};
    ASSERT_TRUE(Crossings(hump, from, ref));
    ASSERT_TRUE(ref.size() == 2 && std::fabs(ref[0].u) < 1e-15L && std::fabs(ref[0].t - 0.5L) < 1e-15L);
    ref.erase(ref.begin());
    ExpectMatches(from, Intersect(hump, from), ref, true, "start on the first");

    // Each second curve only touches the hump at one shared end point, in the four pairings: DoBeziersIntersect is
    // true at once, also for the integer form; moved 0.01 away the pair does not meet.
    const P seconds[][4] = {{{0, 0}, {-10, -20}, {-30, -20}, {-40, 0}},  // P0 = Q0
                            {{40, 0}, {40, -20}, {80, -20}, {80, 0}},    // P3 = Q0
                            {{-40, 0}, {-40, -20}, {-10, -30}, {0, 0}},  // P0 = Q3
                            {{80, 0}, {80, -20}, {50, -30}, {40, 0}}};   // P3 = Q3
    for (const auto& q : seconds) {
        P moved[4];
        tagPOINT ih[4], iq[4];
        for (int j = 0; j < 4; ++j) moved[j] = {q[j].x, q[j].y - 0.01}, ih[j] = ToI(hump[j]), iq[j] = ToI(q[j]);
        EXPECT_TRUE(DoBeziersIntersect(hump, q) && DoBeziersIntersect(q, hump) && DoBeziersIntersect(ih, iq));
        EXPECT_FALSE(DoBeziersIntersect(hump, moved) || DoBeziersIntersect(moved, hump));
    }
}

TEST(BezierFatline, OrderedTests) {
    // The hump (0, 0), (0, 10), (10, 10), (10, 0) peaks at (5, 7.5). Each row is decided by one step.
    const P h[4] = {{0, 0}, {0, 10}, {10, 10}, {10, 0}};
    const struct { P a, b; double w; bool hit; const char* what; } cases[] = {
        {{-100, 5}, {100, 5}, 1, false, "both ends outside the grown box, middle crossing"},
        {{2, 5}, {100, 5}, 1, true, "one end inside the box: crossing"},
        {{10, -0.5}, {10, -0.9}, 0.51, true, "a within w of P3"},
        {{10, -0.5}, {10, -0.9}, 0.5, false, "a at exactly w from P3"},
        {{10, -0.9}, {10, -0.5}, 0.51, true, "b within w of P3"},
        {{0, -0.5}, {0, -0.9}, 0.51, true, "a within w of P0"},
        {{-3, -0.5}, {3, -0.5}, 0.6, true, "P0's foot on the segment within w"},
        {{-3, -0.5}, {3, -0.5}, 0.5, false, "P0's foot at exactly w"},
        {{1, -0.5}, {3, -0.5}, 0.6, false, "P0's foot beyond a"},
        {{7, -0.5}, {13, -0.5}, 0.6, true, "P3's foot on the segment within w"},
        {{5, 5}, {5, 20}, 0, true, "crossing, w = 0"},
        {{5, 5}, {5, 7}, 0.1, false, "short of the curve"},
        {{5, 8}, {5, 9}, 0.6, true, "a within w of the curve's middle"},
        {{5, 9}, {5, 8}, 0.6, true, "b within w of the curve's middle"},
        {{5, 8}, {5, 9}, 0.49, false, "a just beyond w of the curve"},
        {{4, 5}, {4, 5}, 2.2, true, "a point within w of the curve (distance 2.1745)"},
        {{4, 5}, {4, 5}, 2.1, false, "a point beyond w of the curve"},
    };
    for (const auto& c : cases) EXPECT_EQ(DoesFatlineIntersectBezier(h, c.a, c.b, c.w), c.hit) << c.what;
    EXPECT_FALSE(DoesFatlineIntersectBezier(nullptr, {0, 0}, {1, 1}, 5));
}

TEST(BezierFatline, Segments) {
    // Expected as given (hit) and with p and q exchanged (swapped).
    const struct { P p0, p1, q0, q1; double w; bool hit, swapped; const char* what; } cases[] = {
        {{0, 0}, {10, 0}, {10, 0}, {15, 5}, 0, false, false, "shared end point, w = 0"},
        {{0, 0}, {10, 0}, {10, 0}, {15, 5}, 1e-9, true, true, "shared end point, w > 0"},
        {{0, 0}, {10, 10}, {0, 10}, {10, 0}, 0, true, true, "proper crossing"},
        {{0, 0}, {10, 0}, {0, 1}, {10, 1}, 1, false, false, "parallel at distance w"},
        {{0, 0}, {10, 0}, {0, 1}, {10, 1}, 1.01, true, true, "parallel within w"},
        {{0, 0}, {10, 0}, {5, 0}, {15, 0}, 0, false, false, "collinear overlap, w = 0"},
        {{0, 0}, {10, 0}, {5, 0}, {15, 0}, 0.1, true, true, "collinear overlap, w > 0"},
        // Exchanged, the bar's ends straddle the stem's line and the stem's end is on the bar's line.
        {{0, 0}, {10, 0}, {5, 0}, {5, 5}, 0, false, true, "T touch, w = 0"},
        {{0, 0}, {10, 0}, {5, 0.5}, {5, 5}, 0.5, false, false, "gap of exactly w"},
        {{0, 0}, {10, 0}, {12, -1}, {12, 1}, 0, false, false, "lines cross beyond p1"},
        {{0, 0}, {10, 0}, {10.5, -5}, {10.5, 5}, 1, true, true, "p1 within w of q, beyond its ends' reach"},
        {{0, 0}, {10, 0}, {5, -1}, {5, -3}, 0, false, false, "q on one side"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(DoesFatlineIntersectLine(c.p0, c.p1, c.q0, c.q1, c.w), c.hit) << c.what;
        EXPECT_EQ(DoesFatlineIntersectLine(c.q0, c.q1, c.p0, c.p1, c.w), c.swapped) << c.what << " (swapped)";
    }
}

TEST(BezierIntersections, NonFiniteInputTerminates) {
    // Each function returns on curves, lines and widths holding NaN or infinities, also against finite partners,
    // and the line results stay paired.
    using qtest::kInf;
    using qtest::kNaN;
    const P good[4] = {{0, 0}, {0, 40}, {40, 40}, {40, 0}}, lines[][2] = {{{0, 10}, {40, 10}}, {{kNaN, 1}, {4, 1}}, {{0, kInf}, {4, 1}}};
    const P bad[][4] = {{{kNaN, 0}, {0, 40}, {40, 40}, {40, 0}}, {{0, 0}, {kInf, 40}, {40, -kInf}, {40, 0}},
                        {{0, 0}, {0, 40}, {40, 40}, {kNaN, kNaN}}};
    for (const auto& b : bad) {
        for (const P* q : {good, b}) Intersect(b, q), Intersect(q, b), DoBeziersIntersect(b, q);
        for (const P* c : {good, b})
            for (const auto& L : lines) {
                std::vector<double> ts, ss;
                FindBezierLineIntersection(c, L, ts, ss, true);
                EXPECT_EQ(ts.size(), ss.size());
                FindBezierIntersectionsAtX(c, L[0].x, ts, true), DoesBezierIntersectLineSegment(c, L);
                DoesFatlineIntersectBezier(c, L[0], L[1], 1), DoesFatlineIntersectLine(c[0], c[3], L[0], L[1], 1);
            }
        const qtest::Basis B(b);
        double k[10];
        ConvertBezierToImplicit(B.a, B.b, B.c, B.d, k[0], k[1], k[2], k[3], k[4], k[5], k[6], k[7], k[8], k[9]);
    }
    DoesFatlineIntersectBezier(good, {5, 5}, {5, 20}, kNaN), DoesFatlineIntersectLine({0, 0}, {1, 1}, {0, 1}, {1, 0}, kInf);
}
