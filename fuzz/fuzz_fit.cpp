// Feeds the fitting and offset family arbitrary input: tridiagonal systems of
// any rows (open and cyclic, scalar and point right-hand sides, shorter and
// longer than the system, copied and moved), chord-length parameters, every
// least-squares fitter on 0 to 64 points (raw values, samples of a cubic with
// or without jitter, a small integer grid, runs of repeated points, NaN and
// infinities) with any parameters, tangents, split and pass count, and the
// offset functions on any curve, distance and tolerance. Nothing may crash,
// hang or trip a sanitizer. Beyond that only what the contracts always promise
// is checked: result sizes, untouched outputs where nothing is fitted, pinned
// end points, normalised parameters, errors that are never negative or NaN,
// the point solve agreeing with two scalar ones, ascending cuts from 0 to 1
// and four offset points per piece.

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

#include "QorMath/bezier.h"
#include "QorMath/fitting.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;

constexpr double kMarker = 123.25;
const P kKept{kMarker, -kMarker};

class Input : public qfuzz::ByteReader {
public:
    using ByteReader::ByteReader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 0.25, 100.0, 1e-7, 1e-300, DBL_EPSILON, DBL_MIN,
                                   4.9e-324, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 1e154, -1e154, 1e16, 1.0 / 3.0,
                                   1e-5, 0.005, 1.0 / 64, 2147483647.0, 1e-17, 0.1};
        return Tagged(k, 80, 176, 1 / 4.0);
    }
    int Int() {
        static const int k[] = {0, 1, 2, 3, 4, 5, -1, INT_MIN, INT_MAX, 63, 64, 65, INT_MIN + 1, INT_MAX - 1};
        return Tagged(k, 48, 224, 1.0);
    }
    double T() {  // mostly in [0, 1]
        const uint8_t tag = Byte();
        return tag < 192 ? tag / 191.0 : D();
    }
    P Pt() { return {D(), D()}; }
    int Count() { return Byte() % 65; }
    int Passes() {  // 0..30, now and then negative
        const uint8_t tag = Byte();
        return tag < 248 ? tag % 31 : std::min(Int(), -1);
    }
};

