// qormath gallery: one SVG with a labelled panel per family of the library, drawn
// from built-in samples. A family adds its panel by adding a draw function to
// kPanels.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "QorMath/angles.h"
#include "QorMath/bezier.h"
#include "QorMath/bounds.h"
#include "QorMath/field.h"
#include "QorMath/fitting.h"
#include "QorMath/layout.h"
#include "QorMath/misc.h"
#include "args.h"
#include "commands.h"
#include "output.h"
#include "svg.h"

namespace qtool {

namespace {

using QorMath::Point2d;
using QorMath::Vector2d;
using svg::Style;

// A sample matrix, named and written as the operations `qormath matrix` takes.
struct Sample {
    const char* name;
    const char* ops;
};

MATRIX sampleMatrix(const Sample& s) { return parseOperations(splitWords(s.ops), "gallery sample"); }

std::string brief(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.3g", v);
    return buf;
}

const Style kOriginal{"#9ca3af", "none", 1.2, "4 3", 1};
const Style kBox{"#dc2626", "none", 1.4, "6 4", 1};
constexpr double kCell = 80;  // world distance between neighbouring samples

std::vector<Point2d> corners(const QorMath::BoundsT<double>& b) {
    std::vector<Point2d> c(4);
    QorMath::GetRectCorners(b, c.data());
    return c;
}

// Each sample's name above the row, its operations below; sample i sits at x = i·kCell.
template <size_t N>
void captions(svg::Panel& panel, const Sample (&samples)[N], double top, double bottom) {
    for (size_t i = 0; i < N; ++i) {
        panel.label({double(i) * kCell, top}, samples[i].name, -10, svg::Anchor::Middle, 13, "#111827");
        panel.label({double(i) * kCell, bottom}, samples[i].ops, 20, svg::Anchor::Middle, 11, "#6b7280");
    }
}

// A circular arc about c from angle a0 to a1 (radians), as a polyline.
std::vector<Point2d> arc(const Point2d& c, double r, double a0, double a1) {
    std::vector<Point2d> out;
    const int n = std::max(4, int(std::abs(a1 - a0) / 0.05));
    for (int i = 0; i <= n; ++i) out.push_back(c + QorMath::Radians::AngleToVector(a0 + (a1 - a0) * i / n, r));
    return out;
}

// A matrix taken apart by DecomposeAffineTransform and put back together one part
// at a time: a square scaled, then skewed, then rotated, then moved to the
// origin, which lands it on the matrix's own image. The two angles are measured
// again on the image with the angle functions and labelled in each unit.
std::string drawDecomposition(svg::Panel& panel) {
    const Style before{"#9ca3af", "none", 1.2, "4 3", 1};
    const Style image{"#2563eb", "#93c5fd", 1.8, "", 0.5};
    const Style guide{"#6b7280", "none", 1, "2 3", 1};
    const Style angle{"#dc2626", "none", 1.6, "", 1};
    const Style recomposed{"#d97706", "none", 1.8, "6 4", 1};
    const Style origin{"#1e3a8a", "#1e3a8a", 1, "", 1};
    const double side = 40, spacing = 120;
    // The operation chain's skew maps x' = x - tan(AX)·y, so -25 leans the y axis
    // 25° clockwise: a decomposed skew of +tan 25°.
    const MATRIX m = sampleMatrix({"M", "scale 1.5,0.8 skew -25,0 rotate 30 translate 30,12"});
    QorMath::AFF_TRANSFORM parts{};
    if (!QorMath::DecomposeAffineTransform(parts, m)) return "DecomposeAffineTransform failed";
    MATRIX back{};
    QorMath::ComposeAffineTransform(back, parts);
    // The parts in the order they apply: scale, skew (x' = x + skew·y), rotation,
    // translation.
    const MATRIX scaled{parts.scaleX, 0, 0, 0, parts.scaleY, 0};
    const MATRIX skewed = MATRIX{1, parts.skew, 0, 0, 1, 0} * scaled;
    const MATRIX rotated = QorMath::ConstructRotationMatrix(parts.rotation) * skewed;
    const MATRIX stages[] = {QorMath::IdentityMatrix(), scaled, skewed, rotated, m};
    auto square = [&](const MATRIX& s, double x) {
        std::vector<Point2d> c = {{0, 0}, {side, 0}, {side, side}, {0, side}};
        (QorMath::ConstructTranslationMatrix({x, 0}) * s).TransformPoints(c.data(), c.size());
        return c;
    };
    // The angles again, from the image of the axes: the x axis' direction, and
    // the lean of the y axis from the x axis' normal.
    const Vector2d xAxis = rotated(Vector2d{1, 0}), yAxis = rotated(Vector2d{0, 1});
    const Vector2d normal{-xAxis.y, xAxis.x};
    const double rotationDegrees = QorMath::Degrees::VectorToAngle(xAxis);
    const int32_t rotationTurn = QorMath::TURNANGLE::VectorToAngle(xAxis);
    const double skewDegrees = QorMath::Degrees::GetFineAngle(yAxis, normal);
    const char* names[] = {"scale", "then skew", "then rotate", "then move"};
    const std::string lines[4][2] = {
        {"sx " + brief(parts.scaleX) + ", sy " + brief(parts.scaleY), ""},
        {"skew " + brief(parts.skew), "= tan " + brief(skewDegrees) + " deg"},
        {brief(rotationDegrees) + " deg = " + brief(parts.rotation) + " rad",
         "= " + std::to_string(rotationTurn) + " TURNANGLE"},
        {"origin (" + brief(parts.origin.x) + ", " + brief(parts.origin.y) + ")", "the image under M"},
    };
    double top = 0, bottom = 0;
    for (int i = 0; i < 4; ++i) {
        const double x = i * spacing;
        const auto shape = square(stages[i + 1], x), ghost = square(stages[i], x);
        for (const auto& p : shape) top = std::max(top, p.y), bottom = std::min(bottom, p.y);
        panel.polyline(ghost, before, true);
        panel.polyline(shape, image, true);
        panel.dot(shape[0], 3, origin);
    }
    // The skew: the y axis against the vertical; the rotation: the x axis against +x.
    const Point2d o1{spacing, 0}, o2{2 * spacing, 0};
    const double lean = QorMath::Radians::VectorToAngle(skewed(Vector2d{0, 1}));
    panel.polyline({o1, o1 + Vector2d{0, side * 1.15}}, guide);
    panel.polyline(arc(o1, side * 0.75, lean, QorMath::Pi / 2), angle);
    panel.label(o1 + Vector2d{0, side * 0.75}, brief(skewDegrees) + " deg", 4, svg::Anchor::End, 11, angle.stroke, -4);
    panel.polyline({o2, o2 + Vector2d{side * 1.9, 0}}, guide);
    panel.polyline(arc(o2, side * 1.6, 0, parts.rotation), angle);
    panel.label(o2 + QorMath::Radians::AngleToVector(parts.rotation / 2, side * 1.6), brief(rotationDegrees) + " deg",
                4, svg::Anchor::Start, 11, angle.stroke, 4);
    // The last move: from the column's origin to the matrix's.
    const Point2d o3{3 * spacing, 0};
    panel.polyline(square(back, 3 * spacing), recomposed, true);
    panel.polyline({o3, o3 + (parts.origin - Point2d{0, 0})}, guide);
    panel.dot(o3, 2.5, {"#6b7280", "#ffffff", 1.2, "", 1});
    for (int i = 0; i < 4; ++i) {
        const double x = i * spacing + side / 2 + (i == 3 ? parts.origin.x : 0);
        panel.label({x, top}, names[i], -10, svg::Anchor::Middle, 13, "#111827");
        for (int k = 0; k < 2; ++k)
            panel.label({x, bottom}, lines[i][k], 18 + 14.0 * k, svg::Anchor::Middle, 11, "#4b5563");
    }
    panel.label({0, top}, "M = [" + brief(m.a) + "  " + brief(m.b) + "  " + brief(m.tx) + ";  " + brief(m.c) + "  " +
                              brief(m.d) + "  " + brief(m.ty) + "]",
                -34, svg::Anchor::Start, 12, "#374151");
    double worst = 0;
    for (double v : {back.a - m.a, back.b - m.b, back.c - m.c, back.d - m.d, back.tx - m.tx, back.ty - m.ty})
        worst = std::max(worst, std::abs(v));
    panel.legend(before, "before the step");
    panel.legend(image, "after it");
    panel.legend(angle, "angle");
    panel.legend(recomposed, "ComposeAffineTransform");
    panel.legend(origin, "image of (0, 0)", true);
    char err[32];
    std::snprintf(err, sizeof err, "%.1e", worst);
    return "DecomposeAffineTransform of M = [" + brief(m.a) + " " + brief(m.b) + " " + brief(m.tx) + "; " +
           brief(m.c) + " " + brief(m.d) + " " + brief(m.ty) + "]: scale " + brief(parts.scaleX) + " x " +
           brief(parts.scaleY) + ", skew " + brief(parts.skew) + " (" + brief(skewDegrees) + " deg), rotation " +
           brief(parts.rotation) + " rad (" + brief(rotationDegrees) + " deg, " + std::to_string(rotationTurn) +
           " TURNANGLE), origin (" + brief(parts.origin.x) + ", " + brief(parts.origin.y) +
           "); recomposed within " + err;
}

std::string drawRectangles(svg::Panel& panel) {
    const Style image{"#2563eb", "#93c5fd", 1.8, "", 0.5};
    const Style corner{"#1e3a8a", "#1e3a8a", 1, "", 1};
    const QorMath::BoundsT<double> rect{-20, 12, 20, -12};
    const Sample samples[] = {{"rotation", "rotate 30"},
                              {"scale + rotation", "scale 1.5,0.7 rotate 40"},
                              {"skew", "skew 35,0"},
                              {"mirror", "scale -1,1 rotate 25"}};
    std::string summary = "GetTransformedBBox sizes:";
    double x = 0, top = 0, bottom = 0;
    for (const auto& s : samples) {
        const MATRIX m = QorMath::ConstructTranslationMatrix({x, 0}) * sampleMatrix(s);
        auto original = corners(rect);
        for (auto& p : original) p += Vector2d{x, 0};
        auto mapped = corners(rect);
        m.TransformPoints(mapped.data(), mapped.size());
        const auto box = QorMath::GetTransformedBBox(rect, m);
        panel.polyline(original, kOriginal, true);
        panel.polyline(mapped, image, true);
        panel.polyline(corners(box), kBox, true);
        panel.dot(original[0], 3, {"#6b7280", "#ffffff", 1.2, "", 1});
        panel.dot(mapped[0], 3.5, corner);
        top = std::max(top, box.top), bottom = std::min(bottom, box.bottom);
        summary += (x == 0 ? " " : "; ") + std::string(s.name) + " " + brief(box.right - box.left) + " x " +
                   brief(box.top - box.bottom);
        x += kCell;
    }
    captions(panel, samples, top, bottom);
    panel.legend(kOriginal, "rectangle 40 x 24");
    panel.legend(image, "image under the matrix");
    panel.legend(kBox, "GetTransformedBBox");
    panel.legend(corner, "corner (left, top)", true);
    return summary;
}

// The circle of radius r about the origin as four cubic arcs, each control point
// mapped by the linear part of m and moved to centre. Affine maps carry Bezier
// control points exactly, so this draws the image ellipse.
svg::Path ellipse(const MATRIX& m, const Point2d& centre, double r) {
    const double k = 0.5522847498307936;  // 4/3·(√2 − 1): quarter-circle handle length
    const Vector2d arc[4] = {{1, 0}, {1, k}, {k, 1}, {0, 1}};
    auto at = [&](Vector2d v, int quarter) {
        for (int q = 0; q < quarter; ++q) v = {-v.y, v.x};
        return centre + m(v * r);
    };
    svg::Path path;
    path.moveTo(at(arc[0], 0));
    for (int q = 0; q < 4; ++q) path.cubicTo(at(arc[1], q), at(arc[2], q), at(arc[3], q));
    return path.close();
}

std::string drawCircles(svg::Panel& panel) {
    const Style image{"#059669", "#a7f3d0", 1.8, "", 0.55};
    const Style major{"#d97706", "none", 2.2, "", 1};
    const Style minor{"#7c3aed", "none", 2.2, "", 1};
    const double r = 20;
    const Sample samples[] = {{"scale + rotation", "scale 1.7,0.6 rotate 30"},
                              {"skew", "skew 40,0"},
                              {"skew both axes", "skew 25,-20"},
                              {"scale, then skew", "scale 1.4,0.7 skew 0,30"}};
    std::string summary = "GetTransformedCircleAxes semi-axes of the unit circle:";
    double x = 0, top = 0, bottom = 0;
    for (const auto& s : samples) {
        const MATRIX m = sampleMatrix(s);
        const Point2d c{x, 0};
        Vector2d a{0, 0}, b{0, 0};
        QorMath::GetTransformedCircleAxes(m, a, b);
        panel.path(ellipse(QorMath::IdentityMatrix(), c, r), kOriginal);
        panel.path(ellipse(m, c, r), image);
        const auto box = QorMath::GetTransformedCircleBBox(m, r, c);
        panel.polyline(corners(box), kBox, true);
        top = std::max(top, box.top), bottom = std::min(bottom, box.bottom);
        panel.polyline({c - a * r, c + a * r}, major);
        panel.polyline({c - b * r, c + b * r}, minor);
        panel.dot(c, 2.5, {"#111827", "#111827", 1, "", 1});
        summary += (x == 0 ? " " : "; ") + std::string(s.name) + " " + brief(Magnitude(a)) + "/" + brief(Magnitude(b));
        x += kCell;
    }
    captions(panel, samples, top, bottom);
    panel.legend(kOriginal, "circle r = 20");
    panel.legend(image, "image (ellipse)");
    panel.legend(major, "major axis");
    panel.legend(minor, "minor axis");
    panel.legend(kBox, "GetTransformedCircleBBox");
    return summary;
}

// The de Casteljau construction of a split: the control polygon, its points
// interpolated at t (three levels), and the two pieces the library returns.
std::string drawSplit(svg::Panel& panel) {
    const Style polygon{"#9ca3af", "none", 1.2, "4 3", 1};
    const Style level1{"#059669", "none", 1.3, "", 1};
    const Style level2{"#7c3aed", "none", 1.3, "", 1};
    const Style left{"#2563eb", "none", 3.2, "", 1};
    const Style right{"#ea580c", "none", 3.2, "", 1};
    const Style split{"#111827", "#111827", 1, "", 1};
    const double t = 0.35;
    const Point2d p[4] = {{0, 0}, {40, 110}, {175, 120}, {200, 0}};
    Point2d out[7];
    QorMath::CubicBezier::Split(t, p, out);
    // Level 1 is A, M, C on the polygon's legs; A and C are also handles of the
    // pieces, M is not, so it is interpolated here.
    const Point2d m{(p[2].x - p[1].x) * t + p[1].x, (p[2].y - p[1].y) * t + p[1].y};
    const Point2d &a = out[1], &c = out[5], &d = out[2], &e = out[4], &s = out[3];

    panel.polyline({p[0], p[1], p[2], p[3]}, polygon);
    panel.polyline({a, m, c}, level1);
    panel.polyline({d, e}, level2);
    panel.path(svg::Path().moveTo(out[0]).cubicTo(out[1], out[2], out[3]), left);
    panel.path(svg::Path().moveTo(out[3]).cubicTo(out[4], out[5], out[6]), right);
    for (const auto& q : p) panel.dot(q, 3, {"#6b7280", "#ffffff", 1.2, "", 1});
    for (const auto& q : {a, m, c}) panel.dot(q, 3, {level1.stroke, level1.stroke, 1, "", 1});
    for (const auto& q : {d, e}) panel.dot(q, 3, {level2.stroke, level2.stroke, 1, "", 1});
    panel.dot(s, 4.5, split);

    const std::string grey = "#4b5563";
    panel.label(p[0], "P0", 18, svg::Anchor::Middle, 12, grey);
    panel.label(p[1], "P1", -9, svg::Anchor::Middle, 12, grey);
    panel.label(p[2], "P2", -9, svg::Anchor::Middle, 12, grey);
    panel.label(p[3], "P3", 18, svg::Anchor::Middle, 12, grey);
    panel.label(a, "A", 4, svg::Anchor::End, 12, level1.stroke, -8);
    panel.label(m, "M", -9, svg::Anchor::Middle, 12, level1.stroke);
    panel.label(c, "C", 4, svg::Anchor::Start, 12, level1.stroke, 8);
    panel.label(d, "D", -7, svg::Anchor::End, 12, level2.stroke, -6);
    panel.label(e, "E", -7, svg::Anchor::Start, 12, level2.stroke, 6);
    panel.label(s, "S = B(" + brief(t) + ")", 18, svg::Anchor::Start, 12, "#111827", 6);

    panel.legend(polygon, "control polygon");
    panel.legend(level1, "A, M, C at t");
    panel.legend(level2, "D, E at t");
    panel.legend(split, "split point S", true);
    panel.legend(left, "left: P0 A D S");
    panel.legend(right, "right: S E C P3");
    return "Split at t = " + brief(t) + ": S = (" + brief(s.x) + ", " + brief(s.y) +
           "), left piece P0 A D S, right piece S E C P3";
}

// Adaptive flattening of three curves at a coarse and a fine tolerance: columns
// are the curves, the top row the coarse tolerance, the bottom row the fine one.
std::string drawFlatten(svg::Panel& panel) {
    const Style curve{"#bfdbfe", "none", 5, "", 1};
    const Style lines{"#c2410c", "none", 1.3, "", 1};
    const Style points{"#7c2d12", "#ffffff", 1.1, "", 1};
    struct Curve {
        const char* name;
        Point2d p[4];
    };
    const Curve curves[] = {
        {"S-curve", {{0, 0}, {110, 5}, {-10, 55}, {100, 60}}},
        {"loop", {{0, 5}, {150, 65}, {-50, 65}, {100, 5}}},
        {"tight arch", {{30, 0}, {50, 75}, {50, 75}, {70, 0}}},
    };
    const double tolerances[] = {9, 0.05};  // squared distances: 3 and about 0.22 units
    const int maximum = 64;
    const double columnWidth = 140, rowHeight = 95;
    std::string summary = "AdaptiveBezierToLines, at most " + std::to_string(maximum) + " lines, tolerance " +
                          brief(tolerances[0]) + " / " + brief(tolerances[1]) + ":";
    for (size_t col = 0; col < 3; ++col) {
        summary += std::string(col ? ";" : "") + " " + curves[col].name;
        for (size_t row = 0; row < 2; ++row) {
            const Vector2d shift{double(col) * columnWidth, -double(row) * rowHeight};
            Point2d p[4], out[maximum + 1];
            for (int i = 0; i < 4; ++i) p[i] = curves[col].p[i] + shift;
            const int n = QorMath::AdaptiveBezierToLines(p, out, tolerances[row], maximum);
            const std::vector<Point2d> poly(out, out + n + 1);
            panel.path(svg::Path().moveTo(p[0]).cubicTo(p[1], p[2], p[3]), curve);
            panel.polyline(poly, lines);
            for (const auto& q : poly) panel.dot(q, 2.2, points);
            // Name above the top drawing, line count below each.
            double top = -DBL_MAX, bottom = DBL_MAX;
            for (const auto& q : poly) top = std::max(top, q.y), bottom = std::min(bottom, q.y);
            if (row == 0) panel.label({shift.x + 50, top}, curves[col].name, -10, svg::Anchor::Middle, 13, "#111827");
            panel.label({shift.x + 50, bottom},
                        "tolerance " + brief(tolerances[row]) + ": " + std::to_string(n) + " lines", 18,
                        svg::Anchor::Middle, 12, "#374151");
            summary += std::string(row ? "/" : " ") + std::to_string(n);
        }
    }
    panel.legend(curve, "curve");
    panel.legend(lines, "polyline");
    panel.legend(points, "points (dyadic t)", true);
    return summary + " lines";
}

namespace CB = QorMath::CubicBezier;

// The curve of four control points as an SVG path.
svg::Path bezierPath(const Point2d (&p)[4]) { return svg::Path().moveTo(p[0]).cubicTo(p[1], p[2], p[3]); }

// The curve as a polyline of evenly spaced parameters, so that far handles do
// not widen the view.
std::vector<Point2d> sampled(const Point2d (&p)[4], int n = 120) {
    Point2d a, b, c, d;
    CB::GetPowerBasis(p, a, b, c, d);
    std::vector<Point2d> out;
    for (int i = 0; i <= n; ++i) out.push_back(CB::Evaluate(a, b, c, d, double(i) / n));
    return out;
}

// Unit left normal of the curve at t (the tangent never vanishes).
Vector2d leftNormal(double t, const Point2d& a, const Point2d& b, const Point2d& c, const Point2d& d) {
    const Vector2d tan = CB::SafeBezierTangent(t, a, b, c, d);
    const double len = Magnitude(tan);
    return {-tan.y / len, tan.x / len};
}

std::string list(const std::vector<double>& ts) {
    std::string s;
    for (double t : ts) s += (s.empty() ? "" : ", ") + brief(t);
    return s.empty() ? "none" : s;
}

// Curvature comb: at each sample a tooth along the normal, as long as the
// curvature is large, pointing away from the centre of curvature, so the teeth
// change sides at an inflection.
std::string drawComb(svg::Panel& panel) {
    const Style curve{"#1f2937", "none", 2.4, "", 1};
    const Style teeth{"#60a5fa", "none", 1, "", 1};
    const Style envelope{"#2563eb", "none", 1.6, "", 1};
    const Style inflection{"#dc2626", "#dc2626", 1, "", 1};
    const Style extremum{"#d97706", "#ffffff", 2, "", 1};
    const Point2d p[4] = {{0, 0}, {20, 100}, {150, -90}, {220, 40}};
    Point2d a, b, c, d;
    CB::GetPowerBasis(p, a, b, c, d);
    const int samples = 120;
    std::vector<double> k(samples + 1);
    double kMax = 0;
    for (int i = 0; i <= samples; ++i) {
        k[i] = CB::SafeBezierCurvature(double(i) / samples, a, b, c);
        kMax = std::max(kMax, std::abs(k[i]));
    }
    const double scale = 50 / kMax;  // the longest tooth is 50 units
    // The curve as a polyline, so that the far handles do not widen the view.
    std::vector<Point2d> tips, line;
    for (int i = 0; i <= samples; ++i) {
        const double t = double(i) / samples;
        line.push_back(CB::Evaluate(a, b, c, d, t));
        tips.push_back(line.back() - leftNormal(t, a, b, c, d) * (k[i] * scale));
        panel.polyline({line.back(), tips.back()}, teeth);
    }
    panel.polyline(tips, envelope);
    panel.polyline(line, curve);

    double roots[13];
    std::vector<double> inflections;
    const int n = CB::BezierInflectionPoints(a, b, c, roots);
    for (int i = 0; i < n; ++i)
        if (roots[i] >= 0 && roots[i] <= 1) inflections.push_back(roots[i]);
    std::sort(inflections.begin(), inflections.end());
    for (double t : inflections) {
        const Point2d q = CB::Evaluate(a, b, c, d, t);
        panel.dot(q, 4.5, inflection);
        panel.label(q, "t = " + brief(t), 4, svg::Anchor::Start, 12, inflection.stroke, 10);
    }
    const int m = CB::FindCurvatureMinMax(a, b, c, roots);
    const std::vector<double> extrema(roots, roots + m);
    for (double t : extrema) panel.dot(CB::Evaluate(a, b, c, d, t), 4, extremum);

    panel.legend(curve, "curve");
    panel.legend(teeth, "teeth: curvature along the normal");
    panel.legend(envelope, "comb outline");
    panel.legend(inflection, "inflection in [0, 1]", true);
    panel.legend(extremum, "curvature-extremum candidate (speed extremal)", true);
    return "SafeBezierCurvature comb, max |curvature| " + brief(kMax) + "; inflections at t = " + list(inflections) +
           "; FindCurvatureMinMax candidates t = " + list(extrema);
}

// A grid of points, each joined to its closest point on an S-curve. Where the
// distance is stationary nowhere on [0, 1] (points beyond an end), there is no
// closest point and the grid point is drawn hollow.
std::string drawClosest(svg::Panel& panel) {
    const Style curve{"#1f2937", "none", 2.6, "", 1};
    const Style join{"#10b981", "none", 1, "", 1};
    const Style found{"#047857", "#047857", 1, "", 1};
    const Style failed{"#dc2626", "#ffffff", 1.6, "", 1};
    const Point2d p[4] = {{0, 0}, {100, 150}, {160, -90}, {260, 60}};
    const int columns = 14, rows = 6;
    int ok = 0, none = 0;
    for (int i = 0; i < columns; ++i) {
        for (int j = 0; j < rows; ++j) {
            const Point2d q{-65 + 30.0 * i, -45 + 28.0 * j};
            double t = 0, dd = 0;
            Point2d nearest{0, 0};
            if (CB::FindClosestPointOnBezier(p, q, t, nearest, dd)) {
                panel.polyline({q, nearest}, join);
                panel.dot(q, 2.2, found);
                ++ok;
            } else {
                panel.dot(q, 3.2, failed);
                ++none;
            }
        }
    }
    panel.path(bezierPath(p), curve);
    panel.legend(curve, "curve");
    panel.legend(join, "to the nearest stationary point (ends count only where stationary)");
    panel.legend(found, "grid point", true);
    panel.legend(failed, "no stationary distance on [0, 1]", true);
    return "FindClosestPointOnBezier on a " + std::to_string(columns) + " x " + std::to_string(rows) +
           " grid: " + std::to_string(ok) + " found, " + std::to_string(none) +
           " without a closest point";
}

// Ten pieces of equal length: the parameters where the length from the start is
// 10 %, 20 %, ... of the whole, against ten equal steps in t, which bunch where
// the curve is slow.
std::string drawEqualLength(svg::Panel& panel) {
    const Style pieceA{"#2563eb", "none", 4, "", 1};
    const Style pieceB{"#f59e0b", "none", 4, "", 1};
    const Style tick{"#111827", "none", 1.6, "", 1};
    const Style uniform{"#6b7280", "#ffffff", 1.2, "", 1};
    const Point2d p[4] = {{0, 0}, {10, 110}, {60, 110}, {240, 0}};
    Point2d a, b, c, d;
    CB::GetPowerBasis(p, a, b, c, d);
    const double length = CB::Length(a, b, c, QorMath::LengthAccuracy::Gauss16);
    std::vector<double> ts{0};
    for (int i = 1; i < 10; ++i)
        ts.push_back(CB::GetCurveRelativeLengthParameter(i / 10.0, a, b, c, 1e-9, QorMath::LengthAccuracy::Gauss16));
    ts.push_back(1);
    // Each piece measured on its own, a second route to the same lengths.
    double worst = 0;
    for (int i = 0; i < 10; ++i) {
        Point2d piece[4], pa, pb, pc, pd;
        CB::Subsection(ts[i], ts[i + 1], p, piece);
        CB::GetPowerBasis(piece, pa, pb, pc, pd);
        worst = std::max(worst, std::abs(CB::Length(pa, pb, pc, QorMath::LengthAccuracy::Gauss16) - length / 10));
        panel.path(bezierPath(piece), i % 2 ? pieceB : pieceA);
    }
    for (double t : ts) {
        const Point2d on = CB::Evaluate(a, b, c, d, t);
        const Vector2d n = leftNormal(t, a, b, c, d) * 7.0;
        panel.polyline({on - n, on + n}, tick);
    }
    for (int i = 1; i < 10; ++i) {
        const Point2d on = CB::Evaluate(a, b, c, d, i / 10.0);
        panel.dot(on - leftNormal(i / 10.0, a, b, c, d) * 14.0, 2.6, uniform);
    }
    panel.label({120, -10}, "length " + brief(length) + ", each piece " + brief(length / 10), 14, svg::Anchor::Middle,
                13, "#111827");
    panel.legend(pieceA, "pieces of equal length");
    panel.legend(tick, "GetCurveRelativeLengthParameter(0.1 ... 0.9)");
    panel.legend(uniform, "B(t) at t = 0.1 ... 0.9, set beside the curve for comparison", true);
    char dev[32];
    std::snprintf(dev, sizeof dev, "%.1e", worst);
    return "ten pieces of length " + brief(length / 10) + " (total " + brief(length) +
           "), each measured alone within " + dev;
}

// Crossing points of curve pairs: two S-curves, an arch and a nearly straight
// curve (intersected as a line), and a curve winding through a loop.
std::string drawCrossings(svg::Panel& panel) {
    const Style first{"#2563eb", "none", 2.4, "", 1};
    const Style second{"#ea580c", "none", 2.4, "", 1};
    const Style mark{"#111827", "#fde047", 1.4, "", 1};
    struct Pair {
        const char* name;
        Point2d a[4], b[4];
    };
    const Pair pairs[] = {
        {"two S-curves", {{0, 0}, {40, 160}, {80, -100}, {120, 60}}, {{0, 50}, {50, -80}, {70, 150}, {125, 10}}},
        {"arch, near-line", {{0, 0}, {20, 110}, {100, 110}, {120, 0}}, {{0, 40}, {40, 41.5}, {80, 38.5}, {120, 40}}},
        {"through a loop", {{0, 0}, {200, 150}, {-80, 150}, {120, 0}}, {{-10, 8}, {81, 4}, {20, 120}, {130, 79}}},
    };
    const double columnWidth = 190;
    std::string summary = "FindBezierIntersections:";
    for (size_t col = 0; col < 3; ++col) {
        const Vector2d shift{double(col) * columnWidth, 0};
        Point2d a[4], b[4];
        for (int i = 0; i < 4; ++i) a[i] = pairs[col].a[i] + shift, b[i] = pairs[col].b[i] + shift;
        std::vector<double> ta, tb;
        std::vector<Point2d> points;
        CB::FindBezierIntersections(a, b, ta, tb, points);
        const std::vector<Point2d> lineA = sampled(a), lineB = sampled(b);
        panel.polyline(lineA, first);
        panel.polyline(lineB, second);
        for (const Point2d& q : points) panel.dot(q, 4, mark);
        double top = -DBL_MAX, bottom = DBL_MAX;
        for (const auto* line : {&lineA, &lineB})
            for (const Point2d& q : *line) top = std::max(top, q.y), bottom = std::min(bottom, q.y);
        panel.label({shift.x + 60, top}, pairs[col].name, -10, svg::Anchor::Middle, 13, "#111827");
        panel.label({shift.x + 60, bottom}, std::to_string(points.size()) + " crossings", 18, svg::Anchor::Middle,
                    12, "#374151");
        summary += std::string(col ? ";" : "") + " " + pairs[col].name + " " + std::to_string(points.size());
    }
    panel.legend(first, "first curve");
    panel.legend(second, "second curve");
    panel.legend(mark, "crossing", true);
    return summary;
}

// Parallel lines swept across an S-curve, each with its crossings and their count.
std::string drawLineSweep(svg::Panel& panel) {
    const Style curve{"#1f2937", "none", 2.6, "", 1};
    const Style lineStyle{"#9ca3af", "none", 1.1, "5 3", 1};
    const Style mark{"#0f766e", "#5eead4", 1.4, "", 1};
    const Point2d p[4] = {{0, 0}, {60, 200}, {160, -180}, {220, 20}};
    const double slope = -0.15, left = -20, right = 240;
    std::string summary = "FindBezierLineIntersection, lines y = -0.15 x + c:";
    for (int i = 0; i < 9; ++i) {
        const double c = -21 + 12 * i;
        const Point2d line[2] = {{0, c}, {1, c + slope}};
        std::vector<double> ts, ss;
        CB::FindBezierLineIntersection(p, line, ts, ss, false);
        const Point2d end{right, c + slope * right};
        panel.polyline({{left, c + slope * left}, end}, lineStyle);
        // s is the x coordinate here: the line runs one unit in x from s = 0 to 1.
        for (double s : ss) panel.dot({s, c + slope * s}, 3.5, mark);
        panel.label(end, std::to_string(ts.size()), 4, svg::Anchor::Start, 12, "#374151", 6);
        summary += " " + std::to_string(ts.size());
    }
    panel.polyline(sampled(p), curve);
    panel.legend(curve, "curve");
    panel.legend(lineStyle, "lines of slope -0.15, crossings counted at the right");
    panel.legend(mark, "L0 + s (L1 - L0)", true);
    return summary + " crossings";
}

// A loop, the two parameter intervals DoesBezierSelfIntersect gives (each holds
// one parameter of the double point) and the double point found by subdivision;
// the same loop at a third of the size loses its pieces below one unit.
std::string drawSelfIntersection(svg::Panel& panel) {
    const Style curve{"#6b7280", "none", 1.4, "", 1};
    const Style firstPiece{"#93c5fd", "none", 8, "", 1};
    const Style secondPiece{"#f59e0b", "none", 3.5, "", 1};
    const Style doublePoint{"#dc2626", "#ffffff", 2.2, "", 1};
    const Point2d big[4] = {{0, 0}, {400, 300}, {-160, 300}, {240, 0}};
    std::string summary;
    for (int k = 0; k < 2; ++k) {
        Point2d p[4];
        const double scale = k == 0 ? 1 : 1.0 / 3;
        const Vector2d shift{k == 0 ? 0.0 : 300.0, 0};
        for (int i = 0; i < 4; ++i) p[i] = Point2d{big[i].x * scale, big[i].y * scale} + shift;
        double t1a = 0, t1b = 0, t2a = 0, t2b = 0;
        const bool loop = CB::DoesBezierSelfIntersect(p, t1a, t1b, t2a, t2b, false);
        Point2d piece[4];
        if (loop) {
            CB::Subsection(t1a, t1b, p, piece);
            panel.path(bezierPath(piece), firstPiece);
            CB::Subsection(t2a, t2b, p, piece);
            panel.path(bezierPath(piece), secondPiece);
        }
        panel.polyline(sampled(p), curve);
        double s = 0, t = 0;
        Point2d at{0, 0};
        const double width = 240 * scale;
        const std::string size = "ends " + brief(width) + " apart";
        if (CB::FindBezierSelfIntersection(p, s, t, at)) {
            panel.dot(at, 5, doublePoint);
            panel.label(at, "B(" + brief(s) + ") = B(" + brief(t) + ")", 4, svg::Anchor::Start, 12, "#111827", 12);
            summary += (k ? "; " : "") + size + ": s = " + brief(s) + ", t = " + brief(t) + " at (" + brief(at.x) +
                       ", " + brief(at.y) + ")";
        } else {
            summary += (k ? "; " : "") + size + ": not found";
        }
        panel.label({shift.x + width / 2, 0}, size + (k ? ": not found" : ""), 18, svg::Anchor::Middle, 12,
                    "#374151");
    }
    panel.legend(curve, "curve");
    panel.legend(firstPiece, "first interval");
    panel.legend(secondPiece, "second interval");
    panel.legend(doublePoint, "double point", true);
    return "FindBezierSelfIntersection, " + summary;
}

// Offsets of an arch toward its centre of curvature at two distances: where the
// distance passes the radius of curvature the offset folds into a swallowtail,
// whose two cusps FindOffsetCusps locates.
std::string drawOffsetCusps(svg::Panel& panel) {
    const Style curve{"#1f2937", "none", 2.6, "", 1};
    const Style normal{"#9ca3af", "none", 1, "3 3", 1};
    const Style onCurve{"#1f2937", "#ffffff", 1.4, "", 1};
    const Point2d p[4] = {{0, 0}, {90, 180}, {110, 180}, {200, 0}};
    Point2d a, b, c, d;
    CB::GetPowerBasis(p, a, b, c, d);
    struct Offset {
        double distance;
        Style line, cusp;
    };
    const Offset offsets[] = {{-35, {"#7c3aed", "none", 1.6, "", 1}, {"#7c3aed", "#7c3aed", 1, "", 1}},
                              {-70, {"#059669", "none", 1.6, "", 1}, {"#059669", "#059669", 1, "", 1}}};
    double radius = 0;
    CB::GetCurvatureRadiusAt(0.5, a, b, c, radius);
    std::string summary = "FindOffsetCusps on an arch of radius " + brief(std::abs(radius)) + " at its top:";
    for (const Offset& o : offsets) {
        std::vector<Point2d> line;
        for (int i = 0; i <= 400; ++i) line.push_back(CB::MapToBezier(p, i / 400.0, o.distance, 1.0));
        panel.polyline(line, o.line);
        std::vector<double> ts;
        CB::FindOffsetCusps(a, b, c, o.distance, ts);
        for (double t : ts) {
            const Point2d on = CB::Evaluate(a, b, c, d, t), cusp = CB::MapToBezier(p, t, o.distance, 1.0);
            panel.polyline({on, cusp}, normal);
            panel.dot(on, 3, onCurve);
            panel.dot(cusp, 4, o.cusp);
        }
        panel.legend(o.line, "offset " + brief(o.distance));
        summary += " d = " + brief(o.distance) + " at t = " + list(ts) + ";";
    }
    summary.pop_back();
    panel.polyline(sampled(p), curve);
    panel.legend(curve, "curve");
    panel.legend(onCurve, "B(t) at a cusp parameter", true);
    panel.legend(offsets[0].cusp, "cusp, in the colour of its offset", true);
    return summary;
}

// A seeded generator (splitmix64): the same noise on every platform, unlike the
// distributions of <random>.
class Noise {
public:
    explicit Noise(uint64_t seed) : state_(seed) {}
    // Uniform in [-1, 1).
    double next() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        z ^= z >> 31;
        return double(z >> 11) * 0x1.0p-52 - 1.0;
    }

private:
    uint64_t state_;
};

Vector2d unitTangent(const Point2d (&p)[4], double t) {
    Point2d a, b, c, d;
    CB::GetPowerBasis(p, a, b, c, d);
    const Vector2d v = CB::SafeBezierTangent(t, a, b, c, d);
    return v * (1 / Magnitude(v));
}

// count points of the curve at even steps of t, each moved by up to amplitude
// in x and y.
std::vector<Point2d> noisySamples(const Point2d (&p)[4], int count, double amplitude, Noise& noise) {
    Point2d a, b, c, d;
    CB::GetPowerBasis(p, a, b, c, d);
    std::vector<Point2d> out;
    for (int i = 0; i < count; ++i) {
        const Point2d q = CB::Evaluate(a, b, c, d, double(i) / (count - 1));
        const double dx = amplitude * noise.next(), dy = amplitude * noise.next();
        out.push_back({q.x + dx, q.y + dy});
    }
    return out;
}

// Noisy samples of known curves and the cubics fitted to them: all four control
// points free, the ends and end tangents fixed, and two cubics joined with a
// continuous tangent for an S made of two pieces.
std::string drawFit(svg::Panel& panel) {
    const Style truth{"#9ca3af", "none", 1.4, "5 3", 1};
    const Style fitted{"#2563eb", "none", 2.4, "", 1};
    const Style second{"#ea580c", "none", 2.4, "", 1};
    const Style data{"#111827", "#fde047", 1, "", 1};
    const Style joint{"#dc2626", "#dc2626", 1, "", 1};
    const Point2d arch[4] = {{0, 0}, {10, 120}, {120, 110}, {130, 10}};
    const Point2d left[4] = {{200, 0}, {200, 80}, {260, 90}, {265, 45}};
    const Point2d right[4] = {{265, 45}, {270, 0}, {330, 10}, {330, 90}};
    const double amplitude = 3;
    Noise noise(20240611);
    std::string summary = "LeastSquares, 20 passes, noise up to " + brief(amplitude) + " in x and y; max distance:";
    auto caption = [&](double x, const std::string& name, double error) {
        panel.label({x, -8}, name, 18, svg::Anchor::Middle, 12, "#374151");
        panel.label({x, -8}, "max distance " + brief(std::sqrt(error)), 33, svg::Anchor::Middle, 11, "#6b7280");
        summary += std::string(summary.back() == ':' ? " " : "; ") + name + " " + brief(std::sqrt(error));
    };
    // The same arch twice: free, then with the true end tangents.
    for (int k = 0; k < 2; ++k) {
        const Vector2d shift{k == 0 ? -170.0 : 0.0, 0};
        Point2d p[4];
        for (int i = 0; i < 4; ++i) p[i] = arch[i] + shift;
        const std::vector<Point2d> pts = noisySamples(p, 25, amplitude, noise);
        Point2d out[4];
        const double error = k == 0 ? QorMath::LeastSquares(pts.data(), int(pts.size()), out, 20)
                                    : QorMath::LeastSquares(pts.data(), int(pts.size()), unitTangent(p, 0),
                                                            unitTangent(p, 1), out, 20);
        panel.polyline(sampled(p), truth);
        panel.path(bezierPath(out), fitted);
        for (const Point2d& q : pts) panel.dot(q, 2.2, data);
        caption(shift.x + 65, k == 0 ? "free" : "end tangents fixed", error);
    }
    // Two pieces: the first 20 samples from the left cubic, 20 from the right.
    std::vector<Point2d> pts = noisySamples(left, 20, amplitude, noise);
    const std::vector<Point2d> more = noisySamples(right, 21, amplitude, noise);
    pts.insert(pts.end(), more.begin() + 1, more.end());
    Point2d out1[4], out2[4];
    const double error = QorMath::LeastSquares(pts.data(), int(pts.size()), 20, unitTangent(left, 0),
                                               unitTangent(right, 1), out1, out2, 20);
    panel.polyline(sampled(left), truth);
    panel.polyline(sampled(right), truth);
    panel.path(bezierPath(out1), fitted);
    panel.path(bezierPath(out2), second);
    for (const Point2d& q : pts) panel.dot(q, 2.2, data);
    panel.dot(out1[3], 4, joint);
    caption(265, "two cubics", error);
    panel.legend(truth, "curve sampled");
    panel.legend(fitted, "fitted cubic");
    panel.legend(second, "second cubic");
    panel.legend(data, "noisy samples", true);
    panel.legend(joint, "joint", true);
    return summary;
}

// Offsets of two curves at several distances to both sides, each a chain of
// cubics from OffsetBezier, with the cusps where the distance reaches the
// radius of curvature.
std::string drawOffsets(svg::Panel& panel) {
    const Style curve{"#1f2937", "none", 2.6, "", 1};
    const Style joint{"#374151", "#ffffff", 0.8, "", 1};
    const Style cusp{"#dc2626", "#dc2626", 1, "", 1};
    const Point2d curves[2][4] = {{{0, 0}, {40, 110}, {110, -70}, {160, 40}},
                                  {{230, 0}, {255, 150}, {305, 150}, {330, 0}}};
    const double distances[] = {8, 18, 30};
    const Style colours[] = {
        {"#2563eb", "none", 1.5, "", 1}, {"#059669", "none", 1.5, "", 1}, {"#d97706", "none", 1.5, "", 1}};
    const double tolerance = 0.25;
    std::string summary = "OffsetBezier, tolerance " + brief(tolerance) + ", pieces at";
    int cusps = 0;
    for (size_t k = 0; k < 3; ++k) {
        size_t pieces = 0;
        for (const auto& p : curves) {
            Point2d a, b, c, d;
            CB::GetPowerBasis(p, a, b, c, d);
            for (const double dk : {distances[k], -distances[k]}) {
                std::vector<Point2d> chain;
                QorMath::OffsetBezier(p, dk, tolerance, chain);
                pieces += chain.size() / 4;
                svg::Path path;
                for (size_t i = 0; i + 3 < chain.size(); i += 4) {
                    if (i == 0) path.moveTo(chain[0]);
                    path.cubicTo(chain[i + 1], chain[i + 2], chain[i + 3]);
                    panel.dot(chain[i + 3], 1.6, joint);
                }
                panel.path(path, colours[k]);
                std::vector<double> ts;
                CB::FindOffsetCusps(a, b, c, dk, ts);
                for (double t : ts) panel.dot(CB::MapToBezier(p, t, dk, 1.0), 3.5, cusp);
                cusps += int(ts.size());
            }
        }
        panel.legend(colours[k], "+/-" + brief(distances[k]));
        summary += std::string(k ? "," : "") + " +/-" + brief(distances[k]) + ": " + std::to_string(pieces);
    }
    for (const auto& p : curves) panel.path(bezierPath(p), curve);
    panel.legend(curve, "curve");
    panel.legend(joint, "piece ends", true);
    panel.legend(cusp, "offset cusp", true);
    return summary + "; " + std::to_string(cusps) + " cusps";
}

// Five layouts in one container, each result filled and carrying an "F" drawn in
// the lower right of a 5 × 8 object and mapped by GetLayoutTransformation (the
// upper left keeps the labels clear of it); the dashed box is the space the
// margins leave where a minimum width overrides it.
std::string drawLayouts(svg::Panel& panel) {
    using QorMath::Layout;
    const Style frame{"#374151", "#f9fafb", 2, "", 1};
    const Style result{"#2563eb", "#dbeafe", 1.6, "", 0.8};
    const Style glyph{"#60a5fa", "#60a5fa", 0.8, "", 0.45};
    const Style space{"#6b7280", "none", 1.2, "5 4", 1};
    const Style anchor{"#dc2626", "#dc2626", 1, "", 1};
    const QorMath::BoundsT<double> container{0, 150, 390, 0}, object{0, 8, 5, 0};
    const Layout::Value unset{Layout::Unset, 0};
    auto abs = [](double v) { return Layout::Value{Layout::Absolute, v}; };
    auto rel = [](double v) { return Layout::Value{Layout::Relative, v}; };
    struct Case {
        const char* line1;
        const char* line2;
        Layout::Value width, height, minWidth, margins[4];  // left, right, top, bottom
        QorMath::Horizontal::Alignment h;
        QorMath::Vertical::Alignment v;
    };
    using H = QorMath::Horizontal::Alignment;
    using V = QorMath::Vertical::Alignment;
    const Case cases[] = {
        {"left, top", "90 x 35, margins 10", abs(90), abs(35), unset, {abs(10), abs(10), abs(10), abs(10)}, H::Left,
         V::Top},
        {"right, bottom", "25% x 30%, margins 10", rel(0.25), rel(0.3), unset, {abs(10), abs(10), abs(10), abs(10)},
         H::Right, V::Bottom},
        {"center, center", "30% x 25%", rel(0.3), rel(0.25), unset, {unset, unset, unset, unset}, H::Center,
         V::Center},
        {"minimum 110, right", "margins leave 70", unset, unset, abs(110), {abs(310), abs(10), abs(10), rel(0.7)},
         H::Right, V::Bottom},
        {"margins only", "10, 280, 60%, 10", unset, unset, unset, {abs(10), abs(280), rel(0.6), abs(10)}, H::Left,
         V::Bottom},
    };
    panel.polyline(corners(container), frame, true);
    std::string summary = "LayoutObject in a 390 x 150 container:";
    for (const Case& c : cases) {
        Layout layout;
        layout.SetWidth(c.width);
        layout.SetHeight(c.height);
        layout.SetMinimumWidth(c.minWidth);
        layout.SetLeftMargin(c.margins[0]);
        layout.SetRightMargin(c.margins[1]);
        layout.SetTopMargin(c.margins[2]);
        layout.SetBottomMargin(c.margins[3]);
        layout.SetHorizontalAlignment(c.h);
        layout.SetVerticalAlignment(c.v);
        const auto r = QorMath::LayoutObject(container, layout);
        if (c.minWidth.kind != Layout::Unset) {
            Layout margins = layout;  // without the minimum: the space the margins leave
            margins.SetMinimumWidth(unset);
            panel.polyline(corners(QorMath::LayoutObject(container, margins)), space, true);
        }
        panel.polyline(corners(r), result, true);
        std::vector<Point2d> f = layoutGlyph({2, 3.2, 5, 0});
        const MATRIX m = QorMath::GetLayoutTransformation(container, object, layout);
        m.TransformPoints(f.data(), f.size());
        panel.polyline(f, glyph, true);
        panel.label({r.left, r.top}, c.line1, 13, svg::Anchor::Start, 10.5, "#111827", 4);
        panel.label({r.left, r.top}, c.line2, 26, svg::Anchor::Start, 10, "#4b5563", 4);
        summary += std::string(summary.back() == ':' ? " " : "; ") + c.line1 + ": " + formatNumber(r.right - r.left) +
                   " x " + formatNumber(r.top - r.bottom) + " at (" + formatNumber(r.left) + ", " +
                   formatNumber(r.bottom) + ")";
    }
    for (int i = 0; i < 9; ++i)
        panel.dot(QorMath::GetAnchorPoint(container, static_cast<QorMath::AnchorLocation>(i)), 2.5, anchor);
    panel.legend(result, "LayoutObject");
    panel.legend(glyph, "F under the matrix");
    panel.legend(space, "margin space");
    panel.legend(anchor, "anchors", true);
    return summary;
}

// Two swirls written with Set and blitted into a wider field, with the cells
// each row stores, arrows and streamlines sampled with Get, and a region cut out
// across both.
std::string drawSwirls(svg::Panel& panel) {
    using QorMath::VectorField;
    const Style frame{"#374151", "none", 1.6, "", 1};
    const Style runs{"none", "#bfdbfe", 0, "", 0.7};
    const Style arrows{"#1f2937", "none", 0.9, "", 1};
    const Style copy{"#2563eb", "none", 1.6, "6 4", 1};
    const Style regionStyle{"#dc2626", "none", 2, "4 3", 1};
    const Style stream{"#059669", "none", 1.5, "", 1};
    struct Swirl {
        int size, dx, dy;
    };
    const Swirl swirls[] = {{15, 2, 2}, {11, 22, 5}};
    VectorField canvas(36, 18, 0, 0);
    std::string summary = "VectorField 36 x 18, swirls";
    for (const Swirl& s : swirls) {
        VectorField swirl(s.size, s.size, 0, 0);
        writeSwirl(swirl, s.size / 2.0);
        canvas.Blit(swirl, s.dx, s.dy);
        summary += std::string(s.dx == swirls[0].dx ? " " : ", ") + std::to_string(s.size) + " x " +
                   std::to_string(s.size) + " (" + std::to_string(swirl.GetStoredCellCount()) + " stored) at (" +
                   std::to_string(s.dx) + ", " + std::to_string(s.dy) + ")";
    }
    const tagRECT asked{12, 14, 27, 3};
    const VectorField region = canvas.GetRegion(asked);
    const tagRECT r = region.GetCGIRECT();
    // Inside the region, away from its last column and row (which Get reaches
    // only as neighbours), its samples are the canvas's.
    int differ = 0;
    for (double y = r.bottom; y <= r.top - 1; y += 0.5)
        for (double x = r.left; x <= r.right - 1; x += 0.5) {
            const QorMath::vector2dT<float, 1> p{float(x), float(y)};
            differ += region.Get(p) != canvas.Get(p);
        }

    auto cells = [](const tagRECT& c) {
        const double l = c.left - 0.5, t = c.top + 0.5, rt = c.right + 0.5, b = c.bottom - 0.5;
        return std::vector<Point2d>{{l, t}, {rt, t}, {rt, b}, {l, b}};
    };
    panel.polyline(cells(canvas.GetCGIRECT()), frame, true);
    drawVectorField(panel, canvas, 1, runs, arrows);
    for (const Swirl& s : swirls) {
        const Point2d centre{s.dx + (s.size - 1) / 2.0, s.dy + (s.size - 1) / 2.0};
        for (int k = 1; k <= 3; ++k) {
            const double r0 = s.size / 2.0 * k / 4;
            panel.polyline(traceStreamline(canvas, {centre.x + r0, centre.y}, r0 / 20, QorMath::TwoPi * r0), stream);
        }
        panel.polyline(cells({s.dx, s.dy + s.size - 1, s.dx + s.size - 1, s.dy}), copy, true);
    }
    panel.polyline(cells(r), regionStyle, true);
    const tagRECT all = canvas.GetCGIRECT();
    panel.label({r.left - 0.5, all.top + 0.5}, "GetRegion " + std::to_string(region.width()) + " x " +
                std::to_string(region.height()) + ": " + std::to_string(region.GetStoredCellCount()) + " stored",
                -5, svg::Anchor::Start, 11, regionStyle.stroke);
    panel.label({all.left - 0.5, all.bottom - 0.5}, std::to_string(canvas.GetStoredCellCount()) + " of " +
                std::to_string(canvas.width() * canvas.height()) + " cells stored, one run per row",
                14, svg::Anchor::Start, 11, "#374151");
    panel.legend(runs, "stored runs", true);
    panel.legend(arrows, "Get at cells");
    panel.legend(stream, "streamlines");
    panel.legend(copy, "copies");
    panel.legend(regionStyle, "region");
    return summary + "; " + std::to_string(canvas.GetStoredCellCount()) + " cells stored of " +
           std::to_string(canvas.width() * canvas.height()) + "; region " + std::to_string(region.width()) + " x " +
           std::to_string(region.height()) + " with " + std::to_string(region.GetStoredCellCount()) +
           " stored, samples " + (differ == 0 ? "equal to the canvas's" : std::to_string(differ) + " differ");
}

// A cube of integer corners turned by slerp steps between two orientations. Each
// step's quaternion becomes a fixed-point matrix, moves the corners, and the
// corners are projected through an eye above the cube's centre; faces turned
// toward the eye are shaded and hide the edges behind them.
std::string drawQuaternions(svg::Panel& panel) {
    using QorMath::Quaternion;
    using V3 = QorMath::vector3dT<double>;
    const Style hidden{"#9ca3af", "none", 1, "3 3", 1};
    const Style edge{"#1e3a8a", "none", 1.6, "", 1};
    const Style axisStyle{"#6b7280", "none", 1.2, "6 3", 1};
    const Style trail{"#ea580c", "none", 1.4, "", 0.9};
    const Style corner{"#ea580c", "#ea580c", 1, "", 1};
    const Style face{"#1e3a8a", "#93c5fd", 0, "", 0.85};
    const int32_t half = 100, eyeZ = 800, spacing = 420;
    const double turnDegrees = 120;
    const V3 axis{0.3, 1, 0.4};
    const double len = std::sqrt(axis.x * axis.x + axis.y * axis.y + axis.z * axis.z);
    const V3 unit{axis.x / len, axis.y / len, axis.z / len};
    const double deg = QorMath::RadiansPerDegree;
    const Quaternion q0 = Quaternion(20 * deg, {1, 0, 0}) * Quaternion(-30 * deg, {0, 1, 0});
    const Quaternion q1 = Quaternion(turnDegrees * deg, unit) * q0;

    // Corner i has x, y, z from its bits 0, 1, 2; faces are wound counter-clockwise
    // seen from outside, so a face toward the eye projects counter-clockwise.
    std::vector<MTH3DPOINT> cube;
    for (int i = 0; i < 8; ++i) cube.push_back({i & 1 ? half : -half, i & 2 ? half : -half, i & 4 ? half : -half});
    const int faces[6][4] = {{4, 5, 7, 6}, {0, 2, 3, 1}, {1, 3, 7, 5}, {0, 4, 6, 2}, {2, 6, 7, 3}, {0, 1, 5, 4}};

    // The corners turned by q, moved right by dx, and projected from the eye above
    // (dx, 0). VECT_QuaternionToMat gives the transpose of the rotation Rotate
    // applies, so the conjugate's matrix turns the corners the way q does.
    auto place = [&](const Quaternion& q, int32_t dx, std::vector<MTH3DPOINT> points,
                     std::vector<MTH3DPOINT>* moved = nullptr) {
        const Quaternion c = q.GetConjugate();
        const double qa[4] = {c.x, c.y, c.z, c.w};
        MTH3DMATRIX mat;
        VECT_QuaternionToMat(qa, mat);
        MTHTranslate3DMatrix(mat, dx, 0, 0);
        MTHTransform3DPoints(points.data(), mat, int32_t(points.size()));
        std::vector<tagPOINT> flat(points.size());
        MTHPerspective3DProjection(points.data(), flat.data(), int32_t(points.size()), MTH3DPOINT{dx, 0, eyeZ});
        if (moved) *moved = points;
        std::vector<Point2d> out;
        for (const tagPOINT& p : flat) out.push_back({double(p.x), double(p.y)});
        return out;
    };

    const double steps[] = {0, 1 / 3.0, 2 / 3.0, 1};
    const char* stepNames[] = {"0", "1/3", "2/3", "1"};
    std::string summary = "Quaternion::Interpolate over a " + brief(turnDegrees) + " deg turn, turned";
    double worstCorner = 0, worstBack = 0;
    for (int k = 0; k < 4; ++k) {
        const int32_t dx = k * spacing;
        Quaternion q;
        if (!Quaternion::Interpolate(q0, q1, steps[k], q)) q = steps[k] < 0.5 ? q0 : q1;
        std::vector<MTH3DPOINT> moved;
        const std::vector<Point2d> flat = place(q, dx, cube, &moved);

        // Which faces look at the eye, and so which edges show.
        bool front[6], shows[8][8] = {};
        for (int f = 0; f < 6; ++f) {
            double area = 0;
            for (int i = 0; i < 4; ++i) {
                const Point2d &a = flat[faces[f][i]], &b = flat[faces[f][(i + 1) % 4]];
                area += a.x * b.y - a.y * b.x;
            }
            front[f] = area > 0;
            for (int i = 0; i < 4; ++i) {
                const int a = faces[f][i], b = faces[f][(i + 1) % 4];
                shows[a][b] = shows[b][a] = shows[a][b] || front[f];
            }
        }
        for (int a = 0; a < 8; ++a)
            for (int b = a + 1; b < 8; ++b)
                if ((a ^ b) == 1 || (a ^ b) == 2 || (a ^ b) == 4)
                    if (!shows[a][b]) panel.polyline({flat[a], flat[b]}, hidden);
        // The turn axis through the centre, and the path of corner 7 over all t.
        const V3 reach{170 * unit.x, 170 * unit.y, 170 * unit.z};
        const std::vector<MTH3DPOINT> ends = {{dx - int32_t(std::lround(reach.x)), -int32_t(std::lround(reach.y)),
                                               -int32_t(std::lround(reach.z))},
                                              {dx + int32_t(std::lround(reach.x)), int32_t(std::lround(reach.y)),
                                               int32_t(std::lround(reach.z))}};
        std::vector<tagPOINT> axisEnds(2);
        MTHPerspective3DProjection(ends.data(), axisEnds.data(), 2, MTH3DPOINT{dx, 0, eyeZ});
        panel.polyline({{double(axisEnds[0].x), double(axisEnds[0].y)}, {double(axisEnds[1].x), double(axisEnds[1].y)}},
                       axisStyle);
        std::vector<Point2d> path;
        for (int i = 0; i <= 48; ++i) {
            Quaternion qi;
            if (Quaternion::Interpolate(q0, q1, i / 48.0, qi)) path.push_back(place(qi, dx, {cube[7]})[0]);
        }
        // Shaded faces: lighter the more they face a light above, left and front.
        const V3 light{-0.48, 0.6, 0.64};  // unit: 0.2304 + 0.36 + 0.4096 = 1
        for (int f = 0; f < 6; ++f) {
            if (!front[f]) continue;
            const MTH3DPOINT &a = moved[faces[f][0]], &b = moved[faces[f][1]], &c = moved[faces[f][3]];
            const V3 u{double(b.x - a.x), double(b.y - a.y), double(b.z - a.z)};
            const V3 v{double(c.x - a.x), double(c.y - a.y), double(c.z - a.z)};
            const V3 n{u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x};
            const double lit = std::max(0.0, (n.x * light.x + n.y * light.y + n.z * light.z) /
                                                  std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z));
            char fill[8];
            auto mix = [&](int dark, int bright) { return int(dark + (bright - dark) * (0.35 + 0.65 * lit)); };
            std::snprintf(fill, sizeof fill, "#%02x%02x%02x", mix(0x60, 0xe0), mix(0x8a, 0xec), mix(0xc8, 0xfc));
            panel.polyline({flat[faces[f][0]], flat[faces[f][1]], flat[faces[f][2]], flat[faces[f][3]]},
                           {face.stroke, fill, 0, "", face.fillOpacity}, true);
        }
        for (int a = 0; a < 8; ++a)
            for (int b = a + 1; b < 8; ++b)
                if (((a ^ b) == 1 || (a ^ b) == 2 || (a ^ b) == 4) && shows[a][b]) panel.polyline({flat[a], flat[b]}, edge);
        panel.polyline(path, trail);  // over the faces, so that all of it shows
        panel.dot(flat[7], 3.5, corner);

        // The fixed-point corners against the same turn in double, and the matrix
        // read back as a quaternion.
        for (int i = 0; i < 8; ++i) {
            V3 p{double(cube[i].x), double(cube[i].y), double(cube[i].z)};
            q.Rotate(p);
            worstCorner = std::max({worstCorner, std::abs(p.x + dx - moved[i].x), std::abs(p.y - moved[i].y),
                                    std::abs(p.z - moved[i].z)});
        }
        const double qa[4] = {q.x, q.y, q.z, q.w};
        MTH3DMATRIX mat;
        VECT_QuaternionToMat(qa, mat);
        double qb[4];
        VECT_MatToQuaternion(mat, qb);
        const double sign = qb[0] * qa[0] + qb[1] * qa[1] + qb[2] * qa[2] + qb[3] * qa[3] < 0 ? -1 : 1;
        for (int i = 0; i < 4; ++i) worstBack = std::max(worstBack, std::abs(sign * qb[i] - qa[i]));

        // How far this step has turned from the start: slerp turns at an even rate.
        // (2·atan2 of the vector part's length and w rather than RotationTheta's
        // 2·acos(w), which loses the small angles near w = 1.)
        const Quaternion r = q * q0.GetConjugate();
        const double turned =
            2 * std::atan2(std::sqrt(r.x * r.x + r.y * r.y + r.z * r.z), r.w) * QorMath::DegreesPerRadian;
        double top = -DBL_MAX, bottom = DBL_MAX;
        for (const Point2d& p : flat) top = std::max(top, p.y), bottom = std::min(bottom, p.y);
        for (const Point2d& p : path) top = std::max(top, p.y), bottom = std::min(bottom, p.y);
        for (const tagPOINT& p : axisEnds) top = std::max(top, double(p.y)), bottom = std::min(bottom, double(p.y));
        panel.label({double(dx), top}, std::string("t = ") + stepNames[k], -12, svg::Anchor::Middle, 13, "#111827");
        panel.label({double(dx), bottom}, "turned " + brief(turned) + " deg", 20, svg::Anchor::Middle, 11, "#4b5563");
        summary += std::string(k ? "," : "") + " " + brief(turned);
    }
    panel.legend(edge, "edges in front");
    panel.legend(hidden, "behind");
    panel.legend(axisStyle, "turn axis");
    panel.legend(trail, "path of one corner", false);
    panel.legend(corner, "that corner", true);
    char err[64];
    std::snprintf(err, sizeof err, "%.2g; MatToQuaternion back within %.1e", worstCorner, worstBack);
    return summary + " deg; fixed-point corners off Quaternion::Rotate by at most " + err;
}

