#ifndef QORMATH_GEOMETRY_MATRIX_INTERNAL_H
#define QORMATH_GEOMETRY_MATRIX_INTERNAL_H

#include "QorMath/matrix.h"

namespace QorMath {

// m becomes {cs, -sn; sn, cs} · m, translation included, written term by term so
// that callers with exact quarter-turn cosines get exact zeros.
inline void PremultiplyRotation(MATRIX& m, double cs, double sn) {
    const MATRIX o = m;
    m.a = cs * o.a - sn * o.c;
    m.c = sn * o.a + cs * o.c;
    m.b = cs * o.b - sn * o.d;
    m.d = sn * o.b + cs * o.d;
    m.tx = cs * o.tx - sn * o.ty;
    m.ty = sn * o.tx + cs * o.ty;
}

}  // namespace QorMath

#endif
