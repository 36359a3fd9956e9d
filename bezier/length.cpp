// Arc length by Gauss–Legendre quadrature of the speed, and its inverse.

#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "bezier/convert.h"
#include "bezier/power_basis.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

// Gauss–Legendre abscissae on [−1, 1] and weights for the 2-, 3-, 4-, 5-, 6-,
// 7-, 8-, 10- and 16-point rules, one rule after another, each ascending. The
// classic published tables: 15 decimals, the 5-, 6- and 10-point rows at 8.
constexpr double kAbscissae[61] = {
    -0.577350269189626, 0.577350269189626,
    -0.774596669241483, 0.0, 0.774596669241483,
    -0.861136311594053, -0.339981043584856, 0.339981043584856, 0.861136311594053,
    -0.90617985, -0.53846931, 0.0, 0.53846931, 0.90617985,
    -0.93246951, -0.66120939, -0.23861919, 0.23861919, 0.66120939, 0.93246951,
    -0.949107912342759, -0.741531185599394, -0.405845151377397, 0.0, 0.405845151377397, 0.741531185599394,
    0.949107912342759,
    -0.960289856497536, -0.796666477413627, -0.525532409916329, -0.183434642495650, 0.183434642495650,
    0.525532409916329, 0.796666477413627, 0.960289856497536,
    -0.97390653, -0.86506337, -0.67940957, -0.43339539, -0.14887434, 0.14887434, 0.43339539, 0.67940957,
    0.86506337, 0.97390653,
    -0.989400934991650, -0.944575023073233, -0.865631202387832, -0.755404408355003, -0.617876244402644,
    -0.458016777657227, -0.281603550779259, -0.095012509837637, 0.095012509837637, 0.281603550779259,
    0.458016777657227, 0.617876244402644, 0.755404408355003, 0.865631202387832, 0.944575023073233,
    0.989400934991650};
constexpr double kWeights[61] = {
    1.0, 1.0,
    0.555555555555556, 0.888888888888889, 0.555555555555556,
    0.347854845137454, 0.652145154862546, 0.652145154862546, 0.347854845137454,
    0.23692689, 0.47862867, 0.56888889, 0.47862867, 0.23692689,
    0.17132449, 0.36076157, 0.46791393, 0.46791393, 0.36076157, 0.17132449,
    0.129484966168870, 0.279705391489277, 0.381830050505119, 0.417959183673469, 0.381830050505119,
    0.279705391489277, 0.129484966168870,
    0.101228536290376, 0.222381034453374, 0.313706645877887, 0.362683783378362, 0.362683783378362,
    0.313706645877887, 0.222381034453374, 0.101228536290376,
    0.06667134, 0.14945135, 0.21908636, 0.26926672, 0.29552422, 0.29552422, 0.26926672, 0.21908636,
    0.14945135, 0.06667134,
    0.027152459411754, 0.062253523938648, 0.095158511682493, 0.124628971255534, 0.149595988816577,
    0.169156519395003, 0.182603415044924, 0.189450610455068, 0.189450610455068, 0.182603415044924,
    0.169156519395003, 0.149595988816577, 0.124628971255534, 0.095158511682493, 0.062253523938648,
    0.027152459411754};

struct Rule {
    int offset;
    int points;
};

// Requested point count n → tabulated rule: below 2 → 2, 9 → 10, above 10 → 16.
Rule RuleFor(LengthAccuracy accuracy) {
    static constexpr Rule kRules[] = {{0, 2}, {2, 3}, {5, 4}, {9, 5}, {14, 6}, {20, 7}, {27, 8}, {35, 10}, {45, 16}};
    const int n = static_cast<int>(accuracy);
    if (n < 2) return kRules[0];
    if (n <= 8) return kRules[n - 2];
    if (n <= 10) return kRules[7];
    return kRules[8];
}

