#ifndef QORMATH_TYPES_H
#define QORMATH_TYPES_H

/// \file
/// Value types shared by every family: 2D points and vectors, 3D vectors, double
/// rectangles, the integer geometry records, the affine decomposition record, the
/// small enumerations, and the one rule for storing a double into an int32 field.
///
/// Coordinates are y-up: a rectangle's `top` is its largest y and `bottom` its
/// smallest. Angles turn counter-clockwise from +x.

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "QorMath/export.h"

#if defined(_WIN32)
#include <windows.h>  // the platform's own POINT, RECT and SIZE records
#else
/// Integer point (int32 x, y).
struct tagPOINT {
    int32_t x;  ///< x coordinate
    int32_t y;  ///< y coordinate
};
/// Integer rectangle, y-up: `top` is the larger y.
struct tagRECT {
    int32_t left;    ///< smallest x of a normal rectangle
    int32_t top;     ///< largest y of a normal rectangle
    int32_t right;   ///< largest x of a normal rectangle
    int32_t bottom;  ///< smallest y of a normal rectangle
};
/// Integer size (int32 cx, cy).
struct tagSIZE {
    int32_t cx;  ///< extent along x
    int32_t cy;  ///< extent along y
};
#endif

/// The library: value types, matrix builders, angles, rectangles, curves,
/// fitting, layout, the vector field and the scalar, random and quaternion
/// utilities. MATRIX, the integer records and the flat C functions (UTL, MTH,
/// VECT_) live outside it.
namespace QorMath {

/// A 2D value of two T components. K = 1 makes it a point (a position), K = 0 a
/// vector (a displacement): same layout, distinct types, so a MATRIX can add its
/// translation to points only.
template <typename T, int K>
struct vector2dT {
    T x;  ///< x component
    T y;  ///< y component
};

/// A point (position) in double.
using Point2d = vector2dT<double, 1>;
/// A vector (displacement) in double.
using Vector2d = vector2dT<double, 0>;

// Affine arithmetic: point - point is a vector, point +/- vector is a point.
/// p − q, a vector: the displacement from q to p (points or vectors alike).
template <typename T, int K>
constexpr vector2dT<T, 0> operator-(const vector2dT<T, K>& p, const vector2dT<T, K>& q) {
    return {p.x - q.x, p.y - q.y};
}
/// p moved by v: a point stays a point, a vector plus a vector is a vector.
template <typename T, int K>
constexpr vector2dT<T, K> operator+(const vector2dT<T, K>& p, const vector2dT<T, 0>& v) {
    return {p.x + v.x, p.y + v.y};
}
/// p moved by v, a point (vector + point).
template <typename T>
constexpr vector2dT<T, 1> operator+(const vector2dT<T, 0>& v, const vector2dT<T, 1>& p) {
    return {v.x + p.x, v.y + p.y};
}
/// p moved back by v, a point.
template <typename T>
constexpr vector2dT<T, 1> operator-(const vector2dT<T, 1>& p, const vector2dT<T, 0>& v) {
    return {p.x - v.x, p.y - v.y};
}
/// The opposite vector (−x, −y).
template <typename T>
constexpr vector2dT<T, 0> operator-(const vector2dT<T, 0>& v) {
    return {-v.x, -v.y};
}
/// v scaled by s, component by component.
template <typename T>
constexpr vector2dT<T, 0> operator*(const vector2dT<T, 0>& v, T s) {
    return {v.x * s, v.y * s};
}
/// v scaled by s, component by component.
template <typename T>
constexpr vector2dT<T, 0> operator*(T s, const vector2dT<T, 0>& v) {
    return {s * v.x, s * v.y};
}
/// Each component divided by s (no check for 0: infinities or NaN).
template <typename T>
constexpr vector2dT<T, 0> operator/(const vector2dT<T, 0>& v, T s) {
    return {v.x / s, v.y / s};
}
/// Moves p by v in place; returns p.
template <typename T, int K>
vector2dT<T, K>& operator+=(vector2dT<T, K>& p, const vector2dT<T, 0>& v) {
    p.x += v.x;
    p.y += v.y;
    return p;
}
/// Moves p back by v in place; returns p.
template <typename T, int K>
vector2dT<T, K>& operator-=(vector2dT<T, K>& p, const vector2dT<T, 0>& v) {
    p.x -= v.x;
    p.y -= v.y;
    return p;
}
/// Exact comparison of both components (NaN is unequal to everything).
template <typename T, int K>
constexpr bool operator==(const vector2dT<T, K>& p, const vector2dT<T, K>& q) {
    return p.x == q.x && p.y == q.y;
}
/// !(p == q): true when either component differs or is NaN.
template <typename T, int K>
constexpr bool operator!=(const vector2dT<T, K>& p, const vector2dT<T, K>& q) {
    return !(p == q);
}

/// The same components read as a vector (the displacement from the origin).
template <typename T, int K>
constexpr vector2dT<T, 0> AsVector(const vector2dT<T, K>& p) {
    return {p.x, p.y};
}
/// The same components read as a point (the origin moved by v).
template <typename T, int K>
constexpr vector2dT<T, 1> AsPoint(const vector2dT<T, K>& v) {
    return {v.x, v.y};
}
/// x·x' + y·y'. Accepts points too, for coefficients typed as points.
template <typename T, int K, int L>
constexpr T Dot(const vector2dT<T, K>& u, const vector2dT<T, L>& w) {
    return u.x * w.x + u.y * w.y;
}
/// The z component of the 3D cross product: positive when w turns
/// counter-clockwise from u.
template <typename T, int K, int L>
constexpr T Cross(const vector2dT<T, K>& u, const vector2dT<T, L>& w) {
    return u.x * w.y - u.y * w.x;
}
/// Squared length x² + y².
template <typename T, int K>
constexpr T MagnitudeSqrd(const vector2dT<T, K>& v) {
    return v.x * v.x + v.y * v.y;
}
/// Length √(x² + y²).
template <typename T, int K>
T Magnitude(const vector2dT<T, K>& v) {
    return std::sqrt(v.x * v.x + v.y * v.y);
}

/// A 3D value (x, y, z).
template <typename T>
struct vector3dT {
    T x;  ///< x component
    T y;  ///< y component
    T z;  ///< z component
};

/// A rectangle of four T values, y-up: width right - left, height top - bottom.
template <typename T>
struct BoundsT {
    T left;    ///< smallest x of a normal rectangle
    T top;     ///< largest y of a normal rectangle
    T right;   ///< largest x of a normal rectangle
    T bottom;  ///< smallest y of a normal rectangle
};

/// An affine transform decomposed as rotation · [scaleX, skew·scaleY; 0, scaleY]
/// plus origin (see DecomposeAffineTransform).
struct AFF_TRANSFORM {
    double scaleX;     ///< length of the transformed x axis; negative when mirrored
    double scaleY;     ///< height of the y axis over the x axis; negative when clockwise
    double skew;       ///< tangent of the lean of the y axis from the x axis' normal
    double rotation;   ///< angle of the transformed x axis, radians in [-π, π]
    vector2dT<double, 1> origin;  ///< image of the origin
};

/// A position on a rectangle, row by row from the top. Values above 8 act as BottomRight.
enum class AnchorLocation : int32_t {
    TopLeft = 0,       ///< (left, top)
    TopCenter = 1,     ///< ((left + right)/2, top)
    TopRight = 2,      ///< (right, top)
    MiddleLeft = 3,    ///< (left, (top + bottom)/2)
    Center = 4,        ///< ((left + right)/2, (top + bottom)/2)
    MiddleRight = 5,   ///< (right, (top + bottom)/2)
    BottomLeft = 6,    ///< (left, bottom)
    BottomCenter = 7,  ///< ((left + right)/2, bottom)
    BottomRight = 8,   ///< (right, bottom)
};

/// Quarter of the turn an angle falls in; each includes its lower boundary.
enum class Quadrant : int32_t {
    First = 0,   ///< [0, π/2)
    Second = 1,  ///< [π/2, π)
    Third = 2,   ///< [π, 3π/2)
    Fourth = 3,  ///< [3π/2, 2π)
};

/// How one size is mapped onto another. Values other than 0 and 1 act as Fill.
enum class MapMode : int32_t {
    Stretch = 0,  ///< x and y scale independently
    Fit = 1,      ///< both take the smaller magnitude, each keeping its sign
    Fill = 2,     ///< both take the larger magnitude, each keeping its sign
};

/// Which side of a curve a point lies on.
enum class Side : int32_t {
    SideNone = 0,   ///< no closest point, outside [0, 1], or on the tangent line
    SideLeft = 1,   ///< tangent × (point − closest) > 0
    SideRight = 2,  ///< tangent × (point − closest) < 0
};

/// Number of Gauss-Legendre points for arc length; other values map to the
/// nearest tabulated rule (below 2 → 2, 9 → 10, above 10 → 16).
enum class LengthAccuracy : int32_t {
    Gauss2 = 2,    ///< 2-point rule, the coarsest
    Gauss3 = 3,    ///< 3-point rule
    Gauss4 = 4,    ///< 4-point rule
    Gauss5 = 5,    ///< 5-point rule
    Gauss6 = 6,    ///< 6-point rule
    Gauss7 = 7,    ///< 7-point rule
    Gauss8 = 8,    ///< 8-point rule
    Gauss10 = 10,  ///< 10-point rule (the one LengthTo and LengthFrom use)
    Gauss16 = 16,  ///< 16-point rule, the most accurate
};

/// Horizontal placement in a Layout.
namespace Horizontal {
/// Which vertical edge a laid-out box keeps.
enum class Alignment : int32_t {
    Left = 0,   ///< keeps the left edge (the default)
    Right = 1,  ///< keeps the right edge
    Center = 2  ///< centred
};
}  // namespace Horizontal

/// Vertical placement in a Layout.
namespace Vertical {
/// Which horizontal edge a laid-out box keeps.
enum class Alignment : int32_t {
    Bottom = 0,  ///< keeps the bottom edge (the default)
    Top = 1,     ///< keeps the top edge
    Center = 2   ///< centred
};
}  // namespace Vertical

/// The int32 a processor gives for a conversion it cannot represent.
constexpr int32_t IntegerIndefinite = INT32_MIN;

/// Truncates toward zero to int32. NaN, infinities and values whose truncation
/// lies outside the int32 range give IntegerIndefinite (-2147483648), the same
/// on every platform and without an undefined cast.
inline int32_t TruncateToInt(double v) {
    if (!(v > -2147483649.0 && v < 2147483648.0)) return IntegerIndefinite;
    return static_cast<int32_t>(v);
}

/// The library's rule for storing a double into an int32 field: half away from
/// zero (v - 0.5 below zero, v + 0.5 otherwise), then truncation through
/// TruncateToInt. 2.5 → 3, -2.5 → -3, -0.4 → 0, out of range → -2147483648.
inline int32_t RoundToInt(double v) {
    // Adding ±0.5 by v's sign bit is the same rule without a branch that
    // mispredicts on mixed signs; -0.0 gives -0.5 instead of 0.5, and both
    // truncate to 0.
    return TruncateToInt(v + std::copysign(0.5, v));
}

/// The empty integer rect {2147483647, -2147483648, -2147483648, 2147483647}:
/// uniting a point with it yields that point's rect.
QORMATH_API tagRECT GetEmptyRect();
/// Sets r to the empty integer rect.
QORMATH_API void InitializeEmpty(tagRECT& r);
/// Sets b to the empty bounds, the int32 extremes written as doubles
/// {+2147483647.0, -2147483648.0, -2147483648.0, +2147483647.0}.
QORMATH_API void InitializeEmpty(BoundsT<double>& b);
/// The unit square {left 0, top 1, right 1, bottom 0}, the reference rectangle of
/// normalised coordinates.
QORMATH_API const BoundsT<double>& IdentityBounds();

}  // namespace QorMath

#endif
