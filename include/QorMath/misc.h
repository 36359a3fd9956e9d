#ifndef QORMATH_MISC_H
#define QORMATH_MISC_H

/// \file
/// Scalar shaping functions, random numbers, quaternions and the fixed-point 3D
/// interface.

#include <cstddef>
#include <cstdint>

#include "QorMath/types.h"

namespace QorMath {

// ---- Scalar shaping functions --------------------------------------------------

/// The normal density exp(-(x - mean)²/(2·sigma²)) / √(2π·sigma²). sigma = 0
/// divides by zero.
QORMATH_API double Gaussian(double x, double mean, double sigma);
/// Signed cube root by pow(|x|, 0.3333333333333333); exactly 0 for |x| <= 1e-10.
QORMATH_API double CubeRoot(double x);
/// The greatest common divisor of |a| and |b|, never negative; GCD(0, 0) = 0.
/// Its one exception is a divisor of 2^31, which int32 cannot hold and which
/// comes back as -2147483648: for (-2147483648, 0), (0, -2147483648) and
/// (-2147483648, -2147483648).
QORMATH_API int32_t GCD(int32_t a, int32_t b);
/// The bias curve t·b / ((1 - 2b)(1 - t) + b), b clamped to [0, 1]: b = 0.5 is
/// neutral (t unchanged), b = 0 gives 0, and Bias(0.5, b) = b. t is not clamped.
QORMATH_API double Bias(double t, double b);
/// The gain curve for g in [-1, 1] (clamped), through (0.5, 0.5): g = 0 is
/// neutral, positive g flattens the middle (slope 1 − 2g/(g + 1) at t = 0.5,
/// steep ends), negative g steepens it. t is not clamped. Returns 1 wherever
/// the lower half's denominator (2t − 1)·2g + g + 1 is within DBL_EPSILON of 0,
/// in either half (Gain(0, 1) = Gain(0.75, −0.5) = 1); the upper half's own
/// denominator is not guarded (Gain(1, 1) is 0/0, NaN).
QORMATH_API double Gain(double t, double g);
/// index / count in double; 1.0 when count is 0.
QORMATH_API double GetLinearBlendFactor(size_t index, size_t count);
/// log((base - 1)·t + 1) / log(base): 0 at t = 0, 1 at t = 1; t itself when
/// |base - 1| <= DBL_EPSILON.
QORMATH_API double GetLogarithmicBlendFactor(double t, double base);
/// Gain(Bias(t, biasParameter), gainParameter): the bias is applied first.
QORMATH_API double GetBiasGainBlendFactor(double t, double gainParameter, double biasParameter);

// ---- Random numbers ----------------------------------------------------------------

/// Uniform numbers from one MT19937 engine per thread, seeded from
/// std::random_device on the thread's first call. No seeding interface:
/// sequences differ from run to run. Safe to call from any number of threads.
namespace Random {
/// lo + u·(hi - lo) with u in [0, 1) on a 53-bit grid; lo > hi gives (hi, lo],
/// lo = hi gives lo. The final rounding can reach the excluded end.
QORMATH_API double Generate(double lo, double hi);
/// Uniform over [lo, hi], both ends included, without bias (multiply and
/// reject). hi < lo wraps: the values from lo up through 2147483647 and on
/// from -2147483648 to hi.
QORMATH_API int32_t Generate(int32_t lo, int32_t hi);
}  // namespace Random

// ---- Quaternion ----------------------------------------------------------------------

/// A quaternion x·i + y·j + z·k + w for 3D rotations. The rotation by θ about
/// an axis a is (a·sin(θ/2), cos(θ/2)); the axis is used as given, not normalised.
class QORMATH_API Quaternion {
public:
    double x;  ///< i component (vector part)
    double y;  ///< j component (vector part)
    double z;  ///< k component (vector part)
    double w;  ///< scalar part: cos(θ/2) for a rotation by θ

    /// The identity rotation (0, 0, 0, 1).
    Quaternion();
    /// The quaternion x·i + y·j + z·k + w, taken as given (not normalised).
    Quaternion(double x, double y, double z, double w);
    /// SetAngleAndAxis(angle, axis); angle in radians.
    Quaternion(double angle, const vector3dT<double>& axis);
    /// Member-wise copy.
    Quaternion(const Quaternion& other) = default;
    /// Member-wise copy.
    Quaternion& operator=(const Quaternion& other) = default;

    /// Back to the identity (0, 0, 0, 1).
    void Clear();
    /// Component-wise sum.
    Quaternion operator+(const Quaternion& q) const;
    /// Every component times s.
    Quaternion operator*(double s) const;
    /// Every component divided by s (no check for 0).
    Quaternion operator/(double s) const;
    /// The Hamilton product this ⊗ q: rotating by the result rotates by q first.
    Quaternion operator*(const Quaternion& q) const;

