#ifndef QORMATH_QORMATH_H
#define QORMATH_QORMATH_H

// Every family of the library in one include.

#include "QorMath/types.h"
#include "QorMath/matrix.h"
#include "QorMath/angles.h"
#include "QorMath/bounds.h"
#include "QorMath/bezier.h"
#include "QorMath/fitting.h"
#include "QorMath/layout.h"
#include "QorMath/field.h"
#include "QorMath/misc.h"

#endif
