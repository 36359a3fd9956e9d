#ifndef QORMATH_BEZIER_TIGHT_BOX_H
#define QORMATH_BEZIER_TIGHT_BOX_H

// Internal: the exact box of a segment over [0, 1], from its end points and the
// points where x′ or y′ vanishes inside, without allocating.

#include <cfloat>

#include "bezier/power_basis.h"
#include "bezier/roots.h"
#include "geometry/grow.h"

namespace QorMath {

// Grows box by B(t) at the roots in (0, 1) of 3a·t² + 2b·t + c, per coordinate.
inline void GrowByTurningPoints(BoundsT<double>& box, const PowerBasis& k, double a, double b, double c) {
    const double q[3] = {3 * a, 2 * b, c};
    double roots[4];
    const int32_t n = FindQuadraticRoots(q, roots, false);
    for (int32_t i = 0; i < n; ++i) GrowBy(box, Evaluate(k, roots[i]));
}

// Starts inverted at ±DBL_MAX; end is P3 as given, not evaluated.
inline BoundsT<double> TightBox(const PowerBasis& k, const vector2dT<double, 1>& end) {
    BoundsT<double> box{DBL_MAX, -DBL_MAX, -DBL_MAX, DBL_MAX};
    GrowBy(box, k.d);
    GrowBy(box, end);
    GrowByTurningPoints(box, k, k.a.x, k.b.x, k.c.x);
    GrowByTurningPoints(box, k, k.a.y, k.b.y, k.c.y);
    return box;
}

}  // namespace QorMath

#endif
