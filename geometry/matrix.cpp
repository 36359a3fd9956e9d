// MATRIX members: application, composition, inversion, in-place builders,
// classification, and the fixed point or fixed line of a transform.

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#define QORMATH_HAVE_SSE2 1
#endif

#include "QorMath/angles.h"
#include "QorMath/matrix.h"
#include "geometry/matrix_internal.h"

using QorMath::vector2dT;

namespace {

constexpr double kEpsilon = DBL_EPSILON;
constexpr int32_t kRangeMin = -536870912;  // -2^29
constexpr int32_t kRangeMax = 536870911;   //  2^29 - 1

// |x| <= tol, inclusive; a NaN is never within.
bool Within(double x, double tol) {
    return std::fabs(x) <= tol;
}

int32_t ClampToRange(int32_t v) {
    return v < kRangeMin ? kRangeMin : (v > kRangeMax ? kRangeMax : v);
}

}  // namespace

vector2dT<double, 1> MATRIX::operator()(const vector2dT<double, 1>& p) const {
    return {a * p.x + b * p.y + tx, c * p.x + d * p.y + ty};
}

vector2dT<double, 0> MATRIX::operator()(const vector2dT<double, 0>& v) const {
    return {a * v.x + b * v.y, c * v.x + d * v.y};
}

MATRIX MATRIX::operator*(const MATRIX& o) const {
    return {a * o.a + b * o.c, a * o.b + b * o.d, a * o.tx + b * o.ty + tx,
            c * o.a + d * o.c, c * o.b + d * o.d, c * o.tx + d * o.ty + ty};
}

// The bulk paths work on both coordinates at once where SSE2 is there:
// (a, c)·x + (b, d)·y + (tx, ty) is the scalar form's products and sums in the
// same order, so every build gives the same bits.
void MATRIX::TransformPoints(vector2dT<double, 1>* points, size_t count) const {
#if defined(QORMATH_HAVE_SSE2)
    const __m128d ac = _mm_set_pd(c, a), bd = _mm_set_pd(d, b), t = _mm_set_pd(ty, tx);
    for (size_t i = 0; i < count; ++i) {
        const __m128d p = _mm_loadu_pd(&points[i].x);
        const __m128d x = _mm_unpacklo_pd(p, p), y = _mm_unpackhi_pd(p, p);
        _mm_storeu_pd(&points[i].x, _mm_add_pd(_mm_add_pd(_mm_mul_pd(ac, x), _mm_mul_pd(bd, y)), t));
    }
#else
    for (size_t i = 0; i < count; ++i) points[i] = (*this)(points[i]);
#endif
}

void MATRIX::TransformPoints(tagPOINT* points, size_t count) const {
#if defined(QORMATH_HAVE_SSE2)
    const __m128d ac = _mm_set_pd(c, a), bd = _mm_set_pd(d, b), t = _mm_set_pd(ty, tx);
    const __m128d half = _mm_set1_pd(0.5), sign = _mm_set1_pd(-0.0);
    for (size_t i = 0; i < count; ++i) {
        const __m128d p = _mm_cvtepi32_pd(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&points[i])));
        const __m128d x = _mm_unpacklo_pd(p, p), y = _mm_unpackhi_pd(p, p);
        __m128d r = _mm_add_pd(_mm_add_pd(_mm_mul_pd(ac, x), _mm_mul_pd(bd, y)), t);
        // RoundToInt: add 0.5 carrying r's sign, then truncate. cvttpd2dq yields
        // -2^31 for NaN and for anything outside int32, as TruncateToInt does.
        r = _mm_add_pd(r, _mm_or_pd(half, _mm_and_pd(r, sign)));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(&points[i]), _mm_cvttpd_epi32(r));
    }
#else
    for (size_t i = 0; i < count; ++i) {
        const double x = points[i].x, y = points[i].y;
        points[i].x = QorMath::RoundToInt(a * x + b * y + tx);
        points[i].y = QorMath::RoundToInt(c * x + d * y + ty);
    }
#endif
}

void MATRIX::TransformPointsWithRangeCheck(tagPOINT* points, size_t count) const {
    for (size_t i = 0; i < count; ++i) {
        const double x = points[i].x, y = points[i].y;
        // Rounded and converted first, clamped after: an overflow has already
        // become -2^31 and so ends at the lower clamp.
        points[i].x = ClampToRange(QorMath::RoundToInt(a * x + b * y + tx));
        points[i].y = ClampToRange(QorMath::RoundToInt(c * x + d * y + ty));
    }
}

