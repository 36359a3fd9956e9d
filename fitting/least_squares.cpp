// Least-squares fitting of cubic Bezier curves to ordered points: a linear
// solve for the control points alternated with moving every point's parameter
// to its nearest point on the current curve. Also a quadratic y(x) regression.

#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "QorMath/fitting.h"
#include "bezier/power_basis.h"
#include "bezier/roots.h"
#include "bezier/tight_box.h"
#include "fitting/fit_internal.h"
#include "geometry/grow.h"

namespace QorMath {

namespace {

using Point = vector2dT<double, 1>;
using Vector = vector2dT<double, 0>;

double Dot(const Point& u, const Point& v) { return u.x * v.x + u.y * v.y; }
double Dot(const Vector& u, const Vector& v) { return u.x * v.x + u.y * v.y; }
double Length(const Vector& v) { return std::sqrt(v.x * v.x + v.y * v.y); }
double DistanceSquared(const Point& p, const Point& q) {
    const double dx = p.x - q.x, dy = p.y - q.y;
    return dx * dx + dy * dy;
}

BoundsT<double> BoxOf(const Point* points, int count) {
    BoundsT<double> box{points[0].x, points[0].y, points[0].x, points[0].y};
    for (int i = 1; i < count; ++i) GrowBy(box, points[i]);
    return box;
}

void Copy(const Point* from, Point* to, int count) {
    for (int i = 0; i < count; ++i) to[i] = from[i];
}

// The handles at a third of the chord along the given tangents.
void ChordThirds(const Point& p0, const Point& p3, const Vector& t0, const Vector& t1, Point* out) {
    const double d = std::sqrt(DistanceSquared(p0, p3)) / 3;
    out[0] = p0;
    out[1] = {p0.x + d * t0.x, p0.y + d * t0.y};
    out[2] = {p3.x - d * t1.x, p3.y - d * t1.y};
    out[3] = p3;
}

// Raises error to the squared overshoot of the curve's box past the data's.
double WithOvershoot(double error, const BoundsT<double>& curve, const BoundsT<double>& data) {
    const auto raise = [&error](double overshoot) {
        const double squared = overshoot * overshoot;
        if (squared > error) error = squared;
    };
    if (data.left > curve.left) raise(data.left - curve.left);
    if (data.bottom > curve.bottom) raise(data.bottom - curve.bottom);
    if (curve.right > data.right) raise(curve.right - data.right);
    if (curve.top > data.top) raise(curve.top - data.top);
    return error;
}

// ---- Tangent-constrained handles ------------------------------------------------

// Σ over the interior points of tᵏ (k = 2..6) and of D·tᵏ (k = 1..3), D = Q − P0.
struct HandleSums {
    double s2 = 0, s3 = 0, s4 = 0, s5 = 0, s6 = 0;
    double x1 = 0, x2 = 0, x3 = 0, y1 = 0, y2 = 0, y3 = 0;

