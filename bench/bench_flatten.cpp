// Flattening cubic segments to polylines at one tolerance, next to AGG's
// curve4_div and cairo's path flattener in the same run.
//
// Names follow Family/type/Impl for report.py. Types are the data sets: random
// (4000 cubics 100 to 500 units across) and hard (loops, cusps, nearly straight,
// overshooting, closed and zero-handle segments, each at three sizes and twelve
// turns). Impls:
//   QorMath          AdaptiveBezierToLines, at most 1024 lines
//   QorMath_uniform  BezierToLines with CalculateNumBezierLines(points, 64) lines
//   AGG              agg::curve4_div
//   cairo            cairo_copy_path_flat
//
// The tolerance is a distance d = 0.25 units for everyone, but each library
// reads it its own way:
//   - AdaptiveBezierToLines takes d² and stops when the curve point at the middle
//     of an interval lies within d of the line through the interval's chord. It
//     also subdivides down to a depth set by the curve's size, and emits lines
//     in pairs.
//   - curve4_div stops when the two inner control points' distances from the
//     line through the chord add up to at most 0.5 / approximation_scale, so
//     scale 2 gives d (angle tolerance and cusp limit off, their defaults).
//   - cairo (cairo_set_tolerance(d)) stops when both inner control points lie
//     within d of the chord itself, subdividing in 24.8 fixed point.
// Only cairo's test bounds the whole arc (it lies in the control points' hull).
// Ours and AGG's measure one point or two from the chord's line, so an arc that
// crosses its chord, or doubles back past the chord's end at a sharp turn, can
// slip through. So every case also carries,
// measured once before timing, `lines` (lines per curve), `max_dev` (the largest
// distance from points of the curve, 257 per segment, to the polyline drawn for
// it) and `over_d` (how many curves' polylines stray further than d): the line
// counts compare only as far as the deviations do. QorMath_uniform has no
// tolerance at all; it is here for its speed and for what its fixed counts cost
// in deviation.
//
// Fairness: ours writes into the caller's array. AGG's points are read back
// through vertex(), its output interface. cairo's case times cairo_copy_path_flat
// of a path that holds all curves (built once, outside the timing): that call
// runs the flattener twice, once to size the result and once to fill it, and
// allocates the result, so up to half of cairo's time is not flattening proper.
// Building the path, which a cairo user also pays, is timed on its own as
// CairoPathBuild/<type>/cairo, for reference.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "QorMath/bezier.h"

#ifdef QORMATH_BENCH_AGG
#include <agg_curves.h>
#endif
#ifdef QORMATH_BENCH_CAIRO
#include <cairo.h>
#endif

#include "curve_sets.h"