template <typename T>
bool Same(const T& x, const T& y) { return std::memcmp(&x, &y, sizeof(T)) == 0; }
bool SameOrNaN(double x, double y) { return Same(x, y) || (std::isnan(x) && std::isnan(y)); }
bool Finite(const P& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

template <typename F>
bool ThrowsLengthError(F call) {
    try {
        call();
    } catch (const std::length_error&) {
        return true;
    }
    return false;
}

void Fill(P* out, int n) {
    for (int i = 0; i < n; ++i) out[i] = kKept;
}
bool Kept(const P* out, int n) {
    for (int i = 0; i < n; ++i)
        if (!Same(out[i], kKept)) return false;
    return true;
}
// The fitted cubic starts and ends on the first and last data point, to the bit.
bool Pinned(const P* out, const std::vector<P>& p) { return Same(out[0], p.front()) && Same(out[3], p.back()); }

// ---- Data ------------------------------------------------------------------------

// count points: raw values, samples of a cubic (at equal or read parameters,
// optionally jittered), or a small integer grid; then perhaps runs of repeats.
std::vector<P> Points(Input& in, int count) {
    std::vector<P> p(static_cast<size_t>(count));
    const uint8_t mode = in.Byte();
    if (mode % 3 == 1) {
        P c[4], a, b, cc, d;
        for (P& q : c) q = in.Pt();
        CubicBezier::GetPowerBasis(c, a, b, cc, d);
        const double jitter = (mode & 8) ? in.D() : 0.0;
        for (int i = 0; i < count; ++i) {
            const double t = (mode & 4) ? in.T() : count == 1 ? 0.0 : double(i) / (count - 1);
            p[size_t(i)] = CubicBezier::Evaluate(a, b, cc, d, t);
            if (jitter != 0) {
                p[size_t(i)].x += jitter * static_cast<int8_t>(in.Byte()) / 128;
                p[size_t(i)].y += jitter * static_cast<int8_t>(in.Byte()) / 128;
            }
        }
    } else if (mode % 3 == 2) {
        for (P& q : p) q = {double(static_cast<int8_t>(in.Byte()) % 8), double(static_cast<int8_t>(in.Byte()) % 8)};
    } else {
        for (P& q : p) q = in.Pt();
    }
    if (mode & 0x10) {
        const uint8_t pattern = in.Byte();
        for (int i = 1; i < count; ++i)
            if ((pattern >> (i % 8)) & 1) p[size_t(i)] = p[size_t(i) - 1];
    }
    return p;
}

// Parameters for the overloads that take them: chord lengths, equal steps, or anything.
std::vector<double> Params(Input& in, const std::vector<P>& p) {
    std::vector<double> u(p.size());
    const uint8_t mode = in.Byte() % 4;
    if (mode < 2 && !p.empty()) {
        Calculate_u(p.data(), int(p.size()), u);
    } else if (mode == 2) {
        for (size_t i = 0; i < u.size(); ++i) u[i] = u.size() > 1 ? double(i) / double(u.size() - 1) : 0.0;
    } else {
        for (double& v : u) v = in.D();
    }
    return u;
}

V Tangent(Input& in, const std::vector<P>& p, bool atEnd) {
    switch (in.Byte() % 4) {
        case 0: return {in.D(), in.D()};
        case 1:
            if (p.size() >= 2) {
                const P& from = atEnd ? p[p.size() - 2] : p[0];
                const P& to = atEnd ? p.back() : p[1];
                return {to.x - from.x, to.y - from.y};
            }
            return {1, 0};
        case 2: return {0, 1};
        default: return {0, 0};
    }
}

// ---- Tridiagonal systems -----------------------------------------------------------

std::vector<double> Solve(const TridiagonalMatrix& m, const std::vector<double>& d, bool cyclic) {
    std::vector<double> x = m.Solve(d, cyclic);
    CHECK(x.size() == d.size());
    return x;
}

bool SameSolution(const std::vector<double>& x, const std::vector<double>& y) {
    if (x.size() != y.size()) return false;
    for (size_t i = 0; i < x.size(); ++i)
        if (!SameOrNaN(x[i], y[i])) return false;
    return true;
}

void Tridiagonal(Input& in) {
    TridiagonalMatrix m;
    const size_t n = in.Byte() % 17;
    double a0 = 0, b0 = 0, c0 = 0;
    for (size_t i = 0; i < n; ++i) {
        const double a = in.D(), b = in.D(), c = in.D();
        if (i == 0) a0 = a, b0 = b, c0 = c;
        m.AddRow(a, b, c);
        CHECK(m.Rows() == i + 1);
    }
    const bool cyclic = in.Byte() & 1;
    const size_t size = size_t(std::max(0, int(n) + in.Byte() % 5 - 2));  // n − 2 .. n + 2
    std::vector<double> dx(size), dy(size);
    std::vector<P> dp(size);
    for (size_t i = 0; i < size; ++i) dx[i] = in.D(), dy[i] = in.D(), dp[i] = {dx[i], dy[i]};

    const std::vector<double> x = Solve(m, dx, cyclic), y = Solve(m, dy, cyclic);
    const std::vector<P> xy = m.Solve(dp, cyclic);
    CHECK(xy.size() == size);
    const bool solved = n > 0 && size >= n;
    for (size_t i = 0; i < size; ++i) {
        CHECK(SameOrNaN(xy[i].x, x[i]) && SameOrNaN(xy[i].y, y[i]));  // two scalar solves in one
        if (!solved || i >= n) CHECK(Same(x[i], 0.0) && Same(xy[i], P{0.0, 0.0}));
    }
    if (solved && n == 1) CHECK(SameOrNaN(x[0], dx[0] / (cyclic ? a0 + b0 + c0 : b0)));

    // Copies solve alike; a moved-from matrix has no rows and solves to zeros.
    TridiagonalMatrix copy(m), assigned;
    assigned = m;
    CHECK(copy.Rows() == n && assigned.Rows() == n && SameSolution(Solve(copy, dx, cyclic), x));
    TridiagonalMatrix& alias = assigned;
    assigned = alias;
    assigned = std::move(alias);
    CHECK(assigned.Rows() == n && SameSolution(Solve(assigned, dx, cyclic), x));
    TridiagonalMatrix moved(std::move(copy));
    CHECK(copy.Rows() == 0 && moved.Rows() == n);
    for (double v : Solve(copy, dx, cyclic)) CHECK(Same(v, 0.0));
    assigned = std::move(moved);
    CHECK(moved.Rows() == 0 && assigned.Rows() == n);
}

// ---- Chord-length parameters -------------------------------------------------------

void ChordLength(Input& in) {
    const int count = in.Byte() < 240 ? in.Count() : std::min(in.Int(), 64);  // any non-positive count
    const std::vector<P> p = Points(in, std::max(count, 0));
    std::vector<double> u(in.Byte() % 3, kMarker);
    if (count <= 0) {
        CHECK(ThrowsLengthError([&] { Calculate_u(p.data(), count, u); }));
        return;
    }
    Calculate_u(p.data(), count, u);
    CHECK(u.size() == size_t(count) && u.back() == 1.0 && (count == 1 || u[0] == 0.0));
    // Non-decreasing, and at most 1 up to rounding, wherever nothing overflowed.
    bool finite = true;
    for (double v : u) finite = finite && std::isfinite(v);
    if (!finite) return;
    for (int i = 1; i + 1 < count; ++i) CHECK(u[size_t(i)] >= u[size_t(i) - 1] && u[size_t(i)] <= 1 + 1e-12);
}

// ---- Least-squares fits --------------------------------------------------------------

struct FitInput {
    int count;
    std::vector<P> p;
    std::vector<double> u;
    V t0, t1;
    int passes;
    explicit FitInput(Input& in) : count(in.Count()), p(Points(in, count)), u(Params(in, p)) {
        t0 = Tangent(in, p, false);
        t1 = Tangent(in, p, true);
        passes = in.Passes();
    }
    bool Normalised() const { return u.front() == 0.0 && u.back() == 1.0; }
};

void FitTangent(Input& in) {
    FitInput f(in);
    const double tolerance = in.Byte() & 1 ? in.D() : -1.0;
    double worst = kMarker;
    double* worstOut = in.Byte() & 1 ? &worst : nullptr;
    P out[4];
    Fill(out, 4);
    const double e = LeastSquares(f.p.data(), f.u.data(), f.count, f.t0, f.t1, out, f.passes, worstOut, tolerance);
    CHECK(e >= 0);  // a largest squared distance, or DBL_MAX: never negative, never NaN
    if (f.count <= 1) {
        CHECK(e == DBL_MAX && Kept(out, 4));
    } else if (f.count == 2) {
        CHECK(e == 0.0 && Pinned(out, f.p));
    } else if (f.count == 3 || f.passes >= 1) {
        CHECK(Pinned(out, f.p) && f.Normalised());
    } else {
        CHECK(e == DBL_MAX);
    }

    Fill(out, 4);
    if (f.count == 0) {
        CHECK(ThrowsLengthError([&] { LeastSquares(f.p.data(), 0, f.t0, f.t1, out, f.passes); }));
        return;
    }
    const double w = LeastSquares(f.p.data(), f.count, f.t0, f.t1, out, f.passes);
    CHECK(w >= 0);
    if (f.count == 1) CHECK(w == DBL_MAX && Kept(out, 4));
    if (f.count == 2 || (f.count >= 3 && f.passes >= 1)) CHECK(Pinned(out, f.p));
}

void FitFree(Input& in) {
    FitInput f(in);
    double worst = kMarker;
    P out[4];
    Fill(out, 4);
    const double e = LeastSquares(f.p.data(), f.u.data(), f.count, out, f.passes, in.Byte() & 1 ? &worst : nullptr);
    CHECK(e >= 0);
    if (f.count <= 1) CHECK(e == DBL_MAX && Kept(out, 4));
    if (f.count == 2) CHECK(e == 0.0 && Pinned(out, f.p));
    if (f.count >= 3) CHECK(f.Normalised() && (f.passes >= 1 || (e == DBL_MAX && Kept(out, 4))));

    Fill(out, 4);
    if (f.count == 0) {
        CHECK(ThrowsLengthError([&] { LeastSquares(f.p.data(), 0, out, f.passes); }));
        return;
    }
    const double w = LeastSquares(f.p.data(), f.count, out, f.passes);
    CHECK(w >= 0);
    if (f.count == 1 || (f.count >= 3 && f.passes < 1)) CHECK(w == DBL_MAX && Kept(out, 4));
}

// Two joined cubics: either the caller's outputs untouched, or a solved pair
// from the first point through a shared joint to the last.
bool JoinedOrKept(const P* out1, const P* out2, const std::vector<P>& p) {
    if (Kept(out1, 4) && Kept(out2, 4)) return true;
    return Same(out1[0], p.front()) && Same(out2[3], p.back()) && Same(out1[3], out2[0]);
}

void FitTwo(Input& in) {
    FitInput f(in);
    const int split = in.Byte() & 1 ? in.Int() : in.Byte() % 66;
    P out1[4], out2[4];
    Fill(out1, 4), Fill(out2, 4);
    const bool fits = f.count >= 5 && split >= 1 && split <= f.count - 1;
    const double e = LeastSquares(f.p.data(), f.u.data(), f.count, split, f.t0, f.t1, out1, out2, f.passes);
    CHECK(e >= 0);
    if (!fits || f.passes < 1) CHECK(e == DBL_MAX && Kept(out1, 4) && Kept(out2, 4));
    if (fits) CHECK(f.Normalised() && JoinedOrKept(out1, out2, f.p));

    Fill(out1, 4), Fill(out2, 4);
    if (f.count == 0) {
        CHECK(ThrowsLengthError([&] { LeastSquares(f.p.data(), 0, split, f.t0, f.t1, out1, out2, f.passes); }));
        return;
    }
    const double w = LeastSquares(f.p.data(), f.count, split, f.t0, f.t1, out1, out2, f.passes);
    CHECK(w >= 0);
    if (!fits || f.passes < 1) CHECK(w == DBL_MAX && Kept(out1, 4) && Kept(out2, 4));
    if (fits) CHECK(JoinedOrKept(out1, out2, f.p));
}

void Regression(Input& in) {
    const int count = in.Count();
    const std::vector<P> p = Points(in, count);
    const size_t before = in.Byte() % 3;
    std::vector<double> c(before, kMarker);
    const bool ok = LeastSquares(p.data(), static_cast<unsigned long long>(count), c);
    CHECK(c.size() == before + (ok ? 3 : 0) && (count >= 3 || !ok));
    for (size_t i = 0; i < before; ++i) CHECK(Same(c[i], kMarker));
}

// ---- Offsets -------------------------------------------------------------------------

void Curve(Input& in, P pts[4]) {
    for (int i = 0; i < 4; ++i) pts[i] = in.Pt();
    const uint8_t mask = in.Byte();  // collapsed handles, closed curves
    for (int i = 1; i < 4; ++i)
        if (mask & (1 << i)) pts[i] = pts[i - 1];
    if (mask & 0x80) pts[3] = pts[0];
}

double Distance(Input& in) { return in.Byte() < 128 ? static_cast<int8_t>(in.Byte()) * 0.5 : in.D(); }
double Tolerance(Input& in) { return in.Byte() < 160 ? (in.Byte() + 1) / 256.0 : in.D(); }

void OffsetCurve(Input& in) {
    P pts[4];
    Curve(in, pts);
    const double d = Distance(in);
    P a, b, c, k;
    CubicBezier::GetPowerBasis(pts, a, b, c, k);
    const bool valid = IsBezierValidForOffset(pts, d);
    CHECK(valid == IsBezierValidForOffset(a, b, c, d));
    if (d == 0 || std::isnan(d)) CHECK(valid);
    const P ra = in.Pt(), rb = in.Pt(), rc = in.Pt();
    CHECK(IsBezierValidForOffset(ra, rb, rc, 0.0));

    const double tolerance = Tolerance(in);
    P out[4];
    double status = kMarker;
    const bool fits = FindBezierOffsetCurve(pts, out, d, tolerance, status);
    CHECK(status == 0.5);
    if (!(tolerance > 0)) CHECK(!fits);  // the error is never negative
}

void Offsets(Input& in) {
    P pts[4];
    Curve(in, pts);
    const double d = Distance(in), tolerance = Tolerance(in);
    const bool early = !(Finite(pts[0]) && Finite(pts[1]) && Finite(pts[2]) && Finite(pts[3])) ||
                       !std::isfinite(d) || std::isnan(tolerance);
    std::vector<double> cuts(in.Byte() % 3, kMarker);
    const bool ok = GetSegmentsToOffset(pts, d, tolerance, cuts);
    CHECK(cuts.size() >= 2 && Same(cuts.front(), 0.0) && Same(cuts.back(), 1.0));
    for (size_t i = 1; i < cuts.size(); ++i) CHECK(cuts[i] > cuts[i - 1]);
    if (early) CHECK(cuts.size() == 2 && !ok);

    const size_t before = in.Byte() % 5;
    std::vector<P> out(before, kKept);
    CHECK(OffsetBezier(pts, d, tolerance, out) == ok);
    for (size_t i = 0; i < before; ++i) CHECK(Same(out[i], kKept));
    const size_t pieces = (out.size() - before) / 4;
    CHECK((out.size() - before) % 4 == 0);
    // An infinite tolerance is not named among the non-finite inputs: either reading passes.
    if (early) CHECK(pieces == 0);
    else CHECK(pieces == cuts.size() - 1 || (std::isinf(tolerance) && pieces == 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {Tridiagonal, ChordLength, FitTangent, FitFree,
                                          FitTwo,      Regression,  OffsetCurve, Offsets};
    Input in(data, size);
    for (int op = 0; op < 8 && in.Left() > 0; ++op) ops[in.Byte() % 8](in);
    return 0;
}
