#include "geometry/precision_guard.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <initializer_list>
#include <stdexcept>

#if defined(__i386__) || defined(__x86_64__)
#include <fpu_control.h>
#endif

using namespace QorMath;

#if defined(__i386__) || defined(__x86_64__)

namespace {

fpu_control_t ControlWord() {
    fpu_control_t cw;
    _FPU_GETCW(cw);
    return cw;
}

// 1 + 2⁻⁶⁰ survives only with the full 64-bit mantissa.
bool SeesFullMantissa() {
    volatile long double one = 1.0L, tiny = 0x1p-60L;
    volatile long double sum = one + tiny;
    return sum != one;
}

// Every test leaves the thread's control word and rounding mode as it found them.
class PrecisionGuardTest : public ::testing::Test {
protected:
    void SetUp() override { saved_ = ControlWord(), round_ = std::fegetround(); }
    void TearDown() override {
        _FPU_SETCW(saved_);
        std::fesetround(round_);
    }
    fpu_control_t saved_{};
    int round_{};
};

}  // namespace

TEST_F(PrecisionGuardTest, RaisesReducedPrecisionForItsScopeOnly) {
    for (unsigned lowered : {PrecisionDouble, PrecisionSingle}) {
        WritePrecisionControl(lowered);
        ASSERT_EQ(ReadPrecisionControl(), lowered);
        EXPECT_FALSE(SeesFullMantissa());
        {
            PrecisionGuard outer;
            EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
            EXPECT_TRUE(SeesFullMantissa());
            { PrecisionGuard inner; }  // found it raised: puts nothing back
            EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
        }
        EXPECT_EQ(ReadPrecisionControl(), lowered);
        EXPECT_FALSE(SeesFullMantissa());

        try {
            PrecisionGuard guard;
            EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
            throw std::runtime_error("unwind");
        } catch (const std::runtime_error&) {
        }
        EXPECT_EQ(ReadPrecisionControl(), lowered);
    }
}

TEST_F(PrecisionGuardTest, AtFullPrecisionChangesAndRestoresNothing) {
    WritePrecisionControl(PrecisionExtended);
    const fpu_control_t before = ControlWord();
    {
        PrecisionGuard guard;
        EXPECT_EQ(ControlWord(), before);
        WritePrecisionControl(PrecisionDouble);  // lowered by someone else inside the scope
    }
    EXPECT_EQ(ReadPrecisionControl(), PrecisionDouble);
}

TEST_F(PrecisionGuardTest, LeavesRoundingModeAndOtherBitsAlone) {
    for (int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO, FE_TONEAREST}) {
        ASSERT_EQ(std::fesetround(mode), 0);
        const fpu_control_t start = ControlWord();
        WritePrecisionControl(PrecisionDouble | 0xC00u);  // bits outside the field are masked off
        const fpu_control_t before = ControlWord();
        EXPECT_EQ(before, (start & ~_FPU_EXTENDED) | _FPU_DOUBLE);
        {
            PrecisionGuard guard;
            EXPECT_EQ(ControlWord(), before | _FPU_EXTENDED);
            EXPECT_EQ(std::fegetround(), mode);
        }
        EXPECT_EQ(ControlWord(), before);
        EXPECT_EQ(std::fegetround(), mode);
    }
}

#else

// Without an x87 unit nothing can lower the precision and the guard does nothing.
TEST(PrecisionGuardTest, NoX87Unit) {
    WritePrecisionControl(PrecisionSingle);
    {
        PrecisionGuard guard;
        EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
    }
    EXPECT_EQ(ReadPrecisionControl(), PrecisionExtended);
}

#endif
