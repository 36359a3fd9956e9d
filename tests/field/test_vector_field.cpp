#include <algorithm>
#include <climits>
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
        EXPECT_TRUE(f.GetStoredCellCount() == s.count && f.Get_nooffset(s.x + 3, 1) == s.now) << s.x;
    }
}

TEST(VectorFieldGrid, RemapAndOutsideWritesAtTheIntLimits) {
    std::mt19937 rng(9);
    for (auto [ox, oy] : {std::pair{3, -2}, {INT_MAX - 6, INT_MIN}, {INT_MIN, INT_MAX - 3}}) {
        VectorField f(7, 4, ox, oy);
        FillRandom(f, rng);  // every cell, the far corner at INT_MAX for some origins
        const std::vector<double> before = Dump(f);
        // Per axis the int limits and the grid's cells with two neighbours each side, wrapping at the limits.
        std::vector<int> xs{INT_MIN, INT_MIN + 1, INT_MAX - 1, INT_MAX}, ys = xs;
        for (int d = -2; d < 9; ++d) xs.push_back(int(unsigned(ox) + d)), ys.push_back(int(unsigned(oy) + d));
        for (int x : xs)
            for (int y : ys) {
                const long long c = x - (long long)ox, r = y - (long long)oy;
                const bool inside = c >= 0 && c < 7 && r >= 0 && r < 4, flag0 = (x ^ y) & 1;
                if (!inside) f.Set(x, y, {1, 1}), f.Add(x, y, {1, 1});  // ignored
                Vector2d out{7, 7};
                bool flag = flag0;  // never written
                EXPECT_TRUE(f.Remap({x, y}, out, flag) == inside && flag == flag0) << x << " " << y;
                EXPECT_EQ(out, (inside ? Wide(f.Get_nooffset(int(c), int(r))) : Vector2d{7, 7})) << x << " " << y;
            }
        EXPECT_TRUE(Dump(f) == before && f.GetStoredCellCount() == 28);
    }
}

TEST(VectorFieldGrid, GetIsBilinearAndRemapPoint2dSamplesAtTwiceTheOrigin) {
    // Local positions on a 1/16 grid past both ends, some NaN or infinite; the plane points are exact in float.
    // Remap_point2d tests the range on p - origin but samples at p - 2·origin.
    std::mt19937 rng(7);
    std::uniform_int_distribution<int> q(-5 * 16, 14 * 16);
    const float odd[] = {float(qtest::kNaN), INFINITY, -INFINITY};
    for (auto [w, h] : {std::pair{9, 6}, {1, 5}, {5, 1}, {1, 1}, {2, 2}}) {  // thin fields sample their edge cells
        VectorField f(w, h, -4, 3);
        FillRandom(f, rng);
        for (int i = 0; i < 1000; ++i) {
            const float lx = i % 37 ? q(rng) / 16.0f : odd[i % 3], ly = i % 23 ? q(rng) / 16.0f : odd[i % 3];
            EXPECT_TRUE(qtest::Near(Wide(f.Get({lx - 4, ly + 3})), Bilinear(f, lx, ly), 3e-5)) << lx << " " << ly;
            const bool in = lx >= 0 && lx < w && ly >= 0 && ly < h;
            Vector2d out{7, 7};
            EXPECT_EQ(f.Remap_point2d({lx - 4.0, ly + 3.0}, out), in) << lx << " " << ly;
            EXPECT_TRUE(qtest::Near(out, in ? Bilinear(f, lx + 4, ly - 3) : Vector2d{7, 7}, 3e-5)) << lx << " " << ly;
        }
    }
    // Clamped positions have fraction 0 and give a cell exactly: beyond the right edge, column width - 2.
    VectorField f(9, 6, -4, 3);
    FillRandom(f, rng);
    EXPECT_TRUE(f.Get({100, 5}) == f.Get_nooffset(7, 2) && f.Get({odd[0], odd[2]}) == f.Get_nooffset(7, 0));
    EXPECT_TRUE(VectorField().Get({0, 0}) == (V{0, 0}) && VectorField().Get({odd[0], odd[0]}) == (V{0, 0}));
    // The range test is on p narrowed to float: just below either edge rounds onto it.
    Vector2d out{};
    EXPECT_TRUE(!f.Remap_point2d({5 - 1e-9, 4.0}, out) && f.Remap_point2d({-4 - 1e-9, 4.0}, out));
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
    f.Initialize(tagRECT{-2, 7, 4, 3});  // fresh rows again
    EXPECT_TRUE(rect(f) == (std::vector<int>{-2, 7, 4, 3, 7, 5}) && f.GetStoredCellCount() == 0);
    EXPECT_EQ(rect(VectorField(tagRECT{INT_MAX - 2, INT_MIN + 1, INT_MAX, INT_MIN})),
              (std::vector<int>{INT_MAX - 2, INT_MIN + 1, INT_MAX, INT_MIN, 3, 2}));
    f.Set(0, 5, {1, 1});
    for (auto [w, h] : {std::pair{0, 5}, {5, 0}, {-3, 7}}) {
        f.Initialize(w, h, 7, 7);
        EXPECT_TRUE(rect(f) == empty && f.GetStoredCellCount() == 0) << w << " " << h;
    }
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
    // The moved-from field keeps its geometry but acts empty.
    Vector2d out{};
    bool flag = false;
    EXPECT_TRUE(Dump(b) == dump && a.width() == 6 && a.height() == 5 && a.GetCGIRECT().left == -1);
    EXPECT_TRUE(a.GetCGIRECT().bottom == 2 && a.GetStoredCellCount() == 0 && a.Get({0, 3}) == (V{0, 0}));
    EXPECT_TRUE(!a.Remap({0, 3}, out, flag) && dst.Blit(a, 0, 0) && Dump(dst) == dst0);
    c = std::move(b);
    VectorField& alias = c;
    c = std::move(alias);  // self-move keeps everything
    EXPECT_TRUE(Dump(c) == dump && b.GetStoredCellCount() == 0);
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
