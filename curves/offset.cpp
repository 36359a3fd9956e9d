// Offsets of a cubic segment: a cheap test whether the offset folds back, one
// cubic fitted to the exact offset, and the cutting of a whole curve into
// pieces whose offsets each fit one cubic.

#include <algorithm>
#include <cfloat>
#include <cmath>

#include "QorMath/bezier.h"
#include "QorMath/fitting.h"
#include "bezier/power_basis.h"
#include "bezier/tight_box.h"

namespace QorMath {

namespace {

using Point = vector2dT<double, 1>;
using Vector = vector2dT<double, 0>;

// B″(t) = 6a·t + 2b.
Vector SecondDerivative(const PowerBasis& k, double t) {
    return {6 * k.a.x * t + 2 * k.b.x, 6 * k.a.y * t + 2 * k.b.y};
}

double Cross(const Vector& u, const Vector& v) { return u.x * v.y - u.y * v.x; }

// |v|³ as √(|v|²)·|v|².
double CubedLength(const Vector& v) {
    const double squared = v.x * v.x + v.y * v.y;
    return std::sqrt(squared) * squared;
}

// The tangent, normalised unless it is (nearly) zero.
Vector UnitTangent(const PowerBasis& k, double t) {
    const Vector tangent = CubicBezier::SafeBezierTangent(t, k.a, k.b, k.c, k.d);
    const double squared = tangent.x * tangent.x + tangent.y * tangent.y;
    if (!(squared > DBL_EPSILON)) return tangent;
    const double length = std::sqrt(squared);
    return {tangent.x / length, tangent.y / length};
}

// Offset samples, kept ascending in t. A t within 0.005 of one already there is
// skipped unless it is an end (0 or 1), which always goes in.
class OffsetSamples {
public:
    OffsetSamples(const PowerBasis& k, double d, size_t room) : k_(k), d_(d) {
        ts_.reserve(room);
        points_.reserve(room);
    }

    void Insert(double t) {
        size_t at = 0;
        for (; at < ts_.size(); ++at)
            if (std::fabs(ts_[at] - t) < 0.005 && t != 0 && t != 1) return;
        at = std::upper_bound(ts_.begin(), ts_.end(), t) - ts_.begin();
        const Point p = Evaluate(k_, t);
        const Vector n = UnitTangent(k_, t);
        ts_.insert(ts_.begin() + at, t);
        points_.insert(points_.begin() + at, Point{p.x + d_ * -n.y, p.y + d_ * n.x});
    }

