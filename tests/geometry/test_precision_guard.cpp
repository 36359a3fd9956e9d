#include "geometry/precision_guard.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <initializer_list>
#include <stdexcept>

using namespace QorMath;

#if defined(__i386__) || defined(__x86_64__)
#include <fpu_control.h>

namespace {

fpu_control_t ControlWord() {
    fpu_control_t cw;
    _FPU_GETCW(cw);
    return cw;
}

// 1 + 2⁻⁶⁰ is exact only with the full 64-bit mantissa, whatever the rounding mode.
bool SeesFullMantissa() {
    volatile long double one = 1.0L, tiny = 0x1p-60L, sum = one + tiny;
    return sum - one == tiny;
}

// Every test leaves the thread's control word and rounding mode as it found them.
class PrecisionGuardTest : public ::testing::Test {
protected:
    void SetUp() override { saved_ = ControlWord(), round_ = std::fegetround(); }
    void TearDown() override { _FPU_SETCW(saved_); std::fesetround(round_); }
    fpu_control_t saved_{};
    int round_{};
};

}  // namespace

// Only the precision field moves, for the guard's scope only, and it comes back
// also when an exception leaves the scope. A guard that finds full precision
// puts nothing back, over a change made inside its scope either.
TEST_F(PrecisionGuardTest, RaisesReducedPrecisionForItsScopeOnly) {
    for (int mode : {FE_TONEAREST, FE_UPWARD, FE_TOWARDZERO})
        for (unsigned pc : {PrecisionDouble, PrecisionSingle, PrecisionExtended}) {
            ASSERT_EQ(std::fesetround(mode), 0);
            const fpu_control_t start = ControlWord();
            WritePrecisionControl(pc | 0xC00u);  // rounding bits outside the field are masked off
            const fpu_control_t before = ControlWord();
            ASSERT_TRUE(before == ((start & ~_FPU_EXTENDED) | pc) && ReadPrecisionControl() == pc);
            EXPECT_EQ(SeesFullMantissa(), pc == PrecisionExtended);
            {
                PrecisionGuard outer;
                EXPECT_TRUE(ControlWord() == (before | _FPU_EXTENDED) && SeesFullMantissa());
                { PrecisionGuard inner; }
                EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
            }
            EXPECT_TRUE(ControlWord() == before && std::fegetround() == mode);
            try {
                PrecisionGuard guard;
                EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
                throw std::runtime_error("unwind");
            } catch (const std::runtime_error&) {
            }
            EXPECT_EQ(ControlWord(), before);
        }
    {
        PrecisionGuard guard;
        WritePrecisionControl(PrecisionDouble);
    }
    EXPECT_EQ(ReadPrecisionControl(), PrecisionDouble);
}

#else

// Without an x87 unit nothing can lower the precision and the guard does nothing.
TEST(PrecisionGuardTest, NoX87Unit) {
    WritePrecisionControl(PrecisionSingle);
    { PrecisionGuard guard; }
    EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
}

#endif
