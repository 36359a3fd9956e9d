// qormath split: one cubic cut at one or two parameters by de Casteljau.

#include <CLI/CLI.hpp>

#include <memory>

#include "QorMath/bezier.h"
#include "args.h"
#include "commands.h"
#include "cubic_arg.h"
#include "output.h"

namespace qtool {

namespace {

using QorMath::Point2d;

struct SplitOptions {
    std::vector<std::string> words;
    std::vector<std::string> at;
};

std::vector<Point2d> range(const Point2d* p, size_t count) { return {p, p + count}; }

int run(const SplitOptions& o, const GlobalOptions& global) {
    std::vector<double> t;
    for (const auto& a : o.at)
        for (double v : parseNumbers(a, 0, "--at")) t.push_back(v);
    if (t.empty() || t.size() > 2)
        throw UsageError("--at: expected one or two parameters, got " + std::to_string(t.size()));
    const Cubic curve = parseCubic(o.words, "split");

    Output out(global.json);
    out.points("curve", range(curve.data(), 4));
    out.numbers("at", t);
    if (t.size() == 1) {
        Point2d pieces[7];
        QorMath::CubicBezier::Split(t[0], curve.data(), pieces);
        out.text("layout", "7 points: [0..3] is the piece [0, t], [3..6] the piece [t, 1]; [3] is the point at t");
        out.points("points", range(pieces, 7), 1, true);
        out.begin("pieces");
        out.points("left", range(pieces, 4));
        out.points("right", range(pieces + 3, 4));
        out.end();
    } else {
        Point2d pieces[10];
        QorMath::CubicBezier::Split(t[0], t[1], curve.data(), pieces);
        out.text("layout",
                 "10 points: [0..3] is the piece [0, t0], [3..6] the piece [t0, t1], [6..9] the piece [t1, 1]; "
                 "[3] and [6] are the points at t0 and t1");
        out.points("points", range(pieces, 10), 1, true);
        out.begin("pieces");
        out.points("left", range(pieces, 4));
        out.points("middle", range(pieces + 3, 4));
        out.points("right", range(pieces + 6, 4));
        out.end();
        if (t[0] > t[1]) out.text("note", "t0 > t1: the middle piece runs backwards, from t0 to t1");
    }
    return 0;
}

}  // namespace

Command addSplitCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<SplitOptions>();
    CLI::App* app = parent.add_subcommand("split", "Split a cubic Bezier segment at one or two parameters");
    app->add_option("CURVE", opts->words, kCubicHelp)->required();
    app->add_option("--at", opts->at, "Parameter t, or t0,t1 (also --at t0 --at t1); outside [0, 1] extrapolates")
        ->required()
        ->allow_extra_args(false);
    app->footer("Example: qormath split 0 0 10 20 30 20 40 0 --at 0.25,0.75");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
