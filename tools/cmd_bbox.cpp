// qormath bbox: the bounding box of a rectangle or of points under a matrix, in
// the integer form and in the double form.

#include <CLI/CLI.hpp>

#include <memory>

#include "QorMath/bounds.h"
#include "args.h"
#include "commands.h"
#include "output.h"

namespace qtool {

namespace {

struct BBoxOptions {
    std::string rect;
    std::vector<std::string> points;
    std::string matrix;
    std::string ops;
};

using QorMath::Point2d;

void rect(Output& out, const std::string& key, const tagRECT& r) { out.rect(key, r.left, r.top, r.right, r.bottom); }
void rect(Output& out, const std::string& key, const QorMath::BoundsT<double>& b) {
    out.rect(key, b.left, b.top, b.right, b.bottom);
}

int run(const BBoxOptions& o, const GlobalOptions& global) {
    if (o.rect.empty() == o.points.empty()) throw UsageError("bbox: give either --rect or --points");
    MATRIX m = QorMath::IdentityMatrix();
    if (!o.matrix.empty()) m = parseMatrix(splitWords(o.matrix, true), "--matrix");
    if (!o.ops.empty()) m = parseOperations(splitWords(o.ops), "--ops");

    // The integer form gets the input stored into int32 by the library's rule.
    std::vector<Point2d> pts;
    std::vector<tagPOINT> ipts;
    QorMath::BoundsT<double> bounds{};
    if (!o.rect.empty()) {
        auto v = parseNumbers(o.rect, 4, "--rect");
        bounds = {v[0], v[1], v[2], v[3]};
        pts.resize(4);
        QorMath::GetRectCorners(bounds, pts.data());
    } else {
        for (size_t i = 0; i < o.points.size(); ++i)
            pts.push_back(parsePoint(o.points[i], "--points value " + std::to_string(i + 1)));
    }
    for (const auto& p : pts) ipts.push_back({QorMath::RoundToInt(p.x), QorMath::RoundToInt(p.y)});

    Output out(global.json);
    out.matrix("matrix", m);
    out.begin("integer");
    if (!o.rect.empty()) {
        const tagRECT r{ipts[0].x, ipts[0].y, ipts[2].x, ipts[2].y};
        rect(out, "rect", r);
        rect(out, "bbox", QorMath::GetTransformedBBox(r, m));
    } else {
        std::vector<Point2d> shown;
        for (const auto& p : ipts) shown.push_back({double(p.x), double(p.y)});
        out.points("points", shown);
        rect(out, "bbox", QorMath::GetTransformedPointsBBox(ipts.data(), ipts.size(), m));
    }
    out.end();
    out.begin("double");
    if (!o.rect.empty()) {
        rect(out, "rect", bounds);
        rect(out, "bbox", QorMath::GetTransformedBBox(bounds, m));
    } else {
        out.points("points", pts);
        rect(out, "bbox", QorMath::GetTransformedPointsBBox(pts.data(), pts.size(), m));
    }
    m.TransformPoints(pts.data(), pts.size());
    out.points(o.rect.empty() ? "transformedPoints" : "transformedCorners", pts);
    out.end();
    return 0;
}

}  // namespace

Command addBBoxCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<BBoxOptions>();
    CLI::App* app = parent.add_subcommand("bbox", "Bounding box of a rectangle or of points under a matrix");
    auto* rect = app->add_option("--rect", opts->rect, "Rectangle left,top,right,bottom (y up: top > bottom)");
    auto* points = app->add_option("--points", opts->points, "Points x,y x,y ...");
    rect->excludes(points);
    auto* matrix = app->add_option("--matrix", opts->matrix, "Matrix \"a b tx c d ty\" (default: identity)");
    app->add_option("--ops", opts->ops, "Matrix as operations, e.g. \"rotate 30 scale 2,1\"")->excludes(matrix);
    app->footer(std::string(kOperationsHelp) +
                "\nExample: qormath bbox --rect 0,10,20,0 --ops \"rotate 30 about 10,5\"");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