    HandleSums(const Point* points, const double* u, int count) {
        for (int i = 1; i + 1 < count; ++i) {
            const double t = u[i], t2 = t * t, t3 = t2 * t, t4 = t3 * t, t5 = t4 * t, t6 = t5 * t;
            const double dx = points[i].x - points[0].x, dy = points[i].y - points[0].y;
            s2 += t2, s3 += t3, s4 += t4, s5 += t5, s6 += t6;
            x1 += dx * t, x2 += dx * t2, x3 += dx * t3;
            y1 += dy * t, y2 += dy * t2, y3 += dy * t3;
        }
    }
};

// The handle lengths a1 (along t0 from P0) and a2 (along t1 from P3) that
// minimise the squared residuals; false when the normal system is singular or a
// handle came out pointing the wrong way and was replaced by 0.333 of the chord.
bool FitHandles(const Point* points, const double* u, int count, const Vector& t0, const Vector& t1, Point* out) {
    const Point& p0 = points[0];
    const Point& p3 = points[count - 1];
    const HandleSums s(points, u, count);
    const double c11 = (s.s2 - 4 * s.s3 + 6 * s.s4 - 4 * s.s5 + s.s6) * Dot(t0, t0);
    const double c22 = (s.s4 - 2 * s.s5 + s.s6) * Dot(t1, t1);
    const double c12 = (s.s3 - 3 * s.s4 + 3 * s.s5 - s.s6) * Dot(t0, t1);
    const double det = c12 * c12 - c22 * c11;
    if (det == 0.0) {
        out[1] = {p0.x + t0.x, p0.y + t0.y};
        out[2] = {p3.x - t1.x, p3.y - t1.y};
        return false;
    }
    const Vector d{p3.x - p0.x, p3.y - p0.y};
    const double r1 = (3 * s.s3 - 8 * s.s4 + 7 * s.s5 - 2 * s.s6) * Dot(d, t0) -
                      ((s.y1 - 2 * s.y2 + s.y3) * t0.y + (s.x1 - 2 * s.x2 + s.x3) * t0.x);
    const double r2 = (3 * s.s4 - 5 * s.s5 + 2 * s.s6) * Dot(d, t1) - ((s.y2 - s.y3) * t1.y + (s.x2 - s.x3) * t1.x);
    const double inv = 1.0 / det;
    double a1 = (inv * c22 * r1 - inv * c12 * r2) / 3.0;
    double a2 = (inv * c11 * r2 - inv * c12 * r1) / 3.0;
    // A backward handle becomes 0.333 of the chord (capped by |t0|); both use t0.
    const double chord = Length(d), t0Length = Length(t0);
    const double fallback = (chord / (chord > t0Length ? chord : t0Length)) * 0.333;
    bool valid = true;
    if (a1 < 0) a1 = fallback, valid = false;
    if (a2 > 0) a2 = -fallback, valid = false;
    out[1] = {p0.x + a1 * t0.x, p0.y + a1 * t0.y};
    out[2] = {p3.x + a2 * t1.x, p3.y + a2 * t1.y};
    return valid;
}

// ---- Free cubic ----------------------------------------------------------------

// The power-basis cubic per coordinate through all points by linear least
// squares, as control points; false (ctrl untouched) when the normal matrix is
// singular.
bool FitFreeCubic(const Point* points, const double* u, int count, Point* ctrl) {
    double power[7] = {}, rx[4] = {}, ry[4] = {};
    for (int i = 0; i < count; ++i) {
        double tk = 1;
        for (int k = 0; k <= 6; ++k) {
            power[k] += tk;
            if (k <= 3) rx[k] += tk * points[i].x, ry[k] += tk * points[i].y;
            tk *= u[i];
        }
    }
    double m[4][4], inverse[4][4];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) m[i][j] = power[i + j];
    if (!GaussJordanInverse<4>(m, inverse)) return false;
    double x[4] = {}, y[4] = {};  // coefficients of t⁰..t³
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) x[i] += inverse[i][j] * rx[j], y[i] += inverse[i][j] * ry[j];
    const auto control = [](const double (&k)[4], int index) {
        switch (index) {
            case 0: return k[0];
            case 1: return k[1] * 0.3333333333333333 + k[0];
            case 2: return k[2] * 0.3333333333333333 + k[1] * 0.6666666666666666 + k[0];
            default: return k[3] + k[2] + k[1] + k[0];
        }
    };
    for (int i = 0; i < 4; ++i) ctrl[i] = {control(x, i), control(y, i)};
    return true;
}

// ---- Two joined cubics ---------------------------------------------------------

// Unknowns z = (a, b, J.x, J.y, w.x, w.y) of out1 = {P0, P0 + a·t0, J − ρ·w, J}
// and out2 = {J, J + w, P3 − b·t1, P3}: each point gives an x and a y row of a
// linear model, accumulated into the normal equations.
struct JoinedSystem {
    double n[6][6] = {};
    double rhs[6] = {};

    void Add(const double (&row)[6], double value) {
        for (int i = 0; i < 6; ++i) {
            rhs[i] += row[i] * value;
            for (int j = 0; j < 6; ++j) n[i][j] += row[i] * row[j];
        }
    }
};

