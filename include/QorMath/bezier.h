#ifndef QORMATH_BEZIER_H
#define QORMATH_BEZIER_H

/// \file
/// Cubic Bezier segments.
///
/// A segment is four control points P0, P1, P2, P3 (start anchor, start handle,
/// end handle, end anchor); the parameter t runs from 0 (P0) to 1 (P3).
/// Output layouts of the splitting functions:
///  - 4 points: one piece, P0'..P3'.
///  - 7 points: left piece in [0..3], right piece in [3..6]; [3] is the split point.
///  - 10 points: pieces [0,t0], [t0,t1], [t1,1] in [0..3], [3..6], [6..9].
///
/// Parameters are not clamped: values outside [0, 1] extrapolate the curve.
/// Every interpolation between a and b at s is (b - a)·s + a, per coordinate, so
/// results are reproducible to the bit. Integer (tagPOINT) forms convert to
/// double, run the double computation and round each output coordinate once,
/// half away from zero (RoundToInt). Outputs must not overlap the input.

#include <vector>

#include "QorMath/types.h"

namespace QorMath {
/// Operations on one cubic Bezier segment: evaluation, splitting, construction,
/// analysis, intersection, self-intersection and offset cusps.
namespace CubicBezier {

// ---- Power basis -----------------------------------------------------------
/// \name Power basis
/// @{

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
/// @}

// ---- Split and subsection (double) -----------------------------------------
/// \name Split and subsection (double)
/// @{

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
/// @}

// ---- Split and subsection (integer) ----------------------------------------
/// \name Split and subsection (integer)
/// @{

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
/// @}

// ---- Construction from three points ----------------------------------------
/// \name Construction from three points
/// @{

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
/// @}

// ---- Analysis ----------------------------------------------------------------
/// \name Analysis
/// The functions below take the power-basis coefficients a, b, c, d of
/// GetPowerBasis (typed as points) unless they say otherwise. Functions filling a
/// std::vector append to it and never clear it. Root arrays (double*) must hold
/// the solver's maximum: 7 for FindTangentsToPoint, 13 for FindCurvatureMinMax.
/// Parameters found as polynomial roots are in the stated range except near a
/// double root: there the solver's double-root probe can return a root of the
/// derivative just outside [0, 1] in its place. Filter where the range matters.
/// A root that falls exactly on a point where the isolation halves its interval
/// (t = 0.5 first) lands at the end of both halves and is missed: a point on a
/// mirror-symmetric curve at its middle can have no closest point, and a
/// crossing of mirror images at t = 0.5 can go unreported.
/// @{

/// Signed curvature (x′y″ − y′x″)/|B′|³ at t, positive where the curve turns
/// counter-clockwise (y up). False at zero speed, curvature untouched.
QORMATH_API bool GetCurvatureAt(double t, const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                const vector2dT<double, 1>& c, double& curvature);
/// Signed radius of curvature |B′|³/(x′y″ − y′x″) at t. False where the
/// numerator is exactly 0 (straight there, or zero speed), radius = +DBL_MAX
/// (−DBL_MAX only when the speed is NaN).
QORMATH_API bool GetCurvatureRadiusAt(double t, const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                      const vector2dT<double, 1>& c, double& radius);
/// The curvature at t, or at t ± 1e-5 toward the middle when the speed at t is
/// zero, or 0.
QORMATH_API double SafeBezierCurvature(double t, const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                       const vector2dT<double, 1>& c);
/// The two roots of B′ × B″ = 0, a quadratic, written to out[0] (the +√D root)
/// and out[1]; returns 2, or 0 when they are complex. Neither sorted nor
/// restricted to [0, 1]; a double root appears twice; a curve whose quadratic
/// has no t² term gives infinities or NaN. Callers filter.
QORMATH_API int BezierInflectionPoints(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                       const vector2dT<double, 1>& c, double* out);
/// Candidate parameters of curvature extrema in (0, 1): where the speed |B′| is
/// extremal or zero (the roots of (|B′|²)³′). Returns the count.
QORMATH_API int FindCurvatureMinMax(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                    const vector2dT<double, 1>& c, double* out);

/// The tangent B′(t), not normalised and never (0, 0): where B′ vanishes, a
/// finite difference over 1e-5 toward the middle, then the chord from B(1e-6)
/// to B(0.999999), then (1, 0).
QORMATH_API vector2dT<double, 0> SafeBezierTangent(double t, const vector2dT<double, 1>& a,
                                                   const vector2dT<double, 1>& b, const vector2dT<double, 1>& c,
                                                   const vector2dT<double, 1>& d);
/// Appends the t in (0, 1) where x′(t) = 0, ascending.
QORMATH_API void GetVerticalTangents(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                     const vector2dT<double, 1>& c, std::vector<double>& out);
/// Appends the t in (0, 1) where y′(t) = 0, ascending.
QORMATH_API void GetHorizontalTangents(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                       const vector2dT<double, 1>& c, std::vector<double>& out);
/// Appends the t in [0, 1] where B′(t) is parallel to direction, ascending.
/// everywhereParallel is set, and nothing appended, when B′ × direction
/// vanishes identically (a straight segment along direction, or a zero direction).
QORMATH_API void GetParallels(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                              const vector2dT<double, 1>& c, const vector2dT<double, 0>& direction,
                              std::vector<double>& out, bool& everywhereParallel);
/// The t in [0, 1] whose tangent line passes through p (roots of a quartic),
/// written to roots; returns the count.
QORMATH_API int FindTangentsToPoint(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                    const vector2dT<double, 1>& c, const vector2dT<double, 1>& d,
                                    const vector2dT<double, 1>& p, double* roots);

/// The nearest of the points where the distance to p is stationary, ends
/// included only when stationary. False, outputs untouched, when there is none.
/// Of equally near points the smaller t wins.
QORMATH_API bool FindClosestPointOnBezier(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                          const vector2dT<double, 1>& c, const vector2dT<double, 1>& d,
                                          const vector2dT<double, 1>& p, double& t, vector2dT<double, 1>& nearest,
                                          double& distanceSquared);
/// As above from control points.
QORMATH_API bool FindClosestPointOnBezier(const vector2dT<double, 1> points[4], const vector2dT<double, 1>& p,
                                          double& t, vector2dT<double, 1>& nearest, double& distanceSquared);
/// As above from integer control points; nearest rounded, distanceSquared that
/// of the unrounded point.
QORMATH_API bool FindClosestPointOnBezier(const tagPOINT points[4], const tagPOINT& p, double& t, tagPOINT& nearest,
                                          double& distanceSquared);
/// The t of the integer form; when it fails, 0.0 if P0 is strictly nearer to p
/// than P3, else 1.0.
QORMATH_API double FindClosestPointOnBezier(const tagPOINT points[4], const tagPOINT& p);
/// Appends every t in (0, 1) where the distance to p is stationary (minima and
/// maxima, in t order), the point there and its squared distance to p. True when
/// there was at least one.
QORMATH_API bool FindClosestPointsOnBezier(const vector2dT<double, 1> points[4], const vector2dT<double, 1>& p,
                                           std::vector<double>& ts, std::vector<vector2dT<double, 1>>& nearest,
                                           std::vector<double>& distancesSquared);
/// As above; points rounded, distances to the rounded points.
QORMATH_API bool FindClosestPointsOnBezier(const tagPOINT points[4], const tagPOINT& p, std::vector<double>& ts,
                                           std::vector<tagPOINT>& nearest, std::vector<double>& distancesSquared);
/// The parameter of a point on or within 0.1 of the curve: the nearest
/// stationary point over t in (−1, 2) is appended when it lies in [0, 1] and
/// nearer than 0.1. Returns whether out is non-empty afterwards.
QORMATH_API bool Invert(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b, const vector2dT<double, 1>& c,
                        const vector2dT<double, 1>& d, const vector2dT<double, 1>& p, std::vector<double>& out);

/// Arc length over [0, 1] by Gauss–Legendre quadrature of the speed, with the
/// rule that accuracy selects (2 to 8, 10 or 16 points).
QORMATH_API double Length(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                          const vector2dT<double, 1>& c, LengthAccuracy accuracy);
/// Length of the piece [0, t] (10-point rule); exactly 0 at t = 0.
QORMATH_API double LengthTo(double t, const vector2dT<double, 1> points[4]);
/// As above, integer points converted to double.
QORMATH_API double LengthTo(double t, const tagPOINT points[4]);
/// Length of the piece [t, 1] (10-point rule); exactly 0 at t = 1.
QORMATH_API double LengthFrom(double t, const vector2dT<double, 1> points[4]);
/// As above, integer points converted to double.
QORMATH_API double LengthFrom(double t, const tagPOINT points[4]);
/// The t at which the length from 0 is fraction of the whole: regula falsi on
/// the length until it is within tolerance (or 200 steps). 0 for fraction <= 0,
/// 1 for fraction >= 1.
QORMATH_API double GetCurveRelativeLengthParameter(double fraction, vector2dT<double, 1> a, vector2dT<double, 1> b,
                                                   vector2dT<double, 1> c, double tolerance,
                                                   LengthAccuracy accuracy);

/// The side of the curve p lies on, seen along the direction of travel, from
/// the closest point (t, nearest, distanceSquared are filled too). False, side
/// untouched, when there is no closest point in [0, 1]. On the tangent line
/// (or at zero speed) the side is SideNone.
QORMATH_API bool GetSide(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b, const vector2dT<double, 1>& c,
                         const vector2dT<double, 1>& d, const vector2dT<double, 1>& p, double& t,
                         vector2dT<double, 1>& nearest, double& distanceSquared, Side& side);
/// As above; every failure gives SideNone.
QORMATH_API Side GetSide(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b, const vector2dT<double, 1>& c,
                         const vector2dT<double, 1>& d, const vector2dT<double, 1>& p);
/// ∫ y·x′ dt over [0, 1]: the signed area between the curve and the x axis,
/// negative when the curve runs toward −x.
QORMATH_API double GetAreaUnderBezier(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                      const vector2dT<double, 1>& c, const vector2dT<double, 1>& d);
/// The point at signed distance distance·scale from B(t) along the left normal
/// of SafeBezierTangent (normalised when its squared length exceeds
/// DBL_EPSILON); positive is to the left of travel.
QORMATH_API vector2dT<double, 1> MapToBezier(const vector2dT<double, 1> points[4], double t, double distance,
                                             double scale);
/// @}

// ---- Implicit form and line intersection ------------------------------------
/// \name Implicit form and line intersection
/// A line is two points L0, L1 with parameter s: 0 at L0, 1 at L1, beyond them
/// on the rest of the infinite line. Curve parameters t and line parameters s
/// are stored pairwise: element i of one belongs to element i of the other.
/// includeEnds is handed to the cubic root solver: when set, t = 0 and t = 1 are
/// reported where an end point lies on the line. Near a double root t can fall
/// just outside [0, 1] (see Analysis above).
/// @{

/// The implicit cubic f(x, y) = c1·x³ + c2·y³ + c3·x²y + c4·xy² + c5·x² + c6·y²
/// + c7·xy + c8·x + c9·y + c10 of the curve with power-basis coefficients a, b,
/// c, d: the resultant in t of Y(t) − y and X(t) − x (Y first), so f(B(t)) = 0
/// for every real t. c1 = −a.y³, c2 = a.x³. All ten are 0 when a = (0, 0).
QORMATH_API void ConvertBezierToImplicit(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                         const vector2dT<double, 1>& c, const vector2dT<double, 1>& d, double& c1,
                                         double& c2, double& c3, double& c4, double& c5, double& c6, double& c7,
                                         double& c8, double& c9, double& c10);
/// Clears both vectors, then records every crossing of the curve with the
/// infinite line through line[0] and line[1]: t in [0, 1] in the solver's
/// (ascending) order and s unfiltered, from the larger component of L1 − L0 (y
/// on a tie). False, nothing found, when the two line points coincide.
QORMATH_API bool FindBezierLineIntersection(const vector2dT<double, 1> points[4], const vector2dT<double, 1> line[2],
                                            std::vector<double>& curveParameters,
                                            std::vector<double>& lineParameters, bool includeEnds);
/// As above, integer points converted to double.
QORMATH_API bool FindBezierLineIntersection(const tagPOINT points[4], const tagPOINT line[2],
                                            std::vector<double>& curveParameters,
                                            std::vector<double>& lineParameters, bool includeEnds);
/// Appends the t in [0, 1] where B(t).x = x, without clearing ts first, so the
/// crossings of several segments can be collected. True when ts is non-empty
/// afterwards, whoever filled it.
QORMATH_API bool FindBezierIntersectionsAtX(const vector2dT<double, 1> points[4], double x, std::vector<double>& ts,
                                            bool includeEnds);
/// Whether the curve crosses the closed segment segment[0]–segment[1] (s in
/// [0, 1]); crossings exactly at the curve's end points do not count.
QORMATH_API bool DoesBezierIntersectLineSegment(const tagPOINT points[4], const tagPOINT segment[2]);
/// The same test for double points.
QORMATH_API bool DoesBezierIntersectLineSegment(const vector2dT<double, 1> points[4],
                                                const vector2dT<double, 1> segment[2]);
/// @}

// ---- Curve/curve intersection -----------------------------------------------
/// \name Curve/curve intersection
/// @{

/// The intersections of two segments: parameters on the first and second curve
/// and the points, kept parallel. A curve whose control points lie within 2
/// units of a line is treated as that line (the first curve tried first): the
/// crossings are then appended to the vectors as they were, with the straight
/// curve's parameter found by closest point and strictly inside (0, 1).
/// Otherwise the vectors are cleared and the second curve is substituted into
/// the first one's implicit form (roles exchanged when the first has no t³
/// term); results come in the order of the degree-9 roots on the substituted
/// curve, neither sorted nor de-duplicated. An intersection at the start of the
/// substituted curve is not reported by that method.
QORMATH_API void FindBezierIntersections(const vector2dT<double, 1> first[4], const vector2dT<double, 1> second[4],
                                         std::vector<double>& firstParameters,
                                         std::vector<double>& secondParameters,
                                         std::vector<vector2dT<double, 1>>& points);
/// As above, integer points converted to double; the points stay double.
QORMATH_API void FindBezierIntersections(const tagPOINT first[4], const tagPOINT second[4],
                                         std::vector<double>& firstParameters,
                                         std::vector<double>& secondParameters,
                                         std::vector<vector2dT<double, 1>>& points);
/// True at once when an end point of one equals an end point of the other
/// exactly; otherwise whether FindBezierIntersections finds anything.
QORMATH_API bool DoBeziersIntersect(const vector2dT<double, 1> first[4], const vector2dT<double, 1> second[4]);
/// As above, integer points converted to double.
QORMATH_API bool DoBeziersIntersect(const tagPOINT first[4], const tagPOINT second[4]);
/// Whether the fat line, every point within w of the segment a–b, touches the
/// curve. Meant for short fat lines: false whenever neither a nor b lies in the
/// control points' box grown by w, even if the middle crosses the curve. Then,
/// in order: an end point of the curve within w of a or b, or of the segment;
/// the curve crossing the segment; a or b within w of the curve. A null curve
/// gives false.
QORMATH_API bool DoesFatlineIntersectBezier(const vector2dT<double, 1> points[4], const vector2dT<double, 1>& a,
                                            const vector2dT<double, 1>& b, double w);
/// @}

// ---- Self-intersection -------------------------------------------------------
/// \name Self-intersection
/// @{

/// Whether the segment has a loop. When it does, [t1a, t1b] and [t2a, t2b]
/// (each ascending, clamped to [0, 1]) each contain one of the two parameters of
/// the double point; they are not the parameters themselves. A closed segment
/// (P0 = P3 within DBL_EPSILON) gives false unless closedCurve is set. The
/// outputs are written only when the intervals have been computed, which can
/// happen before a false result.
QORMATH_API bool DoesBezierSelfIntersect(const vector2dT<double, 1> points[4], double& t1a, double& t1b, double& t2a,
                                         double& t2b, bool closedCurve);
/// As above, integer points converted to double.
QORMATH_API bool DoesBezierSelfIntersect(const tagPOINT points[4], double& t1a, double& t1b, double& t2a,
                                         double& t2b, bool closedCurve);
/// The double point of a loop: B(s) = B(t) = point, s from the first interval
/// of DoesBezierSelfIntersect and t from the second. Found by box subdivision
/// of both pieces to depth 8, which gives up on pieces that shrink below one
/// unit first: meant for curves in fine, integer-like units. False when there
/// is no loop or nothing is found (s and point may then be written already).
QORMATH_API bool FindBezierSelfIntersection(const vector2dT<double, 1> points[4], double& s, double& t,
                                            vector2dT<double, 1>& point);
/// As above, integer points converted to double.
QORMATH_API bool FindBezierSelfIntersection(const tagPOINT points[4], double& s, double& t,
                                            vector2dT<double, 1>& point);
/// @}

// ---- Offset cusps ------------------------------------------------------------
/// \name Offset cusps
/// @{

/// Clears out, then records the t in [0, 1] where the offset at signed distance
/// d (positive to the left of travel) has a cusp: where the radius of curvature
/// equals |d| on the side the offset moves to. Takes the power-basis a, b, c. A
/// cusp exactly at t = 0 is not reported. True when out is non-empty.
QORMATH_API bool FindOffsetCusps(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                 const vector2dT<double, 1>& c, double d, std::vector<double>& out);
/// @}

}  // namespace CubicBezier

// ---- Fat lines -----------------------------------------------------------------
/// \name Fat lines
/// @{

/// Whether the segment q0–q1 comes closer than w to the segment p0–p1 (an end
/// point of one strictly within w of the other), or properly crosses it. Two
/// segments that only touch, with w = 0, do not intersect.
QORMATH_API bool DoesFatlineIntersectLine(const vector2dT<double, 1>& p0, const vector2dT<double, 1>& p1,
                                          const vector2dT<double, 1>& q0, const vector2dT<double, 1>& q1, double w);
/// @}

// ---- Offset curves -----------------------------------------------------------
/// \name Offset curves
/// d is a signed distance: positive offsets to the left of the direction of
/// travel (the tangent turned a quarter counter-clockwise, y up).
/// @{

/// Whether offsetting by d is acceptable: true unless, at t = 0.5, 0.25 and
/// 0.75 alike, the centre of curvature lies on the offset side nearer than |d|.
/// A point without curvature, and d = 0, are always acceptable.
QORMATH_API bool IsBezierValidForOffset(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                        const vector2dT<double, 1>& c, double d);
/// As above from control points.
QORMATH_API bool IsBezierValidForOffset(const vector2dT<double, 1> points[4], double d);
/// One cubic fitted (ends and end tangents kept) to the exact offset sampled at
/// t = 0, 0.1, …, 1 and at the curvature extrema that are not nearly flat.
/// status reads 0.5 after every completed fit (−1 before). True when the fit
/// error, a squared distance, is below tolerance.
QORMATH_API bool FindBezierOffsetCurve(const vector2dT<double, 1> points[4], vector2dT<double, 1> out[4], double d,
                                       double tolerance, double& status);
/// The parameters at which to cut the curve so that each piece's offset by d is
/// one cubic within tolerance (a distance). Writes cuts ascending, 0 first and
/// 1 last (cleared first); piece i is [cuts[i], cuts[i + 1]]. The curve is cut
/// at its offset cusps, then pieces that IsBezierValidForOffset refuses, whose
/// FindBezierOffsetCurve misses tolerance², or whose fitted cubic strays more
/// than tolerance from the exact offset between the fit's samples (checked at
/// ten midpoints by closest point) are halved, down to pieces
/// 1/64 of the parameter range wide (six halvings), which are kept as they are.
/// True when every piece met the tolerance. Non-finite input gives {0, 1} and
/// false (and OffsetBezier appends nothing).
QORMATH_API bool GetSegmentsToOffset(const vector2dT<double, 1> points[4], double d, double tolerance,
                                     std::vector<double>& cuts);
/// The offset of the curve by d as a chain of cubics, one per piece of
/// GetSegmentsToOffset, appended to out four points each (the pieces are fitted
/// separately; consecutive ones meet at the same offset point up to rounding).
/// Returns GetSegmentsToOffset's result; its cuts are written to *cuts when
/// cuts is not null.
QORMATH_API bool OffsetBezier(const vector2dT<double, 1> points[4], double d, double tolerance,
                              std::vector<vector2dT<double, 1>>& out, std::vector<double>* cuts = nullptr);
/// @}

// ---- Flattening to lines -----------------------------------------------------
/// \name Flattening to lines
/// One segment to a polyline. No allocation; the output arrays are the caller's.
/// @{

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
/// As above in double, nothing rounded.
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
/// As above in double: the same subdivision, no rounding of the points.
QORMATH_API int AdaptiveBezierToLines(const vector2dT<double, 1> points[4], vector2dT<double, 1>* out,
                                      double tolerance, int maximum);
/// @}

}  // namespace QorMath

#endif
