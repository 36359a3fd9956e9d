#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <utility>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using V = VectorField::Vector;

namespace {

// Every cell row by row, each row followed by its run: equal dumps mean equal fields.
std::vector<double> Dump(const VectorField& f) {
    std::vector<double> out{double(f.width()), double(f.height())};
    for (int r = 0; r < f.height(); ++r) {
        for (int c = 0; c < f.width(); ++c) out.insert(out.end(), {f.Get_nooffset(c, r).x, f.Get_nooffset(c, r).y});
        out.insert(out.end(), {double(f.GetStoredRun(r).begin), double(f.GetStoredRun(r).end)});
    }
    return out;
}

void FillRandom(VectorField& f, std::mt19937& rng) {
    std::uniform_real_distribution<float> u(-10, 10);
    for (int r = 0; r < f.height(); ++r)
        for (int c = 0; c < f.width(); ++c) f.Set(f.GetCGIRECT().left + c, f.GetCGIRECT().bottom + r, {u(rng), u(rng)});
}

Vector2d Wide(const V& v) { return {v.x, v.y}; }

// Bilinear sample at local (lx, ly) in long double, weights (1-s)(1-t), s(1-t), (1-s)t, st. The position
// is clamped to [0, n - 2] (NaN to the top, 0 when n < 2); a neighbour past the last cell is the last cell.
Vector2d Bilinear(const VectorField& f, long double lx, long double ly) {
    const auto clamp = [](long double v, int n) { return v < 0 ? 0 : std::min<long double>(std::max(0, n - 2), v); };
    const long double cx = clamp(lx, f.width()), cy = clamp(ly, f.height());
    const int ix = int(cx), iy = int(cy), jx = std::min(ix + 1, f.width() - 1), jy = std::min(iy + 1, f.height() - 1);
    const long double s = cx - ix, t = cy - iy, w[4] = {(1 - s) * (1 - t), s * (1 - t), (1 - s) * t, s * t};
    const V c[4] = {f.Get_nooffset(ix, iy), f.Get_nooffset(jx, iy), f.Get_nooffset(ix, jy), f.Get_nooffset(jx, jy)};
    long double x = 0, y = 0;
    for (int k = 0; k < 4; ++k) x += w[k] * c[k].x, y += w[k] * c[k].y;
    return {double(x), double(y)};
}

}  // namespace

TEST(VectorFieldGrid, WritesStoreExactlyTheNeededRun) {
    VectorField f(7, 4, -3, 2);
    EXPECT_EQ(Dump(f), Dump(VectorField(tagRECT{0, 3, 6, 0})));  // all (0, 0), nothing stored
    EXPECT_EQ(f.GetStoredCellCount(), 0u);
    // Set or Add at plane (x, 3), local row 1; then that row's run, the stored count and the cell.
    const struct { bool add; int x; V v; size_t begin, end, count; V now; } steps[] = {
        {false, -2, {0, 0}, 0, 0, 0, {0, 0}},          // the fill outside the run: nothing stored
        {false, 0, {1, 2}, 3, 4, 1, {1, 2}},           // column 3
        {false, 3, {-1, 0}, 3, 7, 4, {-1, 0}},         // widens right; columns 4, 5 stored as the fill
        {false, -3, {0, 0}, 3, 7, 4, {0, 0}},          // the fill again, left of the run
        {true, -2, {0, 0}, 3, 7, 4, {0, 0}},           // adding nothing outside the run stores nothing
        {true, -2, {0.5f, 0}, 1, 7, 6, {0.5f, 0}},     // fill + v stored: widens left to column 1
        {true, 0, {0.25f, -3}, 1, 7, 6, {1.25f, -1}},  // accumulates
        {false, 3, {0, 0}, 1, 7, 6, {0, 0}},           // inside the run the fill is stored like any value
        {true, 1, {2, 2}, 1, 7, 6, {2, 2}}};
    for (const auto& s : steps) {
        s.add ? f.Add(s.x, 3, s.v) : f.Set(s.x, 3, s.v);
        EXPECT_TRUE(f.GetStoredRun(1).begin == s.begin && f.GetStoredRun(1).end == s.end) << s.x;
        EXPECT_EQ(f.GetStoredCellCount(), s.count) << s.x;
        EXPECT_EQ(f.Get_nooffset(s.x + 3, 1), s.now) << s.x;
    }
}

