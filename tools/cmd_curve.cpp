// qormath curve: the analysis queries of one cubic, run together on one curve.

#include <CLI/CLI.hpp>

#include <cmath>
#include <memory>

#include "QorMath/bezier.h"
#include "args.h"
#include "commands.h"
#include "cubic_arg.h"
#include "output.h"

namespace qtool {

namespace {

using QorMath::LengthAccuracy;
using QorMath::Point2d;
using QorMath::Vector2d;
namespace CB = QorMath::CubicBezier;

struct CurveOptions {
    std::vector<std::string> words;
    std::string at = "0.5";
    std::string point;  // empty: the sections about a point are left out
    std::string direction = "1,0";
    std::string fraction = "0.5";
};

constexpr LengthAccuracy kAccuracies[] = {LengthAccuracy::Gauss2,  LengthAccuracy::Gauss3, LengthAccuracy::Gauss4,
                                          LengthAccuracy::Gauss5,  LengthAccuracy::Gauss6, LengthAccuracy::Gauss7,
                                          LengthAccuracy::Gauss8,  LengthAccuracy::Gauss10, LengthAccuracy::Gauss16};

std::vector<double> inUnitInterval(const double* ts, int n) {
    std::vector<double> out;
    for (int i = 0; i < n; ++i)
        if (ts[i] >= 0 && ts[i] <= 1) out.push_back(ts[i]);
    return out;
}

const char* sideName(QorMath::Side side) {
    switch (side) {
        case QorMath::Side::SideLeft: return "left";
        case QorMath::Side::SideRight: return "right";
        default: return "none (on the tangent line)";
    }
}

int run(const CurveOptions& o, const GlobalOptions& global) {
    const double t = parseNumber(o.at, "--at");
    const double fraction = parseNumber(o.fraction, "--fraction");
    const Point2d dirPoint = parsePoint(o.direction, "--direction");
    const Vector2d direction{dirPoint.x, dirPoint.y};
    const bool hasPoint = !o.point.empty();
    const Point2d p = hasPoint ? parsePoint(o.point, "--point") : Point2d{0, 0};
    const Cubic curve = parseCubic(o.words, "curve");
    Point2d a, b, c, d;
    CB::GetPowerBasis(curve.data(), a, b, c, d);

    Output out(global.json);
    out.points("curve", {curve.begin(), curve.end()});

    out.begin("length");
    for (LengthAccuracy acc : kAccuracies)
        out.number("gauss" + std::to_string(static_cast<int>(acc)), CB::Length(a, b, c, acc));
    out.end();

    out.begin("at");
    out.number("t", t);
    out.point("point", CB::Evaluate(a, b, c, d, t));
    double curvature = 0, radius = 0;
    if (CB::GetCurvatureAt(t, a, b, c, curvature))
        out.number("curvature", curvature);
    else
        out.none("curvature", "undefined: zero speed (SafeBezierCurvature gives " +
                                  formatNumber(CB::SafeBezierCurvature(t, a, b, c)) + ")");
    if (CB::GetCurvatureRadiusAt(t, a, b, c, radius))
        out.number("radius", radius);
    else
        out.none("radius", "infinite: straight here, or zero speed");
    out.end();

    // Raw roots as the library reports them, possibly outside [0, 1] or NaN.
    double roots[13];
    const int nInflections = CB::BezierInflectionPoints(a, b, c, roots);
    out.begin("inflections");
    out.numbers("raw", {roots, roots + nInflections});
    out.numbers("inUnitInterval", inUnitInterval(roots, nInflections));
    out.end();

    const int nExtrema = CB::FindCurvatureMinMax(a, b, c, roots);
    std::vector<double> extremaCurvature;
    for (int i = 0; i < nExtrema; ++i) extremaCurvature.push_back(CB::SafeBezierCurvature(roots[i], a, b, c));
    out.begin("curvatureExtrema");
    out.numbers("candidates", {roots, roots + nExtrema});
    out.numbers("curvature", extremaCurvature);
    out.end();

    std::vector<double> vertical, horizontal, parallel;
    CB::GetVerticalTangents(a, b, c, vertical);
    CB::GetHorizontalTangents(a, b, c, horizontal);
    bool everywhere = false;
    CB::GetParallels(a, b, c, direction, parallel, everywhere);
    out.begin("tangents");
    out.numbers("vertical", vertical);
    out.numbers("horizontal", horizontal);
    out.begin("parallel");
    out.point("direction", dirPoint);
    out.boolean("everywhere", everywhere);
    out.numbers("t", parallel);
    out.end();
    if (hasPoint) {
        const int n = CB::FindTangentsToPoint(a, b, c, d, p, roots);
        out.numbers("throughPoint", {roots, roots + n});
    }
    out.end();

    if (hasPoint) {
        out.point("point", p);
        double ct = 0, dd = 0;
        Point2d nearest{0, 0};
        if (CB::FindClosestPointOnBezier(a, b, c, d, p, ct, nearest, dd)) {
            out.begin("closest");
            out.number("t", ct);
            out.point("point", nearest);
            out.number("distance", std::sqrt(dd));
            out.end();
        } else {
            out.none("closest", "none: the distance is stationary nowhere on [0, 1]");
        }
        QorMath::Side side = QorMath::Side::SideNone;
        if (CB::GetSide(a, b, c, d, p, ct, nearest, dd, side))
            out.text("side", sideName(side));
        else
            out.none("side", "unknown: no closest point");
    }

    out.number("areaUnder", CB::GetAreaUnderBezier(a, b, c, d));

    const double tf = CB::GetCurveRelativeLengthParameter(fraction, a, b, c, 1e-9, LengthAccuracy::Gauss16);
    out.begin("lengthParameter");
    out.number("fraction", fraction);
    out.number("t", tf);
    out.point("point", CB::Evaluate(a, b, c, d, tf));
    out.number("lengthTo", CB::LengthTo(tf, curve.data()));
    out.end();
    return 0;
}

}  // namespace

Command addCurveCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<CurveOptions>();
    CLI::App* app = parent.add_subcommand("curve", "Analyse a cubic Bezier segment: length, curvature, tangents, "
                                                   "closest point, side, area");
    app->add_option("CURVE", opts->words, kCubicHelp)->required();
    app->add_option("--at", opts->at, "Parameter t for the curvature and radius")->capture_default_str();
    app->add_option("--point", opts->point,
                    "Point X,Y: adds the tangents through it, the closest point and its side (left out without it)");
    app->add_option("--direction", opts->direction, "Direction DX,DY for the parallel tangents")
        ->capture_default_str();
    app->add_option("--fraction", opts->fraction,
                    "Fraction of the length whose parameter is wanted (<= 0 gives 0, >= 1 gives 1)")
        ->capture_default_str();
    app->footer(
        "Lengths by Gauss-Legendre quadrature with 2 to 16 points. Inflections are the raw roots of "
        "B' x B'' = 0 (two or none, maybe outside [0, 1]); curvature-extremum candidates are where the speed "
        "is extremal or zero. The length parameter uses tolerance 1e-9 and 16 points; lengthTo measures "
        "[0, t] with 10.\nExample: qormath curve 0 0 10 20 30 20 40 0 --point 20,30 --direction 1,1");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
