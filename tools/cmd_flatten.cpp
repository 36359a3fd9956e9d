// qormath flatten: path data to polylines, one library call per cubic segment.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

#include "QorMath/bezier.h"
#include "args.h"
#include "commands.h"
#include "output.h"
#include "path_data.h"
#include "svg.h"

namespace qtool {

namespace {

using QorMath::Point2d;

// The library takes any positive maximum; a segment's buffer holds maximum + 1
// points, and a million lines per segment is more than a command line needs.
constexpr int kMaxLinesLimit = 1 << 20;

struct FlattenOptions {
    std::vector<std::string> words;
    double tolerance = 0.25;
    int maxLines = 64;
    bool uniform = false;
    std::string svg;
};

struct Flattened {
    std::vector<int> lines;        // per segment
    std::vector<Point2d> polyline;  // the segments' polylines joined at their shared ends
};

Flattened flatten(const Subpath& subpath, const FlattenOptions& o) {
    Flattened f;
    std::vector<Point2d> buffer(size_t(o.maxLines) + 1);
    for (const Cubic& c : subpath.segments) {
        int n = 0;
        if (o.uniform) {
            n = QorMath::CalculateNumBezierLines(c.data(), o.maxLines);
            QorMath::BezierToLines(c.data(), buffer.data(), n);
        } else {
            n = QorMath::AdaptiveBezierToLines(c.data(), buffer.data(), o.tolerance, o.maxLines);
        }
        f.lines.push_back(n);
        // Each polyline starts where the previous one ended; a segment given no
        // lines adds no points.
        if (f.polyline.empty()) f.polyline.push_back(c[0]);
        f.polyline.insert(f.polyline.end(), buffer.begin() + 1, buffer.begin() + (n > 0 ? n + 1 : 1));
    }
    return f;
}

void drawSvg(const std::string& file, const std::vector<Subpath>& subpaths, const std::vector<Flattened>& flat,
             const std::string& title) {
    const svg::Style curve{"#93c5fd", "none", 5, "", 1};
    const svg::Style lines{"#c2410c", "none", 1.4, "", 1};
    const svg::Style dots{"#7c2d12", "#ffffff", 1.2, "", 1};
    svg::Panel panel(title);
    for (const Subpath& s : subpaths) panel.path(svg::Path::fromCubics(s.segments, s.closed), curve);
    for (const Flattened& f : flat) {
        panel.polyline(f.polyline, lines);
        for (const Point2d& p : f.polyline) panel.dot(p, 2.5, dots);
    }
    panel.legend(curve, "path data");
    panel.legend(lines, "polyline");
    panel.legend(dots, "polyline points", true);
    svg::Document doc("qormath flatten", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

int run(const FlattenOptions& o, const GlobalOptions& global) {
    if (!(o.tolerance >= 0) || !std::isfinite(o.tolerance))
        throw UsageError("--tolerance: " + formatNumber(o.tolerance) + " is not a finite number >= 0");
    if (o.maxLines < 1 || o.maxLines > kMaxLinesLimit)
        throw UsageError("--max-lines: " + std::to_string(o.maxLines) + " is outside 1 to " +
                         std::to_string(kMaxLinesLimit));
    const std::string text = wordsOrStdin(o.words);
    const std::vector<Subpath> subpaths = parsePathData(text);
    if (subpaths.empty()) throw UsageError("path data: no segments to flatten in \"" + text + "\"");

    std::vector<Flattened> flat;
    int total = 0;
    for (const Subpath& s : subpaths) {
        flat.push_back(flatten(s, o));
        for (int n : flat.back().lines) total += n;
    }
    const std::string method = o.uniform ? "uniform" : "adaptive";
    if (!o.svg.empty())
        drawSvg(o.svg, subpaths, flat,
                std::to_string(total) + " lines, " + method +
                    (o.uniform ? "" : ", tolerance " + formatNumber(o.tolerance)) + ", at most " +
                    std::to_string(o.maxLines) + " per segment");

    Output out(global.json);
    out.text("input", joinWords(splitWords(text)));
    out.text("method",
             o.uniform ? "uniform (CalculateNumBezierLines, BezierToLines)" : "adaptive (AdaptiveBezierToLines)");
    if (!o.uniform) out.number("tolerance", o.tolerance);
    out.number("maxLines", o.maxLines);
    out.number("lines", total);
    out.beginList("subpaths");
    for (size_t i = 0; i < subpaths.size(); ++i) {
        out.begin("subpath " + std::to_string(i + 1));
        out.boolean("closed", subpaths[i].closed);
        out.beginList("segments");
        for (size_t j = 0; j < subpaths[i].segments.size(); ++j) {
            const Cubic& c = subpaths[i].segments[j];
            out.begin("segment " + std::to_string(j + 1));
            out.points("controls", {c.begin(), c.end()});
            out.number("lines", flat[i].lines[j]);
            out.end();
        }
        out.end();
        out.points("points", flat[i].polyline, 4);
        out.end();
    }
    out.end();
    size_t empty = 0;
    for (const Flattened& f : flat) empty += size_t(std::count(f.lines.begin(), f.lines.end(), 0));
    if (empty > 0)
        out.text("note", std::to_string(empty) +
                             " segment(s) got 0 lines: CalculateNumBezierLines divides --max-lines by up to 8 for "
                             "small curves, and BezierToLines with 0 lines writes only the end point, so the "
                             "polyline skips them");
    if (!o.svg.empty()) out.text("svg", o.svg);
    return 0;
}

}  // namespace

Command addFlattenCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<FlattenOptions>();
    CLI::App* app = parent.add_subcommand("flatten", "Flatten SVG path data to polylines, segment by segment");
    app->add_option("PATH", opts->words, "SVG path data (quote it), or - to read it from standard input")->required();
    auto* tolerance =
        app->add_option("--tolerance", opts->tolerance,
                        "Flatness as a squared distance, as the library takes it: an interval becomes lines once its "
                        "midpoint lies less than sqrt(tolerance) from its chord (0.25: half a unit)")
            ->capture_default_str();
    app->add_option("--max-lines", opts->maxLines,
                    "The library's maximum line count per segment (1 to 1048576; adaptive flattening makes at most "
                    "the largest power of two not above it)")
        ->capture_default_str();
    app->add_flag("--uniform", opts->uniform,
                  "Evenly spaced parameters instead: CalculateNumBezierLines scales --max-lines down by the curve's "
                  "size, BezierToLines evaluates")
        ->excludes(tolerance);
    app->add_option("--svg", opts->svg, "Also draw the curves and the polylines into this SVG file");
    app->footer(
        "Path data: M L H V C S Q T A Z, absolute and relative; lines and quadratics become cubics, arcs are cut\n"
        "into cubics of at most 90 degrees. Coordinates as written, y up.\n"
        "Example: qormath flatten \"M 0 0 C 40 80 120 80 160 0 S 280 -80 320 0\" --tolerance 1 --svg out/flat.svg");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
