#include <initializer_list>

#include "QorMath/layout.h"

namespace QorMath {

namespace {

// -1, 0 or +1; NaN counts as 0.
double SignOf(double e) {
    return e > 0.0 ? 1.0 : (e < 0.0 ? -1.0 : 0.0);
}

// A Value against the signed extent e: Absolute amounts take e's orientation,
// Relative ones are fractions of it, anything else is the quantity's default.
double Resolve(const Layout::Value& v, double extent, double fallback) {
    if (v.kind == Layout::Absolute) return SignOf(extent) * v.amount;
    if (v.kind == Layout::Relative) return extent * v.amount;
    return fallback;
}

bool IsSet(const Layout::Value& v) {
    return v.kind != Layout::Unset;
}

// A minimum that the space does not reach; the second test serves a flipped
// axis, where both the minimum and the space are negative.
bool IsTooSmall(double minimum, double space) {
    return minimum > space || (minimum < 0.0 && space > minimum);
}

void LayoutHorizontally(const BoundsT<double>& b, const Layout& layout, BoundsT<double>& r) {
    const double extent = b.right - b.left;
    const double w = Resolve(layout.GetWidth(), extent, extent);
    const double marginL = Resolve(layout.GetLeftMargin(), extent, 0.0);
    const double marginR = Resolve(layout.GetRightMargin(), extent, 0.0);
    const Horizontal::Alignment align = layout.GetHorizontalAlignment();
    if (IsSet(layout.GetWidth())) {
        if (align == Horizontal::Alignment::Left) {
            r.left = b.left + marginL;
            r.right = r.left + w;
        } else if (align == Horizontal::Alignment::Right) {
            r.right = b.right - marginR;
            r.left = r.right - w;
        } else if (align == Horizontal::Alignment::Center) {
            r.left = (b.left + b.right - w) / 2.0;
            r.right = r.left + w;
        }
        return;
    }
    r.left = b.left + marginL;
    r.right = b.right - marginR;
    if (!IsSet(layout.GetMinimumWidth())) return;
    const double minimum = Resolve(layout.GetMinimumWidth(), extent, 0.0);
    if (!IsTooSmall(minimum, r.right - r.left)) return;
    if (align == Horizontal::Alignment::Left) {
        r.right = r.left + minimum;
    } else if (align == Horizontal::Alignment::Right) {
        r.left = r.right - minimum;
    } else if (align == Horizontal::Alignment::Center) {
        // Centred about extent/2 from x = 0, not from the container's left edge:
        // the published behaviour, kept.
        r.left = (extent - minimum) / 2.0;
        r.right = r.left + minimum;
    }
}

void LayoutVertically(const BoundsT<double>& b, const Layout& layout, BoundsT<double>& r) {
    const double extent = b.bottom - b.top;
    const double h = Resolve(layout.GetHeight(), extent, extent);
    const double marginT = Resolve(layout.GetTopMargin(), extent, 0.0);
    const double marginB = Resolve(layout.GetBottomMargin(), extent, 0.0);
    const Vertical::Alignment align = layout.GetVerticalAlignment();
    if (IsSet(layout.GetHeight())) {
        if (align == Vertical::Alignment::Bottom) {
            r.bottom = b.bottom - marginB;
            r.top = r.bottom - h;
        } else if (align == Vertical::Alignment::Top) {
            r.top = b.top + marginT;
            r.bottom = r.top + h;
        } else if (align == Vertical::Alignment::Center) {
            r.bottom = (b.bottom + b.top + h) / 2.0;
            r.top = r.bottom - h;
        }
        return;
    }
    r.top = b.top + marginT;
    r.bottom = b.bottom - marginB;
    if (!IsSet(layout.GetMinimumHeight())) return;
    const double minimum = Resolve(layout.GetMinimumHeight(), extent, 0.0);
    if (!IsTooSmall(minimum, r.bottom - r.top)) return;
    if (align == Vertical::Alignment::Bottom) {
        r.top = r.bottom - minimum;
    } else if (align == Vertical::Alignment::Top) {
        r.bottom = r.top + minimum;
    } else if (align == Vertical::Alignment::Center) {
        // Measured from y = 0, as horizontally.
        r.top = (extent - minimum) / 2.0;
        r.bottom = r.top + minimum;
    }
}

// Column 0, 1, 2 (left, centre, right) and row 0, 1, 2 (top, middle, bottom)
// of an anchor; values outside 0..8 fall in the right column.
int ColumnOf(AnchorLocation location) {
    const auto v = static_cast<int32_t>(location);
    return (v >= 0 && v <= 8) ? v % 3 : 2;
}
int RowOf(AnchorLocation location) {
    const auto v = static_cast<int32_t>(location);
    return v < 3 ? 0 : (v <= 5 ? 1 : 2);
}

}  // namespace

Layout::Layout()
    : width_{Unset, 0.0},
      height_{Unset, 0.0},
      minimumWidth_{Unset, 0.0},
      minimumHeight_{Unset, 0.0},
      leftMargin_{Unset, 0.0},
      rightMargin_{Unset, 0.0},
      topMargin_{Unset, 0.0},
      bottomMargin_{Unset, 0.0},
      vertical_(Vertical::Alignment::Bottom),
      horizontal_(Horizontal::Alignment::Left),
      maintainSkew_(true) {}

bool Layout::CanMaintainSkew() const {
    return maintainSkew_ && width_.kind == Unset && height_.kind == Unset;
}

bool Layout::DoesLayout() const {
    for (const Value* v : {&width_, &height_, &minimumWidth_, &minimumHeight_, &leftMargin_, &rightMargin_,
                           &topMargin_, &bottomMargin_}) {
        if (v->kind != Unset) return true;
    }
    return static_cast<int32_t>(vertical_) != 0 || static_cast<int32_t>(horizontal_) != 0;
}

BoundsT<double> LayoutObject(BoundsT<double> container, const Layout& layout) {
    BoundsT<double> r = container;
    LayoutHorizontally(container, layout, r);
    LayoutVertically(container, layout, r);
    return r;
}

MATRIX GetLayoutTransformation(const BoundsT<double>& container, const BoundsT<double>& object,
                               const Layout& layout) {
    const BoundsT<double> r = LayoutObject(container, layout);
    const double sx = (r.right - r.left) / (object.right - object.left);
    const double sy = (r.top - r.bottom) / (object.top - object.bottom);
    return {sx, 0.0, r.left - sx * object.left, 0.0, sy, r.bottom - sy * object.bottom};
}

vector2dT<double, 1> GetAnchorPoint(const BoundsT<double>& r, AnchorLocation location) {
    const double xs[3] = {r.left, (r.left + r.right) / 2.0, r.right};
    const double ys[3] = {r.top, (r.top + r.bottom) / 2.0, r.bottom};
    return {xs[ColumnOf(location)], ys[RowOf(location)]};
}

vector2dT<double, 0> GetAnchorOffset(const BoundsT<double>& r, const vector2dT<double, 0>& size,
                                     AnchorLocation location) {
    const vector2dT<double, 1> a = GetAnchorPoint(r, location);
    const double dx[3] = {a.x, a.x - size.x / 2.0, a.x - size.x};
    const double dy[3] = {a.y - size.y, a.y - size.y / 2.0, a.y};
    return {dx[ColumnOf(location)], dy[RowOf(location)]};
}

}  // namespace QorMath
