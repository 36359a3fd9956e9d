// Tridiagonal systems by the Thomas algorithm (forward elimination, back
// substitution, no pivoting), and their cyclic form by writing every unknown as
// an affine function of x[0].

#include <utility>

#include "QorMath/fitting.h"

namespace QorMath {

namespace {

using Point = vector2dT<double, 1>;

// The arithmetic of the solves, for scalar and for point values alike: the
// coefficients stay scalar.
inline Point operator-(const Point& p, const Point& q) { return {p.x - q.x, p.y - q.y}; }
inline Point operator+(const Point& p, const Point& q) { return {p.x + q.x, p.y + q.y}; }
inline Point operator*(double s, const Point& p) { return {s * p.x, s * p.y}; }
inline Point operator/(const Point& p, double s) { return {p.x / s, p.y / s}; }

}  // namespace

TridiagonalMatrix::TridiagonalMatrix(TridiagonalMatrix&& other) noexcept : rows_(std::move(other.rows_)) {
    other.rows_ = std::vector<Row>();
}

TridiagonalMatrix& TridiagonalMatrix::operator=(const TridiagonalMatrix& other) {
    if (this != &other) rows_ = other.rows_;
    return *this;
}

TridiagonalMatrix& TridiagonalMatrix::operator=(TridiagonalMatrix&& other) noexcept {
    if (this != &other) {
        rows_ = std::move(other.rows_);
        other.rows_ = std::vector<Row>();
    }
    return *this;
}

// Growth by half the capacity, at least to the size needed.
void TridiagonalMatrix::AddRow(double a, double b, double c) {
    if (rows_.size() == rows_.capacity()) {
        const size_t grown = rows_.capacity() + rows_.capacity() / 2;
        rows_.reserve(grown > rows_.size() + 1 ? grown : rows_.size() + 1);
    }
    rows_.push_back({a, b, c});
}

template <typename T>
std::vector<T> TridiagonalMatrix::SolveOpen(const std::vector<T>& d) const {
    const size_t n = rows_.size();
    std::vector<T> x(d.size());
    std::vector<double> gamma(n);
    double bet = rows_[0].b;
    x[0] = d[0] / bet;
    for (size_t i = 1; i < n; ++i) {
        gamma[i] = rows_[i - 1].c / bet;
        bet = rows_[i].b - rows_[i].a * gamma[i];
        x[i] = (d[i] - rows_[i].a * x[i - 1]) / bet;
    }
    for (size_t i = n - 1; i-- > 0;) x[i] = x[i] - gamma[i + 1] * x[i + 1];
    return x;
}

// x[i] = u[i] + v[i]·x[0]: u solves rows 1..n−1 with x[0] = 0, v is their
// response to x[0] (the corner c of the last row included); row 0 then fixes x[0].
template <typename T>
std::vector<T> TridiagonalMatrix::SolveCyclic(const std::vector<T>& d, T zero) const {
    const size_t n = rows_.size();
    const std::vector<Row>& r = rows_;
    std::vector<T> x(d.size());
    std::vector<double> gamma(n), v(n);
    std::vector<T> u(n, zero);
    v[0] = 1;
    double bet = r[1].b;
    u[1] = d[1] / bet;
    v[1] = -r[1].a / bet;
    for (size_t i = 2; i < n; ++i) {
        gamma[i] = r[i - 1].c / bet;
        bet = r[i].b - r[i].a * gamma[i];
        u[i] = (d[i] - r[i].a * u[i - 1]) / bet;
        v[i] = (0 - v[i - 1] * r[i].a) / bet;
    }
    v[n - 1] = (-r[n - 1].c - v[n - 2] * r[n - 1].a) / bet;
    for (size_t i = n - 2; i >= 1; --i) {
        u[i] = u[i] - gamma[i + 1] * u[i + 1];
        v[i] = v[i] - gamma[i + 1] * v[i + 1];
    }
    const T x0 = (d[0] - r[0].a * u[n - 1] - r[0].c * u[1]) / ((r[0].a * v[n - 1] + r[0].b) + r[0].c * v[1]);
    for (size_t i = 0; i < n; ++i) x[i] = v[i] * x0 + u[i];
    return x;
}

std::vector<double> TridiagonalMatrix::Solve(const std::vector<double>& d, bool cyclic) const {
    const size_t n = rows_.size();
    if (n == 0 || d.size() < n) return std::vector<double>(d.size());
    if (cyclic && n == 1) {
        std::vector<double> x(d.size());
        x[0] = d[0] / (rows_[0].a + rows_[0].b + rows_[0].c);
        return x;
    }
    return cyclic ? SolveCyclic<double>(d, 0.0) : SolveOpen<double>(d);
}

std::vector<Point> TridiagonalMatrix::Solve(const std::vector<Point>& d, bool cyclic) const {
    const size_t n = rows_.size();
    if (n == 0 || d.size() < n) return std::vector<Point>(d.size());
    if (cyclic && n == 1) {
        std::vector<Point> x(d.size());
        x[0] = d[0] / (rows_[0].a + rows_[0].b + rows_[0].c);
        return x;
    }
    return cyclic ? SolveCyclic<Point>(d, Zero()) : SolveOpen<Point>(d);
}

}  // namespace QorMath
