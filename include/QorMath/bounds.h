#ifndef QORMATH_BOUNDS_H
#define QORMATH_BOUNDS_H

/// \file
/// Rectangles and bounding boxes (integer tagRECT and double BoundsT, y-up),
/// circles under a matrix, and small point-set utilities.
///
/// Three validity tests appear below and differ on purpose:
///  - strictly valid: left < right and bottom < top   (UnionRect, IntersectRect)
///  - non-inverted:   left <= right and bottom <= top  (TranslateValidRect)
///  - the empty values of GetEmptyRect / InitializeEmpty are neither.
///
/// Corner order, wherever four corners are produced:
/// [0] (left, top), [1] (right, top), [2] (right, bottom), [3] (left, bottom).

#include "QorMath/matrix.h"
#include "QorMath/types.h"

namespace QorMath {

// ---- Rectangles ----------------------------------------------------------
/// \name Rectangles
/// @{

/// Exchanges left/right when right < left and top/bottom when top < bottom.
QORMATH_API void NormalizeRect(tagRECT& r);
/// Box of count points; the empty rect when count < 1 or points is null.
QORMATH_API tagRECT GetPointsBBox(const tagPOINT* points, int32_t count);
/// As above, written to out.
QORMATH_API void GetPointsBBox(const tagPOINT* points, int32_t count, tagRECT& out);
/// Box of count double points; the empty bounds when count < 1 or points is null.
QORMATH_API BoundsT<double> GetPointsBBox(const vector2dT<double, 1>* points, int32_t count);
/// Grows r to contain p (four independent, exact comparisons).
QORMATH_API void UnionPointWithRect(tagRECT& r, const tagPOINT& p);
/// Grows r to contain p, outward to whole numbers (ceil above, floor below).
QORMATH_API void UnionPointWithRect(tagRECT& r, const vector2dT<double, 1>& p);
/// UnionPointWithRect for each of count points; nothing when count < 1 or
/// points is null.
QORMATH_API void UnionPointsWithRect(tagRECT& r, const tagPOINT* points, int32_t count);
/// r1 becomes r2 when r1 is not strictly valid; otherwise grows by r2 when r2
/// is strictly valid. Returns whether r1 is then strictly valid.
QORMATH_API bool UnionRect(tagRECT& r1, const tagRECT& r2);
/// Clips r1 to r2. False with r1 unchanged when either is vertically inverted
/// (a horizontally inverted rect is not rejected there); otherwise returns
/// whether the clipped r1 is strictly valid (it keeps the clipped values).
QORMATH_API bool IntersectRect(tagRECT& r1, const tagRECT& r2);
/// Moves r by (dx, dy), always (int32 wrap-around; the empty rect moves too).
QORMATH_API void TranslateRect(tagRECT& r, int32_t dx, int32_t dy);
/// Moves r by (dx, dy) only when it is non-inverted.
QORMATH_API void TranslateValidRect(tagRECT& r, int32_t dx, int32_t dy);
/// Grows r by dx on the left and right and by dy on the top and bottom.
QORMATH_API void InflateRect(tagRECT& r, int32_t dx, int32_t dy);
/// The four corners of r in corner order.
QORMATH_API void GetRectCorners(const tagRECT& r, tagPOINT out[4]);
/// The four corners of b in corner order.
QORMATH_API void GetRectCorners(const BoundsT<double>& b, vector2dT<double, 1> out[4]);
/// ((left + right)/2, (top + bottom)/2), int32 sums truncated toward zero.
QORMATH_API tagPOINT GetRectCenter(const tagRECT& r);
/// |height · width|, each extent taken in int32 first; never negative.
QORMATH_API double GetRectArea(const tagRECT& r);
/// left <= p.x <= right (a horizontally inverted rect contains nothing), and
/// p.y between top and bottom in either order.
QORMATH_API bool IsPointInRect(const tagPOINT& p, const tagRECT& r);
/// The same test in double.
QORMATH_API bool IsPointInRect(const vector2dT<double, 1>& p, const tagRECT& r);
/// Whether any of count points lies in r (IsPointInRect); false for count 0
/// or a null array.
QORMATH_API bool IsAnyPointInRect(const tagPOINT* points, size_t count, const tagRECT& r);
/// The square of half-side radius around p: {p.x − radius, p.y + radius,
/// p.x + radius, p.y − radius} (int32 wrap-around).
QORMATH_API tagRECT GetPointRect(const tagPOINT& p, int32_t radius);
/// The rectangle of half-sides rx, ry around p (int32 wrap-around).
QORMATH_API tagRECT GetPointRect(const tagPOINT& p, int32_t rx, int32_t ry);
/// @}

// ---- Bounding boxes under a matrix --------------------------------------
/// \name Bounding boxes under a matrix
/// @{

/// Box of r's corners under m, each corner rounded to int32 before the box is
/// taken. The empty rect is not special: its corners are transformed too.
QORMATH_API tagRECT GetTransformedBBox(const tagRECT& r, const MATRIX& m);
/// Box of b's corners under m.
QORMATH_API BoundsT<double> GetTransformedBBox(const BoundsT<double>& b, const MATRIX& m);
/// Box of r's corners under the inverse of m; a singular m gives {0, 0, 0, 0}.
QORMATH_API tagRECT GetUntransformedBBox(const tagRECT& r, const MATRIX& m);
/// Box of b's corners under the inverse of m; a singular m gives {0, 0, 0, 0}.
QORMATH_API BoundsT<double> GetUntransformedBBox(const BoundsT<double>& b, const MATRIX& m);
/// Box of count integer points under m, grown outward to whole numbers from the
/// unrounded images; the empty rect for count 0 or a null array.
QORMATH_API tagRECT GetTransformedPointsBBox(const tagPOINT* points, size_t count, const MATRIX& m);
/// Box of count points under m, grown from the empty bounds: exact while the
/// images lie within the int32 range, but an edge that no image passes keeps
/// its empty value (images all right of x = 2147483647 leave left there). The
/// empty bounds for count 0 or a null array; NaN images are skipped.
QORMATH_API BoundsT<double> GetTransformedPointsBBox(const vector2dT<double, 1>* points, size_t count,
                                                     const MATRIX& m);
/// p mapped from the rectangle from onto the rectangle to (stretching):
/// ConstructRectTransformMatrix(from, to, Stretch) applied to p. A zero extent
/// of from gives infinities or NaN.
QORMATH_API vector2dT<double, 1> GetRemappedPoint(const vector2dT<double, 1>& p, const BoundsT<double>& from,
                                                  const BoundsT<double>& to);
/// @}

// ---- Circles under a matrix ---------------------------------------------
/// \name Circles under a matrix
/// @{

/// Box of the ellipse centre + linear part · (radius·cos t, radius·sin t). The
/// matrix's translation is not applied: pass the centre in the target space.
/// Radius 0 or a zero linear part gives the centre's point box.
QORMATH_API BoundsT<double> GetTransformedCircleBBox(const MATRIX& m, double radius, const vector2dT<double, 1>& centre);
/// Semi-axis lengths (major ≥ minor, both ≥ 0) of the image of the unit circle
/// under m's linear part, computed as |det| over the lengths of the inverse's
/// semi-axes: a singular linear part gives a NaN major (and a zero one NaN for
/// both).
QORMATH_API void GetTransformedCircleAxisLengths(const MATRIX& m, double& major, double& minor);
/// Semi-axis vectors of the image of the unit circle; minor is major turned a
/// quarter counter-clockwise and scaled to the minor length. When major is
/// (nearly) zero or NaN, minor is (minor length, major.x) as a fall-back.
QORMATH_API void GetTransformedCircleAxes(const MATRIX& m, vector2dT<double, 0>& major, vector2dT<double, 0>& minor);
/// Transpose of the linear part applied to m(p), over |det|; for a rotation with
/// uniform scale, the radial direction of the circle at p. When |det| <=
/// DBL_EPSILON, m(p) itself as a vector (negated when det < 0).
QORMATH_API vector2dT<double, 0> GetNormalOnTransformedCircle(const MATRIX& m, const vector2dT<double, 1>& p);
/// The unit-circle parameter (cos t, sin t) of the point of the ellipse
/// (rx·cos t, ry·sin t) whose normal is opposite to n. Zero n or radii unguarded.
QORMATH_API vector2dT<double, 1> FindPointOnEllipseThatHasNormal(const vector2dT<double, 0>& n, double rx, double ry);
/// @}

// ---- Point sets ---------------------------------------------------------
/// \name Point sets
/// @{

/// Whether every point lies within √tolerance of the points' least-squares line
/// (tolerance is a squared length, inclusive). Fewer than 3 points, or a null
/// array: true.
QORMATH_API bool AreCollinear(const vector2dT<double, 1>* points, size_t count, double tolerance);
/// The same for integer points (converted to double first).
QORMATH_API bool AreCollinear(const tagPOINT* points, size_t count, double tolerance);
/// Squared distance from p to the segment a–b: to the foot of the
/// perpendicular when it falls within the segment, else to the nearer end
/// (also when a = b).
QORMATH_API double DistanceToLineSegmentSqrd(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                             const vector2dT<double, 1>& p);
/// Mirrors count points in place across the line through linePoint along
/// direction (RoundToInt). Nothing when points is null or count is 0. The
/// squared length of direction is taken in int32 (wrapping); a zero direction
/// is not guarded and gives -2147483648 for every coordinate.
QORMATH_API void ReflectAcross(const tagPOINT& direction, const tagPOINT& linePoint, tagPOINT* points, size_t count);
/// Adds offset to each of count points; nothing for a null array.
QORMATH_API void TranslatePoints(vector2dT<double, 1>* points, size_t count, const vector2dT<double, 1>& offset);
/// Adds offset to each of count integer points (int32 wrap-around); nothing for
/// a null array.
QORMATH_API void TranslatePoints(tagPOINT* points, size_t count, const tagPOINT& offset);
/// @}

}  // namespace QorMath

#endif