// The shaping curves as small plots over [0, 1], each for five values of its
// parameter, the neutral one grey, and the normal density for five widths.
std::string drawShaping(svg::Panel& panel) {
    const Style frame{"#d1d5db", "#f9fafb", 1, "", 1};
    const Style diagonal{"#d1d5db", "none", 1, "3 3", 1};
    const char* colours[] = {"#2563eb", "#059669", "#6b7280", "#d97706", "#dc2626"};
    struct Plot {
        const char* title;
        double values[5];
        double labelAt;  // t at which each curve is labelled
        double (*f)(double, double);
    };
    const Plot plots[] = {
        {"Bias(t, b)", {0.1, 0.25, 0.5, 0.75, 0.9}, 0.5, [](double t, double b) { return QorMath::Bias(t, b); }},
        {"Gain(t, g)", {-0.8, -0.4, 0, 0.4, 0.8}, 0.25, [](double t, double g) { return QorMath::Gain(t, g); }},
        {"log blend(t, base)", {0.01, 0.1, 1, 10, 100}, 0.5,
         [](double t, double base) { return QorMath::GetLogarithmicBlendFactor(t, base); }},
        // x from -3 to 3 across the plot, the density 1/1.2 at the top.
        {"Gaussian(x, 0, sigma)", {0.5, 0.7, 1, 1.4, 2}, 0.5,
         [](double t, double sigma) { return 1.2 * QorMath::Gaussian(6 * t - 3, 0, sigma); }},
    };
    const double size = 120, spacing = 170;
    // Room on the left for the first plot's labels: an empty path the view still fits.
    panel.polyline({{-32, 0}}, {"none", "none", 0, "", 1});
    std::string summary;
    for (int k = 0; k < 4; ++k) {
        const Plot& plot = plots[k];
        const double x0 = k * spacing;
        panel.polyline({{x0, 0}, {x0 + size, 0}, {x0 + size, size}, {x0, size}}, frame, true);
        if (k < 3) panel.polyline({{x0, 0}, {x0 + size, size}}, diagonal);
        summary += std::string(k ? "; " : "") + plot.title + " at " + (k == 3 ? "x = 0:" : "t = " + brief(plot.labelAt) + ":");
        for (int i = 0; i < 5; ++i) {
            const Style curve{colours[i], "none", i == 2 ? 1.4 : 1.8, "", 1};
            std::vector<Point2d> line;
            for (int s = 0; s <= 100; ++s) line.push_back({x0 + size * s / 100.0, size * plot.f(s / 100.0, plot.values[i])});
            panel.polyline(line, curve);
            // Each curve marked at labelAt, its parameter left of the frame at that height.
            const double y = plot.f(plot.labelAt, plot.values[i]);
            panel.dot({x0 + size * plot.labelAt, size * y}, 2.2, {colours[i], colours[i], 1, "", 1});
            panel.label({x0, size * y}, brief(plot.values[i]), 4, svg::Anchor::End, 10, colours[i], -4);
            summary += " " + brief(k == 3 ? y / 1.2 : y);
        }
        panel.label({x0 + size / 2, size}, plot.title, -8, svg::Anchor::Middle, 12, "#111827");
        panel.label({x0, 0}, k == 3 ? "-3" : "0", 14, svg::Anchor::Middle, 10, "#6b7280");
        panel.label({x0 + size, 0}, k == 3 ? "3" : "1", 14, svg::Anchor::Middle, 10, "#6b7280");
    }
    panel.legend(diagonal, "t itself (neutral)");
    panel.legend({"#6b7280", "none", 1.4, "", 1}, "neutral parameter");
    panel.legend({"#2563eb", "#2563eb", 1, "", 1}, "where the parameter on the left is read", true);
    return summary;
}

