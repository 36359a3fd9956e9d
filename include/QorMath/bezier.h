#ifndef QORMATH_BEZIER_H
#define QORMATH_BEZIER_H

// Cubic Bezier segments: evaluation, analysis, intersection, offsetting and flattening.
// This family's declarations land here as it is built.

#include "QorMath/types.h"

#endif
