// qormath layout: an object's rectangle placed inside a container by a layout
// record, the matrix that moves it there, and anchor positions.

#include <CLI/CLI.hpp>

#include <cctype>
#include <memory>

#include "QorMath/layout.h"
#include "args.h"
#include "commands.h"
#include "output.h"
#include "svg.h"

namespace qtool {

using QorMath::Point2d;
using Bounds = QorMath::BoundsT<double>;

std::vector<Point2d> layoutGlyph(const Bounds& box) {
    // An "F" in a 5 × 8 grid: its bar points right and its stem stands on the
    // left-bottom corner, so a mirror or a swapped axis shows at once.
    static const double grid[][2] = {{0, 0}, {1.2, 0}, {1.2, 3.6}, {3.6, 3.6}, {3.6, 4.8}, {1.2, 4.8},
                                     {1.2, 6.8}, {5, 6.8}, {5, 8}, {0, 8}};
    std::vector<Point2d> out;
    for (const auto& g : grid)
        out.push_back({box.left + (box.right - box.left) * g[0] / 5, box.bottom + (box.top - box.bottom) * g[1] / 8});
    return out;
}

namespace {

using QorMath::Layout;

struct LayoutOptions {
    std::string container;
    std::string object = "0,1,1,0";
    std::string width, height, minWidth, minHeight;
    std::string margin, leftMargin, rightMargin, topMargin, bottomMargin;
    std::string halign = "left";
    std::string valign = "bottom";
    bool keepSkew = true;
    std::string anchor;
    std::string svg;
};

// In the order of AnchorLocation's values.
const char* const kAnchorNames[9] = {"TopLeft",     "TopCenter",  "TopRight",     "MiddleLeft", "Center",
                                     "MiddleRight", "BottomLeft", "BottomCenter", "BottomRight"};
const char* const kHorizontalNames[3] = {"left", "right", "center"};
const char* const kVerticalNames[3] = {"bottom", "top", "center"};

Bounds parseRect(const std::string& text, const std::string& what) {
    const auto v = parseNumbers(text, 4, what);
    return {v[0], v[1], v[2], v[3]};
}

// "12.5" is an absolute amount, "25%" a quarter of the container's extent.
Layout::Value parseValue(const std::string& text, const std::string& what) {
    if (!text.empty() && text.back() == '%')
        return {Layout::Relative, parseNumber(text.substr(0, text.size() - 1), what) / 100};
    return {Layout::Absolute, parseNumber(text, what)};
}

std::string describe(const Layout::Value& v) {
    return (v.kind == Layout::Relative ? "relative " : "absolute ") + formatNumber(v.amount);
}

int parseName(const std::string& text, const char* const* names, int count, const std::string& what) {
    // Case and the separators '-' and '_' do not matter: "top-left" is TopLeft.
    std::string key;
    for (char ch : text)
        if (ch != '-' && ch != '_') key += char(std::tolower(static_cast<unsigned char>(ch)));
    std::string list;
    for (int i = 0; i < count; ++i) {
        std::string name;
        for (const char* p = names[i]; *p; ++p) name += char(std::tolower(static_cast<unsigned char>(*p)));
        if (name == key) return i;
        list += (i == 0 ? "" : i + 1 == count ? " or " : ", ") + std::string(names[i]);
    }
    throw UsageError(what + ": \"" + text + "\" is not " + list);
}

void rect(Output& out, const std::string& key, const Bounds& b) { out.rect(key, b.left, b.top, b.right, b.bottom); }

// Every option that names a quantity, in the record's order.
struct Quantity {
    const char* key;
    const char* option;
    std::string LayoutOptions::*text;
    void (Layout::*set)(const Layout::Value&);
    const Layout::Value& (Layout::*get)() const;
};
const Quantity kQuantities[] = {
    {"width", "--width", &LayoutOptions::width, &Layout::SetWidth, &Layout::GetWidth},
    {"height", "--height", &LayoutOptions::height, &Layout::SetHeight, &Layout::GetHeight},
    {"minimumWidth", "--min-width", &LayoutOptions::minWidth, &Layout::SetMinimumWidth, &Layout::GetMinimumWidth},
    {"minimumHeight", "--min-height", &LayoutOptions::minHeight, &Layout::SetMinimumHeight,
     &Layout::GetMinimumHeight},
    {"leftMargin", "--left-margin", &LayoutOptions::leftMargin, &Layout::SetLeftMargin, &Layout::GetLeftMargin},
    {"rightMargin", "--right-margin", &LayoutOptions::rightMargin, &Layout::SetRightMargin, &Layout::GetRightMargin},
    {"topMargin", "--top-margin", &LayoutOptions::topMargin, &Layout::SetTopMargin, &Layout::GetTopMargin},
    {"bottomMargin", "--bottom-margin", &LayoutOptions::bottomMargin, &Layout::SetBottomMargin,
     &Layout::GetBottomMargin},
};

void drawSvg(const std::string& file, const Bounds& container, const Bounds& object, const Layout& layout,
             const Bounds& result, const MATRIX& m, int anchor) {
    const svg::Style frame{"#374151", "#f3f4f6", 2, "", 1};
    const svg::Style inset{"#6b7280", "none", 1.2, "5 4", 1};
    const svg::Style source{"#9ca3af", "none", 1.4, "3 3", 1};
    const svg::Style placed{"#2563eb", "#93c5fd", 2, "", 0.45};
    const svg::Style glyph{"#1e3a8a", "#1e3a8a", 1, "", 0.8};
    const svg::Style mark{"#dc2626", "#dc2626", 1, "", 1};
    const svg::Style offsetBox{"#dc2626", "none", 1.2, "4 3", 1};

    // The space the margins leave: the same layout with only its margins.
    Layout margins;
    margins.SetLeftMargin(layout.GetLeftMargin());
    margins.SetRightMargin(layout.GetRightMargin());
    margins.SetTopMargin(layout.GetTopMargin());
    margins.SetBottomMargin(layout.GetBottomMargin());
    const Bounds space = QorMath::LayoutObject(container, margins);

    auto box = [](const Bounds& b) {
        return std::vector<Point2d>{{b.left, b.top}, {b.right, b.top}, {b.right, b.bottom}, {b.left, b.bottom}};
    };
    svg::Panel panel("LayoutObject: " + formatNumber(result.right - result.left) + " x " +
                     formatNumber(result.top - result.bottom) + " at (" + formatNumber(result.left) + ", " +
                     formatNumber(result.bottom) + ")");
    panel.polyline(box(container), frame, true);
    panel.polyline(box(space), inset, true);
    panel.polyline(box(object), source, true);
    panel.polyline(layoutGlyph(object), {source.stroke, "none", 1, "", 1}, true);
    panel.polyline(box(result), placed, true);
    std::vector<Point2d> mapped = layoutGlyph(object);
    m.TransformPoints(mapped.data(), mapped.size());
    panel.polyline(mapped, glyph, true);
    panel.legend(frame, "container");
    panel.legend(inset, "inside the margins");
    panel.legend(source, "object");
    panel.legend(placed, "result");
    panel.legend(glyph, "object's F under the matrix");
    if (anchor >= 0) {
        const auto location = static_cast<QorMath::AnchorLocation>(anchor);
        const Point2d at = QorMath::GetAnchorPoint(container, location);
        const QorMath::Vector2d size{object.right - object.left, object.top - object.bottom};
        const QorMath::Vector2d corner = QorMath::GetAnchorOffset(container, size, location);
        panel.polyline(box({corner.x, corner.y + size.y, corner.x + size.x, corner.y}), offsetBox, true);
        panel.dot(at, 4, mark);
        panel.label(at, kAnchorNames[anchor], -8, svg::Anchor::Middle, 12, mark.stroke);
        panel.legend(offsetBox, "object placed at the anchor");
    }
    svg::Document doc("qormath layout", 1, 900, 640);
    doc.add(std::move(panel));
    doc.write(file);
}

int run(const LayoutOptions& o, const GlobalOptions& global) {
    const Bounds container = parseRect(o.container, "--container");
    const Bounds object = parseRect(o.object, "--object");
    Layout layout;
    if (!o.margin.empty()) {
        const Layout::Value all = parseValue(o.margin, "--margin");
        for (auto set : {&Layout::SetLeftMargin, &Layout::SetRightMargin, &Layout::SetTopMargin,
                         &Layout::SetBottomMargin})
            (layout.*set)(all);
    }
    for (const auto& q : kQuantities)
        if (!(o.*q.text).empty()) (layout.*q.set)(parseValue(o.*q.text, q.option));
    const int h = parseName(o.halign, kHorizontalNames, 3, "--halign");
    const int v = parseName(o.valign, kVerticalNames, 3, "--valign");
    layout.SetHorizontalAlignment(static_cast<QorMath::Horizontal::Alignment>(h));
    layout.SetVerticalAlignment(static_cast<QorMath::Vertical::Alignment>(v));
    layout.SetMaintianSkewIfPossible(o.keepSkew);
    const int anchor = o.anchor.empty() ? -1 : parseName(o.anchor, kAnchorNames, 9, "--anchor");

    const Bounds result = QorMath::LayoutObject(container, layout);
    const MATRIX m = QorMath::GetLayoutTransformation(container, object, layout);

    Output out(global.json);
    rect(out, "container", container);
    rect(out, "object", object);
    out.begin("layout");
    for (const auto& q : kQuantities)
        if ((layout.*q.get)().kind != Layout::Unset) out.text(q.key, describe((layout.*q.get)()));
    out.text("horizontal", kHorizontalNames[h]);
    out.text("vertical", kVerticalNames[v]);
    out.boolean("keepSkew", layout.GetMaintianSkewIfPossible());
    out.boolean("doesLayout", layout.DoesLayout());
    out.boolean("canMaintainSkew", layout.CanMaintainSkew());
    out.end();
    rect(out, "result", result);
    out.matrix("matrix", m);
    if (anchor >= 0) {
        const auto location = static_cast<QorMath::AnchorLocation>(anchor);
        const QorMath::Vector2d size{object.right - object.left, object.top - object.bottom};
        out.begin("anchor");
        out.text("location", kAnchorNames[anchor]);
        out.point("onContainer", QorMath::GetAnchorPoint(container, location));
        out.point("onResult", QorMath::GetAnchorPoint(result, location));
        out.point("offset", QorMath::AsPoint(QorMath::GetAnchorOffset(container, size, location)));
        out.end();
    }
    if (!o.svg.empty()) {
        drawSvg(o.svg, container, object, layout, result, m, anchor);
        out.text("svg", o.svg);
    }
    return 0;
}

}  // namespace

Command addLayoutCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<LayoutOptions>();
    CLI::App* app = parent.add_subcommand(
        "layout", "Place an object's rectangle inside a container with sizes, margins and alignment");
    app->add_option("--container,-c", opts->container, "Container left,top,right,bottom (y up: top > bottom)")
        ->required();
    app->add_option("--object,-o", opts->object,
                    "The object's current rectangle left,top,right,bottom, which the matrix maps onto the result")
        ->capture_default_str();
    app->add_option("--width", opts->width, "Width of the result (default: the space the margins leave)");
    app->add_option("--height", opts->height, "Height of the result (default: the space the margins leave)");
    app->add_option("--min-width", opts->minWidth, "Minimum width when --width is not given");
    app->add_option("--min-height", opts->minHeight, "Minimum height when --height is not given");
    app->add_option("--margin,-m", opts->margin, "All four margins (each of the options below overrides its own)");
    app->add_option("--left-margin", opts->leftMargin, "Left margin");
    app->add_option("--right-margin", opts->rightMargin, "Right margin");
    app->add_option("--top-margin", opts->topMargin, "Top margin");
    app->add_option("--bottom-margin", opts->bottomMargin, "Bottom margin");
    app->add_option("--halign", opts->halign, "Horizontal alignment: left, right or center")->capture_default_str();
    app->add_option("--valign", opts->valign, "Vertical alignment: bottom, top or center")->capture_default_str();
    app->add_flag("--keep-skew,!--no-keep-skew", opts->keepSkew,
                  "The keep-skew wish (on by default); it counts only while neither width nor height is given");
    app->add_option("--anchor,-a", opts->anchor,
                    "Also show an anchor: TopLeft, TopCenter, TopRight, MiddleLeft, Center, MiddleRight, "
                    "BottomLeft, BottomCenter or BottomRight (any case, '-' allowed: top-left)");
    app->add_option("--svg", opts->svg, "Also draw the container, the margins, the object and the result");
    app->footer(
        "Sizes and margins: a number is absolute, in container units (10); a number with a percent sign is\n"
        "relative, a fraction of the container's extent along that axis (25% is a quarter). Amounts take the\n"
        "container's orientation, so margins point inward and sizes grow the way the container does.\n"
        "With --width the horizontal alignment places the result: left from the left margin, right from the\n"
        "right margin, center on the container's centre (margins ignored). Without it the margins inset both\n"
        "edges, and a --min-width that does not fit keeps the left edge, keeps the right edge, or (center)\n"
        "puts the box at (W - min)/2 measured from x = 0. Heights likewise with bottom, top and center.\n"
        "matrix maps the object's left-bottom corner and extents onto the result's (GetLayoutTransformation).\n"
        "With --anchor: the anchor on the container and on the result, and offset, the lower-left corner at\n"
        "which an object of --object's size puts its own anchor on the container's (GetAnchorOffset).\n"
        "Example: qormath layout -c 0,100,200,0 --width 50 --halign right --right-margin 10 --top-margin 10%");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
