// Point-set utilities: collinearity, distance to a segment, reflection and
// translation of point arrays.

#include <climits>
#include <vector>

#include "QorMath/bounds.h"
#include "QorMath/fitting.h"
#include "geometry/wrap.h"

namespace QorMath {

bool AreCollinear(const vector2dT<double, 1>* points, size_t count, double tolerance) {
    if (count < 3) return true;
    if (points == nullptr) return true;
    vector2dT<double, 1> origin{0, 0};
    vector2dT<double, 0> direction{0, 0};
    const int fitted = count > static_cast<size_t>(INT_MAX) ? INT_MAX : static_cast<int>(count);
    GetLeastSquaresLines(points, fitted, origin, direction);
    const double lengthSqrd = MagnitudeSqrd(direction);
    if (!(lengthSqrd > 0)) return false;
    // Each point's squared distance to its foot on the fitted line.
    for (size_t i = 0; i < count; ++i) {
        const double t = Dot(points[i] - origin, direction) / lengthSqrd;
        const vector2dT<double, 1> foot = origin + direction * t;
        if (MagnitudeSqrd(points[i] - foot) > tolerance) return false;
    }
    return true;
}

bool AreCollinear(const tagPOINT* points, size_t count, double tolerance) {
    if (count < 3 || points == nullptr) return true;
    std::vector<vector2dT<double, 1>> converted(count);
    for (size_t i = 0; i < count; ++i) {
        converted[i] = {static_cast<double>(points[i].x), static_cast<double>(points[i].y)};
    }
    return AreCollinear(converted.data(), count, tolerance);
}

double DistanceToLineSegmentSqrd(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                 const vector2dT<double, 1>& p) {
    const vector2dT<double, 0> d = b - a;
    const double lengthSqrd = MagnitudeSqrd(d);
    if (lengthSqrd > 0) {
        const double t = Dot(p - a, d) / lengthSqrd;
        if (t >= 0 && t <= 1) return MagnitudeSqrd(p - (a + d * t));
    }
    // Degenerate segment, or the foot falls outside it: the nearer end.
    const double toB = MagnitudeSqrd(p - b);
    const double toA = MagnitudeSqrd(p - a);
    return toB < toA ? toB : toA;
}

void ReflectAcross(const tagPOINT& direction, const tagPOINT& linePoint, tagPOINT* points, size_t count) {
    if (points == nullptr || count == 0) return;
    // |direction|² in int32, as older callers computed it (it wraps above 2^31 - 1).
    const double lengthSqrd =
        WrappingAdd(WrappingMul(direction.x, direction.x), WrappingMul(direction.y, direction.y));
    const double dx = direction.x, dy = direction.y;
    for (size_t i = 0; i < count; ++i) {
        // The mirror image of r about the direction is 2·proj(r) − r.
        const double rx = WrappingSub(points[i].x, linePoint.x);
        const double ry = WrappingSub(points[i].y, linePoint.y);
        const double k = 2 * (dx * rx + dy * ry) / lengthSqrd;
        points[i].x = RoundToInt(dx * k - rx + linePoint.x);
        points[i].y = RoundToInt(dy * k - ry + linePoint.y);
    }
}

void TranslatePoints(vector2dT<double, 1>* points, size_t count, const vector2dT<double, 1>& offset) {
    if (points == nullptr) return;
    for (size_t i = 0; i < count; ++i) {
        points[i].x += offset.x;
        points[i].y += offset.y;
    }
}

void TranslatePoints(tagPOINT* points, size_t count, const tagPOINT& offset) {
    if (points == nullptr) return;
    for (size_t i = 0; i < count; ++i) {
        points[i].x = WrappingAdd(points[i].x, offset.x);
        points[i].y = WrappingAdd(points[i].y, offset.y);
    }
}

}  // namespace QorMath