// One entry per family: the key printed in the summary, the panel title, and
// the function that draws the panel and returns its one-line summary.
struct PanelEntry {
    const char* key;
    const char* title;
    std::string (*draw)(svg::Panel&);
};
const PanelEntry kPanels[] = {
    {"angles", "A matrix taken apart: scale, skew, rotation, origin", drawDecomposition},
    {"rectangles", "Rectangles under a matrix and their bounding boxes", drawRectangles},
    {"circles", "Circles under a matrix: axes and bounding box", drawCircles},
    {"split", "Splitting a cubic at t = 0.35 (de Casteljau)", drawSplit},
    {"flatten", "Adaptive flattening at a coarse and a fine tolerance", drawFlatten},
    {"comb", "Curvature comb, inflections and curvature-extremum candidates", drawComb},
    {"closest", "Closest points on a cubic from a grid", drawClosest},
    {"length", "A cubic cut into ten pieces of equal length", drawEqualLength},
    {"crossings", "Curve pairs and their crossings", drawCrossings},
    {"sweep", "Parallel lines swept across a curve", drawLineSweep},
    {"loop", "A loop and its double point", drawSelfIntersection},
    {"cusps", "Offset cusps at two distances", drawOffsetCusps},
    {"fit", "Cubics fitted to noisy samples", drawFit},
    {"offsets", "Offsets at several distances, cusps marked", drawOffsets},
    {"layout", "Layouts in one container: alignments, margins, a minimum", drawLayouts},
    {"field", "A vector field: two swirls blitted, a region cut out", drawSwirls},
    {"quaternions", "A cube turned by slerp steps, in 16.16 fixed point", drawQuaternions},
    {"shaping", "Shaping curves: bias, gain, logarithmic blend, normal density", drawShaping},
};

}  // namespace

Command addGalleryCommand(CLI::App& parent, const GlobalOptions& global) {
    auto out = std::make_shared<std::string>("out/gallery.svg");
    CLI::App* app = parent.add_subcommand("gallery", "Draw every family on built-in samples into one SVG");
    app->add_option("--out", *out, "SVG file to write (its directory is created)")->capture_default_str();
    return {app, [out, &global] {
                svg::Document doc("QorMath gallery");
                std::vector<std::string> summaries;
                for (const auto& entry : kPanels) {
                    svg::Panel panel(entry.title);
                    summaries.push_back(entry.draw(panel));
                    doc.add(std::move(panel));
                }
                doc.write(*out);
                Output report(global.json);
                report.text("file", *out);
                report.begin("panels");
                for (size_t i = 0; i < summaries.size(); ++i) report.text(kPanels[i].key, summaries[i]);
                report.end();
                return 0;
            }};
}

}  // namespace qtool
