#ifndef QORMATH_GEOMETRY_GROW_H
#define QORMATH_GEOMETRY_GROW_H

// Internal: grow a box by a point with four independent comparisons, so a NaN
// coordinate never moves an edge.

#include "QorMath/types.h"

namespace QorMath {

inline void GrowBy(BoundsT<double>& b, const vector2dT<double, 1>& p) {
    if (p.x > b.right) b.right = p.x;
    if (p.y > b.top) b.top = p.y;
    if (p.x < b.left) b.left = p.x;
    if (p.y < b.bottom) b.bottom = p.y;
}

// An integer rect grown to cover double points, outward to whole numbers. Its
// edges are mirrored as doubles so that each point costs four comparisons and
// no conversions; an edge moves (and is rounded) only when a point passes it.
class OutwardBox {
public:
    explicit OutwardBox(const tagRECT& r)
        : rect_(r), left_(r.left), top_(r.top), right_(r.right), bottom_(r.bottom) {}

    void Add(double x, double y) {
        if (x > right_) right_ = rect_.right = RoundToInt(std::ceil(x));
        if (y > top_) top_ = rect_.top = RoundToInt(std::ceil(y));
        if (left_ > x) left_ = rect_.left = RoundToInt(std::floor(x));
        if (bottom_ > y) bottom_ = rect_.bottom = RoundToInt(std::floor(y));
    }
    const tagRECT& Rect() const { return rect_; }

private:
    tagRECT rect_;
    double left_, top_, right_, bottom_;
};

}  // namespace QorMath

#endif
