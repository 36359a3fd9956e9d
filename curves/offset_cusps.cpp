// Cusps of an offset curve: where the offset distance equals the radius of
// curvature on the side the offset moves to, the offset curve turns back.

#include "QorMath/bezier.h"
#include "bezier/bernstein.h"
#include "bezier/polynomial.h"
#include "bezier/roots.h"

namespace QorMath {
namespace CubicBezier {

namespace {

using Point = vector2dT<double, 1>;

double Dot(const Point& u, const Point& v) { return u.x * v.x + u.y * v.y; }
double Cross(const Point& u, const Point& v) { return u.x * v.y - u.y * v.x; }

// With B′ = p·t² + q·t + r (p = 3a, q = 2b, r = c) and B′ × B″ = −K,
// K = [p, q]·t² + 2[p, r]·t + [q, r], the radius |B′|³/|K| equals |d| where
//   g(t) = (B′·B′)³ − d²·K² = 0,  B′·B′ = (p·p)t⁴ + 2(p·q)t³ + (q·q + 2p·r)t² + 2(q·r)t + r·r.
Poly<12> CuspPolynomial(const Point& a, const Point& b, const Point& c, double d) {
    const Point p{3 * a.x, 3 * a.y}, q{2 * b.x, 2 * b.y}, r = c;
    const Poly<4> speed2{Dot(p, p), 2 * Dot(p, q), Dot(q, q) + 2 * Dot(p, r), 2 * Dot(q, r), Dot(r, r)};
    const Poly<2> k{Cross(p, q), 2 * Cross(p, r), Cross(q, r)};
    Poly<12> g = Multiply<8, 4>(Multiply<4, 4>(speed2, speed2), speed2);
    AddScaled<12, 4>(g, -(d * d), Multiply<2, 2>(k, k));
    return g;
}

// Roots in (0, 1); a zero constant or leading term drops to degree 11, which
// leaves the root t = 0 out.
int32_t FindCuspRoots(const Poly<12>& g, double roots[14]) {
    if (g[0] != 0 && g[12] != 0) {
        bernstein::RootList list{roots, 0, 14};
        bernstein::AppendIsolatedRoots<12>(g.data(), list);
        return list.count;
    }
    if (g[12] == 0) return FindDegree11Roots(g.data(), roots);
    return FindDegree11Roots(g.data() + 1, roots);
}

}  // namespace

bool FindOffsetCusps(const Point& a, const Point& b, const Point& c, double d, std::vector<double>& out) {
    const Poly<12> g = CuspPolynomial(a, b, c, d);
    double roots[14];
    const int32_t n = FindCuspRoots(g, roots);
    out.clear();
    for (int32_t i = 0; i < n; ++i) {
        // An uncomputable radius counts as 0.
        double radius = 0;
        GetCurvatureRadiusAt(roots[i], a, b, c, radius);
        if ((d > 0 && radius >= 0) || (d < 0 && radius < 0)) out.push_back(roots[i]);
    }
    return !out.empty();
}

}  // namespace CubicBezier
}  // namespace QorMath
