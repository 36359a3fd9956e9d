#include "svg.h"

#include <algorithm>
#include <cfloat>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace qtool::svg {

namespace {

// Pixel coordinates with two decimals, trailing zeros dropped.
std::string px(double v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.2f", v);
    std::string s = buf;
    s.erase(s.find_last_not_of('0') + 1);
    if (s.back() == '.') s.pop_back();
    return s == "-0" ? "0" : s;
}

std::string escape(const std::string& text) {
    std::string out;
    for (char ch : text) {
        switch (ch) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += ch;
        }
    }
    return out;
}

std::string styleAttributes(const Style& s) {
    std::string a = " stroke=\"" + s.stroke + "\" stroke-width=\"" + px(s.width) + "\" fill=\"" + s.fill + "\"";
    if (s.fill != "none" && s.fillOpacity < 1) a += " fill-opacity=\"" + px(s.fillOpacity) + "\"";
    if (!s.dash.empty()) a += " stroke-dasharray=\"" + s.dash + "\"";
    return a + " stroke-linejoin=\"round\" stroke-linecap=\"round\"";
}

// Rough advance of a line of text, for laying out legend entries.
double textWidth(const std::string& text, double size) { return 0.62 * size * double(text.size()); }

}  // namespace

Path& Path::moveTo(const Point2d& p) {
    segments_.push_back({'M', {p, p, p}});
    return *this;
}
Path& Path::lineTo(const Point2d& p) {
    segments_.push_back({'L', {p, p, p}});
    return *this;
}
Path& Path::cubicTo(const Point2d& c1, const Point2d& c2, const Point2d& p) {
    segments_.push_back({'C', {c1, c2, p}});
    return *this;
}
Path& Path::close() {
    segments_.push_back({'Z', {}});
    return *this;
}
Path Path::through(const std::vector<Point2d>& points, bool closed) {
    Path path;
    for (size_t i = 0; i < points.size(); ++i) i == 0 ? path.moveTo(points[i]) : path.lineTo(points[i]);
    if (closed && !points.empty()) path.close();
    return path;
}

Path Path::fromCubics(const std::vector<std::array<Point2d, 4>>& segments, bool closed) {
    Path path;
    for (size_t i = 0; i < segments.size(); ++i) {
        if (i == 0) path.moveTo(segments[i][0]);
        path.cubicTo(segments[i][1], segments[i][2], segments[i][3]);
    }
    if (closed && !segments.empty()) path.close();
    return path;
}

Panel::Panel(std::string title) : title_(std::move(title)) {}

void Panel::path(const Path& path, const Style& style) {
    items_.push_back({Item::PathItem, path, style, {}, 0, 0, Anchor::Middle, {}});
}
void Panel::polyline(const std::vector<Point2d>& points, const Style& style, bool closed) {
    path(Path::through(points, closed), style);
}
void Panel::dot(const Point2d& centre, double radiusPx, const Style& style) {
    items_.push_back({Item::DotItem, {}, style, centre, radiusPx, 0, Anchor::Middle, {}});
}
void Panel::label(const Point2d& at, const std::string& text, double dyPx, Anchor anchor, double sizePx,
                  const std::string& colour, double dxPx) {
    Style style;
    style.fill = colour;
    items_.push_back({Item::LabelItem, {}, style, at, sizePx, dyPx, anchor, text, dxPx});
}
void Panel::legend(const Style& style, const std::string& text, bool dot) { legend_.push_back({style, text, dot}); }