vector2dT<double, 0> MATRIX::GetUntransformedVector(const vector2dT<double, 0>& w) const {
    const double det = a * d - c * b;
    if (std::fabs(det) <= kEpsilon) return w;
    return {(d * w.x - b * w.y) / det, (a * w.y - c * w.x) / det};
}

double MATRIX::GetTransformedRadians(double angle) const {
    const vector2dT<double, 0> v = (*this)(vector2dT<double, 0>{std::cos(angle), std::sin(angle)});
    return QorMath::Radians::VectorToAngle(v);
}

double MATRIX::GetUntransformedRadians(double angle) const {
    const vector2dT<double, 0> v = GetUntransformedVector({std::cos(angle), std::sin(angle)});
    return QorMath::Radians::VectorToAngle(v);
}

bool MATRIX::Invert(double tolerance) {
    const double det = d * a - c * b;
    // "tolerance >= |det|" rather than "|det| <= tolerance" reads the same but
    // lets a NaN determinant through as invertible.
    if (tolerance >= std::fabs(det)) {
        *this = MATRIX{0, 0, 0, 0, 0, 0};
        return false;
    }
    const MATRIX m = *this;
    a = m.d / det;
    b = -m.b / det;
    c = -m.c / det;
    d = m.a / det;
    tx = (m.ty * m.b - m.tx * m.d) / det;
    ty = -(m.ty * m.a - m.tx * m.c) / det;
    return true;
}

void MATRIX::RemoveScaling() {
    const double s1 = a * a + c * c;
    if (s1 > kEpsilon) {
        const double len = std::sqrt(s1);
        a /= len;
        c /= len;
    }
    const double s2 = b * b + d * d;
    if (s2 > kEpsilon) {
        const double len = std::sqrt(s2);
        b /= len;
        d /= len;
    }
}

void MATRIX::ScaleMatrix(const vector2dT<double, 0>& s) {
    a *= s.x;
    b *= s.x;
    tx *= s.x;
    c *= s.y;
    d *= s.y;
    ty *= s.y;
}

void MATRIX::ScaleMatrix(const vector2dT<double, 0>& s, const vector2dT<double, 1>& p) {
    a *= s.x;
    b *= s.x;
    tx = (tx - p.x) * s.x + p.x;
    c *= s.y;
    d *= s.y;
    ty = (ty - p.y) * s.y + p.y;
}

void MATRIX::Rotate(double angle) {
    QorMath::PremultiplyRotation(*this, std::cos(angle), std::sin(angle));
}

void MATRIX::RotateAroundPoint(double angle, const vector2dT<double, 1>& p) {
    tx -= p.x;
    ty -= p.y;
    Rotate(angle);
    tx += p.x;
    ty += p.y;
}

void MATRIX::TransformAroundPoint(const MATRIX& m, const vector2dT<double, 1>& p) {
    tx -= p.x;
    ty -= p.y;
    *this = m * *this;
    tx += p.x;
    ty += p.y;
}

bool MATRIX::IsIdentity(bool useTolerance, double tolerance) const {
    if (!useTolerance) {
        static const double kIdentity[6] = {1, 0, 0, 0, 1, 0};
        const double fields[6] = {a, b, tx, c, d, ty};
        return std::memcmp(fields, kIdentity, sizeof fields) == 0;
    }
    return Within(a - 1, tolerance) && Within(b, tolerance) && Within(tx, tolerance) && Within(c, tolerance) &&
           Within(d - 1, tolerance) && Within(ty, tolerance);
}

bool MATRIX::GetCenterOfTransformation(vector2dT<double, 1>& out) const {
    // (L - I)·p = -t by Cramer's rule.
    const double den = (d - 1) * (a - 1) - c * b;
    if (std::fabs(den) <= kEpsilon) {
        out = {0, 0};
        return false;
    }
    out.x = (ty * b - (d - 1) * tx) / den;
    out.y = (c * tx - (a - 1) * ty) / den;
    return true;
}

