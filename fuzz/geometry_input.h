#ifndef QORMATH_FUZZ_GEOMETRY_INPUT_H
#define QORMATH_FUZZ_GEOMETRY_INPUT_H

// The reader of the two geometry targets (matrices and angles; rectangles, boxes, ellipses and point sets): doubles
// that matter to angles, matrices and the int32 range, int32 extremes and turn angles, and the vectors, matrices,
// rectangles and point arrays made of them.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "QorMath/angles.h"
#include "QorMath/matrix.h"
#include "fuzz_input.h"

namespace qfuzz {

class GeometryInput : public Reader<GeometryInput> {
public:
    using P = QorMath::vector2dT<double, 1>;
    using V = QorMath::vector2dT<double, 0>;
    using Reader::Reader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, QorMath::Pi, QorMath::TwoPi, QorMath::Pi / 2,
                                   DBL_EPSILON, DBL_MIN, 4.9e-324, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN,
                                   2147483647.0, -2147483648.0, 2147483647.5, -2147483648.5, 4294967296.0,
                                   536870912.0, 1e300, -1e300, 1e-300, 1e6, 360.0, 90.0, 1e-17, 0.1, 1e16};
        return Tagged(k, 96, 160, 1 / 4.0);
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, INT32_MIN, INT32_MAX, INT32_MIN + 1, INT32_MAX - 1, 360000000,
                                    -360000000, 90000000, 180000000, 270000000, 450000000, 536870912, 46341};
        return Tagged(k, 96, 160, 1);
    }
    V Vec() { return {D(), D()}; }
    tagRECT IRect() { return {I(), I(), I(), I()}; }
    QorMath::BoundsT<double> Box() { return {D(), D(), D(), D()}; }
    MATRIX M() { return {D(), D(), D(), D(), D(), D()}; }
    // Array lengths: at most 32, and never more than the bytes still unread.
    size_t Count() {
        const size_t n = Byte() % 33;
        return std::min(n, Left());
    }
    std::vector<P> Pts() { return Points<P>(Count()); }
    std::vector<tagPOINT> IPts() { return Points<tagPOINT>(Count()); }
};

// The same bits, or both NaN (of any sign and payload).
inline bool SameValue(double u, double w) {
    return (std::isnan(u) && std::isnan(w)) || std::memcmp(&u, &w, sizeof u) == 0;
}

}  // namespace qfuzz

#endif
