#ifndef QORMATH_LAYOUT_H
#define QORMATH_LAYOUT_H

// Placing one rectangle inside another with margins, minimum sizes and alignment.
// This family's declarations land here as it is built.

#include "QorMath/types.h"

#endif
