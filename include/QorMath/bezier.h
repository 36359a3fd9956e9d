#ifndef QORMATH_BEZIER_H
#define QORMATH_BEZIER_H

// Cubic Bezier segments.
//
// A segment is four control points P0, P1, P2, P3 (start anchor, start handle,
// end handle, end anchor); the parameter t runs from 0 (P0) to 1 (P3).
// Output layouts of the splitting functions:
//   4 points: one piece, P0'..P3'.
//   7 points: left piece in [0..3], right piece in [3..6]; [3] is the split point.
//   10 points: pieces [0,t0], [t0,t1], [t1,1] in [0..3], [3..6], [6..9].
// Parameters are not clamped: values outside [0, 1] extrapolate the curve.
// Every interpolation between a and b at s is (b - a)·s + a, per coordinate, so
// results are reproducible to the bit. Integer (tagPOINT) forms convert to
// double, run the double computation and round each output coordinate once,
// half away from zero (RoundToInt). Outputs must not overlap the input.

#include "QorMath/types.h"

namespace QorMath {
namespace CubicBezier {

// ---- Power basis -----------------------------------------------------------

/// The power-basis coefficients of a segment, B(t) = ((a·t + b)·t + c)·t + d:
/// a = P3 − 3·(P2 − P1) − P0, b = 3·(P2 − 2·P1 + P0), c = 3·(P1 − P0), d = P0,
/// computed per coordinate in exactly that form.
QORMATH_API void GetPowerBasis(const vector2dT<double, 1> points[4], vector2dT<double, 1>& a,
                               vector2dT<double, 1>& b, vector2dT<double, 1>& c,
                               vector2dT<double, 1>& d);
/// B(t) = ((a·t + b)·t + c)·t + d by Horner's rule.
QORMATH_API vector2dT<double, 1> Evaluate(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                          const vector2dT<double, 1>& c, const vector2dT<double, 1>& d,
                                          double t);
/// B′(t) = (3a·t + 2b)·t + c.
QORMATH_API vector2dT<double, 0> EvaluateDerivative(const vector2dT<double, 1>& a,
                                                    const vector2dT<double, 1>& b,
                                                    const vector2dT<double, 1>& c, double t);

// ---- Split and subsection (double) -----------------------------------------

/// left = piece [0, t], right = piece [t, 1] (de Casteljau).
QORMATH_API void Split(double t, const vector2dT<double, 1> points[4], vector2dT<double, 1> left[4],
                       vector2dT<double, 1> right[4]);
/// Split at t = 0.5 by midpoints (a + b)·0.5.
QORMATH_API void Split(const vector2dT<double, 1> points[4], vector2dT<double, 1> left[4],
                       vector2dT<double, 1> right[4]);
/// Pieces [0, t] and [t, 1] sharing out[3] (7 points).
QORMATH_API void Split(double t, const vector2dT<double, 1> points[4], vector2dT<double, 1> out[7]);
/// Pieces [0, t0], [t0, t1], [t1, 1] (10 points). out[0..3] = LeftOf(t0), then
/// out[3..6] = Subsection(t0, t1) overwriting out[3], then out[6..9] = RightOf(t1)
/// overwriting out[6]: each shared point is as the later piece computes it.
QORMATH_API void Split(double t0, double t1, const vector2dT<double, 1> points[4],
                       vector2dT<double, 1> out[10]);
/// Piece [0, t].
QORMATH_API void LeftOf(double t, const vector2dT<double, 1> points[4], vector2dT<double, 1> out[4]);
/// Piece [t, 1]. May run in place on an array that an earlier call wrote.
QORMATH_API void RightOf(double t, const vector2dT<double, 1> points[4], vector2dT<double, 1> out[4]);
/// Piece [t0, t1]: LeftOf(t1) when t0 <= 0 (the whole curve when also t1 >= 1),
/// else RightOf(t0) when t1 >= 1, else RightOf(t0 / t1) of LeftOf(t1). t0 > t1
/// is not an error: the ratio exceeds 1 and the piece is extrapolated.
QORMATH_API void Subsection(double t0, double t1, const vector2dT<double, 1> points[4],
                            vector2dT<double, 1> out[4]);

// ---- Split and subsection (integer) ----------------------------------------

/// As the double form, rounded.
QORMATH_API void Split(double t, const tagPOINT points[4], tagPOINT left[4], tagPOINT right[4]);
/// Midpoint split in int32 arithmetic: each midpoint is (a + b) / 2 with the sum
/// wrapping in 32 bits and the division truncating toward zero, level by level.
QORMATH_API void Split(const tagPOINT points[4], tagPOINT left[4], tagPOINT right[4]);
/// As the double form, rounded.
QORMATH_API void Split(double t, const tagPOINT points[4], tagPOINT out[7]);
/// As the double form, rounded.
QORMATH_API void Split(double t0, double t1, const tagPOINT points[4], tagPOINT out[10]);
/// As the double form, rounded.
QORMATH_API void LeftOf(double t, const tagPOINT points[4], tagPOINT out[4]);
/// As the double form, rounded.
QORMATH_API void RightOf(double t, const tagPOINT points[4], tagPOINT out[4]);
/// As the double form (same branches), rounded once at the end.
QORMATH_API void Subsection(double t0, double t1, const tagPOINT points[4], tagPOINT out[4]);

// ---- Construction from three points ----------------------------------------

/// A cubic from start A through M to end B: a quadratic control point Q raised
/// to cubic degree (P1 = A + ⅔(Q − A), P2 = Q + ⅓(B − Q)), rounded.
/// With midpointAtHalf, or when M or B coincides with A (within DBL_EPSILON),
/// the curve passes M at t = 0.5. Otherwise it passes M with its tangent there
/// across the angle A–M–B, Q lying on the outward bisector at the geometric
/// mean of A's and B's distances from that tangent.
QORMATH_API void From3Points(tagPOINT out[4], const vector2dT<double, 1>& A, const vector2dT<double, 1>& M,
                             const vector2dT<double, 1>& B, bool midpointAtHalf);
/// A cubic from A leaving along s to B arriving along e (P1 = A + α·s,
/// P2 = B + β·e) that passes M at t = 0.5, rounded. α and β may be negative;
/// s and e need not be unit length. False, out untouched, when s and e are
/// parallel (|e.y·s.x − s.y·e.x| <= DBL_EPSILON).
QORMATH_API bool From3Points(tagPOINT out[4], const vector2dT<double, 1>& A, const vector2dT<double, 0>& s,
                             const vector2dT<double, 1>& M, const vector2dT<double, 1>& B,
                             const vector2dT<double, 0>& e);

}  // namespace CubicBezier

// ---- Flattening to lines -----------------------------------------------------
// One segment to a polyline. No allocation; the output arrays are the caller's.

/// The caller's preferred line count m scaled down for small curves, from the
/// size S = max(|top − bottom|, right − left) of a box already bounding the
/// curve: m for S >= 650, m/2 from 160, m/4 from 30, m/8 below (int division).
/// Only the height is made absolute: an inverted box's width does not count.
QORMATH_API int CalculateNumBezierLines(const tagRECT& box, int maximum);
/// As above with the box of the four control points.
QORMATH_API int CalculateNumBezierLines(const tagPOINT points[4], int maximum);
/// As above with the control points' box grown outward to whole units.
QORMATH_API int CalculateNumBezierLines(const vector2dT<double, 1> points[4], int maximum);

/// n + 1 points at t = i/n: out[0] = P0 and out[n] = P3 copied, the rest B(i/n)
/// evaluated directly (rounded for tagPOINT). n = 0 leaves P3 in out[0]; a
/// negative n writes nothing.
QORMATH_API void BezierToLines(const tagPOINT points[4], tagPOINT* out, int n);
QORMATH_API void BezierToLines(const vector2dT<double, 1> points[4], vector2dT<double, 1>* out, int n);

/// Recursive midpoint subdivision until each interval's midpoint lies less than
/// √tolerance from its chord (tolerance is a squared distance: 0.25 allows half
/// a unit), between a minimum depth set by the curve's size and the maximum
/// depth that keeps at most `maximum` lines. Returns the number of lines
/// produced (even, at most the largest power of two <= maximum, for maximum >= 2)
/// and writes that many + 1 points, in increasing t, out[0] = P0 and the last
/// = P3 exactly. maximum = 1 gives the chord; maximum < 1 returns 0 and writes
/// nothing. out must have room for maximum + 1 points.
QORMATH_API int AdaptiveBezierToLines(const tagPOINT points[4], tagPOINT* out, double tolerance, int maximum);
QORMATH_API int AdaptiveBezierToLines(const vector2dT<double, 1> points[4], vector2dT<double, 1>* out,
                                      double tolerance, int maximum);

}  // namespace QorMath

#endif
