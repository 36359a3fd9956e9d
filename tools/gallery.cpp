// qormath gallery: one SVG with a labelled panel per family of the library, drawn
// from built-in samples. A family adds its panel by adding a draw function to
// kPanels.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "QorMath/bounds.h"
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

// One entry per family: the key printed in the summary, the panel title, and
// the function that draws the panel and returns its one-line summary.
struct PanelSpec {
    const char* key;
    const char* title;
    std::string (*draw)(svg::Panel&);
};
const PanelSpec kPanels[] = {
    {"rectangles", "Rectangles under a matrix and their bounding boxes", drawRectangles},
    {"circles", "Circles under a matrix: axes and bounding box", drawCircles},
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
