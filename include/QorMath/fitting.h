#ifndef QORMATH_FITTING_H
#define QORMATH_FITTING_H

// Fitting lines and curves to point sequences.

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
/// is read only when the cross moment is zero. count = 0 yields NaN outputs.
QORMATH_API void GetLeastSquaresLines(double sumX, double sumY, double sumXY, double sumXX, double sumYY,
                                      const vector2dT<double, 1>* points, int count, vector2dT<double, 1>& origin,
                                      vector2dT<double, 0>& direction);

}  // namespace QorMath

#endif
