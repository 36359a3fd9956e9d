#include <array>
#include <initializer_list>
#include <utility>

#include "../test_util.h"

using namespace QorMath;

namespace {

using V = Layout::Value;
using B4 = std::array<double, 4>;  // left, top, right, bottom
using Setter = void (Layout::*)(const V&);
constexpr int32_t kAbs = Layout::Absolute, kRel = Layout::Relative;
const Setter kW = &Layout::SetWidth, kH = &Layout::SetHeight, kMinW = &Layout::SetMinimumWidth,
             kMinH = &Layout::SetMinimumHeight, kL = &Layout::SetLeftMargin, kR = &Layout::SetRightMargin,
             kT = &Layout::SetTopMargin, kB = &Layout::SetBottomMargin;
// y-up W = 200, H = -100; left edge at 100, W = 100; x-flipped and y-down, W = -100, H = 100.
constexpr B4 kC{0, 100, 200, 0}, kN{100, 100, 200, 0}, kFD{200, 0, 100, 100};

B4 A(const BoundsT<double>& b) { return {b.left, b.top, b.right, b.bottom}; }
BoundsT<double> Bx(const B4& a) { return {a[0], a[1], a[2], a[3]}; }
Layout Make(std::initializer_list<std::pair<Setter, V>> values, int h = 0, int v = 0) {
    Layout l;
    for (const auto& [set, value] : values) (l.*set)(value);
    l.SetHorizontalAlignment(static_cast<Horizontal::Alignment>(h));
    l.SetVerticalAlignment(static_cast<Vertical::Alignment>(v));
    return l;
}

}  // namespace

TEST(Layout, DefaultsAndFlags) {
    const Layout d;
    EXPECT_TRUE(!d.DoesLayout() && d.CanMaintainSkew());
    EXPECT_EQ(A(LayoutObject({3, -7, -2, 9}, d)), (B4{3, -7, -2, 9}));
    const Setter all[] = {kW, kH, kMinW, kMinH, kL, kR, kT, kB};
    for (int s = 0; s < 8; ++s)
        for (int32_t kind : {0, 1, 2, 7}) {  // kind 0 stays unset whatever the amount
            const Layout l = Make({{all[s], {kind, 5.5}}});
            EXPECT_TRUE(l.DoesLayout() == (kind != 0) && l.CanMaintainSkew() == (s > 1 || kind == 0)) << s << kind;
        }
    EXPECT_TRUE(Make({}, 1).DoesLayout() && Make({}, 0, 5).DoesLayout());
    Layout k;
    k.SetMaintianSkewIfPossible(false);
    EXPECT_FALSE(k.CanMaintainSkew() || k.DoesLayout());
}

