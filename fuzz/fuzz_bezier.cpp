// Feeds arbitrary numbers (NaN, infinities, subnormals, huge and int32-extreme values) to the cubic Bezier core (split,
// subsection, construction from three points, flattening) and to the internal polynomial root solvers of every degree.
// Nothing may crash, hang or trip a sanitizer. Beyond that only what the contracts promise is checked: root counts
// within 0..degree + 2 and nothing written past them; pieces that share a point agree on it and keep the copied end
// points; integer forms equal to the rounded double ones; line counts, the copied end points of the flattening and
// its points inside the control points' box.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "../tests/bezier/solve_by_degree.h"
#include "QorMath/bezier.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using namespace QorMath::CubicBezier;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;

class Input : public qfuzz::Reader<Input> {
public:
    using Reader::Reader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 0.25, 0.75, 1e-7, 1e-9, DBL_EPSILON, DBL_MIN,
                                   4.9e-324, 1e-310, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 2147483647.0,
                                   -2147483648.0, 2147483647.5, -2147483648.5, 1e300, -1e300, 1e-300, 1e16,
                                   1e-17, 0.1, 1.0 / 3.0, 1 - DBL_EPSILON / 2, 1 + DBL_EPSILON};
        return Tagged(k, 80, 176, 1 / 4.0);
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1, 1073741824,
                                    -1073741824, 650, 649, 160, 159, 30, 29};
        return Tagged(k, 64, 176, 8);
    }
    // A line count or maximum around the range callers use: -4 .. 4091.
    int Count() {
        const int low = Byte(), high = Byte() & 0x0f;
        return (low | high << 8) - 4;
    }
};

template <typename T>
bool Same(const T* x, const T* y, size_t n = 1) { return qfuzz::SameN(x, y, n); }

// The integer forms run the double ones on the converted points and round each output coordinate once.
void ToDouble(const tagPOINT* p, P* out, size_t n) {
    for (size_t i = 0; i < n; ++i) out[i] = {double(p[i].x), double(p[i].y)};
}
bool SameRounded(const P* d, const tagPOINT* p, size_t n) {
    for (size_t i = 0; i < n; ++i)
        if (RoundToInt(d[i].x) != p[i].x || RoundToInt(d[i].y) != p[i].y) return false;
    return true;
}

// Flattening forms the integer differences P2 − P1 and P1 − P0 in int32, wrapping for points more than 2³¹ apart;
// inside ±2³⁰ nothing wraps and the integer curve is the double one.
bool Narrow(const tagPOINT pts[4]) {
    for (int i = 0; i < 4; ++i)
        if (std::abs(int64_t(pts[i].x)) >= 1 << 30 || std::abs(int64_t(pts[i].y)) >= 1 << 30) return false;
    return true;
}

// Every point of the curve over [0, 1] lies in the control points' box (the convex hull property). Evaluation rounds,
// so in double the box is widened by a few hundred ulps of the largest coordinate (the power basis reaches 8 times
// it); integer points are rounded from there into whole-number bounds, which they then keep exactly. Curves with
// non-finite coordinates, whose basis may overflow, or whose integer differences may wrap, are skipped.
template <typename Pt>
bool InBox(const Pt pts[4], const Pt* out, int n) {
    if constexpr (std::is_same_v<Pt, tagPOINT>) {
        if (!Narrow(pts)) return true;
    }
    double lo[2] = {qfuzz::kInf, qfuzz::kInf}, hi[2] = {-qfuzz::kInf, -qfuzz::kInf}, largest = 0;
    for (int i = 0; i < 4; ++i) {
        const double c[2] = {double(pts[i].x), double(pts[i].y)};
        for (int k = 0; k < 2; ++k) {
            if (!std::isfinite(c[k])) return true;
            lo[k] = std::min(lo[k], c[k]), hi[k] = std::max(hi[k], c[k]);
            largest = std::max(largest, std::fabs(c[k]));
        }
    }
    if (largest > 1e300) return true;
    const double slack = std::is_same_v<Pt, tagPOINT> ? 0.0 : 256 * DBL_EPSILON * largest + 1e-300;
    for (int i = 0; i <= n; ++i) {
        const double c[2] = {double(out[i].x), double(out[i].y)};
        for (int k = 0; k < 2; ++k)
            if (!(c[k] >= lo[k] - slack && c[k] <= hi[k] + slack)) return false;
    }
    return true;
}

