#include <array>
#include <cstdint>

#include "../test_util.h"

using namespace QorMath;

namespace {

using M12 = std::array<int32_t, 12>;
using P3 = std::array<int32_t, 3>;
using Q4 = std::array<double, 4>;
constexpr int32_t kOne = 65536, kMin = INT32_MIN;
constexpr M12 kIdentity{kOne, 0, 0, 0, 0, kOne, 0, 0, 0, 0, kOne, 0};

P3 A(const MTH3DPOINT& p) { return {p.x, p.y, p.z}; }

}  // namespace

TEST(Mth3d, IdentityTranslationAndTransform) {
    M12 m;
    m.fill(-7);
    MTHGet3DIdentityMatrix(m.data());
    EXPECT_EQ(m, kIdentity);
    MTHTranslate3DMatrix(m.data(), 5, -6, 7);
    MTHTranslate3DMatrix(m.data(), 1, 1, INT32_MAX);  // int32 wrap-around
    EXPECT_EQ(m, (M12{kOne, 0, 0, 6, 0, kOne, 0, -5, 0, 0, kOne, kMin + 6}));
    const struct { M12 m; P3 in, want; } cases[] = {
        {kIdentity, {16777216, -16777216, 7}, {16777216, -16777216, 7}},
        {kIdentity, {16777217, -16777217, 0}, {16777216, -16777216, 0}},  // 2^24 + 1 is no float
        // 1.5 and -1.5: ±4.5 truncate toward zero, then the whole-unit translation.
        {{98304, 0, 0, 10, 0, -98304, 0, 0, 0, 0, kOne, -1}, {3, 3, 0}, {14, -4, -1}},
        {{98304, 0, 0, 10, 0, -98304, 0, 0, 0, 0, kOne, -1}, {-3, -3, 2}, {6, 4, 1}},
        {{0, -kOne, 0, 0, kOne, 0, 0, 0, 0, 0, kOne, 0}, {1, 2, 3}, {-2, 1, 3}},
        {{1, 0, 0, 0, 0, 32768, 32768, 0, 0, 0, 0, 0}, {65535, 3, 4}, {0, 3, 0}},
        // Float sums left to right: 2^24 + 1 + 1 stays 2^24 (2^24 + 2 in double).
        {{kOne, kOne, kOne, 0, 0, kOne, 0, 0, 0, 0, kOne, 0}, {16777216, 1, 1}, {16777216, 1, 1}},
        // The coefficient 16777217 / 65536 becomes 256 in float: 256 · 65536, not 16777217.
        {{16777217, 0, 0, 0, 0, kOne, 0, 0, 0, 0, kOne, 0}, {kOne, 0, 0}, {16777216, 0, 0}},
    };
    for (const auto& c : cases) {
        MTH3DPOINT p{c.in[0], c.in[1], c.in[2]};
        MTHTransform3DPoints(&p, c.m.data(), 1);
        EXPECT_EQ(A(p), c.want) << &c - cases;
    }
    MTH3DPOINT pts[3] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    const M12 shift{kOne, 0, 0, 100, 0, kOne, 0, 0, 0, 0, kOne, 0};
    for (int32_t n : {0, -1, 2}) MTHTransform3DPoints(pts, shift.data(), n);
    EXPECT_TRUE(A(pts[0]) == (P3{101, 2, 3}) && A(pts[1]) == (P3{104, 5, 6}) && A(pts[2]) == (P3{7, 8, 9}));
}

TEST(Mth3d, PerspectiveProjection) {
    // ±1.5 truncated; behind the eye; eye.z - P.z of 2^32 - 1 in double; ±(2^31 - 0.5), ±(2^31 + 1); level with
    // the eye (±inf and NaN).
    const struct { P3 eye, in; tagPOINT want; } cases[] = {
        {{0, 0, 3}, {1, -1, 1}, {1, -1}},           {{10, 20, 100}, {0, 0, 50}, {-10, -20}},
        {{10, 20, 100}, {0, 0, 200}, {20, 40}},     {{0, 0, INT32_MAX}, {3, -3, kMin}, {1, -1}},
        {{0, 0, 3}, {1431655765, -1431655765, 1}, {INT32_MAX, -INT32_MAX}},
        {{0, 0, 3}, {1431655766, -1431655766, 1}, {kMin, kMin}},
        {{0, 0, 100}, {5, 0, 100}, {kMin, kMin}},   {{7, 7, 100}, {7, 7, 100}, {kMin, kMin}}};
    for (const auto& c : cases) {
        const MTH3DPOINT p{c.in[0], c.in[1], c.in[2]};
        tagPOINT out{1, 1};
        EXPECT_EQ(MTHPerspective3DProjection(&p, &out, 1, {c.eye[0], c.eye[1], c.eye[2]}), 1);
        EXPECT_TRUE(qtest::Same(&out, {c.want})) << &c - cases;
    }
    const MTH3DPOINT two[2] = {{50, 0, 50}, {10, 10, 0}};
    tagPOINT out[2] = {{1, 1}, {1, 1}};
    EXPECT_TRUE(MTHPerspective3DProjection(two, out, 0, {0, 0, 100}) == 1 && qtest::Same(out, {{1, 1}, {1, 1}}));
    EXPECT_TRUE(MTHPerspective3DProjection(two, out, 2, {0, 0, 100}) == 1 && qtest::Same(out, {{100, 0}, {10, 10}}));
}

