// qormath cusps: where the offset of each segment at a given distance has a
// cusp, that is where the radius of curvature equals the distance on the side
// the offset moves to.

#include <CLI/CLI.hpp>

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

struct CuspsOptions {
    std::vector<std::string> words;
    std::string distance;
    std::string svg;
};

void drawSvg(const std::string& file, const std::vector<Cubic>& segments, double d,
             const std::vector<std::pair<Point2d, Point2d>>& cusps, const std::string& title) {
    const svg::Style curve{"#1f2937", "none", 2.4, "", 1};
    const svg::Style offset{"#7c3aed", "none", 1.4, "", 1};
    const svg::Style normal{"#9ca3af", "none", 1, "3 3", 1};
    const svg::Style onCurve{"#1f2937", "#ffffff", 1.4, "", 1};
    const svg::Style cusp{"#dc2626", "#dc2626", 1, "", 1};
    svg::Panel panel(title);
    panel.path(svg::Path::fromCubics(segments, false), curve);
    for (const Cubic& c : segments) panel.polyline(sampledOffset(c, d, 400), offset);
    for (const auto& [p, q] : cusps) {
        panel.polyline({p, q}, normal);
        panel.dot(p, 3, onCurve);
        panel.dot(q, 4, cusp);
    }
    panel.legend(curve, "path");
    panel.legend(offset, "offset at " + formatNumber(d) + " (sampled)");
    panel.legend(onCurve, "B(t) at a cusp parameter", true);
    panel.legend(cusp, "cusp of the offset", true);
    svg::Document doc("qormath cusps", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

int run(const CuspsOptions& o, const GlobalOptions& global) {
    const double d = parseNumber(o.distance, "--distance");
    const std::vector<Cubic> segments = parseSegments(wordsOrStdin(o.words), "path");

    Output out(global.json);
    out.number("distance", d);
    out.number("segments", double(segments.size()));
    std::vector<std::pair<Point2d, Point2d>> all;
    out.beginList("results");
    for (size_t i = 0; i < segments.size(); ++i) {
        const Cubic& c = segments[i];
        Point2d a, b, cc, dd;
        CB::GetPowerBasis(c.data(), a, b, cc, dd);
        std::vector<double> ts;
        CB::FindOffsetCusps(a, b, cc, d, ts);
        out.begin("segment " + std::to_string(i + 1));
        out.points("controls", {c.begin(), c.end()});
        out.numbers("t", ts);
        if (!ts.empty()) out.beginList("cusps");
        for (size_t k = 0; k < ts.size(); ++k) {
            const Point2d p = CB::Evaluate(a, b, cc, dd, ts[k]);
            const Point2d q = CB::MapToBezier(c.data(), ts[k], d, 1.0);
            all.emplace_back(p, q);
            out.begin("cusp " + std::to_string(k + 1));
            out.number("t", ts[k]);
            out.point("onCurve", p);
            out.point("cusp", q);
            double radius = 0;
            if (CB::GetCurvatureRadiusAt(ts[k], a, b, cc, radius))
                out.number("radius", radius);
            else
                out.none("radius", "undefined: straight here, or zero speed");
            out.end();
        }
        if (!ts.empty()) out.end();
        out.end();
    }
    out.end();
    out.number("count", double(all.size()));
    if (!o.svg.empty()) {
        drawSvg(o.svg, segments, d, all,
                std::to_string(all.size()) + (all.size() == 1 ? " offset cusp" : " offset cusps") + " at distance " +
                    formatNumber(d));
        out.text("svg", o.svg);
    }
    return 0;
}

}  // namespace

Command addCuspsCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<CuspsOptions>();
    CLI::App* app = parent.add_subcommand("cusps", "Where the offset of each segment at a distance has a cusp");
    app->add_option("PATH", opts->words, kSegmentsHelp)
        ->required();
    app->add_option("--distance,-d", opts->distance, kDistanceHelp)
        ->required();
    app->add_option("--svg", opts->svg, "Also draw the path, its sampled offset and the cusps into this SVG file");
    app->footer(
        "FindOffsetCusps on each segment's power basis: the t in (0, 1] where the radius of curvature equals the\n"
        "distance on the side the offset moves to. onCurve is B(t), cusp is B(t) + distance * left normal\n"
        "(MapToBezier), radius the signed radius of curvature at t, which should be the distance.\n"
        "Example: qormath cusps --distance 12 \"M -20 20 Q 0 -20 20 20\"");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