TEST(VectorFieldGrid, OutsideWritesAreIgnoredAtTheIntLimits) {
    for (auto [ox, oy] : {std::pair{0, 0}, {INT_MAX - 6, INT_MIN}, {INT_MIN, INT_MAX - 3}, {-3, 5}}) {
        VectorField f(7, 4, ox, oy);
        const std::vector<double> before = Dump(f);
        // Every grid's neighbouring rows and columns, and the int limits.
        const int at[] = {INT_MIN, INT_MIN + 4, INT_MIN + 7, -4, -1, 0, 4, 7, 9, INT_MAX - 7, INT_MAX - 4, INT_MAX};
        for (int x : at)
            for (int y : at) {
                const long long c = x - (long long)ox, r = y - (long long)oy;
                if (c >= 0 && c < 7 && r >= 0 && r < 4) continue;
                f.Set(x, y, {1, 1});
                f.Add(x, y, {1, 1});
                Vector2d out{7, 7};
                bool flag = true;
                EXPECT_TRUE(!f.Remap({x, y}, out, flag) && flag && out == (Vector2d{7, 7})) << x << " " << y;
            }
        EXPECT_EQ(Dump(f), before);
        f.Set(ox + 6, oy + 3, {2, 3});  // the far corner, at INT_MAX for some origins
        f.Add(ox, oy, {-1, 4});
        Vector2d out{}, out2{};
        bool flag = false;
        EXPECT_TRUE(f.Remap({ox + 6, oy + 3}, out, flag) && out == (Vector2d{2, 3}) && !flag);
        EXPECT_TRUE(f.Remap({ox, oy}, out2, flag) && out2 == (Vector2d{-1, 4}) && f.GetStoredCellCount() == 2);
    }
}

TEST(VectorFieldGrid, GetIsBilinearAndClampsBeyondEveryEdge) {
    // Local positions on a 1/16 grid, past both ends; the plane points are exact in float.
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> q(-5 * 16, 14 * 16);
    const float nan = float(qtest::kNaN), inf = INFINITY;
    for (auto [w, h] : {std::pair{9, 6}, {1, 5}, {5, 1}, {1, 1}, {2, 2}}) {  // thin fields sample their edge cells
        VectorField f(w, h, -4, 3);
        FillRandom(f, rng);
        for (int i = 0; i < 1000; ++i) {
            const float lx = i % 97 ? q(rng) / 16.0f : nan, ly = i % 89 ? q(rng) / 16.0f : nan;
            EXPECT_TRUE(qtest::Near(Wide(f.Get({lx - 4, ly + 3})), Bilinear(f, lx, ly), 3e-5)) << lx << " " << ly;
        }
    }
    // Clamped positions have fraction 0 and give a cell exactly: the right and top clamps are column 7, row 4.
    VectorField f(9, 6, -4, 3);
    FillRandom(f, rng);
    const struct { float x, y; int c, r; } exact[] = {
        {100, 5, 7, 2},  {4, 5, 7, 2},     {-100, -100, 0, 0}, {100, 100, 7, 4}, {nan, 5, 7, 2},
        {nan, nan, 7, 4}, {-1, inf, 3, 4}, {-inf, 4, 0, 1},    {0, 9, 4, 4},     {3.5f, nan, 7, 4}};
    for (const auto& e : exact) EXPECT_EQ(f.Get({e.x, e.y}), f.Get_nooffset(e.c, e.r)) << e.x << " " << e.y;
    EXPECT_TRUE(VectorField().Get({0, 0}) == (V{0, 0}) && VectorField().Get({nan, nan}) == (V{0, 0}));
}

TEST(VectorFieldGrid, RemapReadsCellsAndRemapPoint2dSamplesAtTwiceTheOrigin) {
    std::mt19937 rng(9);
    VectorField f(5, 4, 3, -2);
    FillRandom(f, rng);
    for (int x = 1; x <= 9; ++x)
        for (int y = -4; y <= 3; ++y) {
            const bool inside = x >= 3 && x < 8 && y >= -2 && y < 2, flag0 = (x + y) & 1;
            Vector2d out{7, 7};
            bool flag = flag0;
            EXPECT_TRUE(f.Remap({x, y}, out, flag) == inside && flag == flag0) << x << " " << y;
            EXPECT_EQ(out, inside ? Wide(f.Get_nooffset(x - 3, y + 2)) : (Vector2d{7, 7}));
        }
    // The range test takes p - origin, the sample p - 2·origin; at origin (0, 0) both agree.
    for (auto [ox, oy] : {std::pair{2, 1}, {0, 0}, {-3, 4}}) {
        VectorField g(6, 5, ox, oy);
        FillRandom(g, rng);
        for (int i = 0; i < 1000; ++i) {
            const Point2d p{ox + int(rng() % 81) / 8.0 - 2, oy + int(rng() % 73) / 8.0 - 2};
            const bool in = p.x >= ox && p.x < ox + 6 && p.y >= oy && p.y < oy + 5;
            Vector2d out{7, 7};
            EXPECT_EQ(g.Remap_point2d(p, out), in) << p.x << " " << p.y;
            EXPECT_TRUE(qtest::Near(out, in ? Bilinear(g, p.x - 2 * ox, p.y - 2 * oy) : Vector2d{7, 7}, 3e-5));
        }
        // The test is on p narrowed to float: just below either edge rounds onto it.
        Vector2d out{};
        EXPECT_FALSE(g.Remap_point2d({ox + 6 - 1e-9, oy + 1.0}, out));
        EXPECT_TRUE(ox == 0 || g.Remap_point2d({ox - 1e-9, oy + 1.0}, out));
    }
}

