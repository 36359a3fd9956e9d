// Integer and double rectangles: unions, intersections, containment, and
// bounding boxes of point sets and of transformed rectangles.

#include <utility>

#include "QorMath/bounds.h"
#include "geometry/grow.h"
#include "geometry/wrap.h"

namespace QorMath {

namespace {

bool IsStrictlyValid(const tagRECT& r) {
    return r.left < r.right && r.bottom < r.top;
}

void GrowBy(tagRECT& r, const tagPOINT& p) {
    if (p.x > r.right) r.right = p.x;
    if (p.y > r.top) r.top = p.y;
    if (p.x < r.left) r.left = p.x;
    if (p.y < r.bottom) r.bottom = p.y;
}

tagRECT RectOfPoint(const tagPOINT& p) {
    return tagRECT{p.x, p.y, p.x, p.y};
}

BoundsT<double> BoundsOfPoint(const vector2dT<double, 1>& p) {
    return BoundsT<double>{p.x, p.y, p.x, p.y};
}

// Box of the four corners of r under m; the integer corners are rounded first.
tagRECT CornersBox(const tagRECT& r, const MATRIX& m) {
    tagPOINT corners[4];
    GetRectCorners(r, corners);
    m.TransformPoints(corners, 4);
    tagRECT box = RectOfPoint(corners[0]);
    for (int i = 1; i < 4; ++i) GrowBy(box, corners[i]);
    return box;
}

BoundsT<double> CornersBox(const BoundsT<double>& b, const MATRIX& m) {
    vector2dT<double, 1> corners[4];
    GetRectCorners(b, corners);
    m.TransformPoints(corners, 4);
    BoundsT<double> box = BoundsOfPoint(corners[0]);
    for (int i = 1; i < 4; ++i) GrowBy(box, corners[i]);
    return box;
}

MATRIX InverseOrZero(const MATRIX& m) {
    MATRIX inverse = m;
    (void)inverse.Invert(DBL_EPSILON);  // a singular m becomes all zeros
    return inverse;
}

}  // namespace

void NormalizeRect(tagRECT& r) {
    if (r.right < r.left) std::swap(r.left, r.right);
    if (r.top < r.bottom) std::swap(r.top, r.bottom);
}

tagRECT GetPointsBBox(const tagPOINT* points, int32_t count) {
    if (count < 1 || points == nullptr) return GetEmptyRect();
    tagRECT box = RectOfPoint(points[0]);
    for (int32_t i = 1; i < count; ++i) GrowBy(box, points[i]);
    return box;
}

void GetPointsBBox(const tagPOINT* points, int32_t count, tagRECT& out) {
    out = GetPointsBBox(points, count);
}

BoundsT<double> GetPointsBBox(const vector2dT<double, 1>* points, int32_t count) {
    BoundsT<double> box;
    if (count < 1 || points == nullptr) {
        InitializeEmpty(box);
        return box;
    }
    box = BoundsOfPoint(points[0]);
    for (int32_t i = 1; i < count; ++i) GrowBy(box, points[i]);
    return box;
}

void UnionPointWithRect(tagRECT& r, const tagPOINT& p) {
    GrowBy(r, p);
}

void UnionPointWithRect(tagRECT& r, const vector2dT<double, 1>& p) {
    OutwardBox box(r);
    box.Add(p.x, p.y);
    r = box.Rect();
}

void UnionPointsWithRect(tagRECT& r, const tagPOINT* points, int32_t count) {
    if (points == nullptr) return;
    for (int32_t i = 0; i < count; ++i) GrowBy(r, points[i]);
}

bool UnionRect(tagRECT& r1, const tagRECT& r2) {
    if (!IsStrictlyValid(r1)) {
        r1 = r2;
    } else if (IsStrictlyValid(r2)) {
        if (r2.left < r1.left) r1.left = r2.left;
        if (r2.right > r1.right) r1.right = r2.right;
        if (r2.top > r1.top) r1.top = r2.top;
        if (r2.bottom < r1.bottom) r1.bottom = r2.bottom;
    }
    return IsStrictlyValid(r1);
}

bool IntersectRect(tagRECT& r1, const tagRECT& r2) {
    // Only the vertical order is checked up front; a horizontally inverted rect
    // is clipped like any other and fails the final test.
    if (r2.top < r2.bottom || r1.top < r1.bottom) return false;
    if (r2.left > r1.left) r1.left = r2.left;
    if (r2.right < r1.right) r1.right = r2.right;
    if (r2.top < r1.top) r1.top = r2.top;
    if (r2.bottom > r1.bottom) r1.bottom = r2.bottom;
    return IsStrictlyValid(r1);
}

void TranslateRect(tagRECT& r, int32_t dx, int32_t dy) {
    r.left = WrappingAdd(r.left, dx);
    r.right = WrappingAdd(r.right, dx);
    r.top = WrappingAdd(r.top, dy);
    r.bottom = WrappingAdd(r.bottom, dy);
}

void TranslateValidRect(tagRECT& r, int32_t dx, int32_t dy) {
    if (r.left <= r.right && r.bottom <= r.top) TranslateRect(r, dx, dy);
}

void InflateRect(tagRECT& r, int32_t dx, int32_t dy) {
    r.left = WrappingSub(r.left, dx);
    r.right = WrappingAdd(r.right, dx);
    r.top = WrappingAdd(r.top, dy);
    r.bottom = WrappingSub(r.bottom, dy);
}

void GetRectCorners(const tagRECT& r, tagPOINT out[4]) {
    out[0] = {r.left, r.top};
    out[1] = {r.right, r.top};
    out[2] = {r.right, r.bottom};
    out[3] = {r.left, r.bottom};
}

void GetRectCorners(const BoundsT<double>& b, vector2dT<double, 1> out[4]) {
    out[0] = {b.left, b.top};
    out[1] = {b.right, b.top};
    out[2] = {b.right, b.bottom};
    out[3] = {b.left, b.bottom};
}

tagPOINT GetRectCenter(const tagRECT& r) {
    return tagPOINT{WrappingAdd(r.left, r.right) / 2, WrappingAdd(r.top, r.bottom) / 2};
}

double GetRectArea(const tagRECT& r) {
    const double height = WrappingSub(r.top, r.bottom);
    const double width = WrappingSub(r.right, r.left);
    return std::fabs(height * width);
}

bool IsPointInRect(const tagPOINT& p, const tagRECT& r) {
    // x in this order only; y between top and bottom whichever way round.
    if (!(r.left <= p.x && p.x <= r.right)) return false;
    return (r.bottom <= p.y && p.y <= r.top) || (r.top <= p.y && p.y <= r.bottom);
}

bool IsPointInRect(const vector2dT<double, 1>& p, const tagRECT& r) {
    const double left = r.left, top = r.top, right = r.right, bottom = r.bottom;
    if (!(left <= p.x && p.x <= right)) return false;
    return (bottom <= p.y && p.y <= top) || (top <= p.y && p.y <= bottom);
}

bool IsAnyPointInRect(const tagPOINT* points, size_t count, const tagRECT& r) {
    if (points == nullptr) return false;
    for (size_t i = 0; i < count; ++i) {
        if (IsPointInRect(points[i], r)) return true;
    }
    return false;
}

tagRECT GetPointRect(const tagPOINT& p, int32_t radius) {
    return GetPointRect(p, radius, radius);
}

tagRECT GetPointRect(const tagPOINT& p, int32_t rx, int32_t ry) {
    return tagRECT{WrappingSub(p.x, rx), WrappingAdd(p.y, ry), WrappingAdd(p.x, rx), WrappingSub(p.y, ry)};
}

tagRECT GetTransformedBBox(const tagRECT& r, const MATRIX& m) {
    return CornersBox(r, m);
}

BoundsT<double> GetTransformedBBox(const BoundsT<double>& b, const MATRIX& m) {
    return CornersBox(b, m);
}

tagRECT GetUntransformedBBox(const tagRECT& r, const MATRIX& m) {
    return CornersBox(r, InverseOrZero(m));
}

BoundsT<double> GetUntransformedBBox(const BoundsT<double>& b, const MATRIX& m) {
    return CornersBox(b, InverseOrZero(m));
}

tagRECT GetTransformedPointsBBox(const tagPOINT* points, size_t count, const MATRIX& m) {
    OutwardBox box(GetEmptyRect());
    if (points == nullptr) return box.Rect();
    const double a = m.a, b = m.b, tx = m.tx, c = m.c, d = m.d, ty = m.ty;
    for (size_t i = 0; i < count; ++i) {
        const double x = points[i].x, y = points[i].y;
        box.Add(a * x + b * y + tx, c * x + d * y + ty);
    }
    return box.Rect();
}

BoundsT<double> GetTransformedPointsBBox(const vector2dT<double, 1>* points, size_t count, const MATRIX& m) {
    BoundsT<double> box;
    InitializeEmpty(box);
    if (points == nullptr) return box;
    // Edges in locals, chosen by comparisons a NaN never wins.
    double left = box.left, top = box.top, right = box.right, bottom = box.bottom;
    const double a = m.a, b = m.b, tx = m.tx, c = m.c, d = m.d, ty = m.ty;
    for (size_t i = 0; i < count; ++i) {
        const double px = points[i].x, py = points[i].y;
        const double x = a * px + b * py + tx, y = c * px + d * py + ty;
        right = x > right ? x : right;
        top = y > top ? y : top;
        left = x < left ? x : left;
        bottom = y < bottom ? y : bottom;
    }
    return {left, top, right, bottom};
}

vector2dT<double, 1> GetRemappedPoint(const vector2dT<double, 1>& p, const BoundsT<double>& from,
                                      const BoundsT<double>& to) {
    return ConstructRectTransformMatrix(from, to, MapMode::Stretch)(p);
}

}  // namespace QorMath