std::string Panel::render(double x, double y, double w, double h) const {
    // World bounds of everything drawn, and the pixels labels need beyond them.
    double minX = DBL_MAX, minY = DBL_MAX, maxX = -DBL_MAX, maxY = -DBL_MAX, padTop = 0, padBottom = 0;
    auto grow = [&](const Point2d& p) {
        minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
    };
    for (const auto& item : items_) {
        if (item.kind == Item::PathItem) {
            for (const auto& s : item.path.segments_)
                for (int k = 0; k < (s.op == 'C' ? 3 : s.op == 'Z' ? 0 : 1); ++k) grow(s.p[k]);
        } else {
            grow(item.at);
        }
        if (item.kind == Item::LabelItem) {
            padTop = std::max(padTop, item.size - item.dy);
            padBottom = std::max(padBottom, item.dy + 4);
        }
    }
    if (minX > maxX) minX = maxX = minY = maxY = 0;
    // Legend along the bottom edge, wrapped into as many rows as the width needs;
    // the drawing gets the space above it.
    std::vector<std::vector<size_t>> rows(1);
    double used = 0;
    for (size_t i = 0; i < legend_.size(); ++i) {
        const double advance = 28 + textWidth(legend_[i].text, 12) + 18;
        if (used > 0 && used + advance > w - 36) rows.emplace_back(), used = 0;
        rows.back().push_back(i);
        used += advance;
    }
    const double legendY = y + h - 18 - 20 * double(rows.size() - 1);
    const double left = x + 24, right = x + w - 24, top = y + 48 + padTop, bottom = legendY - 26 - padBottom;
    const double worldW = std::max(maxX - minX, 1e-9), worldH = std::max(maxY - minY, 1e-9);
    const double scale = std::min((right - left) / worldW, (bottom - top) / worldH);
    const double ox = (left + right - worldW * scale) / 2, oy = (top + bottom - worldH * scale) / 2;
    auto X = [&](const Point2d& p) { return px(ox + (p.x - minX) * scale); };
    auto Y = [&](const Point2d& p) { return px(oy + (maxY - p.y) * scale); };  // y up to y down

    std::string out = "<g>\n<rect x=\"" + px(x) + "\" y=\"" + px(y) + "\" width=\"" + px(w) + "\" height=\"" +
                      px(h) + "\" rx=\"8\" fill=\"#ffffff\" stroke=\"#d0d4da\"/>\n";
    out += "<text x=\"" + px(x + 18) + "\" y=\"" + px(y + 28) + "\" font-size=\"16\" font-weight=\"bold\">" +
           escape(title_) + "</text>\n";
    for (const auto& item : items_) {
        if (item.kind == Item::PathItem) {
            std::string d;
            for (const auto& s : item.path.segments_) {
                d += d.empty() ? "" : " ";
                d += s.op;
                for (int k = 0; k < (s.op == 'C' ? 3 : s.op == 'Z' ? 0 : 1); ++k)
                    d += " " + X(s.p[k]) + " " + Y(s.p[k]);
            }
            out += "<path d=\"" + d + "\"" + styleAttributes(item.style) + "/>\n";
        } else if (item.kind == Item::DotItem) {
            out += "<circle cx=\"" + X(item.at) + "\" cy=\"" + Y(item.at) + "\" r=\"" + px(item.size) + "\"" +
                   styleAttributes(item.style) + "/>\n";
        } else {
            const char* anchor = item.anchor == Anchor::Start ? "start" : item.anchor == Anchor::End ? "end" : "middle";
            out += "<text x=\"" + px(ox + (item.at.x - minX) * scale + item.dx) + "\" y=\"" +
                   px(oy + (maxY - item.at.y) * scale + item.dy) +
                   "\" font-size=\"" + px(item.size) + "\" text-anchor=\"" + anchor + "\" fill=\"" +
                   item.style.fill + "\">" + escape(item.text) + "</text>\n";
        }
    }
    double ly = legendY;
    for (const auto& row : rows) {
        double lx = x + 18;
        for (const size_t i : row) {
            const auto& [style, text, dot] = legend_[i];
            if (dot)
                out += "<circle cx=\"" + px(lx + 11) + "\" cy=\"" + px(ly - 4) + "\" r=\"3.5\"" + styleAttributes(style) +
                       "/>\n";
            else
                out += "<path d=\"M " + px(lx) + " " + px(ly - 4) + " h 22\"" + styleAttributes(style) + "/>\n";
            out += "<text x=\"" + px(lx + 28) + "\" y=\"" + px(ly) + "\" font-size=\"12\" fill=\"#444444\">" +
                   escape(text) + "</text>\n";
            lx += 28 + textWidth(text, 12) + 18;
        }
        ly += 20;
    }
    return out + "</g>\n";
}

Document::Document(std::string title, int columns, double panelWidth, double panelHeight)
    : title_(std::move(title)), columns_(columns), panelWidth_(panelWidth), panelHeight_(panelHeight) {}

void Document::add(Panel panel) { panels_.push_back(std::move(panel)); }

std::string Document::str() const {
    const double gap = 20, header = 56;
    const int columns = std::max(1, std::min(columns_, int(panels_.size())));
    const int rows = (int(panels_.size()) + columns - 1) / columns;
    const double width = columns * panelWidth_ + (columns + 1) * gap;
    const double height = header + rows * (panelHeight_ + gap);
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                      px(width) + "\" height=\"" + px(height) + "\" viewBox=\"0 0 " + px(width) + " " + px(height) +
                      "\" font-family=\"DejaVu Sans, Helvetica, Arial, sans-serif\">\n";
    out += "<rect width=\"100%\" height=\"100%\" fill=\"#f3f4f6\"/>\n";
    out += "<text x=\"" + px(gap) + "\" y=\"38\" font-size=\"22\" font-weight=\"bold\" fill=\"#1f2937\">" +
           escape(title_) + "</text>\n";
    for (size_t i = 0; i < panels_.size(); ++i) {
        const double px0 = gap + double(i % columns) * (panelWidth_ + gap);
        const double py0 = header + double(i / columns) * (panelHeight_ + gap);
        out += panels_[i].render(px0, py0, panelWidth_, panelHeight_);
    }
    return out + "</svg>\n";
}

void Document::write(const std::string& file) const {
    const std::filesystem::path path(file);
    std::error_code ec;
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path(), ec);
    std::ofstream os(path, std::ios::binary);
    os << str();
    os.close();
    if (!os) throw std::runtime_error("cannot write " + file);
}

}  // namespace qtool::svg
