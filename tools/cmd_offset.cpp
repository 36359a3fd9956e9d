// qormath offset: each segment of a path offset by a signed distance as a chain
// of cubics, with the parameters at which the segment is cut for it.

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

struct OffsetOptions {
    std::vector<std::string> words;
    std::string distance;
    std::string tolerance = "0.1";
    std::string svg;
};

// One segment offset by one distance.
struct SegmentOffset {
    std::vector<double> cusps;  // FindOffsetCusps
    std::vector<double> cuts;   // GetSegmentsToOffset, through OffsetBezier
    bool fits = false;
    std::vector<Cubic> pieces;  // OffsetBezier
};

SegmentOffset offsetSegment(const Cubic& c, double d, double tolerance) {
    SegmentOffset s;
    Point2d a, b, cc, dd;
    CB::GetPowerBasis(c.data(), a, b, cc, dd);
    CB::FindOffsetCusps(a, b, cc, d, s.cusps);
    std::vector<Point2d> chain;
    s.fits = QorMath::OffsetBezier(c.data(), d, tolerance, chain, &s.cuts);
    for (size_t i = 0; i + 3 < chain.size(); i += 4)
        s.pieces.push_back({chain[i], chain[i + 1], chain[i + 2], chain[i + 3]});
    return s;
}

void drawSvg(const std::string& file, const std::vector<Cubic>& segments, double d, double tolerance,
             const std::string& title) {
    const svg::Style curve{"#1f2937", "none", 2.2, "", 1};
    const svg::Style exact{"#9ca3af", "none", 1, "3 3", 1};
    const svg::Style side[2] = {{"#2563eb", "none", 1.8, "", 1}, {"#ea580c", "none", 1.8, "", 1}};
    const svg::Style joint{"#374151", "#ffffff", 1, "", 1};
    const svg::Style cusp{"#dc2626", "#dc2626", 1, "", 1};
    svg::Panel panel(title);
    for (const Cubic& c : segments) {
        panel.path(svg::Path::fromCubics({c}, false), curve);
        for (int k = 0; k < 2; ++k) {
            const double dk = k == 0 ? d : -d;
            const SegmentOffset s = offsetSegment(c, dk, tolerance);
            panel.polyline(sampledOffset(c, dk, 300), exact);
            panel.path(svg::Path::fromCubics(s.pieces, false), side[k]);
            for (const Cubic& p : s.pieces) panel.dot(p[0], 2, joint);
            if (!s.pieces.empty()) panel.dot(s.pieces.back()[3], 2, joint);
            for (double t : s.cusps) panel.dot(CB::MapToBezier(c.data(), t, dk, 1.0), 4, cusp);
        }
    }
    panel.legend(curve, "path");
    panel.legend(side[0], "offset +" + formatNumber(std::abs(d)) + (d < 0 ? " (right)" : " (left)"));
    panel.legend(side[1], "offset -" + formatNumber(std::abs(d)) + (d < 0 ? " (left)" : " (right)"));
    panel.legend(exact, "exact offset (sampled)");
    panel.legend(joint, "piece ends", true);
    panel.legend(cusp, "offset cusp", true);
    svg::Document doc("qormath offset", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

int run(const OffsetOptions& o, const GlobalOptions& global) {
    const double d = parseNumber(o.distance, "--distance");
    const double tolerance = parseNumber(o.tolerance, "--tolerance");
    if (!(tolerance > 0)) throw UsageError("--tolerance: " + o.tolerance + " is not a positive distance");
    const std::vector<Cubic> segments = parseSegments(wordsOrStdin(o.words), "path");

    Output out(global.json);
    out.number("distance", d);
    out.number("tolerance", tolerance);
    out.number("segments", double(segments.size()));
    size_t pieces = 0;
    bool fits = true;
    out.beginList("results");
    for (size_t i = 0; i < segments.size(); ++i) {
        const Cubic& c = segments[i];
        const SegmentOffset s = offsetSegment(c, d, tolerance);
        pieces += s.pieces.size();
        fits = fits && s.fits;
        out.begin("segment " + std::to_string(i + 1));
        out.points("controls", {c.begin(), c.end()});
        out.numbers("cusps", s.cusps);
        out.numbers("cuts", s.cuts);
        out.boolean("fits", s.fits);
        out.beginList("offset");
        for (size_t k = 0; k < s.pieces.size(); ++k) {
            out.begin("piece " + std::to_string(k + 1));
            // Piece k belongs to [cuts[k], cuts[k + 1]] when the two calls agree.
            if (k + 1 < s.cuts.size()) out.numbers("t", {s.cuts[k], s.cuts[k + 1]});
            out.points("controls", {s.pieces[k].begin(), s.pieces[k].end()});
            out.end();
        }
        out.end();
        out.end();
    }
    out.end();
    out.number("pieces", double(pieces));
    out.boolean("fits", fits);
    if (!o.svg.empty()) {
        drawSvg(o.svg, segments, d, tolerance,
                "offsets at +/-" + formatNumber(std::abs(d)) + ", tolerance " + formatNumber(tolerance) + ": " +
                    std::to_string(pieces) + (pieces == 1 ? " piece" : " pieces") + " at " + formatNumber(d));
        out.text("svg", o.svg);
    }
    return 0;
}

}  // namespace

Command addOffsetCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<OffsetOptions>();
    CLI::App* app = parent.add_subcommand("offset", "Offset each segment of a path by a distance, as cubics");
    app->add_option("PATH", opts->words, kSegmentsHelp)
        ->required();
    app->add_option("--distance,-d", opts->distance, kDistanceHelp)
        ->required();
    app->add_option("--tolerance,-e", opts->tolerance,
                    "Largest distance allowed between a fitted piece and the exact offset samples")
        ->capture_default_str();
    app->add_option("--svg", opts->svg,
                    "Also draw the path, its offsets at +distance and -distance (a stroke outline without joins or "
                    "caps) and their cusps into this SVG file");
    app->footer(
        "Per segment: cusps are the t where the offset folds (FindOffsetCusps); cuts the parameters at which\n"
        "the segment is cut so that each piece's offset is one cubic (GetSegmentsToOffset: at the cusps, then\n"
        "halving pieces that miss the tolerance, down to 1/64 of the range); fits whether every piece met the\n"
        "tolerance; offset the chain of cubics (OffsetBezier), piece k over [cuts[k], cuts[k+1]]. Each piece\n"
        "keeps the end tangents of its part of the curve; pieces are fitted separately and meet up to rounding.\n"
        "Example: qormath offset --distance 5 \"M 0 0 C 30 60 90 60 120 0\" --svg out/offset.svg");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
