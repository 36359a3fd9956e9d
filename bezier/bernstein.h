#ifndef QORMATH_BEZIER_BERNSTEIN_H
#define QORMATH_BEZIER_BERNSTEIN_H

// Internal: root isolation on the Bernstein control polygon of a degree-N
// polynomial over [0, 1], one instance per degree, everything on the stack.
//
// The polygon's points are (i/N, bᵢ). By the variation-diminishing property the
// number of sign changes of the bᵢ bounds the number of roots from above; zero
// changes means no root, one change means exactly one, which Newton's method on
// the power-basis polynomial polishes. Otherwise the polygon is split by de
// Casteljau and both halves are examined, left first, so roots come out in
// increasing order.

#include <cfloat>
#include <cmath>
#include <cstdint>

#include "geometry/precision_guard.h"

namespace QorMath {
namespace bernstein {

// Roots appended in order; appends beyond the capacity are dropped, so a
// degenerate polynomial can never write past the caller's array.
struct RootList {
    double* roots;
    int32_t count;
    int32_t capacity;

    void Append(double t) {
        if (count < capacity) roots[count++] = t;
    }
};

template <int N>
struct Polygon {
    double x[N + 1];  // parameter of each control point in the whole [0, 1]
    double b[N + 1];  // Bernstein coefficient
};

// C(N, j) as a double, exact for the degrees used here.
constexpr double Binomial(int n, int j) {
    double r = 1.0;
    for (int i = 1; i <= j; ++i) r = r * double(n - j + i) / double(i);
    return r;
}

// Power basis, highest power first, to Bernstein coefficients over [0, 1]:
// bᵢ = Σⱼ≤ᵢ C(i,j)/C(N,j)·aⱼ with aⱼ the coefficient of tʲ. After dividing aⱼ
// by C(N,j) the sums are the rows of a forward-difference table, built in place.
template <int N>
Polygon<N> ToBernstein(const double c[N + 1]) {
    Polygon<N> p;
    for (int j = 0; j <= N; ++j) {
        p.x[j] = double(j) / double(N);
        p.b[j] = c[N - j] / Binomial(N, j);
    }
    for (int i = 1; i <= N; ++i)
        for (int j = N; j >= i; --j) p.b[j] += p.b[j - 1];
    return p;
}

// p(t), p′(t) and p″(t) of the power-basis polynomial by Horner's rule.
template <int N>
double Value(const double c[N + 1], double t) {
    double v = c[0];
    for (int i = 1; i <= N; ++i) v = v * t + c[i];
    return v;
}
template <int N>
double FirstDerivative(const double c[N + 1], double t) {
    double v = double(N) * c[0];
    for (int i = 1; i < N; ++i) v = v * t + double(N - i) * c[i];
    return v;
}
template <int N>
double SecondDerivative(const double c[N + 1], double t) {
    double v = double(N * (N - 1)) * c[0];
    for (int i = 1; i < N - 1; ++i) v = v * t + double((N - i) * (N - i - 1)) * c[i];
    return v;
}

// De Casteljau split of x and b alike at relative parameter s, each new point
// (b − a)·s + a; or at the midpoint, each new point (a + b)·0.5.
template <int N, typename Mix>
void SplitPolygon(const Polygon<N>& p, Polygon<N>& left, Polygon<N>& right, Mix mix) {
    Polygon<N> w = p;
    left.x[0] = w.x[0];
    left.b[0] = w.b[0];
    right.x[N] = w.x[N];
    right.b[N] = w.b[N];
    for (int level = 1; level <= N; ++level) {
        for (int i = 0; i <= N - level; ++i) {
            w.x[i] = mix(w.x[i], w.x[i + 1]);
            w.b[i] = mix(w.b[i], w.b[i + 1]);
        }
        left.x[level] = w.x[0];
        left.b[level] = w.b[0];
        right.x[N - level] = w.x[N - level];
        right.b[N - level] = w.b[N - level];
    }
}

// One sign change in the polygon: Newton from the x-intercept g of the edge
// that changes sign, falling back to g when Newton stalls, diverges or leaves
// the polygon's span.
template <int N>
void PolishSingleRoot(const Polygon<N>& p, int k, const double c[N + 1], RootList& list) {
    const double x0 = p.x[0], xn = p.x[N];
    const double g = p.x[k] - p.b[k] / (p.b[k + 1] - p.b[k]) * (p.x[k + 1] - p.x[k]);
    double t = g, next = g, previousStep = 1.0;
    for (int iteration = 0; iteration < 100; ++iteration) {
        const double d = FirstDerivative<N>(c, t);
        if (d == 0) {
            list.Append(g);
            return;
        }
        next = t - Value<N>(c, t) / d;
        const double step = std::fabs(t - next);
        if (step < 1e-7) {
            list.Append(x0 < next && next < xn ? next : g);
            return;
        }
        if (step >= previousStep) {
            list.Append(x0 < t && t < xn ? t : g);
            return;
        }
        t = next;
        previousStep = step;
    }
    list.Append(x0 < next && next < xn ? next : g);
}

// Two sign changes on a span narrower than 2e-7: Newton on p′ looks for a double
// root. The start at minus the half-width is deliberate and kept.
template <int N>
bool FoundDoubleRoot(const Polygon<N>& p, const double c[N + 1], RootList& list) {
    double t = (p.x[0] - p.x[N]) * 0.5, previousStep = 1.0;
    for (int iteration = 0; iteration < 200; ++iteration) {
        const double dd = SecondDerivative<N>(c, t);
        if (dd == 0) return false;
        const double next = t - FirstDerivative<N>(c, t) / dd;
        const double step = std::fabs(t - next);
        if (step < 1e-7) {
            if (std::fabs(Value<N>(c, next)) < 1e-7) {
                list.Append(next);
                return true;
            }
            return false;
        }
        if (step >= previousStep) return false;
        t = next;
        previousStep = step;
    }
    return false;
}

// Every split leaves each piece at most (N−1)/N of its parent's span, so the
// span reaches DBL_EPSILON within 52·ln 2 / ln(N/(N−1)) < 37·N levels. The depth
// bound is never met by that descent; it only stops a polygon whose span no
// longer shrinks in floating point.
template <int N>
constexpr int kMaxIsolationDepth = 64 * N;

template <int N>
void IsolateBernsteinRoots(const Polygon<N>& p, const double c[N + 1], RootList& list, int depth = 0) {
    int changes = 0, k = 0;
    for (int i = 0; i < N; ++i) {
        if (p.b[i] * p.b[i + 1] < 0 || (i >= 1 && p.b[i] == 0 && p.b[i - 1] * p.b[i + 1] < 0)) {
            ++changes;
            k = i;
        }
    }
    const double span = p.x[N] - p.x[0];
    if (span <= DBL_EPSILON || depth >= kMaxIsolationDepth<N>) {
        if (changes >= 1) list.Append(p.x[0]);
        return;
    }
    if (changes == 0) {
        if (p.b[0] == 0 && p.b[1] == 0) list.Append(p.x[0]);
        return;
    }
    if (changes == 1) {
        PolishSingleRoot<N>(p, k, c, list);
        return;
    }
    Polygon<N> left, right;
    if (changes == 2) {
        if (span < 2e-7 && FoundDoubleRoot<N>(p, c, list)) return;
        const double s = (p.x[k] - p.x[0]) / span;
        SplitPolygon<N>(p, left, right, [s](double a, double b) { return (b - a) * s + a; });
    } else {
        SplitPolygon<N>(p, left, right, [](double a, double b) { return (a + b) * 0.5; });
    }
    IsolateBernsteinRoots<N>(left, c, list, depth + 1);
    if (list.count >= N) return;
    IsolateBernsteinRoots<N>(right, c, list, depth + 1);
}

// The roots in (0, 1) of a degree-N polynomial with nonzero leading and
// constant coefficients, appended to list, under a PrecisionGuard. No end roots.
template <int N>
void AppendIsolatedRoots(const double c[N + 1], RootList& list) {
    const Polygon<N> polygon = ToBernstein<N>(c);
    PrecisionGuard guard;
    IsolateBernsteinRoots<N>(polygon, c, list);
}

}  // namespace bernstein
}  // namespace QorMath

#endif
