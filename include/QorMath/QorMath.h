#ifndef QORMATH_QORMATH_H
#define QORMATH_QORMATH_H

/// \file
/// Every family of the library in one include: types.h, matrix.h, angles.h,
/// bounds.h, bezier.h, fitting.h, layout.h, field.h and misc.h.

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