// ---- root solvers ------------------------------------------------------------

// Room for degree + 2 roots, then guard values that must survive.
void CheckedSolve(const std::vector<double>& c, bool ends) {
    const int n = int(c.size()) - 1;
    qfuzz::Guarded(n + 2, [&](double* r) { return qtest::SolveByDegree(c.data(), n, r, ends); });
}

void Roots(Input& in) {
    const int n = 1 + in.Byte() % 12;
    const bool ends = in.Byte() & 1;
    std::vector<double> c(n + 1);
    if (in.Byte() & 1) {
        for (double& v : c) v = in.D();
    } else {
        // lead·Π(t − rᵢ) with roots on a 1/256 grid around [0, 1]: multiple and clustered roots, roots at and
        // next to the ends.
        std::vector<long double> p{in.D()};
        for (int i = 0; i < n; ++i) {
            long double root = (int(in.Byte()) - 32) / 192.0L;
            if (in.Byte() % 8 == 0) root += in.D() * 1e-9L;
            p.push_back(0);
            for (size_t j = p.size() - 1; j > 0; --j) p[j] -= root * p[j - 1];
        }
        for (int i = 0; i <= n; ++i) c[i] = double(p[i]);
    }
    CheckedSolve(c, ends);
    // Zero leading and trailing coefficients take the fallback chains.
    const int shift = in.Byte() % 4;
    if (shift > 0 && n + shift <= 12) {
        std::vector<double> padded(c);
        padded.insert(in.Byte() & 1 ? padded.begin() : padded.end(), shift, 0.0);
        CheckedSolve(padded, ends);
    }
}

// ---- split, subsection, construction -------------------------------------------

// The integer forms round the double ones once at the end, so the same promises hold for both. Split(t0, t1) writes
// LeftOf(t0), then Subsection(t0, t1) over out[3], then RightOf(t1) over out[6].
template <typename Pt>
void Splits(Input& in) {
    Pt pts[4], left[4], right[4], seven[7], ten[10], piece[4];
    in.Read(pts, 4);
    const double t = in.T(), t0 = in.T(), t1 = in.T();
    Split(t, pts, left, right);
    CHECK(Same(left, pts) && Same(right + 3, pts + 3) && Same(left + 3, right));
    Split(t, pts, seven);
    CHECK(Same(seven, left, 4) && Same(seven + 3, right, 4));
    LeftOf(t, pts, piece);
    CHECK(Same(piece, left, 4));
    RightOf(t, pts, piece);
    CHECK(Same(piece, right, 4));
    // In place on a piece an earlier call wrote; only the double form reads a parameter for it.
    RightOf(std::is_same_v<Pt, P> ? in.T() : t0, piece, piece);
    Split(pts, left, right);  // midpoints; in int32, wrapping, for integer points
    CHECK(Same(left, pts) && Same(right + 3, pts + 3) && Same(left + 3, right));
    Split(t0, t1, pts, ten);
    Subsection(t0, t1, pts, piece);
    CHECK(Same(ten + 3, piece, 3));
    LeftOf(t0, pts, piece);
    CHECK(Same(ten, piece, 3));
    RightOf(t1, pts, piece);
    CHECK(Same(ten + 6, piece, 4) && Same(ten + 9, pts + 3));
    if constexpr (std::is_same_v<Pt, tagPOINT>) {
        P d[4], dl[4], dr[4], d7[7], d10[10], dp[4];
        ToDouble(pts, d, 4);
        Split(t, pts, left, right), Split(t, d, dl, dr);
        CHECK(SameRounded(dl, left, 4) && SameRounded(dr, right, 4));
        Split(t, d, d7);
        CHECK(SameRounded(d7, seven, 7));
        Split(t0, t1, d, d10);
        CHECK(SameRounded(d10, ten, 10));
        Subsection(t0, t1, pts, piece), Subsection(t0, t1, d, dp);
        CHECK(SameRounded(dp, piece, 4));
        LeftOf(t0, pts, piece), LeftOf(t0, d, dp);
        CHECK(SameRounded(dp, piece, 4));
        RightOf(t1, pts, piece), RightOf(t1, d, dp);
        CHECK(SameRounded(dp, piece, 4));
    }
}

