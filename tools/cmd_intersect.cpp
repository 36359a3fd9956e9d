// qormath intersect: crossings of two paths, segment pair by segment pair, or of
// a path with an infinite line.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>

#include "QorMath/bezier.h"
#include "args.h"
#include "commands.h"
#include "cubic_arg.h"
#include "output.h"
#include "svg.h"

namespace qtool {

namespace {

using QorMath::Point2d;
namespace CB = QorMath::CubicBezier;

struct IntersectOptions {
    std::string a, b, line;
    bool includeEnds = false;
    std::string svg;
};

// One crossing: segment indices from 0, the parameter on each, the point the
// library reports, and how far apart the two curves' own points are there.
struct Crossing {
    size_t segA, segB;
    double tA, tB;
    Point2d point;
    double gap;
};

Point2d at(const Cubic& c, double t) {
    Point2d a, b, cc, d;
    CB::GetPowerBasis(c.data(), a, b, cc, d);
    return CB::Evaluate(a, b, cc, d, t);
}

double distance(const Point2d& p, const Point2d& q) { return std::hypot(p.x - q.x, p.y - q.y); }

std::string readArg(const std::string& text) { return wordsOrStdin({text}); }

// "1 segment", "2 segments".
std::string counted(size_t n, const std::string& noun) { return std::to_string(n) + " " + noun + (n == 1 ? "" : "s"); }

void drawSvg(const std::string& file, const std::vector<Cubic>& a, const std::vector<Cubic>& b,
             const std::vector<Point2d>& line, const std::vector<Point2d>& crossings, const std::string& title) {
    const svg::Style curveA{"#2563eb", "none", 2.4, "", 1};
    const svg::Style curveB{"#ea580c", "none", 2.4, "", 1};
    const svg::Style lineStyle{"#6b7280", "none", 1.4, "6 4", 1};
    const svg::Style dots{"#111827", "#fde047", 1.4, "", 1};
    svg::Panel panel(title);
    panel.path(svg::Path::fromCubics(a, false), curveA);
    if (!b.empty()) panel.path(svg::Path::fromCubics(b, false), curveB);
    if (!line.empty()) panel.polyline(line, lineStyle);
    for (size_t i = 0; i < crossings.size(); ++i) {
        panel.dot(crossings[i], 4, dots);
        panel.label(crossings[i], std::to_string(i + 1), -8, svg::Anchor::Start, 11, "#111827", 6);
    }
    panel.legend(curveA, "path A");
    panel.legend(b.empty() ? lineStyle : curveB, b.empty() ? "line" : "path B");
    panel.legend(dots, "intersection", true);
    svg::Document doc("qormath intersect", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

// The infinite line L0 + s·(L1 − L0), cut to cover the path's control points and
// both line points with a margin, for drawing.
std::vector<Point2d> visibleLine(const Point2d& l0, const Point2d& l1, const std::vector<Cubic>& path) {
    const double dx = l1.x - l0.x, dy = l1.y - l0.y, dd = dx * dx + dy * dy;
    double lo = 0, hi = 1;
    for (const Cubic& c : path)
        for (const Point2d& p : c) {
            const double s = ((p.x - l0.x) * dx + (p.y - l0.y) * dy) / dd;
            lo = std::min(lo, s), hi = std::max(hi, s);
        }
    const double margin = 0.1 * (hi - lo);
    lo -= margin, hi += margin;
    return {{l0.x + lo * dx, l0.y + lo * dy}, {l0.x + hi * dx, l0.y + hi * dy}};
}

int runLine(const IntersectOptions& o, const std::vector<Cubic>& a, Output& out) {
    const std::vector<double> v = parseNumbers(o.line, 4, "--line");
    const Point2d line[2] = {{v[0], v[1]}, {v[2], v[3]}};
    if (line[0] == line[1]) throw UsageError("--line: the two points coincide, so they fix no line");
    struct Hit {
        size_t seg;
        double t, s;
        Point2d point;
    };
    std::vector<Hit> hits;
    for (size_t i = 0; i < a.size(); ++i) {
        std::vector<double> ts, ss;
        CB::FindBezierLineIntersection(a[i].data(), line, ts, ss, o.includeEnds);
        for (size_t k = 0; k < ts.size(); ++k) hits.push_back({i, ts[k], ss[k], at(a[i], ts[k])});
    }

    std::vector<Point2d> points;
    for (const Hit& h : hits) points.push_back(h.point);
    if (!o.svg.empty())
        drawSvg(o.svg, a, {}, visibleLine(line[0], line[1], a), points,
                counted(hits.size(), "crossing") + " of a path (" + counted(a.size(), "segment") + ") and a line");

    out.points("line", {line[0], line[1]});
    out.boolean("includeEnds", o.includeEnds);
    out.number("segments", double(a.size()));
    out.number("count", double(hits.size()));
    out.beginList("intersections");
    for (size_t k = 0; k < hits.size(); ++k) {
        const Hit& h = hits[k];
        const Point2d onLine{line[0].x + h.s * (line[1].x - line[0].x), line[0].y + h.s * (line[1].y - line[0].y)};
        out.begin("intersection " + std::to_string(k + 1));
        out.number("segment", double(h.seg + 1));
        out.number("t", h.t);
        out.number("s", h.s);
        out.point("point", h.point);
        out.number("gap", distance(h.point, onLine));
        out.end();
    }
    out.end();
    if (!o.svg.empty()) out.text("svg", o.svg);
    return 0;
}

int run(const IntersectOptions& o, const GlobalOptions& global) {
    if (o.b.empty() && o.line.empty()) throw UsageError("intersect: expected path B or --line X0,Y0,X1,Y1");
    if (o.a == "-" && o.b == "-") throw UsageError("intersect: only one of A and B can be - (standard input)");
    const std::vector<Cubic> a = parseSegments(readArg(o.a), "path A");
    Output out(global.json);
    if (!o.line.empty()) return runLine(o, a, out);
    const std::vector<Cubic> b = parseSegments(readArg(o.b), "path B");

    std::vector<Crossing> crossings;
    for (size_t i = 0; i < a.size(); ++i)
        for (size_t j = 0; j < b.size(); ++j) {
            std::vector<double> tA, tB;
            std::vector<Point2d> points;
            CB::FindBezierIntersections(a[i].data(), b[j].data(), tA, tB, points);
            for (size_t k = 0; k < points.size(); ++k)
                crossings.push_back({i, j, tA[k], tB[k], points[k], distance(at(a[i], tA[k]), at(b[j], tB[k]))});
        }

    std::vector<Point2d> points;
    for (const Crossing& c : crossings) points.push_back(c.point);
    if (!o.svg.empty())
        drawSvg(o.svg, a, b, {}, points,
                counted(crossings.size(), "intersection") + " of path A (" + counted(a.size(), "segment") +
                    ") and path B (" + counted(b.size(), "segment") + ")");

    out.number("segmentsA", double(a.size()));
    out.number("segmentsB", double(b.size()));
    out.number("count", double(crossings.size()));
    out.beginList("intersections");
    for (size_t k = 0; k < crossings.size(); ++k) {
        const Crossing& c = crossings[k];
        out.begin("intersection " + std::to_string(k + 1));
        out.number("segmentA", double(c.segA + 1));
        out.number("segmentB", double(c.segB + 1));
        out.number("tA", c.tA);
        out.number("tB", c.tB);
        out.point("point", c.point);
        out.number("gap", c.gap);
        out.end();
    }
    out.end();
    if (!o.svg.empty()) out.text("svg", o.svg);
    return 0;
}

}  // namespace

Command addIntersectCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<IntersectOptions>();
    CLI::App* app = parent.add_subcommand("intersect", "Intersections of two paths, or of a path and a line");
    const char* pathHelp = "SVG path data (quote it), eight numbers in one argument, or - for standard input";
    app->add_option("A", opts->a, pathHelp)->required();
    auto* b = app->add_option("B", opts->b, pathHelp);
    auto* line = app->add_option("--line", opts->line,
                                 "X0,Y0,X1,Y1: the infinite line through two points instead of path B; s is 0 at "
                                 "the first point and 1 at the second")
                     ->excludes(b);
    app->add_flag("--include-ends", opts->includeEnds,
                  "With --line: also report t = 0 and t = 1 where a segment's end point lies on the line")
        ->needs(line);
    app->add_option("--svg", opts->svg, "Also draw the paths and the intersections into this SVG file");
    app->footer(
        "Every segment of A against every segment of B (FindBezierIntersections), or every segment of A against\n"
        "the line (FindBezierLineIntersection). Segments are numbered from 1 in path order across subpaths;\n"
        "results come in the library's order, per pair, neither sorted nor merged: a crossing at a joint of two\n"
        "segments may be listed twice or not at all. gap is the distance between the two curves' own points at\n"
        "the reported parameters (with --line, between B(t) and the line's point at s).\n"
        "Example: qormath intersect \"M 0 0 C 0 27 27 27 27 0\" \"M 0 36 C 0 9 27 9 27 36\" --svg out/x.svg");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