TEST(Mth3d, QuaternionAndMatrix) {
    // Each case converts one way (1: to the matrix, 2: to the quaternion) or both (3).
    const double h = std::sqrt(0.5), r = std::sqrt(257.0);
    const struct { int way; Q4 q; M12 m; } cases[] = {
        {3, {0, 0, 0, 1}, kIdentity},
        {3, {0, 0, h, h}, {0, kOne, 0, 0, -kOne, 0, 0, 0, 0, 0, kOne, 0}},  // 90° about z, transposed
        {1, {0, 0, 1, 1}, {-kOne, 2 * kOne, 0, 0, -2 * kOne, -kOne, 0, 0, 0, 0, kOne, 0}},  // not normalised
        // Each product truncated toward zero, then doubled: w·z = -0.48 gives 2·(-31457).
        {1, {0, 0, 0.6, -0.8}, {18352, -62914, 0, 0, 62914, 18352, 0, 0, 0, 0, kOne, 0}},
        {1, {0.1, 0.2, 0.3, 0.9}, {48498, 38008, -19660, 0, -32768, 52430, 19660, 0, 27524, -3932, 58984, 0}},
        {1, {qtest::kNaN, 0, 0, 1}, kIdentity},  // NaN products give -2^31, whose double wraps to 0
        {2, {0, 0, 0, 1}, {kOne, 0, 0, 77, 0, kOne, 0, -5, 0, 0, kOne, 9}},  // translation unread
        {3, {1, 0, 0, 0}, {kOne, 0, 0, 0, 0, -kOne, 0, 0, 0, 0, -kOne, 0}},  // half turns: i = 0, 1, 2
        {3, {0, 1, 0, 0}, {-kOne, 0, 0, 0, 0, kOne, 0, 0, 0, 0, -kOne, 0}},
        {3, {0, 0, 1, 0}, {-kOne, 0, 0, 0, 0, -kOne, 0, 0, 0, 0, kOne, 0}},
        {2, {h, 0, 0, 0}, {-kOne, 0, 0, 0, 0, -kOne, 0, 0, 0, 0, -kOne, 0}},  // a tie keeps i = 0
        {3, {0.5, 0.5, 0.5, 0.5}, {0, kOne, 0, 0, 0, 0, kOne, 0, kOne, 0, 0, 0}},  // trace 0: not above DBL_EPSILON
        {2, {std::sqrt(0.75), 0, 0, 0}, {kOne, 0, 0, 0, 0, -kOne, 0, 0, 0, 0, 0, 0}},
        // 16777217 reads as 256 in float: trace 256, s = √257 / 2.
        {2, {1 / (2 * r), 0, 0, r / 2}, {16777217, 0, 0, 0, 0, 0, kOne, 0, 0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        M12 m;
        Q4 q{9, 9, 9, 9};
        m.fill(-7);
        EXPECT_TRUE(!(c.way & 1) || (VECT_QuaternionToMat(c.q.data(), m.data()) == 0 && m == c.m)) << &c - cases;
        if (c.way & 2) VECT_MatToQuaternion(c.m.data(), q.data());
        for (int k = 0; k < 4; ++k) EXPECT_TRUE(!(c.way & 2) || std::fabs(q[k] - c.q[k]) <= 1e-15) << &c - cases;
    }
    // Unit quaternions: M·v is v rotated by the conjugate, each entry within 4/65536 of the exact one; the way
    // back gives ±q within the fixed-point precision.
    std::mt19937 rng(8);
    std::normal_distribution<double> n;
    std::uniform_real_distribution<double> c(-1000, 1000);
    for (int i = 0; i < 1000; ++i) {
        Quaternion u(n(rng), n(rng), n(rng), n(rng) * (i % 4 ? 1 : 1e-3));  // some near half turns
        u.Normalize();
        const Q4 q{u.x, u.y, u.z, u.w};
        M12 m;
        Q4 back;
        VECT_QuaternionToMat(q.data(), m.data());
        VECT_MatToQuaternion(m.data(), back.data());
        const double s = back[0] * q[0] + back[1] * q[1] + back[2] * q[2] + back[3] * q[3] < 0 ? -1 : 1;
        for (int k = 0; k < 4; ++k) EXPECT_NEAR(s * back[k], q[k], 1e-4) << i << " " << k;
        vector3dT<double> v{c(rng), c(rng), c(rng)};
        const double x = v.x, y = v.y, z = v.z, tol = 6.2e-5 * (std::fabs(x) + std::fabs(y) + std::fabs(z));
        u.GetConjugate().Rotate(v);
        EXPECT_NEAR((m[0] * x + m[1] * y + m[2] * z) / kOne, v.x, tol) << i;
        EXPECT_NEAR((m[4] * x + m[5] * y + m[6] * z) / kOne, v.y, tol) << i;
        EXPECT_NEAR((m[8] * x + m[9] * y + m[10] * z) / kOne, v.z, tol) << i;
    }
}
