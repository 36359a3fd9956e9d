// The flat matrix interface for older callers: int32 angles in millionths of a
// degree, int32 centres, each operation applied after the existing transform.

#include "QorMath/matrix.h"
#include "geometry/matrix_internal.h"

namespace {

constexpr int32_t kFullTurn = 360000000;
// This interface's degree-to-radian factor, truncated to 15 significant digits;
// kept as is so results match older callers bit for bit.
constexpr double kRadiansPerDegree = 0.017453292519943;

double ToRadians(int32_t angle) {
    return angle / 1e6 * kRadiansPerDegree;
}

}  // namespace

extern "C" {

void UTLGetIdentityMatrix(MATRIX* m) {
    if (m == nullptr) return;
    *m = MATRIX{1, 0, 0, 0, 1, 0};
}

void UTLTranslateMatrix(MATRIX* m, int32_t dx, int32_t dy) {
    if (m == nullptr) return;
    m->tx += dx;
    m->ty += dy;
}

void UTLRotateMatrix(MATRIX* m, int32_t angle) {
    if (m == nullptr || angle % kFullTurn == 0) return;
    m->Rotate(ToRadians(angle));
}

void UTLRotateMatrixAround(MATRIX* m, int32_t angle, int32_t cx, int32_t cy) {
    if (m == nullptr) return;
    int32_t reduced = angle % kFullTurn;  // the same as adding or subtracting whole turns
    if (reduced < 0) reduced += kFullTurn;
    if (reduced == 0) return;
    m->tx -= cx;
    m->ty -= cy;
    double cs, sn;
    switch (reduced) {
        case 90000000: cs = 0, sn = 1; break;
        case 180000000: cs = -1, sn = 0; break;
        case 270000000: cs = 0, sn = -1; break;
        default: cs = std::cos(ToRadians(reduced)), sn = std::sin(ToRadians(reduced)); break;
    }
    QorMath::PremultiplyRotation(*m, cs, sn);
    m->tx += cx;
    m->ty += cy;
}

void UTLStretchMatrix(MATRIX* m, double sx, double sy, int32_t cx, int32_t cy) {
    if (m == nullptr) return;
    m->a *= sx;
    m->b *= sx;
    m->c *= sy;
    m->d *= sy;
    m->tx = cx + (m->tx - cx) * sx;
    m->ty = cy + (m->ty - cy) * sy;
}

void UTLSkewMatrix(MATRIX* m, int32_t angleX, int32_t angleY, int32_t cx, int32_t cy) {
    if (m == nullptr) return;
    m->tx -= cx;
    m->ty -= cy;
    // S = {1, -h; v, 1 - v·h}: shear x by -tan(angleX), then y by tan(angleY).
    const double h = std::tan(ToRadians(angleX));
    const double v = std::tan(ToRadians(angleY));
    const double k = 1 - v * h;
    const MATRIX o = *m;
    m->a = o.a - h * o.c;
    m->b = o.b - h * o.d;
    m->tx = o.tx - h * o.ty;
    m->c = k * o.c + v * o.a;
    m->d = k * o.d + v * o.b;
    m->ty = k * o.ty + v * o.tx;
    m->tx += cx;
    m->ty += cy;
}

void UTLTransformPoint(tagPOINT* points, const MATRIX* m, int64_t count) {
    if (points == nullptr || m == nullptr || count < 1) return;
    m->TransformPoints(points, static_cast<size_t>(count));
}

}  // extern "C"
