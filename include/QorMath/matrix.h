#ifndef QORMATH_MATRIX_H
#define QORMATH_MATRIX_H

/// \file
/// The 2D affine matrix, its builders, its decomposition into scale, skew,
/// rotation and origin, and the flat UTL interface for older callers.
///
/// MATRIX and the UTL functions are outside the QorMath namespace. The builders
/// take radians; the UTL functions take int32 millionths of a degree.

#include "QorMath/types.h"

/// A 2D affine transform: (x, y) maps to (a·x + b·y + tx, c·x + d·y + ty).
/// The columns (a, c) and (b, d) are the images of the x and y unit vectors.
/// `A * B` applies B first. Brace-initialise as {a, b, tx, c, d, ty};
/// the identity is {1, 0, 0, 0, 1, 0}.
struct QORMATH_API MATRIX {
    double a;   ///< x' coefficient of x
    double b;   ///< x' coefficient of y
    double tx;  ///< x translation
    double c;   ///< y' coefficient of x
    double d;   ///< y' coefficient of y
    double ty;  ///< y translation

    /// The point (a·x + b·y + tx, c·x + d·y + ty).
    QorMath::vector2dT<double, 1> operator()(const QorMath::vector2dT<double, 1>& p) const;
    /// The vector (a·x + b·y, c·x + d·y): translation ignored.
    QorMath::vector2dT<double, 0> operator()(const QorMath::vector2dT<double, 0>& v) const;
    /// this · other: other applies first, then this.
    MATRIX operator*(const MATRIX& other) const;

    /// Transforms count points in place. Allocates nothing.
    void TransformPoints(QorMath::vector2dT<double, 1>* points, size_t count) const;
    /// Transforms count integer points in place: computed in double, stored with
    /// RoundToInt (out of int32 range → -2147483648).
    void TransformPoints(tagPOINT* points, size_t count) const;
    /// As TransformPoints for tagPOINT, but each coordinate, after the int32
    /// conversion, is clamped to [-2^29, 2^29 - 1]. The clamp follows the
    /// conversion, so a result beyond int32 (even a large positive one) ends at
    /// -536870912.
    void TransformPointsWithRangeCheck(tagPOINT* points, size_t count) const;

    /// The vector v whose image under the linear part is w; w itself when
    /// |det| <= DBL_EPSILON.
    QorMath::vector2dT<double, 0> GetUntransformedVector(const QorMath::vector2dT<double, 0>& w) const;
    /// Direction in [0, 2π) of the image of the unit vector at angle radians.
    double GetTransformedRadians(double angle) const;
    /// Direction in [0, 2π) of the pre-image of the unit vector at angle radians;
    /// angle itself, reduced, when |det| <= DBL_EPSILON.
    double GetUntransformedRadians(double angle) const;

    /// Inverts in place. When |det| <= tolerance all six fields become 0 and the
    /// result is false (a NaN determinant counts as invertible).
    bool Invert(double tolerance);
    /// Scales each column of the linear part to unit length when its squared
    /// length exceeds DBL_EPSILON; translation and skew are kept.
    void RemoveScaling();
    /// this becomes diag(s.x, s.y) · this.
    void ScaleMatrix(const QorMath::vector2dT<double, 0>& s);
    /// A scaling by s about p applied after this.
    void ScaleMatrix(const QorMath::vector2dT<double, 0>& s, const QorMath::vector2dT<double, 1>& p);
    /// this becomes R(angle) · this: a counter-clockwise rotation about the
    /// origin applied after this.
    void Rotate(double angle);
    /// A counter-clockwise rotation about p applied after this.
    void RotateAroundPoint(double angle, const QorMath::vector2dT<double, 1>& p);
    /// m applied about p after this: T(p) · m · T(-p) · this.
    void TransformAroundPoint(const MATRIX& m, const QorMath::vector2dT<double, 1>& p);

    /// Without tolerance the six fields must equal the identity's bytes (so -0.0
    /// off the diagonal is not the identity); with it each field must lie within
    /// tolerance of its identity value, inclusive.
    bool IsIdentity(bool useTolerance, double tolerance) const;
    /// The fixed point p with M·p = p. False with out = (0, 0) when the fixed
    /// point is not unique (|det(linear − I)| <= DBL_EPSILON).
    bool GetCenterOfTransformation(QorMath::vector2dT<double, 1>& out) const;
    /// Two points p1, p2 of the line of fixed points (reflections, shears along a
    /// line), read from the first row of M − I unless that row is empty. False,
    /// outputs untouched, when the fixed set is not a line, and also for some that
    /// are but where that row decides: a − 1 and c zero with d − 1 not (the oblique
    /// reflection {1, −2, 4, 0, −1, 4}), or a first row of M − I that vanishes
    /// while c does not (the shear {1, 0, 0, 3, 1, 0}).
    bool GetLineOfTransformation(QorMath::vector2dT<double, 1>& p1, QorMath::vector2dT<double, 1>& p2) const;
    /// The largest singular value of the linear part: the greatest factor by which
    /// it lengthens any vector.
    double GetMaximumMatrixVectorScale() const;

