// Projection of a point onto a cubic segment: the stationary points of the
// distance, the nearest of them, and inversion of a point on the curve.

#include <cfloat>

#include "QorMath/bezier.h"
#include "bezier/convert.h"
#include "bezier/power_basis.h"
#include "bezier/roots.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

// (B(t) − p)·B′(t) = 0 with e = d − p, highest power first:
// 3(a·a), 5(a·b), 2(b·b) + 4(a·c), 3((b·c) + (a·e)), (c·c) + 2(b·e), c·e.
struct Quintic {
    double c[6];

    Quintic(const PowerBasis& k, const Point& p) {
        const Point& a = k.a;
        const Point& b = k.b;
        const Point& d = k.c;  // the power basis's c
        const double ex = k.d.x - p.x, ey = k.d.y - p.y;
        c[0] = 3 * a.x * a.x + 3 * a.y * a.y;
        c[1] = 5 * a.x * b.x + 5 * a.y * b.y;
        c[2] = (2 * b.x * b.x + 2 * b.y * b.y) + (4 * a.x * d.x + 4 * a.y * d.y);
        c[3] = 3 * ((b.x * d.x + b.y * d.y) + (a.x * ex + a.y * ey));
        c[4] = (d.x * d.x + d.y * d.y) + (2 * b.x * ex + 2 * b.y * ey);
        c[5] = d.x * ex + d.y * ey;
    }

    // q(3u − 1) = Σᵢ 3ⁱ·(q⁽ⁱ⁾(−1)/i!)·uⁱ: the Taylor coefficients of q at −1,
    // Σⱼ C(j,i)·(−1)^(j−i)·qⱼ, scaled by 243, 81, 27, 9, 3, 1.
    Quintic Substituted() const {
        static constexpr double kBinomial[6][6] = {{1}, {1, 1}, {1, 2, 1}, {1, 3, 3, 1}, {1, 4, 6, 4, 1},
                                                   {1, 5, 10, 10, 5, 1}};
        Quintic s = *this;
        double scale = 1;
        for (int i = 0; i <= 5; ++i) {
            double taylor = 0;
            for (int j = i; j <= 5; ++j) {
                const double term = kBinomial[j][i] * c[5 - j];
                taylor += (j - i) % 2 ? -term : term;
            }
            s.c[5 - i] = scale * taylor;
            scale *= 3;
        }
        return s;
    }
};

double DistanceSquared(const Point& q, const Point& p) {
    const double dx = q.x - p.x, dy = q.y - p.y;
    return dx * dx + dy * dy;
}


bool ClosestPoint(const PowerBasis& k, const Point& p, double& t, Point& nearest, double& distanceSquared) {
    double roots[7];
    const int32_t n = FindQuinticRoots(Quintic(k, p).c, roots, true);
    if (n == 0) return false;
    distanceSquared = DBL_MAX;
    for (int32_t i = 0; i < n; ++i) {
        const Point q = Evaluate(k, roots[i]);
        const double dd = DistanceSquared(q, p);
        if (dd < distanceSquared) {
            distanceSquared = dd;
            nearest = q;
            t = roots[i];
        }
    }
    return true;
}

}  // namespace

bool FindClosestPointOnBezier(const Point& a, const Point& b, const Point& c, const Point& d, const Point& p,
                              double& t, Point& nearest, double& distanceSquared) {
    return ClosestPoint({a, b, c, d}, p, t, nearest, distanceSquared);
}

bool FindClosestPointOnBezier(const Point points[4], const Point& p, double& t, Point& nearest,
                              double& distanceSquared) {
    return ClosestPoint(ToPowerBasis(points), p, t, nearest, distanceSquared);
}

bool FindClosestPointOnBezier(const tagPOINT points[4], const tagPOINT& p, double& t, tagPOINT& nearest,
                              double& distanceSquared) {
    Point q{};
    if (!ClosestPoint(ToPowerBasis(points), ToDouble(p), t, q, distanceSquared)) return false;
    nearest = Rounded(q);
    return true;
}

// Where no stationary point exists the nearer end answers; a tie goes to P3.
double FindClosestPointOnBezier(const tagPOINT points[4], const tagPOINT& p) {
    double t = 0, distanceSquared = 0;
    tagPOINT nearest{};
    if (FindClosestPointOnBezier(points, p, t, nearest, distanceSquared)) return t;
    const Point q = ToDouble(p);
    return DistanceSquared(ToDouble(points[0]), q) < DistanceSquared(ToDouble(points[3]), q) ? 0.0 : 1.0;
}

bool FindClosestPointsOnBezier(const Point points[4], const Point& p, std::vector<double>& ts,
                               std::vector<Point>& nearest, std::vector<double>& distancesSquared) {
    const PowerBasis k = ToPowerBasis(points);
    double roots[7];
    const int32_t n = FindQuinticRoots(Quintic(k, p).c, roots, false);
    for (int32_t i = 0; i < n; ++i) {
        const Point q = Evaluate(k, roots[i]);
        ts.push_back(roots[i]);
        nearest.push_back(q);
        distancesSquared.push_back(DistanceSquared(q, p));
    }
    return n > 0;
}

bool FindClosestPointsOnBezier(const tagPOINT points[4], const tagPOINT& p, std::vector<double>& ts,
                               std::vector<tagPOINT>& nearest, std::vector<double>& distancesSquared) {
    const PowerBasis k = ToPowerBasis(points);
    const Point q = ToDouble(p);
    double roots[7];
    const int32_t n = FindQuinticRoots(Quintic(k, q).c, roots, false);
    for (int32_t i = 0; i < n; ++i) {
        const tagPOINT r = Rounded(Evaluate(k, roots[i]));
        ts.push_back(roots[i]);
        nearest.push_back(r);
        distancesSquared.push_back(DistanceSquared(ToDouble(r), q));
    }
    return n > 0;
}

// Searching t = 3u − 1 over u in (0, 1), that is t in (−1, 2), lets a stationary
// point just beyond an end win over one inside, and then nothing is reported.
bool Invert(const Point& a, const Point& b, const Point& c, const Point& d, const Point& p, std::vector<double>& out) {
    const PowerBasis k{a, b, c, d};
    double roots[7];
    const int32_t n = FindQuinticRoots(Quintic(k, p).Substituted().c, roots, false);
    double best = 0, bestDistance = DBL_MAX;
    for (int32_t i = 0; i < n; ++i) {
        const double t = roots[i] * 3 - 1;
        const double dd = DistanceSquared(Evaluate(k, t), p);
        if (dd < bestDistance) {
            bestDistance = dd;
            best = t;
        }
    }
    if (n > 0 && best >= 0 && best <= 1 && bestDistance < 0.01) out.push_back(best);
    return !out.empty();
}

}  // namespace CubicBezier
}  // namespace QorMath
