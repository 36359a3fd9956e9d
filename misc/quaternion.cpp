#include <cmath>

#include "QorMath/misc.h"

namespace QorMath {

Quaternion::Quaternion() : x(0.0), y(0.0), z(0.0), w(1.0) {}

Quaternion::Quaternion(double x_, double y_, double z_, double w_) : x(x_), y(y_), z(z_), w(w_) {}

Quaternion::Quaternion(double angle, const vector3dT<double>& axis) : Quaternion() {
    SetAngleAndAxis(angle, axis);
}

void Quaternion::Clear() {
    *this = Quaternion();
}

Quaternion Quaternion::operator+(const Quaternion& q) const {
    return {x + q.x, y + q.y, z + q.z, w + q.w};
}

Quaternion Quaternion::operator*(double s) const {
    return {x * s, y * s, z * s, w * s};
}

Quaternion Quaternion::operator/(double s) const {
    return {x / s, y / s, z / s, w / s};
}

Quaternion Quaternion::operator*(const Quaternion& q) const {
    return {w * q.x + x * q.w + y * q.z - z * q.y,
            w * q.y + y * q.w + z * q.x - x * q.z,
            w * q.z + z * q.w + x * q.y - y * q.x,
            w * q.w - x * q.x - y * q.y - z * q.z};
}

double Quaternion::DotProduct(const Quaternion& q) const {
    return x * q.x + y * q.y + z * q.z + w * q.w;
}

double Quaternion::MagnitudeSqrd() const {
    return x * x + y * y + z * z + w * w;
}

double Quaternion::Magnitude() const {
    return std::sqrt(x * x + y * y + z * z + w * w);
}

double Quaternion::RotationTheta() const {
    return 2.0 * std::acos(w);
}

Quaternion Quaternion::GetConjugate() const {
    return {-x, -y, -z, w};
}

void Quaternion::SetAngleAndAxis(double angle, const vector3dT<double>& axis) {
    const double half = angle / 2.0;
    const double s = std::sin(half);
    w = std::cos(half);
    x = s * axis.x;
    y = s * axis.y;
    z = s * axis.z;
}

bool Quaternion::Normalize() {
    const double m = std::sqrt(x * x + y * y + z * z + w * w);
    if (!(m > DBL_EPSILON)) return false;
    x /= m;
    y /= m;
    z /= m;
    w /= m;
    return true;
}

void Quaternion::RotateQuick(vector3dT<double>& v) const {
    // w·v + (x, y, z) × v: the first half of the sandwich product only.
    const vector3dT<double> r{w * v.x + y * v.z - z * v.y, w * v.y + z * v.x - x * v.z,
                              w * v.z + x * v.y - y * v.x};
    v = r;
}

void Quaternion::Rotate(vector3dT<double>& v) const {
    const Quaternion t = *this * Quaternion(v.x, v.y, v.z, 0.0);
    const Quaternion r = t * Quaternion(-x, -y, -z, w);
    v = {r.x, r.y, r.z};
}

void Quaternion::RotationCreate(const vector3dT<double>& a, const vector3dT<double>& b) {
    x = a.y * b.z - a.z * b.y;
    y = a.z * b.x - a.x * b.z;
    z = a.x * b.y - a.y * b.x;
    w = a.x * b.x + a.y * b.y + a.z * b.z;
}

void Quaternion::ForceZeros() {
    constexpr double kVectorZero = 2.220446049250313e-13;  // 1000·DBL_EPSILON
    if (std::fabs(x) <= kVectorZero) x = 0.0;
    if (std::fabs(y) <= kVectorZero) y = 0.0;
    if (std::fabs(z) <= kVectorZero) z = 0.0;
    if (std::fabs(w) <= DBL_EPSILON) w = 0.0;
}

bool Quaternion::Interpolate(const Quaternion& from, const Quaternion& to, double t, Quaternion& out) {
    const Quaternion q0 = from;  // copies: out may be either argument
    const Quaternion q1 = to;
    out = q0;
    const double c = q0.DotProduct(q1);
    if (1.0 - std::fabs(c) < 1e-8) return false;
    const double theta = std::acos(c);
    const double s = std::sin(theta);
    if (std::fabs(s) <= DBL_EPSILON) return false;
    const double a = std::sin((1.0 - t) * theta);
    const double b = std::sin(t * theta);
    out = {(a * q0.x + b * q1.x) / s, (a * q0.y + b * q1.y) / s, (a * q0.z + b * q1.z) / s,
           (a * q0.w + b * q1.w) / s};
    return true;
}

}  // namespace QorMath
