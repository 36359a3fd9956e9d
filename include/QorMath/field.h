#ifndef QORMATH_FIELD_H
#define QORMATH_FIELD_H

// A sparse grid of 2D float vectors with bilinear sampling and a row-parallel block copy.
// This family's declarations land here as it is built.

#include "QorMath/types.h"

#endif
