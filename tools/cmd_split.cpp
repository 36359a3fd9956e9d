// qormath split: one cubic cut at one or two parameters by de Casteljau.

#include <CLI/CLI.hpp>

#include <memory>

#include "QorMath/bezier.h"
#include "args.h"
#include "commands.h"
#include "output.h"
#include "path_data.h"

namespace qtool {

namespace {

using QorMath::Point2d;

struct SplitOptions {
    std::vector<std::string> words;
    std::vector<std::string> at;
};

// Eight numbers "x0 y0 x1 y1 x2 y2 x3 y3" (commas allowed) when the first word
// is a number, as `matrix` takes its six; otherwise path data of one segment.
Cubic parseCubic(const std::vector<std::string>& words) {
    const std::string text = wordsOrStdin(words);
    const char c = text.empty() ? 'M' : text[0];
    if ((c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.') {
        const auto numbers = splitWords(text, true);
        if (numbers.size() != 8)
            throw UsageError("curve: expected eight numbers x0 y0 x1 y1 x2 y2 x3 y3, got " +
                             std::to_string(numbers.size()));
        double v[8];
        for (size_t i = 0; i < 8; ++i) v[i] = parseNumber(numbers[i], "curve value " + std::to_string(i + 1));
        return {Point2d{v[0], v[1]}, Point2d{v[2], v[3]}, Point2d{v[4], v[5]}, Point2d{v[6], v[7]}};
    }
    std::vector<Cubic> segments;
    for (const Subpath& s : parsePathData(text)) segments.insert(segments.end(), s.segments.begin(), s.segments.end());
    if (segments.size() != 1)
        throw UsageError("curve: the path data gives " + std::to_string(segments.size()) +
                         " cubic segments, split takes one (an arc over 90 degrees gives several)");
    return segments[0];
}

std::vector<Point2d> range(const Point2d* p, size_t count) { return {p, p + count}; }

int run(const SplitOptions& o, const GlobalOptions& global) {
    std::vector<double> t;
    for (const auto& a : o.at)
        for (double v : parseNumbers(a, 0, "--at")) t.push_back(v);
    if (t.empty() || t.size() > 2)
        throw UsageError("--at: expected one or two parameters, got " + std::to_string(t.size()));
    const Cubic curve = parseCubic(o.words);

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
    app->add_option("CURVE", opts->words,
                    "Eight numbers x0 y0 x1 y1 x2 y2 x3 y3 (start, two handles, end), or path data of one "
                    "segment, e.g. \"M 0 0 C 10 20 30 20 40 0\"")
        ->required();
    app->add_option("--at", opts->at, "Parameter t, or t0,t1 (also --at t0 --at t1); outside [0, 1] extrapolates")
        ->required()
        ->allow_extra_args(false);
    app->footer("Example: qormath split 0 0 10 20 30 20 40 0 --at 0.25,0.75");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
