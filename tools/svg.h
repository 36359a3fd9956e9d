#ifndef QORMATH_TOOLS_SVG_H
#define QORMATH_TOOLS_SVG_H

// A small SVG writer for the gallery. Shapes are given in world coordinates
// (y up); each panel fits its content into its box with one uniform scale and
// flips y for SVG. Widths, marker radii and font sizes are in pixels.

#include <array>
#include <string>
#include <vector>

#include "QorMath/types.h"

namespace qtool::svg {

using QorMath::Point2d;

struct Style {
    std::string stroke = "#333333";
    std::string fill = "none";
    double width = 1.5;
    std::string dash;  // stroke-dasharray, e.g. "5 3"; empty for solid
    double fillOpacity = 1;
};

/// A path in world coordinates: lines and cubic Bezier segments.
class Path {
public:
    Path& moveTo(const Point2d& p);
    Path& lineTo(const Point2d& p);
    Path& cubicTo(const Point2d& c1, const Point2d& c2, const Point2d& p);
    Path& close();
    /// An open polyline, or a polygon when closed.
    static Path through(const std::vector<Point2d>& points, bool closed);
    /// Cubic segments P0..P3 joined end to start, closed when closed.
    static Path fromCubics(const std::vector<std::array<Point2d, 4>>& segments, bool closed);

private:
    friend class Panel;
    struct Segment {
        char op;  // M, L, C or Z
        Point2d p[3];
    };
    std::vector<Segment> segments_;
};

enum class Anchor { Start, Middle, End };

/// One titled panel: world-space drawing, labels, and a legend line.
class Panel {
public:
    explicit Panel(std::string title);
    void path(const Path& path, const Style& style);
    void polyline(const std::vector<Point2d>& points, const Style& style, bool closed = false);
    /// A marker of radiusPx pixels at a world point.
    void dot(const Point2d& centre, double radiusPx, const Style& style);
    /// Text at a world point, moved dyPx pixels down (negative: up) and dxPx right.
    void label(const Point2d& at, const std::string& text, double dyPx = 0, Anchor anchor = Anchor::Middle,
               double sizePx = 12, const std::string& colour = "#222222", double dxPx = 0);
    /// One legend entry: a short stroke sample in style (a marker when dot), then text.
    void legend(const Style& style, const std::string& text, bool dot = false);
    /// The panel as an SVG group occupying the pixel box (x, y, w, h).
    std::string render(double x, double y, double w, double h) const;

private:
    struct Item {
        enum Kind { PathItem, DotItem, LabelItem } kind;
        Path path;
        Style style;
        Point2d at;
        double size;  // marker radius or font size, pixels
        double dy;
        Anchor anchor;
        std::string text;
        double dx = 0;  // labels only: pixels to the right
    };
    std::string title_;
    std::vector<Item> items_;
    struct LegendEntry {
        Style style;
        std::string text;
        bool dot;
    };
    std::vector<LegendEntry> legend_;
};

/// Panels laid out in a grid under a title.
class Document {
public:
    explicit Document(std::string title, int columns = 2, double panelWidth = 640, double panelHeight = 340);
    void add(Panel panel);
    std::string str() const;
    /// Writes the file, creating its directory; throws std::runtime_error on failure.
    void write(const std::string& file) const;

private:
    std::string title_;
    int columns_;
    double panelWidth_, panelHeight_;
    std::vector<Panel> panels_;
};

}  // namespace qtool::svg

#endif
