#include <cmath>

#include "QorMath/misc.h"
#include "geometry/wrap.h"

using QorMath::TruncateToInt;
using QorMath::WrappingAdd;
using QorMath::WrappingSub;

namespace {

constexpr float kFixedToFloat = 1.52587890625e-05f;  // 2^-16
constexpr int32_t kFixedOne = 65536;

// One row of the 3 × 3 part applied in float, truncated toward zero, plus the
// row's whole-unit translation.
int32_t TransformRow(const int32_t* row, float x, float y, float z) {
    const float c0 = static_cast<float>(row[0]) * kFixedToFloat;
    const float c1 = static_cast<float>(row[1]) * kFixedToFloat;
    const float c2 = static_cast<float>(row[2]) * kFixedToFloat;
    const float sum = c0 * x + c1 * y + c2 * z;
    return WrappingAdd(TruncateToInt(static_cast<double>(sum)), row[3]);
}

// Twice trunc(v·65536): the product scaled to 16.16 first, doubled in integers.
int32_t TwiceFixed(double v) {
    const int32_t f = TruncateToInt(v * 65536.0);
    return WrappingAdd(f, f);
}

}  // namespace

extern "C" {

void MTHGet3DIdentityMatrix(MTH3DMATRIX m) {
    for (int i = 0; i < 12; ++i) m[i] = 0;
    m[0] = m[5] = m[10] = kFixedOne;
}

void MTHTranslate3DMatrix(MTH3DMATRIX m, int32_t dx, int32_t dy, int32_t dz) {
    m[3] = WrappingAdd(m[3], dx);
    m[7] = WrappingAdd(m[7], dy);
    m[11] = WrappingAdd(m[11], dz);
}

void MTHTransform3DPoints(MTH3DPOINT* points, const MTH3DMATRIX m, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        MTH3DPOINT& p = points[i];
        const auto x = static_cast<float>(p.x);
        const auto y = static_cast<float>(p.y);
        const auto z = static_cast<float>(p.z);
        p = {TransformRow(m, x, y, z), TransformRow(m + 4, x, y, z), TransformRow(m + 8, x, y, z)};
    }
}

int32_t MTHPerspective3DProjection(const MTH3DPOINT* in, tagPOINT* out, int32_t count, const MTH3DPOINT eye) {
    // Central projection from the eye onto z = 0: the ray eye + s·(P - eye)
    // meets the plane at s = eye.z/(eye.z - P.z).
    const double ex = eye.x;
    const double ey = eye.y;
    const double ez = eye.z;
    for (int32_t i = 0; i < count; ++i) {
        const double px = in[i].x;
        const double py = in[i].y;
        const double pz = in[i].z;
        const double d = ez - pz;
        out[i].x = TruncateToInt((px * ez - pz * ex) / d);
        out[i].y = TruncateToInt((py * ez - pz * ey) / d);
    }
    return 1;
}

int32_t VECT_QuaternionToMat(const double q[4], MTH3DMATRIX m) {
    const double x = q[0];
    const double y = q[1];
    const double z = q[2];
    const double w = q[3];
    const int32_t xx = TwiceFixed(x * x);
    const int32_t yy = TwiceFixed(y * y);
    const int32_t zz = TwiceFixed(z * z);
    const int32_t xy = TwiceFixed(x * y);
    const int32_t xz = TwiceFixed(x * z);
    const int32_t yz = TwiceFixed(y * z);
    const int32_t wx = TwiceFixed(w * x);
    const int32_t wy = TwiceFixed(w * y);
    const int32_t wz = TwiceFixed(w * z);
    m[0] = WrappingSub(WrappingSub(kFixedOne, zz), yy);
    m[1] = WrappingAdd(xy, wz);
    m[2] = WrappingSub(xz, wy);
    m[4] = WrappingSub(xy, wz);
    m[5] = WrappingSub(WrappingSub(kFixedOne, zz), xx);
    m[6] = WrappingAdd(yz, wx);
    m[8] = WrappingAdd(xz, wy);
    m[9] = WrappingSub(yz, wx);
    m[10] = WrappingSub(WrappingSub(kFixedOne, yy), xx);
    m[3] = m[7] = m[11] = 0;
    return 0;
}

void VECT_MatToQuaternion(const MTH3DMATRIX m, double q[4]) {
    double M[3][3];
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) M[r][c] = static_cast<double>(static_cast<float>(m[4 * r + c]) * kFixedToFloat);
    }
    double v[3];
    double w;
    const double trace = M[0][0] + M[1][1] + M[2][2];
    if (trace > DBL_EPSILON) {
        const double s = std::sqrt(trace + 1.0) / 2.0;
        w = s;
        v[0] = (M[1][2] - M[2][1]) / (4.0 * s);
        v[1] = (M[2][0] - M[0][2]) / (4.0 * s);
        v[2] = (M[0][1] - M[1][0]) / (4.0 * s);
    } else {
        // Near a half turn the trace form loses w; build from the largest
        // diagonal entry instead (ties keep the lower index).
        int i = 0;
        if (M[1][1] > M[0][0]) i = 1;
        if (M[2][2] > M[i][i]) i = 2;
        constexpr int kNext[3] = {1, 2, 0};
        const int j = kNext[i];
        const int k = kNext[j];
        const double s = std::sqrt(M[i][i] - (M[j][j] + M[k][k]) + 1.0);
        v[i] = s / 2.0;
        w = (M[j][k] - M[k][j]) / (2.0 * s);
        v[j] = (M[i][j] + M[j][i]) / (2.0 * s);
        v[k] = (M[i][k] + M[k][i]) / (2.0 * s);
    }
    q[0] = v[0];
    q[1] = v[1];
    q[2] = v[2];
    q[3] = w;
}

}  // extern "C"
