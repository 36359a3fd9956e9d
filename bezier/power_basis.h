#ifndef QORMATH_BEZIER_POWER_BASIS_H
#define QORMATH_BEZIER_POWER_BASIS_H

// Internal: a cubic segment in power basis, B(t) = ((a·t + b)·t + c)·t + d,
// the form every analysis function evaluates. One conversion, one Horner rule,
// so all of them compute the same bits.

#include "QorMath/types.h"
#include "geometry/wrap.h"

namespace QorMath {

struct PowerBasis {
    vector2dT<double, 1> a, b, c, d;
};

// a = P3 − 3·(P2 − P1) − P0, b = 3·(P2 − 2·P1 + P0), c = 3·(P1 − P0), d = P0.
inline double PowerA(double p0, double p1, double p2, double p3) { return p3 - 3.0 * (p2 - p1) - p0; }
inline double PowerB(double p0, double p1, double p2) { return 3.0 * (p2 - 2.0 * p1 + p0); }
inline double PowerC(double p0, double p1) { return 3.0 * (p1 - p0); }

inline PowerBasis ToPowerBasis(const vector2dT<double, 1> p[4]) {
    return {{PowerA(p[0].x, p[1].x, p[2].x, p[3].x), PowerA(p[0].y, p[1].y, p[2].y, p[3].y)},
            {PowerB(p[0].x, p[1].x, p[2].x), PowerB(p[0].y, p[1].y, p[2].y)},
            {PowerC(p[0].x, p[1].x), PowerC(p[0].y, p[1].y)},
            p[0]};
}

// Integer control points: the differences P2 − P1 and P1 − P0 are formed in
// int32 (wrapping for points more than 2³¹ apart) and then converted; b comes
// from the converted coordinates.
inline PowerBasis ToPowerBasis(const tagPOINT p[4]) {
    const auto a = [](int32_t p0, int32_t p1, int32_t p2, int32_t p3) {
        return double(p3) - 3.0 * double(WrappingSub(p2, p1)) - double(p0);
    };
    const auto c = [](int32_t p0, int32_t p1) { return 3.0 * double(WrappingSub(p1, p0)); };
    return {{a(p[0].x, p[1].x, p[2].x, p[3].x), a(p[0].y, p[1].y, p[2].y, p[3].y)},
            {PowerB(p[0].x, p[1].x, p[2].x), PowerB(p[0].y, p[1].y, p[2].y)},
            {c(p[0].x, p[1].x), c(p[0].y, p[1].y)},
            {double(p[0].x), double(p[0].y)}};
}

inline double Horner(double a, double b, double c, double d, double t) { return ((a * t + b) * t + c) * t + d; }

inline vector2dT<double, 1> Evaluate(const PowerBasis& k, double t) {
    return {Horner(k.a.x, k.b.x, k.c.x, k.d.x, t), Horner(k.a.y, k.b.y, k.c.y, k.d.y, t)};
}

// B′(t) = (3a·t + 2b)·t + c.
inline vector2dT<double, 0> EvaluateDerivative(const PowerBasis& k, double t) {
    return {(3.0 * k.a.x * t + 2.0 * k.b.x) * t + k.c.x, (3.0 * k.a.y * t + 2.0 * k.b.y) * t + k.c.y};
}

}  // namespace QorMath

#endif
