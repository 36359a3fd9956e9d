#ifndef QORMATH_GEOMETRY_GROW_H
#define QORMATH_GEOMETRY_GROW_H

// Internal: grow a double box by a point with four independent comparisons, so a
// NaN coordinate never moves an edge.

#include "QorMath/types.h"

namespace QorMath {

inline void GrowBy(BoundsT<double>& b, const vector2dT<double, 1>& p) {
    if (p.x > b.right) b.right = p.x;
    if (p.y > b.top) b.top = p.y;
    if (p.x < b.left) b.left = p.x;
    if (p.y < b.bottom) b.bottom = p.y;
}

}  // namespace QorMath

#endif