    /// \name Classification
    /// A quantity is within tol when |x| <= tol; NaN never is.
    /// @{

    /// b != 0 and c != 0, exactly; tolerance ignored.
    bool IsRotated(double tolerance) const;
    /// a != 1, d != 1, b == 0, c == 0, exactly; tolerance ignored. A matrix that
    /// scales one axis only is reported false.
    bool IsScaledOnly(double tolerance) const;
    /// c or b not within tolerance.
    bool IsSkewedOrRotated(double tolerance) const;
    /// c or b not within tolerance, or a <= 0, or d <= 0.
    bool IsSkewedOrRotatedOrMirrored(double tolerance) const;
    /// a - 1, d - 1, c or b not within tolerance.
    bool IsScaledOrSkewedOrRotated(double tolerance) const;
    /// c or b not within tolerance, or a <= 0, or a - d not within tolerance.
    bool IsNonUniformScaledOrSkewedOrRotated(double tolerance) const;
    /// Either column's length differs from 1 by more than tolerance.
    bool IsScaled(double tolerance) const;
    /// det < 0.
    bool IsMirrored() const;
    /// The columns are perpendicular within tolerance (a·b + c·d).
    bool IsOrthogonal(double tolerance) const;
    /// Unit, perpendicular columns within tolerance: each squared column length
    /// within tolerance of 1, and a·b + c·d within tolerance.
    bool IsOrthonormal(double tolerance) const;
    /// Perpendicular columns of equal squared length within tolerance (a zero
    /// linear part qualifies).
    bool IsUniformOrthogonal(double tolerance) const;
    /// Axis-aligned with unit scales (any signs), or a quarter turn or axis swap.
    bool IsOrthonormalAxisAligned(double tolerance) const;
    /// @}
};

