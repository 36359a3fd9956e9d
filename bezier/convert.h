#ifndef QORMATH_BEZIER_CONVERT_H
#define QORMATH_BEZIER_CONVERT_H

// Internal: integer points to double and back, the one conversion every
// tagPOINT overload uses (exact to double; back by RoundToInt).

#include <cstddef>

#include "QorMath/types.h"

namespace QorMath {

inline vector2dT<double, 1> ToDouble(const tagPOINT& p) { return {double(p.x), double(p.y)}; }

// The identity, for code written once for both point types.
inline const vector2dT<double, 1>& ToDouble(const vector2dT<double, 1>& p) { return p; }

inline void ToDouble(const tagPOINT* p, vector2dT<double, 1>* out, size_t count) {
    for (size_t i = 0; i < count; ++i) out[i] = ToDouble(p[i]);
}

inline tagPOINT Rounded(const vector2dT<double, 1>& p) { return {RoundToInt(p.x), RoundToInt(p.y)}; }

inline void Rounded(const vector2dT<double, 1>* p, tagPOINT* out, size_t count) {
    for (size_t i = 0; i < count; ++i) out[i] = Rounded(p[i]);
}

}  // namespace QorMath

#endif
