// qormath fit: one cubic (or two joined ones) fitted by least squares to points
// given on the command line or in a file.

#include <CLI/CLI.hpp>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>

#include "QorMath/fitting.h"
#include "args.h"
#include "commands.h"
#include "output.h"
#include "path_data.h"
#include "svg.h"

namespace qtool {

namespace {

using QorMath::Point2d;
using QorMath::Vector2d;

// Passes are O(points) each; this only keeps a mistyped count from running for hours.
constexpr int kMaxIterations = 100000;

struct FitOptions {
    std::vector<std::string> words;
    std::string file;
    std::string tangents;
    int split = 0;
    bool splitGiven = false;
    int iterations = 20;
    std::string svg;
};

// Numbers separated by white space or commas, taken two at a time.
std::vector<Point2d> parsePoints(const std::string& text, const std::string& what) {
    const std::vector<std::string> numbers = splitWords(text, true);
    if (numbers.size() % 2 != 0)
        throw UsageError(what + ": expected pairs x,y, got an odd count of " + std::to_string(numbers.size()) +
                         " numbers");
    std::vector<Point2d> points;
    for (size_t i = 0; i < numbers.size(); i += 2)
        points.push_back({parseNumber(numbers[i], what + " value " + std::to_string(i + 1)),
                          parseNumber(numbers[i + 1], what + " value " + std::to_string(i + 2))});
    return points;
}

std::string readFile(const std::string& file) {
    if (file == "-") return wordsOrStdin({"-"});
    std::ifstream in(file, std::ios::binary);
    if (!in) throw UsageError("--file: cannot open \"" + file + "\"");
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

std::string brief(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.3g", v);
    return buf;
}

Vector2d unit(const Vector2d& v, const std::string& what) {
    const double len = std::hypot(v.x, v.y);
    if (!(len > 0) || !std::isfinite(len)) throw UsageError(what + " has no direction (zero length)");
    return {v.x / len, v.y / len};
}

struct Fit {
    std::string method;
    Vector2d t0{0, 0}, t1{0, 0};
    bool tangents = false;
    std::vector<Cubic> curves;  // one, or two joined at curves[0][3]
    double error = DBL_MAX;
};

Fit fit(const std::vector<Point2d>& p, const FitOptions& o) {
    Fit f;
    const int n = int(p.size());
    f.tangents = !o.tangents.empty() || o.splitGiven;
    if (!o.tangents.empty()) {
        const std::vector<double> v = parseNumbers(o.tangents, 4, "--tangents");
        f.t0 = unit({v[0], v[1]}, "--tangents: the start tangent");
        f.t1 = unit({v[2], v[3]}, "--tangents: the end tangent");
    } else if (o.splitGiven) {
        f.t0 = unit(p[1] - p[0], "--split: the start tangent from the first two points");
        f.t1 = unit(p[n - 1] - p[n - 2], "--split: the end tangent from the last two points");
    }
    if (o.splitGiven) {
        f.method = "two joined cubics (LeastSquares with split)";
        Cubic a{}, b{};
        f.error = QorMath::LeastSquares(p.data(), n, o.split, f.t0, f.t1, a.data(), b.data(), o.iterations);
        f.curves = {a, b};
    } else if (f.tangents) {
        f.method = "ends and end tangents fixed (LeastSquares with tangents)";
        Cubic c{};
        f.error = QorMath::LeastSquares(p.data(), n, f.t0, f.t1, c.data(), o.iterations);
        f.curves = {c};
    } else {
        f.method = "free: all four control points (LeastSquares)";
        Cubic c{};
        f.error = QorMath::LeastSquares(p.data(), n, c.data(), o.iterations);
        f.curves = {c};
    }
    return f;
}

void drawSvg(const std::string& file, const std::vector<Point2d>& points, const Fit& f, const std::string& title) {
    const svg::Style polygon{"#9ca3af", "none", 1, "4 3", 1};
    const svg::Style curve{"#2563eb", "none", 2.4, "", 1};
    const svg::Style second{"#ea580c", "none", 2.4, "", 1};
    const svg::Style data{"#111827", "#fde047", 1.1, "", 1};
    const svg::Style handle{"#6b7280", "#ffffff", 1.2, "", 1};
    const svg::Style joint{"#dc2626", "#dc2626", 1, "", 1};
    svg::Panel panel(title);
    for (size_t i = 0; i < f.curves.size(); ++i) {
        const Cubic& c = f.curves[i];
        panel.polyline({c.begin(), c.end()}, polygon);
        panel.path(svg::Path::fromCubics({c}, false), i == 0 ? curve : second);
        for (const Point2d& q : c) panel.dot(q, 3, handle);
    }
    for (const Point2d& q : points) panel.dot(q, 2.6, data);
    if (f.curves.size() == 2) panel.dot(f.curves[0][3], 4, joint);
    panel.legend(curve, f.curves.size() == 2 ? "first cubic" : "fitted cubic");
    if (f.curves.size() == 2) panel.legend(second, "second cubic");
    panel.legend(polygon, "control polygon");
    panel.legend(data, "data points", true);
    if (f.curves.size() == 2) panel.legend(joint, "joint", true);
    svg::Document doc("qormath fit", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

int run(const FitOptions& o, const GlobalOptions& global) {
    if (o.words.empty() == o.file.empty()) throw UsageError("fit: give the points either as arguments or with --file");
    const std::vector<Point2d> points =
        o.file.empty() ? parsePoints(wordsOrStdin(o.words), "points") : parsePoints(readFile(o.file), "--file");
    const int n = int(points.size());
    if (n < 2) throw UsageError("fit: needs at least 2 points, got " + std::to_string(n));
    if (o.iterations < 1 || o.iterations > kMaxIterations)
        throw UsageError("--iterations: " + std::to_string(o.iterations) + " is outside 1 to " +
                         std::to_string(kMaxIterations));
    if (o.splitGiven && n < 5) throw UsageError("--split: needs at least 5 points, got " + std::to_string(n));
    if (o.splitGiven && (o.split < 1 || o.split > n - 1))
        throw UsageError("--split: " + std::to_string(o.split) + " is outside 1 to " + std::to_string(n - 1) +
                         " (the number of points in the first group)");

    const Fit f = fit(points, o);
    const bool fitted = f.error != DBL_MAX;
    const double maxDistance = std::sqrt(f.error);
    if (!o.svg.empty())
        drawSvg(o.svg, points, f,
                std::to_string(n) + " points, " + (f.curves.size() == 2 ? "two cubics" : "one cubic") +
                    (fitted ? ", max distance " + brief(maxDistance) : ", no fit"));

    Output out(global.json);
    out.number("points", n);
    out.text("method", f.method);
    out.number("iterations", o.iterations);
    if (f.tangents) out.points("tangents", {Point2d{f.t0.x, f.t0.y}, Point2d{f.t1.x, f.t1.y}});
    if (f.curves.size() == 1) {
        out.points("controls", {f.curves[0].begin(), f.curves[0].end()});
    } else {
        out.number("split", o.split);
        out.points("first", {f.curves[0].begin(), f.curves[0].end()});
        out.points("second", {f.curves[1].begin(), f.curves[1].end()});
        out.point("joint", f.curves[0][3]);
    }
    if (fitted) {
        out.number("error", f.error);
        out.number("maxDistance", maxDistance);
    } else {
        out.none("error", "none: no fit was made");
        out.none("maxDistance", "none");
    }
    if (!o.svg.empty()) out.text("svg", o.svg);
    return 0;
}

}  // namespace

Command addFitCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<FitOptions>();
    CLI::App* app = parent.add_subcommand("fit", "Fit a cubic Bezier (or two joined ones) to points by least squares");
    auto* words = app->add_option("POINTS", opts->words,
                                  "Points as x,y x,y ... or x y x y ... (any mix of spaces and commas), or - for "
                                  "standard input");
    app->add_option("--file,-f", opts->file, "Read the points from this file instead (same format; - for stdin)")
        ->excludes(words);
    app->add_option("--tangents", opts->tangents,
                    "TX,TY,UX,UY: fix the ends at the first and last point, leaving along (TX, TY) and arriving "
                    "along (UX, UY); only the two handle lengths are fitted");
    CLI::Option* split = app->add_option("--split", opts->split,
                    "Two cubics joined with a continuous tangent: the first k points go to the first, the rest to "
                    "the second (at least 5 points)");
    app->add_option("--iterations,-n", opts->iterations, "Passes of fitting and reparameterisation (1 to 100000)")
        ->capture_default_str();
    app->add_option("--svg", opts->svg, "Also draw the points and the fitted curve(s) into this SVG file");
    app->footer(
        "Without --tangents all four control points are free (the ends need not pass through the data). With\n"
        "--split the outer ends are fixed and need tangents: those of --tangents, else the directions from the\n"
        "first point to the second and from the second last to the last. Tangents are made unit length. Each\n"
        "pass solves for the control points at the current parameters (chord length at first), then moves every\n"
        "point's parameter to its nearest point on the curve; a pass that does not improve is not kept.\n"
        "error is the library's squared distance: the largest squared distance from a point to the curve, or the\n"
        "squared overshoot where the curve's box passes the points' box if that is larger; maxDistance is its root.\n"
        "Example: qormath fit 0,0 2,11.25 7,18 13.5,20.25 20,18 25,11.25 27,0 --svg out/fit.svg");
    return {app, [opts, split, &global] {
                opts->splitGiven = split->count() > 0;
                return run(*opts, global);
            }};
}

}  // namespace qtool