struct Bernstein {
    double b0, b1, b2, b3;
    explicit Bernstein(double s) {
        const double r = 1 - s;
        b0 = r * r * r, b1 = 3 * s * r * r, b2 = 3 * s * s * r, b3 = s * s * s;
    }
};

bool FitJoined(const Point* points, const double* u1, int n1, const double* u2, int n2, const Vector& t0,
               const Vector& t1, Point* out1, Point* out2) {
    const Point& p0 = points[0];
    const Point& p3 = points[n1 + n2 - 1];
    const double rho = (u1[n1 - 1] - u1[0]) / (u2[n2 - 1] - u2[0]);
    JoinedSystem system;
    for (int i = 0; i < n1; ++i) {
        const Bernstein b(u1[i]);
        const Point& q = points[i];
        system.Add({b.b1 * t0.x, 0, b.b2 + b.b3, 0, -rho * b.b2, 0}, q.x - (b.b0 + b.b1) * p0.x);
        system.Add({b.b1 * t0.y, 0, 0, b.b2 + b.b3, 0, -rho * b.b2}, q.y - (b.b0 + b.b1) * p0.y);
    }
    for (int i = 0; i < n2; ++i) {
        const Bernstein b(u2[i]);
        const Point& q = points[n1 + i];
        system.Add({0, -b.b2 * t1.x, b.b0 + b.b1, 0, b.b1, 0}, q.x - (b.b2 + b.b3) * p3.x);
        system.Add({0, -b.b2 * t1.y, 0, b.b0 + b.b1, 0, b.b1}, q.y - (b.b2 + b.b3) * p3.y);
    }
    double inverse[6][6];
    if (!GaussJordanInverse<6>(system.n, inverse)) return false;
    double z[6] = {};
    for (int i = 0; i < 6; ++i)
        for (int j = 0; j < 6; ++j) z[i] += inverse[i][j] * system.rhs[j];
    const Point joint{z[2], z[3]};
    const Vector w{z[4], z[5]};
    out1[0] = p0;
    out1[1] = {p0.x + z[0] * t0.x, p0.y + z[0] * t0.y};
    out1[2] = {joint.x - rho * w.x, joint.y - rho * w.y};
    out1[3] = joint;
    out2[0] = joint;
    out2[1] = {joint.x + w.x, joint.y + w.y};
    out2[2] = {p3.x - z[1] * t1.x, p3.y - z[1] * t1.y};
    out2[3] = p3;
    return true;
}

}  // namespace

// ---- Internals -------------------------------------------------------------------

void NormaliseParameters(double* u, int count) {
    const double first = u[0];
    const double range = u[count - 1] - first;
    const double scale = 1.0 / range;
    u[0] = 0.0;
    for (int i = 1; i + 1 < count; ++i) u[i] = (u[i] - first) * scale;
    u[count - 1] = 1.0;
}

bool PolishQuinticRoot(const double* q, double t, double tolerance, double* root) {
    double previousStep = 1.0;
    for (int i = 0; i < 200; ++i) {
        const double d = (((5 * q[0] * t + 4 * q[1]) * t + 3 * q[2]) * t + 2 * q[3]) * t + q[4];
        if (d == 0) return false;
        const double value = ((((q[0] * t + q[1]) * t + q[2]) * t + q[3]) * t + q[4]) * t + q[5];
        const double next = t - value / d;
        const double step = std::fabs(t - next);
        if (step < tolerance) {
            *root = next;
            return true;
        }
        if (step >= previousStep) return false;
        t = next;
        previousStep = step;
    }
    return false;
}

