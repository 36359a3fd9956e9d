#ifndef QORMATH_LAYOUT_H
#define QORMATH_LAYOUT_H

/// \file
/// Placing one rectangle inside another with margins, minimum sizes and
/// alignment, and the nine anchor positions of a rectangle.
///
/// Every quantity resolves against the container's *signed* extent along its
/// axis: E = right - left horizontally, E = bottom - top vertically (negative for
/// an ordinary y-up rectangle). An Absolute amount takes E's sign, so margins
/// always point inward and sizes grow the way the container does, however the
/// container is stored; a Relative amount is a fraction of E.

#include "QorMath/matrix.h"
#include "QorMath/types.h"

namespace QorMath {

/// How an object is laid out inside a container: optional size and minimum
/// size, four margins, two alignments and a keep-skew wish. A default record
/// does no layout. Owns nothing; copies are member-wise.
class QORMATH_API Layout {
public:
    /// One layout quantity: `kind` says how to read `amount`.
    struct Value {
        int32_t kind;   ///< Unset, Absolute or Relative; other non-zero kinds count as set but resolve as Unset
        double amount;  ///< a length in container units (Absolute) or a fraction of the extent (Relative)
    };
    static constexpr int32_t Unset = 0;     ///< the quantity's default (full extent for sizes, 0 otherwise)
    static constexpr int32_t Absolute = 1;  ///< sign(E) · amount
    static constexpr int32_t Relative = 2;  ///< E · amount

    /// Every Value Unset with amount 0, alignments Bottom and Left, keep skew on.
    Layout();

    /// Sets the object's width; Unset spans the container between the margins.
    void SetWidth(const Value& v) { width_ = v; }
    /// The width as set.
    const Value& GetWidth() const { return width_; }
    /// Sets the object's height; Unset spans the container between the margins.
    void SetHeight(const Value& v) { height_ = v; }
    /// The height as set.
    const Value& GetHeight() const { return height_; }
    /// Sets the minimum width, applied only when no width is set.
    void SetMinimumWidth(const Value& v) { minimumWidth_ = v; }
    /// The minimum width as set.
    const Value& GetMinimumWidth() const { return minimumWidth_; }
    /// Sets the minimum height, applied only when no height is set.
    void SetMinimumHeight(const Value& v) { minimumHeight_ = v; }
    /// The minimum height as set.
    const Value& GetMinimumHeight() const { return minimumHeight_; }
    /// Sets the inset from the container's left edge (Unset: 0).
    void SetLeftMargin(const Value& v) { leftMargin_ = v; }
    /// The left margin as set.
    const Value& GetLeftMargin() const { return leftMargin_; }
    /// Sets the inset from the container's right edge (Unset: 0).
    void SetRightMargin(const Value& v) { rightMargin_ = v; }
    /// The right margin as set.
    const Value& GetRightMargin() const { return rightMargin_; }
    /// Sets the inset from the container's top edge (Unset: 0).
    void SetTopMargin(const Value& v) { topMargin_ = v; }
    /// The top margin as set.
    const Value& GetTopMargin() const { return topMargin_; }
    /// Sets the inset from the container's bottom edge (Unset: 0).
    void SetBottomMargin(const Value& v) { bottomMargin_ = v; }
    /// The bottom margin as set.
    const Value& GetBottomMargin() const { return bottomMargin_; }
    /// Sets which horizontal edge the box keeps (values outside the enumeration
    /// are stored as given).
    void SetVerticalAlignment(Vertical::Alignment a) { vertical_ = a; }
    /// The vertical alignment as set.
    Vertical::Alignment GetVerticalAlignment() const { return vertical_; }
    /// Sets which vertical edge the box keeps (values outside the enumeration
    /// are stored as given).
    void SetHorizontalAlignment(Horizontal::Alignment a) { horizontal_ = a; }
    /// The horizontal alignment as set.
    Horizontal::Alignment GetHorizontalAlignment() const { return horizontal_; }
    /// The keep-skew wish. (The published name is spelled "Maintian".)
    void SetMaintianSkewIfPossible(bool keep) { maintainSkew_ = keep; }
    /// The keep-skew wish as set (on by default).
    bool GetMaintianSkewIfPossible() const { return maintainSkew_; }

    /// True when keep-skew is on and neither width nor height is set.
    bool CanMaintainSkew() const;
    /// True when any of the eight Values has a non-zero kind or either
    /// alignment is non-zero.
    bool DoesLayout() const;

private:
    Value width_;
    Value height_;
    Value minimumWidth_;
    Value minimumHeight_;
    Value leftMargin_;
    Value rightMargin_;
    Value topMargin_;
    Value bottomMargin_;
    Vertical::Alignment vertical_;
    Horizontal::Alignment horizontal_;
    bool maintainSkew_;
};

/// The object's rectangle inside container under layout.
///  - A set width is placed by the horizontal alignment: Left from left + left
///    margin, Right from right - right margin, Center on the container's centre
///    (margins ignored); other alignments keep the container's left and right.
///  - Without a width the margins inset both edges; when a set minimum width
///    does not fit, Left keeps the left edge, Right the right edge, and Center
///    puts the box at (W - minW)/2 measured from x = 0, not from the container's
///    left edge (kept on purpose: it is centred only for containers at x = 0).
///  - Heights likewise, with Bottom, Top and Center (also measured from y = 0).
QORMATH_API BoundsT<double> LayoutObject(BoundsT<double> container, const Layout& layout);

/// The matrix that maps object onto LayoutObject(container, layout): the object's
/// left-bottom corner goes to the result's left-bottom corner and each extent
/// scales to the result's. A zero object extent divides by zero (infinite or NaN
/// entries). The keep-skew wish is not consulted.
QORMATH_API MATRIX GetLayoutTransformation(const BoundsT<double>& container, const BoundsT<double>& object,
                                           const Layout& layout);

/// The anchor's position on r: x from left, (left + right)/2 or right by the
/// location's column, y from top, (top + bottom)/2 or bottom by its row.
/// Values above 8 act as BottomRight, negative ones as TopRight.
QORMATH_API vector2dT<double, 1> GetAnchorPoint(const BoundsT<double>& r, AnchorLocation location);

/// Where an object of the given size (size.x wide, size.y high) must put its
/// lower-left corner so that its own anchor at location lies on r's: the anchor
/// minus 0, size/2 or size per column (left, centre, right) and per row
/// (bottom, middle, top). Values above 8 act as BottomRight, negative ones as
/// TopRight.
QORMATH_API vector2dT<double, 0> GetAnchorOffset(const BoundsT<double>& r, const vector2dT<double, 0>& size,
                                                 AnchorLocation location);

}  // namespace QorMath

#endif