namespace {

// Two points of the line p·x + q·y + r = 0, solved for the larger coefficient.
bool PointsOfLine(double p, double q, double r, vector2dT<double, 1>& p1, vector2dT<double, 1>& p2) {
    if (std::fabs(q) > std::fabs(p)) {
        p1 = {0, -r / q};
        p2 = {1, -(p + r) / q};
        return true;
    }
    if (std::fabs(p) <= kEpsilon) return false;
    p1 = {-r / p, 0};
    p2 = {-(q + r) / p, 1};
    return true;
}

}  // namespace

bool MATRIX::GetLineOfTransformation(vector2dT<double, 1>& p1, vector2dT<double, 1>& p2) const {
    // The fixed points solve (A b; c D)·p = -t with A = a - 1, D = d - 1. They form a
    // line when that system is singular and its two rows are consistent.
    constexpr double kConsistency = 1e-6;
    const double A = a - 1, D = d - 1;
    if (std::fabs(D * A - c * b) > kEpsilon) return false;
    if (std::fabs(A) <= kEpsilon) {
        if (std::fabs(c) <= kEpsilon) {
            if (std::fabs(b) <= kEpsilon && std::fabs(tx) <= kEpsilon) return PointsOfLine(c, D, ty, p1, p2);
            if (std::fabs(D) > kEpsilon) return false;
            if (std::fabs(ty) > kEpsilon) return false;
            return PointsOfLine(A, b, tx, p1, p2);
        }
        const double r = A / c;
        if (std::fabs(r * D - b) > kConsistency || std::fabs(r * ty - tx) > kConsistency) return false;
        return PointsOfLine(A, b, tx, p1, p2);
    }
    if (std::fabs(D - (c / A) * b) > kConsistency || std::fabs(ty - (c / A) * tx) > kConsistency) return false;
    return PointsOfLine(A, b, tx, p1, p2);
}

double MATRIX::GetMaximumMatrixVectorScale() const {
    // Largest eigenvalue of LᵀL is s + √(u² + v²); its root is the largest singular value.
    const double s = (a * a + b * b + c * c + d * d) / 2;
    const double u = a * b + c * d;
    const double v = (a * a + c * c - b * b - d * d) / 2;
    return std::sqrt(s + std::sqrt(u * u + v * v));
}

bool MATRIX::IsRotated(double) const {
    return b != 0 && c != 0;
}

bool MATRIX::IsScaledOnly(double) const {
    return a != 1 && d != 1 && c == 0 && b == 0;
}

bool MATRIX::IsSkewedOrRotated(double tol) const {
    return !Within(c, tol) || !Within(b, tol);
}

bool MATRIX::IsSkewedOrRotatedOrMirrored(double tol) const {
    return !Within(c, tol) || !Within(b, tol) || !(a > 0) || !(d > 0);
}

bool MATRIX::IsScaledOrSkewedOrRotated(double tol) const {
    return !Within(a - 1, tol) || !Within(d - 1, tol) || !Within(c, tol) || !Within(b, tol);
}

bool MATRIX::IsNonUniformScaledOrSkewedOrRotated(double tol) const {
    return !Within(c, tol) || !Within(b, tol) || !(a > 0) || !Within(a - d, tol);
}

bool MATRIX::IsScaled(double tol) const {
    return !Within(std::sqrt(a * a + c * c) - 1, tol) || !Within(std::sqrt(b * b + d * d) - 1, tol);
}

bool MATRIX::IsMirrored() const {
    return d * a - c * b < 0;
}

bool MATRIX::IsOrthogonal(double tol) const {
    return Within(a * b + c * d, tol);
}

bool MATRIX::IsOrthonormal(double tol) const {
    return Within(a * a + c * c - 1, tol) && Within(b * b + d * d - 1, tol) && Within(a * b + c * d, tol);
}

bool MATRIX::IsUniformOrthogonal(double tol) const {
    return Within((a * a + c * c) - (b * b + d * d), tol) && Within(a * b + c * d, tol);
}

bool MATRIX::IsOrthonormalAxisAligned(double tol) const {
    const bool swapped = Within(a, tol) && Within(std::fabs(c) - 1, tol) && Within(std::fabs(b) - 1, tol) &&
                         Within(d, tol);
    const bool aligned = Within(std::fabs(a) - 1, tol) && Within(c, tol) && Within(b, tol) &&
                         Within(std::fabs(d) - 1, tol);
    return swapped || aligned;
}
