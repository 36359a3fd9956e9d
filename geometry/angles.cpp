// Angles in radians, degrees and TURNANGLE units (millionths of a degree).

#include "QorMath/angles.h"
#include "geometry/wrap.h"

namespace QorMath {

namespace {

constexpr double kThreeHalvesPi = 4.71238898038469;
constexpr double kTurnAngleUnitsPerDegree = 1e6;

int32_t DegreesToTurnAngle(double degrees) {
    return RoundToInt(degrees * kTurnAngleUnitsPerDegree);
}

}  // namespace

namespace Radians {

double VectorToAngle(const vector2dT<double, 0>& v) {
    return NormalizeAngle(std::atan2(v.y, v.x));
}

vector2dT<double, 0> AngleToVector(double angle) {
    return {std::cos(angle), std::sin(angle)};
}

vector2dT<double, 0> AngleToVector(double angle, double length) {
    return {std::cos(angle) * length, std::sin(angle) * length};
}

double NormalizeAngle(double angle) {
    double r = std::fmod(angle, TwoPi);
    if (r < 0) r += TwoPi;
    return r;
}

double NormalizeFineAngle(double angle) {
    if (angle < -Pi) {
        const double r = std::fmod(angle, TwoPi);
        return r < -Pi ? r + TwoPi : r;
    }
    if (angle > Pi) {
        const double r = std::fmod(angle, TwoPi);
        return r > Pi ? r - TwoPi : r;
    }
    return angle;
}

double GetAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w) {
    const double den = std::sqrt((u.x * u.x + u.y * u.y) * (w.x * w.x + w.y * w.y));
    if (!(den > 0)) return 0;
    double cosine = (u.x * w.x + u.y * w.y) / den;
    if (cosine > 1) cosine = 1;
    if (cosine < -1) cosine = -1;
    const double alpha = std::acos(cosine);
    return u.x * w.y - u.y * w.x < 0 ? TwoPi - alpha : alpha;
}

double GetAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1, const vector2dT<double, 1>& p2) {
    return GetAngle(p1 - vertex, p2 - vertex);
}

double GetFineAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w) {
    const double angle = GetAngle(u, w);
    return angle > Pi ? angle - TwoPi : angle;
}

vector2dT<double, 1> RotatePoint(const vector2dT<double, 1>& p, double angle, const vector2dT<double, 1>& centre) {
    const double cs = std::cos(angle), sn = std::sin(angle);
    const double dx = p.x - centre.x, dy = p.y - centre.y;
    return {cs * dx - sn * dy + centre.x, cs * dy + sn * dx + centre.y};
}

void RotatePoints(tagPOINT* points, size_t count, double angle, const vector2dT<double, 1>& centre) {
    if (std::fabs(angle) <= DBL_EPSILON) return;
    if (count < 1 || points == nullptr) return;
    const double cs = std::cos(angle), sn = std::sin(angle);
    const double tx = centre.x - centre.x * cs + centre.y * sn;
    const double ty = centre.y - centre.y * cs - centre.x * sn;
    for (size_t i = 0; i < count; ++i) {
        const double x = points[i].x, y = points[i].y;
        points[i].x = RoundToInt(x * cs - y * sn + tx);
        points[i].y = RoundToInt(x * sn + y * cs + ty);
    }
}

double Constrain(double angle, int32_t steps, double base) {
    if (steps == 0) return angle;
    const int32_t k = RoundToInt((angle - base) / TwoPi * steps);
    return static_cast<double>(k) / steps * TwoPi + base;
}

Quadrant GetQuadrant(double angle) {
    const double r = NormalizeAngle(angle);
    if (r < Pi / 2) return Quadrant::First;
    if (r < Pi) return Quadrant::Second;
    if (r < kThreeHalvesPi) return Quadrant::Third;
    return Quadrant::Fourth;
}

}  // namespace Radians

namespace Degrees {

double VectorToAngle(const vector2dT<double, 0>& v) {
    return Radians::VectorToAngle(v) * DegreesPerRadian;
}

vector2dT<double, 0> AngleToVector(double degrees) {
    return Radians::AngleToVector(degrees * RadiansPerDegree);
}

vector2dT<double, 0> AngleToVector(double degrees, double length) {
    return Radians::AngleToVector(degrees * RadiansPerDegree, length);
}

double NormalizeAngle(double degrees) {
    double r = std::fmod(degrees, 360.0);
    if (r < 0) r += 360.0;
    return r;
}

double GetAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w) {
    return Radians::GetAngle(u, w) * DegreesPerRadian;
}

double GetAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1, const vector2dT<double, 1>& p2) {
    return Radians::GetAngle(vertex, p1, p2) * DegreesPerRadian;
}

double GetFineAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w) {
    return Radians::GetFineAngle(u, w) * DegreesPerRadian;
}

vector2dT<double, 1> RotatePoint(const vector2dT<double, 1>& p, double degrees, const vector2dT<double, 1>& centre) {
    return Radians::RotatePoint(p, degrees * RadiansPerDegree, centre);
}

void RotatePoints(tagPOINT* points, size_t count, double degrees, const vector2dT<double, 1>& centre) {
    Radians::RotatePoints(points, count, degrees * RadiansPerDegree, centre);
}

tagSIZE GetRotatedSize(const tagSIZE& size, double degrees) {
    // Each projection is rounded up on its own; the cosine terms pair with the
    // other component, so 0° exchanges cx and cy.
    const double theta = degrees * RadiansPerDegree;
    const double cs = std::cos(theta), sn = std::sin(theta);
    const double cx = size.cx, cy = size.cy;
    const auto up = [](double v) { return TruncateToInt(std::ceil(std::fabs(v))); };
    return tagSIZE{WrappingAdd(up(cs * cy), up(sn * cx)), WrappingAdd(up(sn * cy), up(cs * cx))};
}

}  // namespace Degrees

namespace TURNANGLE {

int32_t VectorToAngle(const vector2dT<double, 0>& v) {
    return DegreesToTurnAngle(Degrees::VectorToAngle(v));
}

int32_t NormalizeAngle(int32_t angle) {
    double r = std::fmod(angle / kTurnAngleUnitsPerDegree, 360.0);
    if (r < 0) r += 360.0;
    return DegreesToTurnAngle(r);
}

int32_t GetAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1, const vector2dT<double, 1>& p2) {
    return DegreesToTurnAngle(Degrees::GetAngle(vertex, p1, p2));
}

int32_t GetFineAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1,
                     const vector2dT<double, 1>& p2) {
    return DegreesToTurnAngle(Degrees::GetFineAngle(p1 - vertex, p2 - vertex));
}

}  // namespace TURNANGLE

}  // namespace QorMath
