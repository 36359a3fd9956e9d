#ifndef QORMATH_ANGLES_H
#define QORMATH_ANGLES_H

/// \file
/// Angles in three units: Radians (double), Degrees (double) and TURNANGLE
/// (int32 millionths of a degree). Counter-clockwise from +x in the y-up frame.
/// A plain angle lies in [0, full turn); a fine angle is signed, (-half, +half].

#include "QorMath/types.h"

namespace QorMath {

/// π, the half turn in radians.
constexpr double Pi = 3.141592653589793;
/// 2π, the full turn in radians.
constexpr double TwoPi = 6.283185307179586;
/// Degrees = radians × DegreesPerRadian (180/π).
constexpr double DegreesPerRadian = 57.29577951308232;
/// Radians = degrees × RadiansPerDegree (π/180).
constexpr double RadiansPerDegree = 0.017453292519943295;
/// TURNANGLE units in a full turn.
constexpr int32_t TurnAngleFullTurn = 360000000;

/// Angles as double radians.
namespace Radians {
/// Direction of v in [0, 2π), from atan2: 0 for (0, 0), π for (−0.0, ±0.0).
/// A direction just below +x can round up to 2π itself.
QORMATH_API double VectorToAngle(const vector2dT<double, 0>& v);
/// The unit vector (cos, sin).
QORMATH_API vector2dT<double, 0> AngleToVector(double angle);
/// (cos·length, sin·length).
QORMATH_API vector2dT<double, 0> AngleToVector(double angle, double length);
/// angle reduced into [0, 2π) by fmod, plus 2π when negative (so a tiny
/// negative angle can round up to 2π itself); NaN and infinities give NaN.
QORMATH_API double NormalizeAngle(double angle);
/// angle reduced into [-π, π]; both ends are kept as they are.
QORMATH_API double NormalizeFineAngle(double angle);
/// Counter-clockwise angle from u to w in [0, 2π); 0 when either is a zero vector.
QORMATH_API double GetAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w);
/// GetAngle of p1 - vertex and p2 - vertex.
QORMATH_API double GetAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1,
                            const vector2dT<double, 1>& p2);
/// GetAngle mapped into (-π, π]: positive counter-clockwise; 0 for a zero vector.
QORMATH_API double GetFineAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w);
/// p rotated counter-clockwise by angle about centre.
QORMATH_API vector2dT<double, 1> RotatePoint(const vector2dT<double, 1>& p, double angle,
                                             const vector2dT<double, 1>& centre);
/// Rotates count integer points in place (RoundToInt). An angle within
/// DBL_EPSILON of 0 leaves them untouched, without a rounding pass.
QORMATH_API void RotatePoints(tagPOINT* points, size_t count, double angle, const vector2dT<double, 1>& centre);
/// angle snapped to the nearest of |steps| equal divisions of the turn counted
/// from base (the number of divisions from base rounded half away from zero);
/// steps = 0 returns angle.
QORMATH_API double Constrain(double angle, int32_t steps, double base);
/// The quadrant of angle after reduction into [0, 2π).
QORMATH_API Quadrant GetQuadrant(double angle);
}  // namespace Radians

/// Angles as double degrees: the radian functions with their input or result
/// converted.
namespace Degrees {
/// Direction of v in [0, 360) (the radian result × DegreesPerRadian); 0 for
/// (0, 0).
QORMATH_API double VectorToAngle(const vector2dT<double, 0>& v);
/// The unit vector at degrees.
QORMATH_API vector2dT<double, 0> AngleToVector(double degrees);
/// The vector of the given length at degrees.
QORMATH_API vector2dT<double, 0> AngleToVector(double degrees, double length);
/// degrees reduced into [0, 360) by fmod, plus 360 when negative.
QORMATH_API double NormalizeAngle(double degrees);
/// Counter-clockwise angle from u to w in [0, 360); 0 when either is a zero vector.
QORMATH_API double GetAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w);
/// Counter-clockwise angle at vertex from p1 to p2 in [0, 360); 0 when either
/// point is the vertex.
QORMATH_API double GetAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1,
                            const vector2dT<double, 1>& p2);
/// Signed angle from u to w in (-180, 180], counter-clockwise positive; 0 when
/// either is a zero vector.
QORMATH_API double GetFineAngle(const vector2dT<double, 0>& u, const vector2dT<double, 0>& w);
/// p rotated counter-clockwise by degrees about centre.
QORMATH_API vector2dT<double, 1> RotatePoint(const vector2dT<double, 1>& p, double degrees,
                                             const vector2dT<double, 1>& centre);
/// Rotates count integer points in place by degrees about centre, as
/// Radians::RotatePoints (RoundToInt; a near-zero angle leaves them untouched).
QORMATH_API void RotatePoints(tagPOINT* points, size_t count, double degrees, const vector2dT<double, 1>& centre);
/// The integer size of a box of the given size turned by degrees, each of the
/// four projections rounded up separately. The cosine terms pair with the
/// other component: at 0° the components come back exchanged, at 90° a
/// (100, 50) box gives (101, 51).
QORMATH_API tagSIZE GetRotatedSize(const tagSIZE& size, double degrees);
}  // namespace Degrees

/// Angles as int32 millionths of a degree (TurnAngleFullTurn to the turn). Each
/// result is the degree value × 1e6 stored with RoundToInt.
namespace TURNANGLE {
/// Direction of v in millionths of a degree, [0, 360000000] (the full turn can
/// appear by rounding); 0 for the zero vector.
QORMATH_API int32_t VectorToAngle(const vector2dT<double, 0>& v);
/// angle reduced into [0, 360000000), through degrees in double.
QORMATH_API int32_t NormalizeAngle(int32_t angle);
/// Counter-clockwise angle at vertex from p1 to p2, in millionths of a degree,
/// [0, 360000000] (the full turn can appear by rounding); 0 when either point is
/// the vertex.
QORMATH_API int32_t GetAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1,
                             const vector2dT<double, 1>& p2);
/// Signed angle at vertex from p1 to p2, [-180000000, 180000000] (the ends can
/// appear by rounding); 0 when either point is the vertex.
QORMATH_API int32_t GetFineAngle(const vector2dT<double, 1>& vertex, const vector2dT<double, 1>& p1,
                                 const vector2dT<double, 1>& p2);
}  // namespace TURNANGLE

}  // namespace QorMath

#endif
