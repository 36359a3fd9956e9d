#ifndef QORMATH_MISC_H
#define QORMATH_MISC_H

// Scalar shaping functions, random numbers, quaternions and the fixed-point 3D interface.
// This family's declarations land here as it is built.

#include "QorMath/types.h"

#endif
