#ifndef QORMATH_GEOMETRY_PRECISION_GUARD_H
#define QORMATH_GEOMETRY_PRECISION_GUARD_H

// Internal: a scoped guard that gives the x87 unit its full 64-bit mantissa for
// the root solvers and intersection code, and puts the caller's setting back.

namespace QorMath {

// The x87 precision-control field (bits 8 and 9 of the control word).
constexpr unsigned PrecisionSingle = 0x000;    // 24-bit mantissa
constexpr unsigned PrecisionDouble = 0x200;    // 53-bit mantissa
constexpr unsigned PrecisionExtended = 0x300;  // 64-bit mantissa
constexpr unsigned PrecisionMask = 0x300;

// The calling thread's precision-control field; PrecisionExtended where there
// is no x87 unit (then nothing can lower it).
unsigned ReadPrecisionControl();
// Sets the precision-control field (masked), leaving every other control bit
// (rounding mode, exception masks) as it is. No effect without an x87 unit.
void WritePrecisionControl(unsigned bits);

// On creation, raises precision control to 64 bits when it is lower; on scope
// exit, normal or by exception, restores it, and only when it was raised.
// Touches the calling thread's control word only.
class PrecisionGuard {
public:
    PrecisionGuard();
    ~PrecisionGuard();
    PrecisionGuard(const PrecisionGuard&) = delete;
    PrecisionGuard& operator=(const PrecisionGuard&) = delete;

private:
    unsigned saved_;
    bool raised_;
};

}  // namespace QorMath

#endif
