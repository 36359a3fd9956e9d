#include "geometry/precision_guard.h"

#if defined(__i386__) || defined(__x86_64__)
#include <fpu_control.h>
#define QORMATH_HAVE_X87 1
#endif

namespace QorMath {

#if defined(QORMATH_HAVE_X87)
unsigned ReadPrecisionControl() {
    fpu_control_t cw;
    _FPU_GETCW(cw);
    return static_cast<unsigned>(cw) & PrecisionMask;
}

void WritePrecisionControl(unsigned bits) {
    fpu_control_t cw;
    _FPU_GETCW(cw);
    cw = static_cast<fpu_control_t>((cw & ~static_cast<fpu_control_t>(PrecisionMask)) | (bits & PrecisionMask));
    _FPU_SETCW(cw);
}
#else
unsigned ReadPrecisionControl() { return PrecisionExtended; }
void WritePrecisionControl(unsigned) {}
#endif

PrecisionGuard::PrecisionGuard() : saved_(ReadPrecisionControl()), raised_(saved_ != PrecisionExtended) {
    if (raised_) WritePrecisionControl(PrecisionExtended);
}

PrecisionGuard::~PrecisionGuard() {
    if (raised_) WritePrecisionControl(saved_);
}

}  // namespace QorMath