// |B′(t)|² = 9|a|²t⁴ + 12(a·b)t³ + (6(a·c) + 4|b|²)t² + 4(b·c)t + |c|².
struct SpeedSquared {
    double k4, k3, k2, k1, k0;

    SpeedSquared(const Point& a, const Point& b, const Point& c)
        : k4(9 * Dot(a, a)),
          k3(12 * Dot(a, b)),
          k2(6 * Dot(a, c) + 4 * Dot(b, b)),
          k1(4 * Dot(b, c)),
          k0(Dot(c, c)) {}

    double operator()(double t) const { return (((k4 * t + k3) * t + k2) * t + k1) * t + k0; }
};

double Integrate(const SpeedSquared& speed, double t0, double t1, Rule rule) {
    const double half = (t1 - t0) * 0.5, mid = (t0 + t1) * 0.5;
    double sum = 0;
    for (int i = rule.offset; i < rule.offset + rule.points; ++i)
        sum += kWeights[i] * std::sqrt(speed(half * kAbscissae[i] + mid));
    return sum * half;
}

double PieceLength(const Point piece[4]) {
    const PowerBasis k = ToPowerBasis(piece);
    return Integrate(SpeedSquared(k.a, k.b, k.c), 0, 1, RuleFor(LengthAccuracy::Gauss10));
}

}  // namespace

double Length(const Point& a, const Point& b, const Point& c, LengthAccuracy accuracy) {
    return Integrate(SpeedSquared(a, b, c), 0, 1, RuleFor(accuracy));
}

// The piece is cut off by de Casteljau and integrated whole, rather than the
// speed over [0, t], so the rule's points spread over the piece's own length.
double LengthTo(double t, const Point points[4]) {
    if (t == 0) return 0;
    Point piece[4];
    LeftOf(t, points, piece);
    return PieceLength(piece);
}

double LengthTo(double t, const tagPOINT points[4]) {
    Point p[4];
    ToDouble(points, p, 4);
    return LengthTo(t, p);
}

double LengthFrom(double t, const Point points[4]) {
    if (t == 1) return 0;
    Point piece[4];
    RightOf(t, points, piece);
    return PieceLength(piece);
}

double LengthFrom(double t, const tagPOINT points[4]) {
    Point p[4];
    ToDouble(points, p, 4);
    return LengthFrom(t, p);
}

// Regula falsi on the length: the next trial divides the bracket in the ratio
// in which the target divides the bracket's lengths, kept 0.01% from its ends
// so that a one-sided approach still shrinks the bracket.
double GetCurveRelativeLengthParameter(double fraction, Point a, Point b, Point c, double tolerance,
                                       LengthAccuracy accuracy) {
    if (fraction <= 0) return 0;
    if (fraction >= 1) return 1;
    const SpeedSquared speed(a, b, c);
    const Rule rule = RuleFor(accuracy);
    const double length = Integrate(speed, 0, 1, rule);
    const double target = length * fraction;
    double lo = 0, hi = 1, lengthLo = 0, lengthHi = length, ratio = 0.5, tm = 0.5;
    for (int iteration = 0; iteration < 200;) {
        tm = (hi - lo) * ratio + lo;
        const double lengthM = Integrate(speed, 0, tm, rule);
        if (lengthM > target) {
            hi = tm;
            lengthHi = lengthM;
        } else {
            lo = tm;
            lengthLo = lengthM;
        }
        if (std::fabs(target - lengthLo) <= DBL_EPSILON) return lo;
        if (std::fabs(target - lengthHi) <= DBL_EPSILON) return hi;
        ++iteration;
        const double error = std::fabs(lengthM - target);
        ratio = (target - lengthLo) / (lengthHi - lengthLo);
        if (ratio < 0.0001) ratio = 0.0001;
        if (ratio > 0.9999) ratio = 0.9999;
        if (tolerance >= error) break;
    }
    return tm;
}

}  // namespace CubicBezier
}  // namespace QorMath