namespace {

using QorMath::Point2d;

constexpr double kDistance = 0.25;
constexpr int kMaxLines = 1024;
constexpr int kPreferredLines = 64;

using bench::Cubic;
using bench::HardCubics;
using bench::RandomCubics;
using Polyline = std::vector<Point2d>;

// ---- The flatteners, one curve at a time ------------------------------------------

int OursAdaptive(const Cubic& c, Point2d* out) {
    return QorMath::AdaptiveBezierToLines(c.p, out, kDistance * kDistance, kMaxLines);
}

int OursUniform(const Cubic& c, Point2d* out) {
    const int n = QorMath::CalculateNumBezierLines(c.p, kPreferredLines);
    QorMath::BezierToLines(c.p, out, n);
    return n;
}

#ifdef QORMATH_BENCH_AGG
// 0.5 / scale is the distance curve4_div allows.
constexpr double kAggScale = 0.5 / kDistance;

// Lines produced; the points go through `sink(x, y)`.
template <typename Sink>
int AggFlatten(agg::curve4_div& curve, const Cubic& c, Sink sink) {
    curve.init(c.p[0].x, c.p[0].y, c.p[1].x, c.p[1].y, c.p[2].x, c.p[2].y, c.p[3].x, c.p[3].y);
    curve.rewind(0);
    int points = 0;
    double x, y;
    while (!agg::is_stop(curve.vertex(&x, &y))) {
        sink(x, y);
        ++points;
    }
    return points - 1;
}
#endif

#ifdef QORMATH_BENCH_CAIRO
struct CairoContext {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    cairo_t* cr = cairo_create(surface);
    CairoContext() { cairo_set_tolerance(cr, kDistance); }
    ~CairoContext() {
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
    }
    CairoContext(const CairoContext&) = delete;
    CairoContext& operator=(const CairoContext&) = delete;
};

// One subpath per curve: move to P0, curve to P3.
void CairoBuild(cairo_t* cr, const std::vector<Cubic>& curves) {
    cairo_new_path(cr);
    for (const Cubic& c : curves) {
        cairo_move_to(cr, c.p[0].x, c.p[0].y);
        cairo_curve_to(cr, c.p[1].x, c.p[1].y, c.p[2].x, c.p[2].y, c.p[3].x, c.p[3].y);
    }
}

// The flattened path as one polyline per subpath.
std::vector<Polyline> CairoPolylines(cairo_t* cr) {
    std::vector<Polyline> lines;
    cairo_path_t* path = cairo_copy_path_flat(cr);
    for (int i = 0; i < path->num_data; i += path->data[i].header.length) {
        const cairo_path_data_t& d = path->data[i];
        if (d.header.type == CAIRO_PATH_MOVE_TO) lines.emplace_back();
        if (d.header.type == CAIRO_PATH_MOVE_TO || d.header.type == CAIRO_PATH_LINE_TO)
            lines.back().push_back({path->data[i + 1].point.x, path->data[i + 1].point.y});
    }
    cairo_path_destroy(path);
    return lines;
}
#endif

// ---- Quality, measured once ------------------------------------------------------

// B(t) in long double from the Bernstein form: independent of every flattener.
Point2d At(const Cubic& c, long double t) {
    const long double s = 1 - t, b0 = s * s * s, b1 = 3 * s * s * t, b2 = 3 * s * t * t, b3 = t * t * t;
    return {double(b0 * c.p[0].x + b1 * c.p[1].x + b2 * c.p[2].x + b3 * c.p[3].x),
            double(b0 * c.p[0].y + b1 * c.p[1].y + b2 * c.p[2].y + b3 * c.p[3].y)};
}

double SegmentDistance(Point2d p, Point2d a, Point2d b) {
    const double dx = b.x - a.x, dy = b.y - a.y, len2 = dx * dx + dy * dy;
    double u = len2 > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / len2 : 0.0;
    u = std::min(1.0, std::max(0.0, u));
    return std::hypot(p.x - (a.x + u * dx), p.y - (a.y + u * dy));
}

// The largest distance from the curve, sampled at t = i/256, to the polyline.
double Deviation(const Cubic& c, const Polyline& line) {
    double worst = 0.0;
    for (int i = 0; i <= 256; ++i) {
        const Point2d p = At(c, i / 256.0L);
        double best = line.size() == 1 ? std::hypot(p.x - line[0].x, p.y - line[0].y) : INFINITY;
        for (size_t k = 1; k < line.size() && best > 0; ++k) best = std::min(best, SegmentDistance(p, line[k - 1], line[k]));
        worst = std::max(worst, best);
    }
    return worst;
}

struct Quality {
    double linesPerCurve = 0.0;
    double maxDeviation = 0.0;
    int overTolerance = 0;
};

Quality Measure(const std::vector<Cubic>& curves, const std::vector<Polyline>& lines) {
    Quality q;
    if (lines.size() != curves.size()) return {NAN, NAN, -1};
    for (size_t i = 0; i < curves.size(); ++i) {
        const double deviation = Deviation(curves[i], lines[i]);
        q.linesPerCurve += double(lines[i].size()) - 1.0;
        q.maxDeviation = std::max(q.maxDeviation, deviation);
        q.overTolerance += deviation > kDistance;
    }
    q.linesPerCurve /= double(curves.size());
    return q;
}

template <typename Flatten>
std::vector<Polyline> PolylinesOf(const std::vector<Cubic>& curves, Flatten flatten) {
    std::vector<Polyline> lines;
    Polyline out(kMaxLines + 1);
    for (const Cubic& c : curves) {
        const int n = flatten(c, out.data());
        lines.emplace_back(out.begin(), out.begin() + n + 1);
    }
    return lines;
}

// ---- Runners -----------------------------------------------------------------------

void Finish(benchmark::State& s, size_t curves, const Quality& q) {
    s.SetItemsProcessed(int64_t(s.iterations()) * int64_t(curves));
    s.counters["lines"] = q.linesPerCurve;
    s.counters["max_dev"] = q.maxDeviation;
    s.counters["over_d"] = q.overTolerance;
}

template <typename Flatten>
void RunOurs(benchmark::State& s, const std::vector<Cubic>& curves, const Quality& q, Flatten flatten) {
    Polyline out(kMaxLines + 1);
    for (auto _ : s) {
        int64_t lines = 0;
        for (const Cubic& c : curves) lines += flatten(c, out.data());
        benchmark::DoNotOptimize(lines);
        benchmark::DoNotOptimize(out.data());
    }
    Finish(s, curves.size(), q);
}

void Register(const std::string& type, const std::vector<Cubic>* curves) {
    const auto reg = [](const std::string& name, auto fn) {
        benchmark::RegisterBenchmark(name.c_str(), fn)->Unit(benchmark::kMicrosecond);
    };
    const std::string base = "Flatten/" + type + "/";

    const Quality adaptive = Measure(*curves, PolylinesOf(*curves, OursAdaptive));
    reg(base + "QorMath", [=](benchmark::State& s) { RunOurs(s, *curves, adaptive, OursAdaptive); });
    const Quality uniform = Measure(*curves, PolylinesOf(*curves, OursUniform));
    reg(base + "QorMath_uniform", [=](benchmark::State& s) { RunOurs(s, *curves, uniform, OursUniform); });

#ifdef QORMATH_BENCH_AGG
    std::vector<Polyline> aggLines;
    {
        agg::curve4_div curve;
        curve.approximation_scale(kAggScale);
        for (const Cubic& c : *curves) {
            aggLines.emplace_back();
            AggFlatten(curve, c, [&](double x, double y) { aggLines.back().push_back({x, y}); });
        }
    }
    const Quality agg = Measure(*curves, aggLines);
    reg(base + "AGG", [=](benchmark::State& s) {
        agg::curve4_div curve;
        curve.approximation_scale(kAggScale);
        for (auto _ : s) {
            int64_t lines = 0;
            double sum = 0.0;
            for (const Cubic& c : *curves) lines += AggFlatten(curve, c, [&sum](double x, double y) { sum += x + y; });
            benchmark::DoNotOptimize(lines);
            benchmark::DoNotOptimize(sum);
        }
        Finish(s, curves->size(), agg);
    });
#endif

#ifdef QORMATH_BENCH_CAIRO
    Quality cairo;
    {
        CairoContext ctx;
        CairoBuild(ctx.cr, *curves);
        cairo = Measure(*curves, CairoPolylines(ctx.cr));
    }
    reg(base + "cairo", [=](benchmark::State& s) {
        CairoContext ctx;
        CairoBuild(ctx.cr, *curves);
        for (auto _ : s) {
            cairo_path_t* path = cairo_copy_path_flat(ctx.cr);
            int64_t lines = 0;
            for (int i = 0; i < path->num_data; i += path->data[i].header.length)
                lines += path->data[i].header.type == CAIRO_PATH_LINE_TO;
            benchmark::DoNotOptimize(lines);
            cairo_path_destroy(path);
        }
        Finish(s, curves->size(), cairo);
    });
    reg("CairoPathBuild/" + type + "/cairo", [=](benchmark::State& s) {
        CairoContext ctx;
        for (auto _ : s) {
            CairoBuild(ctx.cr, *curves);
            benchmark::ClobberMemory();
        }
        s.SetItemsProcessed(int64_t(s.iterations()) * int64_t(curves->size()));
    });
#endif
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    static const std::vector<Cubic> random = RandomCubics();
    static const std::vector<Cubic> hard = HardCubics();
    Register("random", &random);
    Register("hard", &hard);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