namespace QorMath {

/// \name Builders
/// Angles are radians, counter-clockwise positive.
/// @{

/// {1, 0, 0, 0, 1, 0}.
QORMATH_API MATRIX IdentityMatrix();
/// {0, 1, 0, 1, 0, 0}: exchanges x and y.
QORMATH_API MATRIX SwapXYMatrix();
/// The matrix whose columns are xAxis, yAxis and translation.
QORMATH_API MATRIX ConstructMatrix(const vector2dT<double, 0>& xAxis, const vector2dT<double, 0>& yAxis,
                                   const vector2dT<double, 0>& translation);
/// {1, 0, t.x, 0, 1, t.y}.
QORMATH_API MATRIX ConstructTranslationMatrix(const vector2dT<double, 0>& t);
/// {cos, -sin, 0, sin, cos, 0}.
QORMATH_API MATRIX ConstructRotationMatrix(double angle);
/// A rotation by angle with p as fixed point.
QORMATH_API MATRIX ConstructRotateAroundMatrix(double angle, const vector2dT<double, 1>& p);
/// R(angle) · diag(sx, sy).
QORMATH_API MATRIX ConstructScaledRotationMatrix(double sx, double sy, double angle);
/// A scaling by (sx, sy) with p as fixed point.
QORMATH_API MATRIX ConstructScaleAroundMatrix(double sx, double sy, const vector2dT<double, 1>& p);
/// x' = x - tan(angleX)·y, then y' = tan(angleY)·x + y, with p as fixed point.
QORMATH_API MATRIX ConstructSkewAroundMatrix(double angleX, double angleY, const vector2dT<double, 1>& p);
/// T(p) · m · T(-p): m applied about p.
QORMATH_API MATRIX ConstructTransformAroundMatrix(const MATRIX& m, const vector2dT<double, 1>& p);
/// The rotation with uniform scale |to|/|from| (1 when from is a zero vector)
/// taking the direction of from to that of to; no translation.
QORMATH_API MATRIX ConstructVectorTransformMatrix(const vector2dT<double, 0>& from, const vector2dT<double, 0>& to);
/// The similarity mapping p1 to q1 and p2 to q2. A degenerate source segment
/// gives the translation by q1 - p1.
QORMATH_API MATRIX ConstructLineSegmentTransformMatrix(const vector2dT<double, 1>& p1, const vector2dT<double, 1>& p2,
                                                       const vector2dT<double, 1>& q1, const vector2dT<double, 1>& q2);
/// Maps the unit square onto b (a zero extent counts as 1); with withOffset the
/// unit square's (0, 0) goes to (b.left, b.bottom), otherwise to (0, 0).
QORMATH_API MATRIX ConstructBBoxScaleMatrix(const BoundsT<double>& b, bool withOffset);
/// Maps from onto to about their centres, scaled per mode. Zero-sized from is
/// not guarded: the result holds infinities or NaN.
QORMATH_API MATRIX ConstructRectTransformMatrix(const BoundsT<double>& from, const BoundsT<double>& to, MapMode mode);
/// P = t · m (m first, then t) with m's own scales kept: P's rotation, skew and
/// origin recomposed with m's scaleX and scaleY. The change of scale (P's over
/// m's, per axis) is returned in scaleOut. Failed decompositions are not
/// reported: their unwritten fields read scale 1, skew 0, rotation 0.
QORMATH_API MATRIX TransformMatrixAndSeparateScale(const MATRIX& m, const MATRIX& t, vector2dT<double, 0>& scaleOut);
/// @}

/// Every field of m1 within tolerance (inclusive) of m2's.
QORMATH_API bool IsEqual(const MATRIX& m1, const MATRIX& m2, double tolerance);
/// Every field's magnitude at most tolerance.
QORMATH_API bool IsZero(const MATRIX& m, double tolerance);

/// Decomposes m (origin (tx, ty), x axis (a, c), y axis (b, d)). False when the
/// y axis is zero or collapses onto the x axis, or the skew reaches 89.1°.
QORMATH_API bool DecomposeAffineTransform(AFF_TRANSFORM& out, const MATRIX& m);
/// Decomposes the transform given by the image of the origin and of the two
/// unit axes. Fields not reached before a failure keep what they held.
QORMATH_API bool DecomposeAffineTransformFromVectors(AFF_TRANSFORM& out, const vector2dT<double, 1>& origin,
                                                     const vector2dT<double, 0>& xAxis,
                                                     const vector2dT<double, 0>& yAxis);
/// Writes rotation · [scaleX, skew·scaleY; 0, scaleY] plus origin into out.
/// False (out still written) when either scale is exactly 0.
QORMATH_API bool ComposeAffineTransform(MATRIX& out, const AFF_TRANSFORM& in);
/// The per-axis scale mapping fromSize onto toSize per mode (unguarded divisions).
QORMATH_API vector2dT<double, 0> GetScaleForSizeTransform(const vector2dT<double, 0>& fromSize,
                                                          const vector2dT<double, 0>& toSize, MapMode mode);

}  // namespace QorMath

extern "C" {
/// \name Flat interface (UTL)
/// Angles are int32 millionths of a degree, converted with the factor
/// 0.017453292519943 per degree; each call premultiplies, so the new operation
/// applies after the existing transform. A null m does nothing.
/// @{

/// Writes the identity into m.
QORMATH_API void UTLGetIdentityMatrix(MATRIX* m);
/// tx += dx, ty += dy.
QORMATH_API void UTLTranslateMatrix(MATRIX* m, int32_t dx, int32_t dy);
/// Counter-clockwise rotation by angle about the origin; whole turns leave m
/// untouched, bit for bit.
QORMATH_API void UTLRotateMatrix(MATRIX* m, int32_t angle);
/// Counter-clockwise rotation by angle about (cx, cy); whole turns leave m
/// untouched, and exact quarter turns avoid rounding noise.
QORMATH_API void UTLRotateMatrixAround(MATRIX* m, int32_t angle, int32_t cx, int32_t cy);
/// Scaling by (sx, sy) about (cx, cy).
QORMATH_API void UTLStretchMatrix(MATRIX* m, double sx, double sy, int32_t cx, int32_t cy);
/// Skew about (cx, cy): x' = x - tan(angleX)·y, then y' = tan(angleY)·x + y.
QORMATH_API void UTLSkewMatrix(MATRIX* m, int32_t angleX, int32_t angleY, int32_t cx, int32_t cy);
/// Transforms count points in place with RoundToInt; nothing when count < 1 or
/// either pointer is null.
QORMATH_API void UTLTransformPoint(tagPOINT* points, const MATRIX* m, int64_t count);
/// @}
}

#endif
