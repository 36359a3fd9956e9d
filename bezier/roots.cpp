// Real roots in [0, 1] of power-basis polynomials: closed forms for degrees 1
// and 2, Bernstein isolation (bernstein.h) from degree 3 up.

#include "bezier/roots.h"

#include <cfloat>
#include <cmath>
#include <utility>

#include "bezier/bernstein.h"

namespace QorMath {

namespace {

bool InRange(double t, bool includeEnds) {
    return includeEnds ? (t >= 0.0 && t <= 1.0) : (t > 0.0 && t < 1.0);
}

// Ascending by insertion; comparisons only, so a NaN cannot upset it.
void SortAscending(double roots[], int32_t count) {
    for (int32_t i = 1; i < count; ++i)
        for (int32_t j = i; j > 0 && roots[j] < roots[j - 1]; --j) std::swap(roots[j], roots[j - 1]);
}

// The solver one degree down, for the drivers' fallbacks.
int32_t FindLowerRoots(int degree, const double c[], double roots[], bool includeEnds) {
    switch (degree) {
        case 1: return FindLinearRoot(c, roots, includeEnds);
        case 2: return FindQuadraticRoots(c, roots, includeEnds);
        case 3: return FindCubicRoots(c, roots, includeEnds);
        default: return FindQuarticRoots(c, roots, includeEnds);
    }
}

// Degrees 3 to 5. A zero leading coefficient drops a degree; a zero constant
// term divides out t (and adds the root 0 when the ends count). Otherwise the
// Bernstein polygon's end values b₀ = p(0) and bₙ = p(1) decide the end roots.
template <int N>
int32_t FindRootsWithEnds(const double c[N + 1], double roots[], bool includeEnds) {
    if (c[0] == 0) return FindLowerRoots(N - 1, c + 1, roots, includeEnds);
    if (c[N] == 0) {
        const int32_t k = FindLowerRoots(N - 1, c, roots, includeEnds);
        if (!includeEnds || c[N - 1] == 0) return k;
        if (k > 0 && std::fabs(roots[0]) <= 1e-7) {
            roots[0] = 0.0;
            return k;
        }
        if (k >= N - 1) return k;
        roots[k] = 0.0;
        SortAscending(roots, k + 1);
        return k + 1;
    }
    const bernstein::Polygon<N> polygon = bernstein::ToBernstein<N>(c);
    PrecisionGuard guard;
    bernstein::RootList list{roots, 0, N + 1};
    if (includeEnds && std::fabs(polygon.b[0]) <= DBL_EPSILON) list.Append(0.0);
    bernstein::IsolateBernsteinRoots<N>(polygon, c, list);
    if (includeEnds && std::fabs(polygon.b[N]) <= DBL_EPSILON) roots[list.count++] = 1.0;
    return list.count;
}

// Degrees 6 and up: open interval, no end roots; a zero leading or constant
// coefficient drops one degree without reporting t = 0.
template <int N>
int32_t FindRootsInside(const double c[N + 1], double roots[]);

template <int N>
int32_t FindRootsInsideLower(const double c[], double roots[]) {
    if constexpr (N - 1 == 5)
        return FindQuinticRoots(c, roots, false);
    else
        return FindRootsInside<N - 1>(c, roots);
}

template <int N>
int32_t FindRootsInside(const double c[N + 1], double roots[]) {
    if (c[0] == 0) return FindRootsInsideLower<N>(c + 1, roots);
    if (c[N] == 0) return FindRootsInsideLower<N>(c, roots);
    bernstein::RootList list{roots, 0, N + 2};
    bernstein::AppendIsolatedRoots<N>(c, list);
    return list.count;
}

}  // namespace

int32_t FindLinearRoot(const double c[2], double roots[], bool includeEnds) {
    if (c[0] == 0) return 0;
    roots[0] = -c[1] / c[0];
    return InRange(roots[0], includeEnds) ? 1 : 0;
}

// t² + (b/a)·t + c/a = 0 with h = b/2a: t = −h ± √(h² − c/a).
int32_t FindQuadraticRoots(const double c[3], double roots[], bool includeEnds) {
    const double a = c[0], b = c[1], k = c[2];
    if (std::fabs(a) <= 1e-9) return FindLinearRoot(c + 1, roots, includeEnds);
    if (k == 0) {
        const int32_t n = FindLinearRoot(c, roots, includeEnds);
        if (!includeEnds) return n;
        roots[n] = 0.0;
        if (n + 1 >= 2) std::swap(roots[0], roots[1]);
        return n + 1;
    }
    const double p = k / a, h = (b / a) * 0.5;
    const double discriminant = h * h - p;
    if (discriminant == 0) {
        roots[0] = -h;
        return InRange(roots[0], includeEnds) ? 1 : 0;
    }
    if (discriminant < 0) return 0;
    const double s = std::sqrt(discriminant);
    int32_t n = 0;
    for (const double t : {s - h, -s - h})
        if (InRange(t, includeEnds)) roots[n++] = t;
    if (n == 2) std::swap(roots[0], roots[1]);
    return n;
}

int32_t FindCubicRoots(const double c[4], double roots[], bool includeEnds) {
    return FindRootsWithEnds<3>(c, roots, includeEnds);
}
int32_t FindQuarticRoots(const double c[5], double roots[], bool includeEnds) {
    return FindRootsWithEnds<4>(c, roots, includeEnds);
}
int32_t FindQuinticRoots(const double c[6], double roots[], bool includeEnds) {
    return FindRootsWithEnds<5>(c, roots, includeEnds);
}

int32_t FindDegree6Roots(const double c[7], double roots[]) { return FindRootsInside<6>(c, roots); }
int32_t FindDegree7Roots(const double c[8], double roots[]) { return FindRootsInside<7>(c, roots); }
int32_t FindDegree8Roots(const double c[9], double roots[]) { return FindRootsInside<8>(c, roots); }
int32_t FindDegree9Roots(const double c[10], double roots[]) { return FindRootsInside<9>(c, roots); }
int32_t FindDegree10Roots(const double c[11], double roots[]) { return FindRootsInside<10>(c, roots); }
int32_t FindDegree11Roots(const double c[12], double roots[]) { return FindRootsInside<11>(c, roots); }

}  // namespace QorMath
