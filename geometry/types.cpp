#include "QorMath/types.h"

namespace QorMath {

namespace {
// The int32 extremes, also written as doubles for the empty bounds.
constexpr int32_t kMaxInt = 2147483647;
constexpr int32_t kMinInt = -2147483647 - 1;
constexpr BoundsT<double> kIdentityBounds{0.0, 1.0, 1.0, 0.0};
}  // namespace

tagRECT GetEmptyRect() {
    return tagRECT{kMaxInt, kMinInt, kMinInt, kMaxInt};
}

void InitializeEmpty(tagRECT& r) {
    r = GetEmptyRect();
}

void InitializeEmpty(BoundsT<double>& b) {
    b = BoundsT<double>{2147483647.0, -2147483648.0, -2147483648.0, 2147483647.0};
}

const BoundsT<double>& IdentityBounds() {
    return kIdentityBounds;
}

}  // namespace QorMath