    const std::vector<Point>& Points() const { return points_; }

private:
    const PowerBasis& k_;
    double d_;
    std::vector<double> ts_;
    std::vector<Point> points_;
};

// Curvature extrema are sampled unless the curvature there is under 0.1 per
// size of the curve (nearly flat).
void InsertCurvatureExtrema(const PowerBasis& k, const Point& end, const double* extrema, int n,
                            OffsetSamples& samples) {
    if (n <= 0) return;
    const BoundsT<double> box = TightBox(k, end);
    const double width = box.right - box.left, height = box.top - box.bottom;
    const double size = std::fabs(width) <= std::fabs(height) ? height : width;
    const double flat = size == 0 ? 0.0 : 0.1 / std::fabs(size);
    for (int i = 0; i < n; ++i) {
        const Vector v = EvaluateDerivative(k, extrema[i]);
        const double speed3 = CubedLength(v);
        if (speed3 <= 0 || std::fabs(Cross(v, SecondDerivative(k, extrema[i])) / speed3) >= flat)
            samples.Insert(extrema[i]);
    }
}

}  // namespace

bool IsBezierValidForOffset(const Point& a, const Point& b, const Point& c, double d) {
    const PowerBasis k{a, b, c, {0, 0}};
    for (const double t : {0.5, 0.25, 0.75}) {
        const Vector v = EvaluateDerivative(k, t);
        const double curl = Cross(v, SecondDerivative(k, t));
        if (curl == 0) return true;
        const double r = CubedLength(v) / curl;
        const bool bad = (d > 0 && 0 <= r && r < d) || (d < 0 && d < r && r < 0);
        if (!bad) return true;
    }
    return false;
}

bool IsBezierValidForOffset(const Point points[4], double d) {
    const PowerBasis k = ToPowerBasis(points);
    return IsBezierValidForOffset(k.a, k.b, k.c, d);
}

bool FindBezierOffsetCurve(const Point points[4], Point out[4], double d, double tolerance, double& status) {
    const PowerBasis k = ToPowerBasis(points);
    double extrema[13];
    const int n = CubicBezier::FindCurvatureMinMax(k.a, k.b, k.c, extrema);
    OffsetSamples samples(k, d, size_t(n > 0 ? n : 0) + 11);
    InsertCurvatureExtrema(k, points[3], extrema, n, samples);
    for (int i = 0; i <= 10; ++i) samples.Insert(double(i) / 10);
    status = -1.0;
    const Vector t0 = UnitTangent(k, 0), t1 = UnitTangent(k, 1);
    const std::vector<Point>& p = samples.Points();
    const int count = int(p.size());
    std::vector<double> u;
    Calculate_u(p.data(), count, u);
    const double error = LeastSquares(p.data(), u.data(), count, t0, t1, out, 10, nullptr, -1.0);
    status = 0.5;
    return tolerance > error;
}

// ---- Whole-curve offsets ---------------------------------------------------------

namespace {

// Pieces are halved no further than this part of the parameter range.
constexpr double kMinimumPiece = 1.0 / 64;

bool IsFinite(const Point points[4]) {
    for (int i = 0; i < 4; ++i)
        if (!std::isfinite(points[i].x) || !std::isfinite(points[i].y)) return false;
    return true;
}

// The fit is measured only at its samples. Between them, at the midpoints of
// the eleven uniform ones, the exact offset must lie within tolerance of it too.
bool StaysWithin(const PowerBasis& curve, double lo, double hi, double d, const Point offset[4],
                 double tolerance2) {
    const PowerBasis fitted = ToPowerBasis(offset);
    for (int j = 0; j < 10; ++j) {
        const double t = lo + (hi - lo) * ((j + 0.5) / 10);
        const Point p = Evaluate(curve, t);
        const Vector n = UnitTangent(curve, t);
        const Point exact{p.x + d * -n.y, p.y + d * n.x};
        double at = 0, distance2 = 0;
        Point nearest{};
        if (!CubicBezier::FindClosestPointOnBezier(fitted.a, fitted.b, fitted.c, fitted.d, exact, at, nearest,
                                                   distance2) ||
            !(distance2 <= tolerance2))
            return false;
    }
    return true;
}

struct OffsetCutter {
    const Point* points;
    PowerBasis curve;
    double d;
    double tolerance2;
    std::vector<double>& cuts;
    std::vector<Point>* fitted;  // the offset pieces, when wanted
    bool allFit = true;

    // Accepts [lo, hi] or halves it; cuts gets hi of every accepted piece.
    void Cut(double lo, double hi) {
        Point piece[4], offset[4];
        CubicBezier::Subsection(lo, hi, points, piece);
        double status = 0;
        const bool valid = IsBezierValidForOffset(piece, d);
        const bool fits = valid && FindBezierOffsetCurve(piece, offset, d, tolerance2, status) &&
                          StaysWithin(curve, lo, hi, d, offset, tolerance2);
        if (!fits && hi - lo > kMinimumPiece) {
            const double mid = (lo + hi) / 2;
            Cut(lo, mid);
            Cut(mid, hi);
            return;
        }
        allFit = allFit && fits;
        cuts.push_back(hi);
        if (!fitted) return;
        if (!valid) FindBezierOffsetCurve(piece, offset, d, tolerance2, status);
        fitted->insert(fitted->end(), offset, offset + 4);
    }
};

bool CutForOffset(const Point points[4], double d, double tolerance, std::vector<double>& cuts,
                  std::vector<Point>* fitted) {
    cuts.assign(1, 0.0);
    if (!IsFinite(points) || !std::isfinite(d) || std::isnan(tolerance)) {
        cuts.push_back(1.0);
        return false;
    }
    const PowerBasis k = ToPowerBasis(points);
    std::vector<double> cusps;
    CubicBezier::FindOffsetCusps(k.a, k.b, k.c, d, cusps);
    std::sort(cusps.begin(), cusps.end());
    OffsetCutter cutter{points, k, d, tolerance * tolerance, cuts, fitted};
    double lo = 0.0;
    for (const double t : cusps) {
        if (!(t > lo && t < 1)) continue;
        cutter.Cut(lo, t);
        lo = t;
    }
    cutter.Cut(lo, 1.0);
    return cutter.allFit;
}

}  // namespace

bool GetSegmentsToOffset(const Point points[4], double d, double tolerance, std::vector<double>& cuts) {
    return CutForOffset(points, d, tolerance, cuts, nullptr);
}

bool OffsetBezier(const Point points[4], double d, double tolerance, std::vector<Point>& out,
                  std::vector<double>* cuts) {
    std::vector<double> own;
    return CutForOffset(points, d, tolerance, cuts ? *cuts : own, &out);
}

}  // namespace QorMath
