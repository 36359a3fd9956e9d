// qormath selfx: per segment, whether it loops and where it crosses itself.

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

using QorMath::Point2d;
namespace CB = QorMath::CubicBezier;

struct SelfxOptions {
    std::vector<std::string> words;
    bool closed = false;
};

int run(const SelfxOptions& o, const GlobalOptions& global) {
    const std::vector<Cubic> segments = parseSegments(wordsOrStdin(o.words), "path");
    Output out(global.json);
    out.boolean("closedCurve", o.closed);
    out.number("segments", double(segments.size()));
    int loops = 0, found = 0;
    out.beginList("results");
    for (size_t i = 0; i < segments.size(); ++i) {
        const Cubic& c = segments[i];
        double t1a = 0, t1b = 0, t2a = 0, t2b = 0;
        const bool loop = CB::DoesBezierSelfIntersect(c.data(), t1a, t1b, t2a, t2b, o.closed);
        double s = 0, t = 0;
        Point2d point{0, 0};
        const bool hit = CB::FindBezierSelfIntersection(c.data(), s, t, point);
        loops += loop;
        found += hit;

        out.begin("segment " + std::to_string(i + 1));
        out.points("controls", {c.begin(), c.end()});
        out.boolean("loop", loop);
        if (loop) {
            out.numbers("firstInterval", {t1a, t1b});
            out.numbers("secondInterval", {t2a, t2b});
        }
        if (hit) {
            Point2d a, b, cc, d;
            CB::GetPowerBasis(c.data(), a, b, cc, d);
            const Point2d ps = CB::Evaluate(a, b, cc, d, s), pt = CB::Evaluate(a, b, cc, d, t);
            out.begin("doublePoint");
            out.number("s", s);
            out.number("t", t);
            out.point("point", point);
            out.number("gap", std::hypot(ps.x - pt.x, ps.y - pt.y));
            out.end();
        } else {
            out.none("doublePoint", loop ? "not found: the search drops pieces under one unit across, so scale a "
                                           "small curve up"
                                         : "none: no loop");
        }
        out.end();
    }
    out.end();
    out.number("loops", loops);
    out.number("found", found);
    return 0;
}

}  // namespace

Command addSelfxCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<SelfxOptions>();
    CLI::App* app = parent.add_subcommand("selfx", "Self-intersection of each segment: its loop and double point");
    app->add_option("PATH", opts->words, kSegmentsHelp)
        ->required();
    app->add_flag("--closed", opts->closed,
                  "Examine a segment whose end points coincide like any other (otherwise it has no loop)");
    app->footer(
        "loop and the two intervals come from DoesBezierSelfIntersect: each interval holds one parameter of the\n"
        "double point, they are not the parameters themselves. The double point comes from\n"
        "FindBezierSelfIntersection, B(s) = B(t), found by box subdivision to depth 8 that gives up on pieces\n"
        "under one unit: it is meant for curves in fine units (hundreds across). gap is |B(s) - B(t)|.\n"
        "Example: qormath selfx \"M 0 0 C 300 200 -100 200 200 0\"");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
