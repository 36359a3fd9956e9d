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
// y-up W = 200, H = -100; left edge at 100, W = 100; x-flipped, W = -100; y-down, H = 100.
constexpr B4 kC{0, 100, 200, 0}, kN{100, 100, 200, 0}, kF{200, 100, 100, 0}, kD{0, 0, 200, 100};

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
        // Set sizes by alignment; an invalid alignment keeps the container's edges, margins and all.
        {kC, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 10}}}), {10, 100, 60, 0}},
        {kN, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 30}}}, 2), {125, 100, 175, 0}},
        {kC, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 10}}}, 5), kC},
        {kC, Make({{kW, {7, 50}}, {kL, {kAbs, 10}}}), {10, 100, 210, 0}},  // kind 7: set, full extent
        {kC, Make({{kH, {7, 40}}, {kB, {kAbs, 10}}}), {0, 110, 200, 10}},
        {kC, Make({{kH, {kAbs, 40}}, {kT, {kAbs, 10}}}, 0, 1), {0, 90, 200, 50}},
        {kC, Make({{kH, {kAbs, 40}}, {kT, {kAbs, 10}}}, 0, 2), {0, 70, 200, 30}},
        {kC, Make({{kH, {kAbs, 40}}, {kT, {kAbs, 10}}}, 0, 4), kC},
        // Margins inset each edge (a kind-7 one is 0); signed extents keep them, and sizes, inward.
        {kC, Make({{kL, {7, 30}}, {kR, {kRel, 0.25}}, {kT, {kAbs, 5}}, {kB, {kAbs, 15}}}), {0, 95, 150, 15}},
        {kF, Make({{kL, {kAbs, 10}}, {kR, {kRel, 0.1}}}), {190, 100, 110, 0}},
        {kD, Make({{kT, {kAbs, 10}}, {kB, {kRel, 0.1}}}), {0, 10, 200, 90}},
        {kF, Make({{kW, {kAbs, 50}}, {kL, {kAbs, 10}}}), {190, 100, 140, 0}},
        {kD, Make({{kH, {kAbs, 40}}}), {0, 60, 200, 100}},
        {{5, 100, 5, 0}, Make({{kL, {kAbs, 10}}}), {5, 100, 5, 0}},  // sign(0) = 0
        // Minimum widths: Left and Right keep their edge, Center measures from 0.
        {kN, Make({{kMinW, {kAbs, 150}}}), {100, 100, 250, 0}},
        {kN, Make({{kMinW, {kRel, 1.5}}}, 1), {50, 100, 200, 0}},
        {kN, Make({{kMinW, {kAbs, 150}}}, 5), kN},
        {kN, Make({{kMinW, {kAbs, 100}}}, 2), kN},  // exactly fits
        {kN, Make({{kMinW, {kAbs, 90}}, {kL, {kAbs, 10}}, {kR, {kAbs, 10}}}, 2), {5, 100, 95, 0}},
        // A negative minimum is also too small when the space exceeds it.
        {kN, Make({{kMinW, {kAbs, -30}}}), {100, 100, 70, 0}},
        {kF, Make({{kMinW, {kAbs, 150}}}), {200, 100, 50, 0}},
        {kF, Make({{kMinW, {kAbs, 80}}}), {200, 100, 120, 0}},
        // Minimum heights likewise (y-up: H, minH and the space are negative).
        {kC, Make({{kMinH, {kAbs, 150}}}), {0, 150, 200, 0}},
        {kC, Make({{kMinH, {kAbs, 150}}}, 0, 1), {0, 100, 200, -50}},
        {kC, Make({{kMinH, {kAbs, 150}}}, 0, 2), {0, 25, 200, -125}},  // from y = 0, not from 100
        {kC, Make({{kMinH, {kAbs, 80}}}), {0, 80, 200, 0}},
        {kC, Make({{kMinH, {kAbs, 100}}}, 0, 1), kC},
        {kD, Make({{kMinH, {kAbs, 150}}}, 0, 2), {0, -25, 200, 125}},
        {kD, Make({{kMinH, {kAbs, 80}}}), kD},
    };
    for (const auto& c : cases) EXPECT_EQ(A(LayoutObject(Bx(c.box), c.layout)), c.want) << &c - cases;
}

TEST(Layout, TransformationMapsObjectOntoResult) {
    const Layout right = Make({{kW, {kAbs, 50}}, {kR, {kAbs, 10}}}, 1);  // R = {140, 100, 190, 0}
    EXPECT_TRUE(qtest::Near(GetLayoutTransformation(Bx(kC), {0, 10, 10, 0}, right), MATRIX{5, 0, 140, 0, 10, 0}));
    EXPECT_TRUE(std::isinf(GetLayoutTransformation(Bx(kC), {3, 10, 3, 0}, right).a));
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-50, 50), e(1, 50);
    for (int i = 0; i < 300; ++i) {  // the left-bottom and right-top corners land on the result's
        const BoundsT<double> box{u(rng), u(rng), u(rng), u(rng)};
        const double ol = u(rng), ob = u(rng), ow = (i % 2 ? 1 : -1) * e(rng), oh = (i % 3 ? 1 : -1) * e(rng);
        const Layout l = Make({{kW, {i % 3, u(rng) / 40}}, {kMinH, {i % 4, u(rng)}}, {kT, {kRel, 0.1}}}, i % 4, i % 5);
        const BoundsT<double> r = LayoutObject(box, l);
        const MATRIX m = GetLayoutTransformation(box, {ol, ob + oh, ol + ow, ob}, l);
        EXPECT_TRUE(m.b == 0 && m.c == 0);
        EXPECT_TRUE(qtest::Near(m(Point2d{ol, ob}), Point2d{r.left, r.bottom}, 1e-9)) << i;
        EXPECT_TRUE(qtest::Near(m(Point2d{ol + ow, ob + oh}), Point2d{r.right, r.top}, 1e-9)) << i;
    }
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
