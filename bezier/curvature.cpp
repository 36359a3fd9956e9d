// Curvature, radius of curvature, inflections and curvature-extremum candidates.

#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "bezier/roots.h"
#include "geometry/precision_guard.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

// B′(t) = (3a·t + 2b)·t + c and B″(t) = 6a·t + 2b, per coordinate.
struct Derivatives {
    double dx, dy, ddx, ddy;

    Derivatives(double t, const Point& a, const Point& b, const Point& c)
        : dx((3 * a.x * t + 2 * b.x) * t + c.x),
          dy((3 * a.y * t + 2 * b.y) * t + c.y),
          ddx(6 * a.x * t + 2 * b.x),
          ddy(6 * a.y * t + 2 * b.y) {}

    double Numerator() const { return ddy * dx - ddx * dy; }  // B′ × B″
    double SpeedCubed() const {
        const double s = dx * dx + dy * dy;
        return std::sqrt(s) * s;
    }
};

// u.y·v.x − v.y·u.x, the orientation this family's formulas are written in.
double CrossYX(const Point& u, const Point& v) { return u.y * v.x - v.y * u.x; }

}  // namespace

// κ = (x′y″ − y′x″)/|B′|³.
bool GetCurvatureAt(double t, const Point& a, const Point& b, const Point& c, double& curvature) {
    const Derivatives k(t, a, b, c);
    const double den = k.SpeedCubed();
    if (!(den > 0)) return false;
    curvature = k.Numerator() / den;
    return true;
}

bool GetCurvatureRadiusAt(double t, const Point& a, const Point& b, const Point& c, double& radius) {
    const Derivatives k(t, a, b, c);
    const double num = k.Numerator(), den = k.SpeedCubed();
    if (num == 0) {
        radius = den >= 0 ? DBL_MAX : -DBL_MAX;
        return false;
    }
    radius = den / num;
    return true;
}

double SafeBezierCurvature(double t, const Point& a, const Point& b, const Point& c) {
    double curvature = 0;
    if (!GetCurvatureAt(t, a, b, c, curvature)) GetCurvatureAt(t <= 0.5 ? t + 1e-5 : t - 1e-5, a, b, c, curvature);
    return curvature;
}

// B′ × B″ = A·t² + B·t + C with A = 6·(a × b), B = 6·(a × c), C = 2·(b × c)
// (the cubic terms cancel). Unguarded by design: A = 0 gives infinities or NaN.
int BezierInflectionPoints(const Point& a, const Point& b, const Point& c, double* out) {
    const double A = 6 * CrossYX(a, b), B = 6 * CrossYX(a, c), C = 2 * CrossYX(b, c);
    const double D = B * B - C * A * 4;
    if (D < 0) return 0;
    const double r = std::sqrt(D);
    out[0] = (r - B) * (0.5 / A);
    out[1] = (-B - r) * (0.5 / A);
    return 2;
}

// The stationary points of the speed: S = |B′|² is a quartic, S³ has degree 12
// and (S³)′ = 3S²S′ degree 11. Its roots are where |B′| is extremal or zero.
int FindCurvatureMinMax(const Point& a, const Point& b, const Point& c, double* out) {
    PrecisionGuard guard;
    const Point a3{3 * a.x, 3 * a.y}, b2{2 * b.x, 2 * b.y};
    // S(t) = s4·t⁴ + … + s0, lowest power first below.
    const double s[5] = {Dot(c, c), 2 * Dot(b2, c), Dot(b2, b2) + 2 * Dot(a3, c), 2 * Dot(a3, b2), Dot(a3, a3)};
    double s2[9] = {}, s3[13] = {};
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j) s2[i + j] += s[i] * s[j];
    for (int i = 0; i < 9; ++i)
        for (int j = 0; j < 5; ++j) s3[i + j] += s2[i] * s[j];
    double derivative[12];  // highest power first: t^(k−1) has k·q_k, k = 12 … 1
    for (int k = 12; k >= 1; --k) derivative[12 - k] = k * s3[k];
    return FindDegree11Roots(derivative, out);
}

}  // namespace CubicBezier
}  // namespace QorMath