// (B(t) − Q)·B′(t) with e = P0 − Q, highest power first:
// 3(A·A), 5(A·B), 4(A·C) + 2(B·B), 3(A·e + B·C), 2(B·e) + C·C, C·e.
double MeasureFitError(const Point* points, const Point* ctrl, double* u, int count, double* worstParameter,
                       const BoundsT<double>& dataBounds) {
    const PowerBasis k = ToPowerBasis(ctrl);
    const Point &a = k.a, &b = k.b, &c = k.c;
    const int begin = u[0] == 0.0 ? 1 : 0;
    const int end = u[count - 1] == 1.0 ? count - 1 : count;
    double maxError = 0;
    for (int i = begin; i < end; ++i) {
        const Point& q = points[i];
        const Point e{k.d.x - q.x, k.d.y - q.y};
        const double quintic[6] = {3 * Dot(a, a), 5 * Dot(a, b), 4 * Dot(a, c) + 2 * Dot(b, b),
                                   3 * (Dot(a, e) + Dot(b, c)), 2 * Dot(b, e) + Dot(c, c), Dot(c, e)};
        double r = 0;
        if (PolishQuinticRoot(quintic, u[i], 1e-5, &r) && std::fabs(r - u[i]) < 0.02 && r >= 0 && r <= 1) {
            u[i] = r;
        } else {
            double roots[7];
            const int32_t n = FindQuinticRoots(quintic, roots, false);
            if (n == 0) continue;
            // The nearest root; of equally near ones the first.
            r = roots[0];
            double nearest = DistanceSquared(Evaluate(k, r), q);
            for (int32_t j = 1; j < n; ++j) {
                const double distance = DistanceSquared(Evaluate(k, roots[j]), q);
                if (distance < nearest) nearest = distance, r = roots[j];
            }
            u[i] = r;
        }
        const double distance = DistanceSquared(Evaluate(k, u[i]), q);
        if (distance > maxError) {
            maxError = distance;
            if (worstParameter) *worstParameter = u[i];
        }
    }
    return WithOvershoot(maxError, TightBox(k, ctrl[3]), dataBounds);
}

// ---- Exported fitters ------------------------------------------------------------

double LeastSquares(const Point* points, double* u, int count, const Vector& startTangent, const Vector& endTangent,
                    Point* out, int maxIterations, double* worstParameter, double tolerance) {
    if (count <= 1) return DBL_MAX;
    const Point& p0 = points[0];
    const Point& p3 = points[count - 1];
    if (count == 2) {
        ChordThirds(p0, p3, startTangent, endTangent, out);
        return 0.0;
    }
    const BoundsT<double> data = BoxOf(points, count);
    double best = DBL_MAX;
    Point saved[4], work[4];
    Copy(out, saved, 4);
    if (count == 3) {
        ChordThirds(p0, p3, startTangent, endTangent, out);
        Copy(out, saved, 4);
        NormaliseParameters(u, 3);
        best = MeasureFitError(points, out, u, 3, worstParameter, data);
    }
    if (maxIterations < 1) return best;
    for (int pass = 0;; ++pass) {
        NormaliseParameters(u, count);
        work[0] = p0;
        work[3] = p3;
        const bool valid = FitHandles(points, u, count, startTangent, endTangent, work);
        const double error = MeasureFitError(points, work, u, count, worstParameter, data);
        const bool last = pass + 1 >= maxIterations;
        if (pass > 0 && (error >= best || !valid)) {
            if (error > 2.0 * best || last) break;
            continue;
        }
        best = error;
        Copy(work, saved, 4);
        if (error < tolerance || last) break;
    }
    Copy(saved, out, 4);
    return best;
}

double LeastSquares(const Point* points, int count, const Vector& startTangent, const Vector& endTangent, Point* out,
                    int maxIterations) {
    std::vector<double> u;
    Calculate_u(points, count, u);
    return LeastSquares(points, u.data(), count, startTangent, endTangent, out, maxIterations, nullptr, -1.0);
}