    /// x·q.x + y·q.y + z·q.z + w·q.w.
    double DotProduct(const Quaternion& q) const;
    /// x² + y² + z² + w².
    double MagnitudeSqrd() const;
    /// √(x² + y² + z² + w²).
    double Magnitude() const;
    /// 2·acos(w) in radians; NaN when |w| > 1 (w is not clamped).
    double RotationTheta() const;
    /// (-x, -y, -z, w).
    Quaternion GetConjugate() const;
    /// w = cos(angle/2), (x, y, z) = sin(angle/2)·axis.
    void SetAngleAndAxis(double angle, const vector3dT<double>& axis);
    /// Divides by the magnitude and returns true; returns false and changes
    /// nothing when the magnitude is not above DBL_EPSILON.
    bool Normalize();
    /// A cheap first-order map, NOT a rotation: v becomes w·v + (x, y, z) × v,
    /// the vector part of this ⊗ (v, 0). Use Rotate to rotate.
    void RotateQuick(vector3dT<double>& v) const;
    /// v becomes the vector part of this ⊗ (v, 0) ⊗ conjugate: the rotation of v
    /// for a unit quaternion (a quaternion of magnitude m also scales by m²).
    void Rotate(vector3dT<double>& v) const;
    /// (x, y, z) = a × b, w = a · b, without normalising or halving: for unit a
    /// and b this encodes twice the angle from a to b. Normalise and halve it to
    /// get the rotation taking a to b.
    void RotationCreate(const vector3dT<double>& a, const vector3dT<double>& b);
    /// x, y, z become exactly 0 when within 1000·DBL_EPSILON of it, w when within
    /// DBL_EPSILON.
    void ForceZeros();
    /// Spherical linear interpolation (sin((1-t)θ)·q0 + sin(tθ)·q1)/sin θ with
    /// cos θ = q0·q1, written to out; t is not clamped. No shortest-path flip: a
    /// negative dot product follows the longer arc. Returns false with out = q0
    /// when q0 and q1 are equal or opposite within 1e-8 or sin θ vanishes.
    static bool Interpolate(const Quaternion& q0, const Quaternion& q1, double t, Quaternion& out);
};

}  // namespace QorMath

// ---- Fixed-point 3D interface (plain C names) -----------------------------------------

/// A 3 × 4 integer transform, row by row: m[0] m[1] m[2] m[3] / m[4] ... / m[8]
/// ... m[11]. Columns 0–2 are 16.16 fixed point (65536 = 1.0); column 3 is the
/// translation in whole units. p maps to M·p: x' = m[0]x + m[1]y + m[2]z + m[3].
typedef int32_t MTH3DMATRIX[12];

/// An integer 3D point.
struct MTH3DPOINT {
    int32_t x;  ///< x coordinate
    int32_t y;  ///< y coordinate
    int32_t z;  ///< z coordinate
};

extern "C" {

/// Writes the identity: m[0] = m[5] = m[10] = 65536, everything else 0.
QORMATH_API void MTHGet3DIdentityMatrix(MTH3DMATRIX m);
/// Adds (dx, dy, dz) to the translation column (int32 wrap-around).
QORMATH_API void MTHTranslate3DMatrix(MTH3DMATRIX m, int32_t dx, int32_t dy, int32_t dz);
/// Transforms the first count points in place (nothing when count < 1), in
/// single precision on purpose: each coordinate is the float sum of the scaled
/// coefficients times the coordinates, truncated toward zero, plus the
/// translation. Exact only while the products fit float's 24-bit mantissa.
QORMATH_API void MTHTransform3DPoints(MTH3DPOINT* points, const MTH3DMATRIX m, int32_t count);
/// Projects count points from the eye onto the plane z = 0, in double:
/// out = trunc((P.xy·eye.z - P.z·eye.xy)/(eye.z - P.z)). A point level with the
/// eye, or a result outside int32, gives -2147483648. Always returns 1.
QORMATH_API int32_t MTHPerspective3DProjection(const MTH3DPOINT* in, tagPOINT* out, int32_t count,
                                               const MTH3DPOINT eye);
/// The fixed-point rotation matrix of q = (x, y, z, w), not normalised first:
/// each product is scaled by 65536 and truncated, then doubled. It is the
/// transpose of the matrix Quaternion::Rotate applies (it rotates by the
/// conjugate). Translation 0. Always returns 0.
QORMATH_API int32_t VECT_QuaternionToMat(const double q[4], MTH3DMATRIX m);
/// The quaternion (x, y, z, w) of the 3 × 3 part of m, the inverse of
/// VECT_QuaternionToMat within fixed-point precision (up to sign).
QORMATH_API void VECT_MatToQuaternion(const MTH3DMATRIX m, double q[4]);

}  // extern "C"

#endif