TEST(VectorFieldGrid, GeometryAndInitialize) {
    const auto rect = [](const VectorField& f) {
        const tagRECT r = f.GetCGIRECT();
        return std::vector<int>{r.left, r.top, r.right, r.bottom, f.width(), f.height()};
    };
    const std::vector<int> empty{0, -1, -1, 0, 0, 0};
    VectorField f(10, 5, 3, 4);
    EXPECT_EQ(rect(f), (std::vector<int>{3, 8, 12, 4, 10, 5}));
    f.Set(4, 5, {1, 1});
    for (auto [w, h] : {std::pair{0, 5}, {5, 0}, {-3, 7}}) {
        f.Initialize(w, h, 7, 7);
        EXPECT_TRUE(rect(f) == empty && f.GetStoredCellCount() == 0) << w << " " << h;
    }
    f.Initialize(tagRECT{-2, 7, 4, 3});
    EXPECT_EQ(rect(f), (std::vector<int>{-2, 7, 4, 3, 7, 5}));
    EXPECT_EQ(rect(VectorField(tagRECT{INT_MAX - 2, INT_MIN + 1, INT_MAX, INT_MIN})),
              (std::vector<int>{INT_MAX - 2, INT_MIN + 1, INT_MAX, INT_MIN, 3, 2}));
    for (tagRECT r : {tagRECT{INT_MIN, 0, INT_MAX, 0}, tagRECT{0, INT_MAX, 0, INT_MIN}, tagRECT{5, 0, 3, 0}}) {
        f.Initialize(r);  // wider than int, or inverted: empty
        EXPECT_EQ(rect(f), empty);
    }
}

TEST(VectorFieldGrid, MoveCopyAndClear) {
    std::mt19937 rng(3);
    VectorField a(6, 5, -1, 2), dst(8, 8, -2, 1);
    FillRandom(a, rng);
    FillRandom(dst, rng);
    const std::vector<double> dump = Dump(a), dst0 = Dump(dst);
    VectorField b(std::move(a)), c;
    EXPECT_EQ(Dump(b), dump);
    // The moved-from field keeps its geometry but acts empty.
    Vector2d out{};
    bool flag = false;
    EXPECT_TRUE(a.width() == 6 && a.height() == 5 && a.GetCGIRECT().left == -1 && a.GetCGIRECT().bottom == 2);
    EXPECT_TRUE(a.GetStoredCellCount() == 0 && a.Get({0, 3}) == (V{0, 0}) && !a.Remap({0, 3}, out, flag));
    EXPECT_TRUE(dst.Blit(a, 0, 0));
    EXPECT_EQ(Dump(dst), dst0);
    c = std::move(b);
    VectorField& alias = c;
    c = std::move(alias);  // self-move keeps everything
    EXPECT_TRUE(Dump(c) == dump && b.GetStoredCellCount() == 0);
    a.Initialize(3, 3, 0, 0);  // usable again
    a.Set(1, 1, {1, 1});
    EXPECT_EQ(a.GetStoredCellCount(), 1u);
    dst = c;  // deep: changing the original leaves the copy alone
    c.Set(0, 3, {9, 9});
    c.Add(1, 4, {9, 9});
    EXPECT_TRUE(Dump(dst) == dump && Dump(c) != dump);
    // ClearVectors empties every run; geometry stays and the field takes writes again.
    c.ClearVectors();
    EXPECT_TRUE(c.GetStoredCellCount() == 0 && Dump(c) == Dump(VectorField(6, 5, -1, 2)));
    c.Set(4, 6, {1, 2});
    EXPECT_TRUE(c.GetStoredCellCount() == 1 && c.Get_nooffset(5, 4) == (V{1, 2}));
}