double LeastSquares(const Point* points, double* u, int count, Point* out, int maxIterations, double* worstParameter) {
    if (count <= 1) return DBL_MAX;
    const Point& p0 = points[0];
    const Point& p3 = points[count - 1];
    if (count == 2) {
        const Vector d{p3.x - p0.x, p3.y - p0.y};
        out[0] = p0;
        out[1] = {p0.x + d.x * 0.3333333333333333, p0.y + d.y * 0.3333333333333333};
        out[2] = {p0.x + d.x * 0.6666666666666666, p0.y + d.y * 0.6666666666666666};
        out[3] = p3;
        return 0.0;
    }
    const BoundsT<double> data = BoxOf(points, count);
    NormaliseParameters(u, count);
    if (maxIterations < 1) return DBL_MAX;
    double best = DBL_MAX;
    Point saved[4], work[4];
    Copy(out, saved, 4);
    Copy(out, work, 4);
    for (int pass = 0; pass < maxIterations; ++pass) {
        const bool valid = FitFreeCubic(points, u, count, work);
        const double error = MeasureFitError(points, work, u, count, worstParameter, data);
        NormaliseParameters(u, count);
        if (pass > 0 && (error >= best || !valid)) {
            if (error > 2.0 * best) break;
            continue;
        }
        best = error;
        Copy(work, saved, 4);
    }
    Copy(saved, out, 4);
    return best;
}

double LeastSquares(const Point* points, int count, Point* out, int maxIterations) {
    std::vector<double> u;
    Calculate_u(points, count, u);
    return LeastSquares(points, u.data(), count, out, maxIterations, nullptr);
}

double LeastSquares(const Point* points, double* u, int count, int split, const Vector& startTangent,
                    const Vector& endTangent, Point* out1, Point* out2, int maxIterations) {
    if (count <= 4 || split < 1 || split > count - 1) return DBL_MAX;
    const BoundsT<double> data = BoxOf(points, count);
    NormaliseParameters(u, count);
    // Each group's parameters rescaled to [0, 1] about the midpoint of the gap.
    const int n1 = split, n2 = count - split;
    std::vector<double> u1(u, u + n1), u2(u + n1, u + count);
    const double m = (u[split - 1] + u[split]) * 0.5;
    for (double& v : u1) v = v / m;
    for (double& v : u2) v = (v - m) / (1.0 - m);

    double best = DBL_MAX;
    Point saved1[4], saved2[4], work1[4], work2[4];
    Copy(out1, saved1, 4), Copy(out2, saved2, 4), Copy(out1, work1, 4), Copy(out2, work2, 4);
    for (int pass = 0; pass < maxIterations; ++pass) {
        const bool solved = FitJoined(points, u1.data(), n1, u2.data(), n2, startTangent, endTangent, work1, work2);
        const double e1 = MeasureFitError(points, work1, u1.data(), n1, nullptr, data);
        const double e2 = MeasureFitError(points + n1, work2, u2.data(), n2, nullptr, data);
        const double error = e2 > e1 ? e2 : e1;
        if (pass == 0 || (error < best && solved)) {
            best = error;
            Copy(work1, saved1, 4), Copy(work2, saved2, 4);
        } else if (error > 2.0 * best) {
            break;
        }
    }
    Copy(saved1, out1, 4), Copy(saved2, out2, 4);
    return best;
}

double LeastSquares(const Point* points, int count, int split, const Vector& startTangent, const Vector& endTangent,
                    Point* out1, Point* out2, int maxIterations) {
    std::vector<double> u;
    Calculate_u(points, count, u);
    return LeastSquares(points, u.data(), count, split, startTangent, endTangent, out1, out2, maxIterations);
}

bool LeastSquares(const Point* points, unsigned long long count, std::vector<double>& coefficients) {
    if (count < 3) return false;
    double power[6] = {}, moment[3] = {};
    for (unsigned long long i = 0; i < count; ++i) {
        double xk = 1;
        for (int k = 0; k < 6; ++k) {
            power[k] += xk;
            if (k < 3) moment[k] += points[i].y * xk;
            xk *= points[i].x;
        }
    }
    double m[3][3], inverse[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) m[i][j] = power[i + j];
    if (!GaussJordanInverse<3>(m, inverse)) return false;
    for (int i = 0; i < 3; ++i)
        coefficients.push_back(inverse[i][0] * moment[0] + inverse[i][1] * moment[1] + inverse[i][2] * moment[2]);
    return true;
}

}  // namespace QorMath
