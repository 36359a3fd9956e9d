#ifndef QORMATH_GEOMETRY_WRAP_H
#define QORMATH_GEOMETRY_WRAP_H

// Internal: int32 arithmetic that wraps around (two's complement), as the integer
// records' older callers computed it. Done in unsigned arithmetic, where
// wrapping is defined, and converted back.

#include <cstdint>

namespace QorMath {

inline int32_t WrappingAdd(int32_t x, int32_t y) {
    return static_cast<int32_t>(static_cast<uint32_t>(x) + static_cast<uint32_t>(y));
}

inline int32_t WrappingSub(int32_t x, int32_t y) {
    return static_cast<int32_t>(static_cast<uint32_t>(x) - static_cast<uint32_t>(y));
}

inline int32_t WrappingMul(int32_t x, int32_t y) {
    return static_cast<int32_t>(static_cast<uint32_t>(x) * static_cast<uint32_t>(y));
}

}  // namespace QorMath

#endif
