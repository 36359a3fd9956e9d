// Feeds arbitrary numbers (NaN, infinities, subnormals, huge and int32-extreme
// values) to the cubic Bezier core (split, subsection, construction from three
// points, flattening) and to the internal polynomial root solvers of every
// degree. Nothing may crash, hang or trip a sanitizer. Beyond that only what the
// contracts promise is checked: root counts within 0..degree + 2 and nothing
// written past them; pieces that share a point agree on it and keep the copied
// end points; line counts and the copied end points of the flattening.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "QorMath/bezier.h"
#include "bezier/bernstein.h"
#include "bezier/roots.h"

// Aborts, so that libFuzzer keeps the input, when a promise is broken.
#define CHECK(c) \
    ((c) ? (void)0 : (std::fprintf(stderr, "check failed, line %d: %s\n", __LINE__, #c), std::abort()))

namespace {
using namespace QorMath;
using namespace QorMath::CubicBezier;
using P = vector2dT<double, 1>;
using V = vector2dT<double, 0>;
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Reads values off the input, zeros once it is used up. A tag byte picks an
// awkward value from a table, a small number, or raw bits.
class Input {
public:
    Input(const uint8_t* d, size_t n) : d_(d), n_(n) {}
    size_t Left() const { return n_; }
    uint8_t Byte() { return n_ ? (--n_, *d_++) : 0; }
    template <typename T>
    T Raw() {  // little-endian bytes, zero-padded at the end of the input
        uint64_t bits = 0;
        for (size_t i = 0; i < sizeof(T); ++i) bits |= uint64_t(Byte()) << (8 * i);
        T v;
        std::memcpy(&v, &bits, sizeof v);
        return v;
    }
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 0.25, 0.75, 1e-7, 1e-9, DBL_EPSILON, DBL_MIN,
                                   4.9e-324, 1e-310, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 2147483647.0,
                                   -2147483648.0, 2147483647.5, -2147483648.5, 1e300, -1e300, 1e-300, 1e16,
                                   1e-17, 0.1, 1.0 / 3.0, 1 - DBL_EPSILON / 2, 1 + DBL_EPSILON};
        const uint8_t tag = Byte();
        if (tag < 80) return k[tag % (sizeof k / sizeof *k)];
        if (tag < 176) return static_cast<int8_t>(Byte()) / 4.0;
        return Raw<double>();
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1, 1073741824,
                                    -1073741824, 650, 649, 160, 159, 30, 29};
        const uint8_t tag = Byte();
        if (tag < 64) return k[tag % (sizeof k / sizeof *k)];
        if (tag < 176) return static_cast<int8_t>(Byte()) * 8;
        return Raw<int32_t>();
    }
    // A parameter: mostly inside [0, 1], sometimes anything.
    double T() {
        const uint8_t tag = Byte();
        return tag < 192 ? tag / 191.0 : D();
    }
    // A line count or maximum around the range callers use: -4 .. 4091.
    int Count() {
        const int low = Byte(), high = Byte() & 0x0f;
        return (low | high << 8) - 4;
    }
    P Pt() { return {D(), D()}; }
    tagPOINT IPt() { return {I(), I()}; }

private:
    const uint8_t* d_;
    size_t n_;
};

template <typename T>
bool Same(const T& x, const T& y) {  // bitwise, so NaN matches NaN
    return std::memcmp(&x, &y, sizeof(T)) == 0;
}

// ---- root solvers ------------------------------------------------------------

constexpr int kGuards = 4;
constexpr double kGuard = -98765.4321;

int Solve(const double* c, int n, double* r, bool ends) {
    switch (n) {
        case 1: return FindLinearRoot(c, r, ends);
        case 2: return FindQuadraticRoots(c, r, ends);
        case 3: return FindCubicRoots(c, r, ends);
        case 4: return FindQuarticRoots(c, r, ends);
        case 5: return FindQuinticRoots(c, r, ends);
        case 6: return FindDegree6Roots(c, r);
        case 7: return FindDegree7Roots(c, r);
        case 8: return FindDegree8Roots(c, r);
        case 9: return FindDegree9Roots(c, r);
        case 10: return FindDegree10Roots(c, r);
        case 11: return FindDegree11Roots(c, r);
        default: {  // the bare degree-12 isolation of the offset-cusp search
            bernstein::RootList list{r, 0, 14};
            bernstein::AppendIsolatedRoots<12>(c, list);
            return list.count;
        }
    }
}

// Room for degree + 2 roots, then guard values that must survive.
void CheckedSolve(const std::vector<double>& c, bool ends) {
    const int n = int(c.size()) - 1;
    std::vector<double> r(n + 2 + kGuards, kGuard);
    const int count = Solve(c.data(), n, r.data(), ends);
    CHECK(count >= 0 && count <= n + 2);
    for (int i = n + 2; i < n + 2 + kGuards; ++i) CHECK(Same(r[i], kGuard));
}

void Roots(Input& in) {
    const int n = 1 + in.Byte() % 12;
    const bool ends = in.Byte() & 1;
    std::vector<double> c(n + 1);
    if (in.Byte() & 1) {
        for (double& v : c) v = in.D();
    } else {
        // lead·Π(t − rᵢ) with roots on a 1/256 grid around [0, 1]: multiple and
        // clustered roots, roots at and next to the ends.
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

void DoubleSplits(Input& in) {
    const P pts[4] = {in.Pt(), in.Pt(), in.Pt(), in.Pt()};
    const double t = in.T(), t0 = in.T(), t1 = in.T();
    P left[4], right[4], seven[7], ten[10], piece[4];
    Split(t, pts, left, right);
    CHECK(Same(left[0], pts[0]) && Same(right[3], pts[3]) && Same(left[3], right[0]));
    Split(t, pts, seven);
    CHECK(std::memcmp(seven, left, sizeof left) == 0 && std::memcmp(seven + 3, right, sizeof right) == 0);
    LeftOf(t, pts, piece);
    CHECK(std::memcmp(piece, left, sizeof left) == 0);
    RightOf(t, pts, piece);
    CHECK(std::memcmp(piece, right, sizeof right) == 0);
    RightOf(in.T(), piece, piece);  // in place on a piece an earlier call wrote
    Split(pts, left, right);
    CHECK(Same(left[0], pts[0]) && Same(right[3], pts[3]) && Same(left[3], right[0]));
    // Split(t0, t1) writes LeftOf(t0), then Subsection(t0, t1) over out[3], then
    // RightOf(t1) over out[6].
    Split(t0, t1, pts, ten);
    Subsection(t0, t1, pts, piece);
    CHECK(std::memcmp(ten + 3, piece, 3 * sizeof *piece) == 0);
    LeftOf(t0, pts, piece);
    CHECK(std::memcmp(ten, piece, 3 * sizeof *piece) == 0);
    RightOf(t1, pts, piece);
    CHECK(std::memcmp(ten + 6, piece, sizeof piece) == 0 && Same(ten[9], pts[3]));
}

void IntegerSplits(Input& in) {
    const tagPOINT pts[4] = {in.IPt(), in.IPt(), in.IPt(), in.IPt()};
    const double t = in.T(), t0 = in.T(), t1 = in.T();
    tagPOINT left[4], right[4], seven[7], ten[10], piece[4];
    Split(t, pts, left, right);
    CHECK(Same(left[0], pts[0]) && Same(right[3], pts[3]) && Same(left[3], right[0]));
    Split(t, pts, seven);
    CHECK(std::memcmp(seven, left, sizeof left) == 0 && std::memcmp(seven + 3, right, sizeof right) == 0);
    LeftOf(t, pts, piece);
    CHECK(std::memcmp(piece, left, sizeof left) == 0);
    RightOf(t, pts, piece);
    CHECK(std::memcmp(piece, right, sizeof right) == 0);
    Split(pts, left, right);  // int32 midpoints, wrapping
    CHECK(Same(left[0], pts[0]) && Same(right[3], pts[3]) && Same(left[3], right[0]));
    Split(t0, t1, pts, ten);
    Subsection(t0, t1, pts, piece);
    CHECK(std::memcmp(ten + 3, piece, 3 * sizeof *piece) == 0);
    RightOf(t1, pts, piece);
    CHECK(std::memcmp(ten + 6, piece, sizeof piece) == 0);
}

void Construction(Input& in) {
    const P a = in.Pt(), m = in.Pt(), b = in.Pt();
    tagPOINT out[4];
    From3Points(out, a, m, b, in.Byte() & 1);
    CHECK(out[0].x == RoundToInt(a.x) && out[0].y == RoundToInt(a.y));
    CHECK(out[3].x == RoundToInt(b.x) && out[3].y == RoundToInt(b.y));
    const V s{in.D(), in.D()}, e{in.D(), in.D()};
    tagPOINT kept[4];
    for (tagPOINT& p : kept) p = in.IPt();
    std::memcpy(out, kept, sizeof out);
    if (From3Points(out, a, s, m, b, e)) {
        CHECK(out[0].x == RoundToInt(a.x) && out[0].y == RoundToInt(a.y));
        CHECK(out[3].x == RoundToInt(b.x) && out[3].y == RoundToInt(b.y));
    } else {
        CHECK(std::memcmp(out, kept, sizeof out) == 0);
    }
}

// ---- flattening ----------------------------------------------------------------

int LargestPowerOfTwoAtMost(int m) {
    int p = 1;
    while (p <= m / 2) p *= 2;
    return p;
}

// Outputs are sized exactly as the contract asks, so that AddressSanitizer sees
// any write past them: maximum + 1 points, n + 1 for the uniform form.
template <typename Pt>
void Flatten(Input& in, const Pt pts[4]) {
    const int m = in.I();
    const int picks[] = {m / 8, m / 4, m / 2, m};
    const int lines = CalculateNumBezierLines(pts, m);
    CHECK(std::find(std::begin(picks), std::end(picks), lines) != std::end(picks));

    const int n = in.Count();
    const Pt marker = pts[1];
    std::vector<Pt> uniform(std::max(n, 0) + 1, marker);
    BezierToLines(pts, uniform.data(), n);
    if (n < 0) CHECK(Same(uniform[0], marker));
    if (n >= 1) CHECK(Same(uniform[0], pts[0]));
    if (n >= 0) CHECK(Same(uniform[n], pts[3]));

    const int most = in.Count();
    const double tol = in.D();
    std::vector<Pt> out(std::max(most, 0) + 1, marker);
    const int count = AdaptiveBezierToLines(pts, out.data(), tol, most);
    if (most < 1) {
        CHECK(count == 0 && Same(out[0], marker));
    } else if (most == 1) {
        CHECK(count == 1 && Same(out[0], pts[0]) && Same(out[1], pts[3]));
    } else {
        CHECK(count >= 2 && count % 2 == 0 && count <= LargestPowerOfTwoAtMost(most));
        CHECK(Same(out[0], pts[0]) && Same(out[count], pts[3]));
    }
}

// A huge maximum with a tolerance far above the curve's squared size: the
// first flatness tests pass, so only a few lines come out although the room is
// much smaller than maximum + 1. Integer-valued coordinates keep every chord
// either zero or far from underflow.
template <typename Pt>
void FlattenHugeMaximum(Input& in, const Pt pts[4]) {
    std::vector<Pt> out(1025);
    const int most = std::numeric_limits<int>::max() - in.Byte();
    const int count = AdaptiveBezierToLines(pts, out.data(), 1e16 * (1 + in.Byte()), most);
    CHECK(count >= 2 && count <= 16 && count % 2 == 0);
}

void FlattenDouble(Input& in) {
    const P pts[4] = {in.Pt(), in.Pt(), in.Pt(), in.Pt()};
    Flatten(in, pts);
    P small[4];
    for (P& p : small) p = {double(static_cast<int8_t>(in.Byte()) * 4096), double(static_cast<int8_t>(in.Byte()) * 4096)};
    FlattenHugeMaximum(in, small);
}

void FlattenInteger(Input& in) {
    const tagPOINT pts[4] = {in.IPt(), in.IPt(), in.IPt(), in.IPt()};
    Flatten(in, pts);
    const tagRECT box{in.I(), in.I(), in.I(), in.I()};
    const int m = in.I(), lines = CalculateNumBezierLines(box, m);
    CHECK(lines == m || lines == m / 2 || lines == m / 4 || lines == m / 8);
    tagPOINT small[4];
    for (tagPOINT& p : small) p = {static_cast<int8_t>(in.Byte()) * 4096, static_cast<int8_t>(in.Byte()) * 4096};
    FlattenHugeMaximum(in, small);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in(data, size);
    for (int op = 0; op < 32 && in.Left() > 0; ++op) {
        switch (in.Byte() % 6) {
            case 0: Roots(in); break;
            case 1: DoubleSplits(in); break;
            case 2: IntegerSplits(in); break;
            case 3: Construction(in); break;
            case 4: FlattenDouble(in); break;
            default: FlattenInteger(in); break;
        }
    }
    return 0;
}