void Construction(Input& in) {
    const P a = in.Pt(), m = in.Pt(), b = in.Pt();
    const tagPOINT ends[2] = {{RoundToInt(a.x), RoundToInt(a.y)}, {RoundToInt(b.x), RoundToInt(b.y)}};
    const auto keepsEnds = [&ends](const tagPOINT o[4]) { return Same(o, ends) && Same(o + 3, ends + 1); };
    tagPOINT out[4], kept[4];
    From3Points(out, a, m, b, in.Byte() & 1);
    CHECK(keepsEnds(out));
    const V s{in.D(), in.D()}, e{in.D(), in.D()};
    in.Read(kept, 4);
    std::memcpy(out, kept, sizeof out);
    CHECK(From3Points(out, a, s, m, b, e) ? keepsEnds(out) : Same(out, kept, 4));
}

// ---- flattening ----------------------------------------------------------------

// CalculateNumBezierLines gives m, m / 2, m / 4 or m / 8.
bool SizeClass(int lines, int m) { return lines == m || lines == m / 2 || lines == m / 4 || lines == m / 8; }

// Outputs are sized exactly as the contract asks, so that AddressSanitizer sees any write past them: maximum + 1
// points, n + 1 for the uniform form.
template <typename Pt>
void Flatten(Input& in) {
    Pt pts[4];
    in.Read(pts, 4);
    const int m = in.I();
    CHECK(SizeClass(CalculateNumBezierLines(pts, m), m));

    const int n = in.Count();
    const Pt marker = pts[1];
    std::vector<Pt> uniform(std::max(n, 0) + 1, marker);
    BezierToLines(pts, uniform.data(), n);
    CHECK(n < 0 ? Same(&uniform[0], &marker) : Same(&uniform[n], pts + 3) && (n == 0 || Same(&uniform[0], pts)));
    CHECK(n < 0 || InBox(pts, uniform.data(), n));
    if constexpr (std::is_same_v<Pt, tagPOINT>) {
        if (n > 0 && Narrow(pts)) {
            P d[4];
            ToDouble(pts, d, 4);
            std::vector<P> evaluated(size_t(n) + 1);
            BezierToLines(d, evaluated.data(), n);
            CHECK(SameRounded(evaluated.data(), uniform.data(), size_t(n) + 1));
        }
    }

    const int most = in.Count();
    const double tol = in.D();
    std::vector<Pt> out(std::max(most, 0) + 1, marker);
    const int count = AdaptiveBezierToLines(pts, out.data(), tol, most);
    if (most < 1) {
        CHECK(count == 0 && Same(&out[0], &marker));
    } else {  // one line, or an even count up to 2^⌊log2 most⌋
        CHECK(most == 1 ? count == 1 : count >= 2 && count % 2 == 0 && count <= 1 << std::ilogb(double(most)));
        CHECK(Same(&out[0], pts) && Same(&out[count], pts + 3) && InBox(pts, out.data(), count));
    }
    if constexpr (std::is_same_v<Pt, tagPOINT>) {
        const tagRECT box{in.I(), in.I(), in.I(), in.I()};
        const int boxMaximum = in.I();
        CHECK(SizeClass(CalculateNumBezierLines(box, boxMaximum), boxMaximum));
    }

    // A huge maximum with a tolerance far above the curve's squared size: the first flatness tests pass, so only a
    // few lines come out although the room is much smaller than maximum + 1. Integer-valued coordinates keep every
    // chord either zero or far from underflow.
    using C = decltype(Pt::x);
    Pt small[4];
    for (Pt& p : small) p = {C(static_cast<int8_t>(in.Byte()) * 4096), C(static_cast<int8_t>(in.Byte()) * 4096)};
    std::vector<Pt> room(1025);
    const int huge = std::numeric_limits<int>::max() - in.Byte();
    const int few = AdaptiveBezierToLines(small, room.data(), 1e16 * (1 + in.Byte()), huge);
    CHECK(few >= 2 && few <= 16 && few % 2 == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {Roots,        Splits<P>,  Splits<tagPOINT>,
                                          Construction, Flatten<P>, Flatten<tagPOINT>};
    return qfuzz::Run(data, size, ops, 32);
}
