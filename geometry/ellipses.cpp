// A circle under an affine matrix: the ellipse's bounding box, semi-axes and
// normals.

#include "QorMath/angles.h"
#include "QorMath/bounds.h"
#include "geometry/grow.h"

namespace QorMath {

namespace {

constexpr double kEpsilon = DBL_EPSILON;
constexpr double kSqrt2 = 1.4142135623730951;

// The angle t at which p·cos t + q·sin t is extreme, written as the half-angle
// form of atan2(q, p): tan(t/2) = (√(p² + q²) − p)/q.
double ExtremeAngle(double p, double q) {
    if (std::fabs(q) <= kEpsilon) return 0;
    if (std::fabs(p) <= kEpsilon) return Pi / 2;
    return 2 * std::atan((std::sqrt(p * p + q * q) - p) / q);
}

struct EllipseAxes {
    double major;  // semi-axis lengths of the image of the unit circle
    double minor;
    double angle;  // direction of the major axis
};

// Semi-axes of L·(unit circle) from the rows of L: the lengths are |det| over
// the singular values of L⁻¹, the angle that of the principal axis of L·Lᵀ.
EllipseAxes AxesOf(const MATRIX& m, bool withAngle) {
    const double r1 = m.a * m.a + m.b * m.b;
    const double r2 = m.c * m.c + m.d * m.d;
    const double k = m.a * m.c + m.b * m.d;
    const double det = m.a * m.d - m.c * m.b;
    EllipseAxes axes{};
    if (std::fabs(k) <= kEpsilon) {
        if (r1 > r2) {
            axes = {det / std::sqrt(r2), det / std::sqrt(r1), 0};
        } else {
            axes = {det / std::sqrt(r1), det / std::sqrt(r2), Pi / 2};
        }
    } else {
        const double e = -2 * k;
        const double f = r2 - r1;
        const double g = std::sqrt(e * e + f * f);
        axes.major = kSqrt2 * det / std::sqrt(r1 + r2 - g);
        axes.minor = kSqrt2 * det / std::sqrt(r1 + r2 + g);
        if (withAngle) {
            // tan 2φ = e/f. With equal rows f is +0 and e/f an infinity of the r2 > r1
            // side, so that side's quarter turn applies: the major axis, not the minor.
            axes.angle = std::atan(e / f) / 2;
            if (r2 >= r1) axes.angle += Pi / 2;
        }
    }
    axes.major = std::fabs(axes.major);
    axes.minor = std::fabs(axes.minor);
    return axes;
}

}  // namespace

BoundsT<double> GetTransformedCircleBBox(const MATRIX& m, double radius, const vector2dT<double, 1>& centre) {
    const double angles[2] = {ExtremeAngle(m.a, m.b), ExtremeAngle(m.c, m.d)};
    BoundsT<double> box{DBL_MAX, -DBL_MAX, -DBL_MAX, DBL_MAX};
    for (const double theta : angles) {
        const double cs = std::cos(theta), sn = std::sin(theta);
        const vector2dT<double, 0> e{m.a * radius * cs + m.b * radius * sn, m.c * radius * cs + m.d * radius * sn};
        GrowBy(box, centre + e);
        GrowBy(box, centre - e);
    }
    return box;
}

void GetTransformedCircleAxisLengths(const MATRIX& m, double& major, double& minor) {
    const EllipseAxes axes = AxesOf(m, false);
    major = axes.major;
    minor = axes.minor;
}

void GetTransformedCircleAxes(const MATRIX& m, vector2dT<double, 0>& major, vector2dT<double, 0>& minor) {
    const EllipseAxes axes = AxesOf(m, true);
    major = {std::cos(axes.angle) * axes.major, std::sin(axes.angle) * axes.major};
    const double lengthSqrd = MagnitudeSqrd(major);
    if (lengthSqrd > kEpsilon) {
        const double length = std::sqrt(lengthSqrd);
        minor = {-major.y / length * axes.minor, major.x / length * axes.minor};
    } else {
        minor = {axes.minor, major.x};  // deliberate fall-back for a collapsed ellipse
    }
}

vector2dT<double, 0> GetNormalOnTransformedCircle(const MATRIX& m, const vector2dT<double, 1>& p) {
    const vector2dT<double, 1> q = m(p);
    const double det = m.a * m.d - m.c * m.b;
    if (std::fabs(det) > kEpsilon) {
        const vector2dT<double, 0> n{(m.a * q.x + m.c * q.y) / det, (m.b * q.x + m.d * q.y) / det};
        return det < 0 ? -n : n;
    }
    return det < 0 ? -AsVector(q) : AsVector(q);
}

vector2dT<double, 1> FindPointOnEllipseThatHasNormal(const vector2dT<double, 0>& n, double rx, double ry) {
    const double s = std::sqrt(ry * ry * (n.y * n.y) + rx * rx * (n.x * n.x));
    return {-rx * n.x / s, -ry * n.y / s};
}

}  // namespace QorMath