TEST(Layout, LayoutObject) {
    const struct { B4 box; Layout layout; B4 want; } cases[] = {
        {kC, Make({{kW, {kAbs, 50}}, {kR, {kAbs, 10}}}, 1), {140, 100, 190, 0}},
        {kC, Make({{kT, {kRel, 0.1}}}), {0, 90, 200, 0}},
        {kN, Make({{kMinW, {kAbs, 150}}}, 2), {-25, 100, 125, 0}},  // centred from x = 0, not from 100
        {kC, Make({{kH, {kAbs, 40}}}), {0, 40, 200, 0}},
        {kC, Make({{kW, {Layout::Unset, 77}}}, 1), kC},
        // Set sizes by alignment; an invalid one keeps the container's edges, and kind 7 is set at full extent.
        {kC, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 10}}, {kH, {kAbs, 40}}, {kT, {kAbs, 10}}}, 0, 1), {10, 90, 60, 50}},
        {kN, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 30}}, {kH, {kAbs, 40}}, {kT, {kAbs, 10}}}, 2, 2), {125, 70, 175, 30}},
        {kC, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 10}}, {kH, {kAbs, 40}}, {kT, {kAbs, 10}}}, 5, 4), kC},
        {kC, Make({{kW, {7, 50}}, {kL, {kAbs, 10}}, {kH, {7, 40}}, {kB, {kAbs, 10}}}), {10, 110, 210, 10}},
        // Margins inset each edge (a kind-7 one is 0); signed extents keep them, and sizes, inward.
        {kC, Make({{kL, {7, 30}}, {kR, {kRel, 0.25}}, {kT, {kAbs, 5}}, {kB, {kAbs, 15}}}), {0, 95, 150, 15}},
        {kFD, Make({{kL, {kAbs, 10}}, {kR, {kRel, 0.1}}, {kT, {kAbs, 10}}, {kB, {kRel, 0.1}}}), {190, 10, 110, 90}},
        {kFD, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 10}}, {kH, {kAbs, 40}}}), {190, 60, 140, 100}},
        {{5, 7, 5, 7}, Make({{kL, {kAbs, 10}}, {kT, {kAbs, 10}}}), {5, 7, 5, 7}},  // sign(0) = 0
        // Minimum sizes: Left/Bottom and Right/Top keep their edge, Center measures from 0. A negative minimum
        // is also too small when the space exceeds it (y-up: H, minH and the space are negative).
        {kN, Make({{kMinW, {kAbs, 150}}, {kMinH, {kAbs, 150}}}), {100, 150, 250, 0}},
        {kN, Make({{kMinW, {kRel, 1.5}}, {kMinH, {kAbs, 150}}}, 1, 1), {50, 100, 200, -50}},
        {kN, Make({{kMinW, {kAbs, 100}}, {kMinH, {kAbs, 150}}}, 2, 2), {100, 25, 200, -125}},  // x exactly fits
        {kN, Make({{kMinW, {kAbs, 150}}, {kMinH, {kAbs, 150}}}, 5, 5), kN},
        {kN, Make({{kMinW, {kAbs, 90}}, {kL, {kAbs, 10}}, {kR, {kAbs, 10}}, {kMinH, {kAbs, 80}}}, 2), {5, 80, 95, 0}},
        {kN, Make({{kMinW, {kAbs, -30}}, {kMinH, {kAbs, 100}}}, 0, 1), {100, 100, 70, 0}},
        {kFD, Make({{kMinW, {kAbs, 150}}, {kMinH, {kAbs, 80}}}), {200, 0, 50, 100}},
        {kFD, Make({{kMinW, {kAbs, 80}}, {kMinH, {kAbs, 150}}}, 0, 2), {200, -25, 120, 125}},
    };
    for (const auto& c : cases) EXPECT_EQ(A(LayoutObject(Bx(c.box), c.layout)), c.want) << &c - cases;
}

TEST(Layout, TransformationMapsObjectOntoResult) {
    // The object's left-bottom corner goes to R's, its extents (flipped or not) scale to R's.
    const Layout right = Make({{kW, {kAbs, 50}}, {kR, {kAbs, 10}}}, 1);  // R = {140, 100, 190, 0}
    const struct { B4 box, object; Layout layout; MATRIX want; } cases[] = {
        {kC, {0, 10, 10, 0}, right, {5, 0, 140, 0, 10, 0}},      {kC, {2, 13, 12, 3}, right, {5, 0, 130, 0, 10, -30}},
        {kC, {10, 0, 0, 5}, right, {-5, 0, 190, 0, -20, 100}}, {kFD, {0, 10, 10, 0}, {}, {-10, 0, 200, 0, -10, 100}}};
    for (const auto& c : cases)
        EXPECT_TRUE(qtest::Near(GetLayoutTransformation(Bx(c.box), Bx(c.object), c.layout), c.want)) << &c - cases;
    EXPECT_TRUE(std::isinf(GetLayoutTransformation(Bx(kC), {3, 10, 3, 0}, right).a));
}

TEST(Layout, AnchorPointsAndOffsets) {
    const BoundsT<double> r{-3, 7, 5, 1};
    const double xs[] = {-3, 1, 5}, ys[] = {7, 4, 1};
    for (int32_t loc : {INT32_MIN, -3, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, INT32_MAX}) {
        const int col = loc < 0 || loc > 8 ? 2 : loc % 3, row = loc < 0 ? 0 : loc > 8 ? 2 : loc / 3;
        const auto a = static_cast<AnchorLocation>(loc);
        EXPECT_EQ(GetAnchorPoint(r, a), (Point2d{xs[col], ys[row]})) << loc;
        // The lower-left corner that puts the object's own anchor (0, size/2 or size in) on r's.
        EXPECT_EQ(GetAnchorOffset(r, {4, 2}, a), (Vector2d{xs[col] - col * 2.0, ys[row] - (2 - row) * 1.0})) << loc;
    }
    EXPECT_EQ(GetAnchorOffset({0, 10, 20, 0}, {4, 2}, AnchorLocation::Center), (Vector2d{8, 4}));
    EXPECT_EQ(GetAnchorOffset({0, 10, 20, 0}, {4, 2}, AnchorLocation::TopLeft), (Vector2d{0, 8}));
}
