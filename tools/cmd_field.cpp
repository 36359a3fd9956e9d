// qormath field: a swirl written into a sparse vector field, copied into a larger
// field at an offset, and a region cut out of that, with bilinear samples.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <memory>

#include "QorMath/angles.h"
#include "QorMath/field.h"
#include "args.h"
#include "commands.h"
#include "output.h"
#include "svg.h"

namespace qtool {

using QorMath::Point2d;
using QorMath::VectorField;
using FieldPoint = QorMath::vector2dT<float, 1>;

void writeSwirl(VectorField& field, double radius) {
    const tagRECT r = field.GetCGIRECT();
    const double cx = (field.width() - 1) / 2.0, cy = (field.height() - 1) / 2.0;
    for (int j = 0; j < field.height(); ++j) {
        for (int i = 0; i < field.width(); ++i) {
            const double dx = i - cx, dy = j - cy, d = std::sqrt(dx * dx + dy * dy);
            if (!(d < radius)) continue;
            const double f = 1 - d / radius;
            // 0 - dy·f rather than -dy·f: the centre row gets +0, not -0.
            field.Set(r.left + i, r.bottom + j, {float(0.0 - dy * f), float(dx * f)});
        }
    }
}

void drawVectorField(svg::Panel& panel, const VectorField& field, int stride, const svg::Style& runs,
                     const svg::Style& arrows) {
    if (field.width() < 1 || field.height() < 1) return;
    const tagRECT r = field.GetCGIRECT();
    // Each row's stored run as a strip of its cells.
    for (int j = 0; j < field.height(); ++j) {
        const VectorField::Run run = field.GetStoredRun(j);
        if (run.begin == run.end) continue;
        const double x0 = r.left + double(run.begin) - 0.5, x1 = r.left + double(run.end) - 0.5;
        const double y = r.bottom + j;
        panel.polyline({{x0, y - 0.5}, {x1, y - 0.5}, {x1, y + 0.5}, {x0, y + 0.5}}, runs, true);
    }
    // Get reads the last column and row only as neighbours (at them it returns
    // the cells before), so they get no arrow of their own.
    std::vector<std::pair<Point2d, QorMath::Vector2d>> samples;
    double longest = 0;
    for (int j = 0; j <= std::max(0, field.height() - 2); j += stride) {
        for (int i = 0; i <= std::max(0, field.width() - 2); i += stride) {
            const Point2d p{double(r.left + i), double(r.bottom + j)};
            const auto v = field.Get(FieldPoint{float(p.x), float(p.y)});
            samples.push_back({p, {v.x, v.y}});
            longest = std::max(longest, Magnitude(samples.back().second));
        }
    }
    if (!(longest > 0)) return;
    // The longest arrow spans 0.9 of the spacing; each is centred on its cell.
    const double scale = 0.9 * stride / longest;
    svg::Path path;
    for (const auto& [p, v] : samples) {
        const QorMath::Vector2d a = v * scale;
        const double len = Magnitude(a);
        if (len < 0.05 * stride) continue;
        const Point2d tail = p - a * 0.5, tip = p + a * 0.5;
        const QorMath::Vector2d back = a * (-std::min(0.35, 0.3 * stride / len)), side{-back.y * 0.5, back.x * 0.5};
        path.moveTo(tail).lineTo(tip).moveTo(tip + back + side).lineTo(tip).lineTo(tip + back - side);
    }
    panel.path(path, arrows);
}

std::vector<Point2d> traceStreamline(const VectorField& field, const Point2d& seed, double step, double length) {
    const tagRECT r = field.GetCGIRECT();
    auto at = [&](const Point2d& p) {
        const auto v = field.Get(FieldPoint{float(p.x), float(p.y)});
        return QorMath::Vector2d{v.x, v.y};
    };
    std::vector<Point2d> line{seed};
    Point2d p = seed;
    // Midpoint steps: half a step along the field, then a whole step along the
    // field sampled there; the time step h makes the first stage `step` long.
    for (double travelled = 0; travelled < length && line.size() < 10000;) {
        const QorMath::Vector2d k1 = at(p);
        if (!(Magnitude(k1) > 1e-6)) break;
        const double h = step / Magnitude(k1);
        const QorMath::Vector2d k2 = at(p + k1 * (h / 2));
        const Point2d next = p + k2 * h;
        if (next.x < r.left || next.x > r.right || next.y < r.bottom || next.y > r.top) break;
        travelled += Magnitude(next - p);
        line.push_back(p = next);
    }
    return line;
}

namespace {

struct FieldOptions {
    std::string size = "9,9";
    std::string radius;
    std::string canvas = "24,16";
    std::string offset = "4,3";
    std::string region;
    std::vector<std::string> samples;
    std::string svg;
};

// Whole numbers in [lo, hi], exactly count of them.
std::vector<int> parseInts(const std::string& text, size_t count, int lo, int hi, const std::string& what) {
    std::vector<int> out;
    for (double v : parseNumbers(text, count, what)) {
        if (v != std::floor(v)) throw UsageError(what + ": " + formatNumber(v) + " is not a whole number");
        if (v < lo || v > hi)
            throw UsageError(what + ": " + formatNumber(v) + " is outside " + std::to_string(lo) + " to " +
                             std::to_string(hi));
        out.push_back(int(v));
    }
    return out;
}

// A float shown by the shortest decimal that reads back to it, so 0.6f prints
// as 0.6; zero without a sign.
double shortest(float f) {
    if (f == 0) return 0;
    char buf[32];
    const auto written = std::to_chars(buf, buf + sizeof buf, f);
    double d = f;
    std::from_chars(buf, written.ptr, d);
    return d;
}

void rect(Output& out, const tagRECT& r) { out.rect("rect", r.left, r.top, r.right, r.bottom); }

// The cells of an inclusive integer rectangle as a closed outline.
std::vector<Point2d> cellBox(const tagRECT& r) {
    const double l = r.left - 0.5, t = r.top + 0.5, rt = r.right + 0.5, b = r.bottom - 0.5;
    return {{l, t}, {rt, t}, {rt, b}, {l, b}};
}

void drawSvg(const std::string& file, const VectorField& canvas, const tagRECT& copy, const VectorField& region,
             double radius, const std::vector<Point2d>& samples) {
    const svg::Style frame{"#374151", "none", 1.6, "", 1};
    const svg::Style runs{"none", "#bfdbfe", 0, "", 0.6};
    const svg::Style arrows{"#1f2937", "none", 1, "", 1};
    const svg::Style copyStyle{"#2563eb", "none", 1.6, "6 4", 1};
    const svg::Style regionStyle{"#dc2626", "none", 1.8, "4 3", 1};
    const svg::Style stream{"#059669", "none", 1.6, "", 1};
    const svg::Style mark{"#7c3aed", "#7c3aed", 1, "", 1};
    const int stride = std::max(1, (std::max(canvas.width(), canvas.height()) + 39) / 40);
    svg::Panel panel("VectorField " + std::to_string(canvas.width()) + " x " + std::to_string(canvas.height()) + ", " +
                     std::to_string(canvas.GetStoredCellCount()) + " cells stored");
    panel.polyline(cellBox(canvas.GetCGIRECT()), frame, true);
    drawVectorField(panel, canvas, stride, runs, arrows);
    const Point2d centre{(copy.left + copy.right) / 2.0, (copy.bottom + copy.top) / 2.0};
    for (int k = 1; k <= 3; ++k) {
        const double r0 = radius * k / 4;
        const Point2d seed{centre.x + r0, centre.y};
        panel.polyline(traceStreamline(canvas, seed, std::max(0.05, r0 / 20), QorMath::TwoPi * r0), stream);
    }
    panel.polyline(cellBox(copy), copyStyle, true);
    if (region.width() > 0) panel.polyline(cellBox(region.GetCGIRECT()), regionStyle, true);
    for (const Point2d& p : samples) panel.dot(p, 3.5, mark);
    panel.legend(frame, "canvas");
    panel.legend(runs, "stored runs", true);
    panel.legend(arrows, "Get at the cells");
    panel.legend(stream, "streamlines (midpoint steps)");
    panel.legend(copyStyle, "blitted swirl");
    panel.legend(regionStyle, "GetRegion");
    if (!samples.empty()) panel.legend(mark, "samples", true);
    svg::Document doc("qormath field", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

int run(const FieldOptions& o, const GlobalOptions& global) {
    constexpr int kMaxSide = 4096, kMaxCoordinate = 1000000000;
    const auto size = parseInts(o.size, 2, 1, kMaxSide, "--size");
    const auto canvasSize = parseInts(o.canvas, 2, 1, kMaxSide, "--canvas");
    const auto offset = parseInts(o.offset, 2, -kMaxSide * 4, kMaxSide * 4, "--offset");
    const double radius = o.radius.empty() ? std::min(size[0], size[1]) / 2.0 : parseNumber(o.radius, "--radius");
    if (!(radius > 0)) throw UsageError("--radius: " + o.radius + " is not a positive distance");
    // By default the right half of the copy with a cell to spare around it.
    const tagRECT asked = [&] {
        if (o.region.empty())
            return tagRECT{offset[0] + size[0] / 2, offset[1] + size[1], offset[0] + size[0], offset[1] - 1};
        const auto v = parseInts(o.region, 4, -kMaxCoordinate, kMaxCoordinate, "--region");
        return tagRECT{v[0], v[1], v[2], v[3]};
    }();
    std::vector<Point2d> samples;
    const Point2d centre{offset[0] + (size[0] - 1) / 2.0, offset[1] + (size[1] - 1) / 2.0};
    if (o.samples.empty()) samples = {centre, {centre.x + 0.5, centre.y}, {centre.x, centre.y + 1}};
    for (size_t i = 0; i < o.samples.size(); ++i)
        samples.push_back(parsePoint(o.samples[i], "--sample value " + std::to_string(i + 1)));

    VectorField swirl(size[0], size[1], 0, 0);
    writeSwirl(swirl, radius);
    VectorField canvas(canvasSize[0], canvasSize[1], 0, 0);
    const bool inside = canvas.Blit(swirl, offset[0], offset[1]);
    const VectorField region = canvas.GetRegion(asked);
    const tagRECT copy{offset[0], offset[1] + size[1] - 1, offset[0] + size[0] - 1, offset[1]};

    Output out(global.json);
    out.begin("swirl");
    rect(out, swirl.GetCGIRECT());
    out.number("width", swirl.width());
    out.number("height", swirl.height());
    out.number("radius", radius);
    out.number("stored", double(swirl.GetStoredCellCount()));
    out.end();
    out.begin("canvas");
    rect(out, canvas.GetCGIRECT());
    out.number("width", canvas.width());
    out.number("height", canvas.height());
    out.point("offset", {double(offset[0]), double(offset[1])});
    out.boolean("blit", inside);
    out.number("stored", double(canvas.GetStoredCellCount()));
    out.end();
    out.begin("region");
    out.rect("asked", asked.left, asked.top, asked.right, asked.bottom);
    if (region.width() > 0)
        rect(out, region.GetCGIRECT());
    else
        out.none("rect", "empty (the overlap is less than two columns or two rows)");
    out.number("width", region.width());
    out.number("height", region.height());
    out.number("stored", double(region.GetStoredCellCount()));
    out.end();
    out.beginList("samples");
    for (size_t i = 0; i < samples.size(); ++i) {
        const auto v = canvas.Get(FieldPoint{float(samples[i].x), float(samples[i].y)});
        out.begin("sample " + std::to_string(i + 1));
        out.point("at", samples[i]);
        out.point("value", {shortest(v.x), shortest(v.y)});
        out.end();
    }
    out.end();
    if (!o.svg.empty()) {
        drawSvg(o.svg, canvas, copy, region, radius, samples);
        out.text("svg", o.svg);
    }
    return 0;
}

}  // namespace

Command addFieldCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<FieldOptions>();
    CLI::App* app = parent.add_subcommand(
        "field", "Write a swirl into a sparse vector field, copy it into a larger one and cut out a region");
    app->add_option("--size", opts->size, "Columns and rows of the swirl field W,H (1 to 4096 each)")
        ->capture_default_str();
    app->add_option("--radius", opts->radius, "Radius of the swirl in cells (default: half the smaller side)");
    app->add_option("--canvas", opts->canvas, "Columns and rows W,H of the field it is copied into, at (0, 0)")
        ->capture_default_str();
    app->add_option("--offset", opts->offset, "Where the swirl's cell (0, 0) lands on the canvas, DX,DY")
        ->capture_default_str();
    app->add_option("--region", opts->region,
                    "Cells to cut out of the canvas, left,top,right,bottom, inclusive and y up (default: the right "
                    "half of the copy and one cell around it)");
    app->add_option("--sample", opts->samples,
                    "Points X,Y at which to sample the canvas bilinearly (default: the swirl's centre, half a cell "
                    "right of it and one cell above it)");
    app->add_option("--svg", opts->svg,
                    "Also draw the canvas: stored runs, arrows and streamlines sampled with Get, the copy and the "
                    "region");
    app->footer(
        "The swirl turns counter-clockwise about the field's centre c: a cell at offset (dx, dy) from c, at\n"
        "distance r < radius, holds (-dy, dx)(1 - r/radius), written with Set; the other cells keep the fill\n"
        "(0, 0) and cost nothing, so a row stores only the run of its cells inside the circle (stored counts\n"
        "them). The canvas gets the swirl by Blit (blit: whether all of it landed inside), and the region is\n"
        "GetRegion: the overlap of --region with the canvas, empty when under two columns or rows. Samples are\n"
        "Get: bilinear in float between the four surrounding cells, the position clamped so that the last\n"
        "column and row are reached only as neighbours. Vectors are floats, printed by their shortest decimal.\n"
        "Example: qormath field --size 5,5 --canvas 12,10 --offset 3,2 --region 5,9,11,0 --sample 5.5,4");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
