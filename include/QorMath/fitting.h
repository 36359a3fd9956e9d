#ifndef QORMATH_FITTING_H
#define QORMATH_FITTING_H

/// \file
/// Fitting lines and curves to point sequences.

#include <vector>

#include "QorMath/types.h"

namespace QorMath {

/// Orthogonal least-squares line through count points: the line through the
/// centroid along the major axis of their scatter. Returns a point on the line
/// and an unnormalised direction:
///   - when the centred cross moment is non-zero, direction = (·, 1) and origin
///     is the line's crossing with y = 0;
///   - otherwise origin is the centroid and direction (1, 0) when the points
///     spread wider in x than in y, else (0, 1).
/// With count < 2 the outputs are left untouched.
QORMATH_API void GetLeastSquaresLines(const vector2dT<double, 1>* points, int count, vector2dT<double, 1>& origin,
                                      vector2dT<double, 0>& direction);
/// The same from the running sums Σx, Σy, Σxy, Σx², Σy² over count points; points
/// is read only when the cross moment is zero (and may then be null: direction
/// (0, 1)). count = 0 yields NaN in both outputs.
QORMATH_API void GetLeastSquaresLines(double sumX, double sumY, double sumXY, double sumXX, double sumYY,
                                      const vector2dT<double, 1>* points, int count, vector2dT<double, 1>& origin,
                                      vector2dT<double, 0>& direction);

// ---- Tridiagonal systems -------------------------------------------------------

/// A square tridiagonal system, built one row at a time: row i holds a (the
/// coefficient of x[i−1]), b (of x[i]) and c (of x[i+1]). In the cyclic system
/// a of row 0 multiplies x[n−1] and c of row n−1 multiplies x[0]; the open
/// system ignores both. Nothing is cached: every Solve factorises anew, without
/// pivoting, and a zero pivot gives infinities or NaN rather than an error.
class QORMATH_API TridiagonalMatrix {
public:
    /// No rows.
    TridiagonalMatrix() = default;
    /// Copies the rows.
    TridiagonalMatrix(const TridiagonalMatrix& other) = default;
    /// Takes the rows; other is left with none.
    TridiagonalMatrix(TridiagonalMatrix&& other) noexcept;
    /// Copies the rows; self-assignment changes nothing.
    TridiagonalMatrix& operator=(const TridiagonalMatrix& other);
    /// Takes the rows; other is left with none.
    TridiagonalMatrix& operator=(TridiagonalMatrix&& other) noexcept;
    /// Frees the rows.
    ~TridiagonalMatrix() = default;

    /// Appends the next row.
    void AddRow(double a, double b, double c);
    /// The number of rows, n.
    size_t Rows() const { return rows_.size(); }

    /// x with d.size() elements; x[0..n−1] solve the system (Thomas algorithm;
    /// the cyclic form writes every unknown as an affine function of x[0]), the
    /// rest stay 0. With no rows, or d shorter than n, every element is 0. A
    /// cyclic system of one row solves (a + b + c)·x[0] = d[0].
    std::vector<double> Solve(const std::vector<double>& d, bool cyclic) const;
    /// The same for both coordinates of point right-hand sides at once.
    std::vector<vector2dT<double, 1>> Solve(const std::vector<vector2dT<double, 1>>& d, bool cyclic) const;

private:
    struct Row {
        double a, b, c;
    };
    static vector2dT<double, 1> Zero() { return {0.0, 0.0}; }
    template <typename T>
    std::vector<T> SolveOpen(const std::vector<T>& d) const;
    template <typename T>
    std::vector<T> SolveCyclic(const std::vector<T>& d, T zero) const;

    std::vector<Row> rows_;
};

// ---- Least-squares cubic Bezier fitting ----------------------------------------
/// \name Least-squares cubic Bezier fitting
/// Control points are written as four points: start anchor, start handle, end
/// handle, end anchor. The fit error is a squared distance: the largest squared
/// distance from a data point to the curve, raised to the squared overshoot where
/// the curve's box passes the data's box. DBL_MAX (1.7976931348623157e308) means
/// no fit was made. u holds each point's parameter: in, the starting guess; out,
/// the parameters of the last pass, normalised to [0, 1].
/// @{

/// Each point's accumulated chord length from the first, as a fraction of the
/// whole; u is resized to count, u[0] = 0 and u[count − 1] = 1 exactly (so
/// count = 1 gives {1}). Coincident points give NaN inside. Throws
/// std::length_error for count <= 0 (count = 0 clears u first).
QORMATH_API void Calculate_u(const vector2dT<double, 1>* points, int count, std::vector<double>& u);

/// A cubic through the first and last point leaving along startTangent and
/// arriving along endTangent, the two handle lengths fitted by least squares,
/// alternated with a nearest-point reparameterisation of every point. Stops
/// after maxIterations passes, when a pass has error below tolerance, or when
/// a pass is more than twice as bad as the best; a pass that is no better, or
/// needed a handle pointing backwards, is not kept (such a handle is replaced
/// by 0.333·|D| / max(|D|, |startTangent|) tangent lengths, D the chord).
/// worstParameter (may be null) receives the parameter of the worst point of
/// the last pass measured. Two points give the chord thirds and error 0.
QORMATH_API double LeastSquares(const vector2dT<double, 1>* points, double* u, int count,
                                const vector2dT<double, 0>& startTangent, const vector2dT<double, 0>& endTangent,
                                vector2dT<double, 1>* out, int maxIterations, double* worstParameter,
                                double tolerance);
/// As above from chord-length parameters, without the tolerance exit.
QORMATH_API double LeastSquares(const vector2dT<double, 1>* points, int count,
                                const vector2dT<double, 0>& startTangent, const vector2dT<double, 0>& endTangent,
                                vector2dT<double, 1>* out, int maxIterations);
/// All four control points free (the ends are not pinned to the data): a
/// power-basis cubic per coordinate by linear least squares, alternated with the
/// reparameterisation.
QORMATH_API double LeastSquares(const vector2dT<double, 1>* points, double* u, int count, vector2dT<double, 1>* out,
                                int maxIterations, double* worstParameter);
/// As above from chord-length parameters.
QORMATH_API double LeastSquares(const vector2dT<double, 1>* points, int count, vector2dT<double, 1>* out,
                                int maxIterations);
/// Two cubics joined with a continuous tangent: out1 fitted to points
/// [0, split), out2 to [split, count). The error is the larger of the two.
/// Needs count >= 5 and 1 <= split <= count − 1, else DBL_MAX with nothing
/// written.
QORMATH_API double LeastSquares(const vector2dT<double, 1>* points, double* u, int count, int split,
                                const vector2dT<double, 0>& startTangent, const vector2dT<double, 0>& endTangent,
                                vector2dT<double, 1>* out1, vector2dT<double, 1>* out2, int maxIterations);
/// As above from chord-length parameters.
QORMATH_API double LeastSquares(const vector2dT<double, 1>* points, int count, int split,
                                const vector2dT<double, 0>& startTangent, const vector2dT<double, 0>& endTangent,
                                vector2dT<double, 1>* out1, vector2dT<double, 1>* out2, int maxIterations);
/// y = c0 + c1·x + c2·x² by least squares; appends c0, c1, c2 to coefficients.
/// False, nothing appended, for fewer than 3 points or a singular system (all
/// x equal).
QORMATH_API bool LeastSquares(const vector2dT<double, 1>* points, unsigned long long count,
                              std::vector<double>& coefficients);
/// @}

}  // namespace QorMath

#endif
