#include <tbb/task_arena.h>

#include <algorithm>
#include <climits>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "../test_util.h"

using namespace QorMath;
using V = VectorField::Vector;
using Span = std::pair<size_t, size_t>;

namespace {

// A field read out cell by cell, placed in the plane, with its stored runs (an empty run is [0, 0)).
struct Snap {
    long long x0 = 0, y0 = 0;
    int w = 0, h = 0;
    std::vector<V> v;  // row-major from the bottom row
    std::vector<Span> runs;
    bool In(long long x, long long y) const { return x >= x0 && x < x0 + w && y >= y0 && y < y0 + h; }
    V& At(long long x, long long y) { return v[size_t((y - y0) * w + (x - x0))]; }
};

Snap Take(const VectorField& f) {
    Snap s{f.GetCGIRECT().left, f.GetCGIRECT().bottom, f.width(), f.height(), {}, {}};
    for (int r = 0; r < s.h; ++r) {
        for (int c = 0; c < s.w; ++c) s.v.push_back(f.Get_nooffset(c, r));
        s.runs.push_back({f.GetStoredRun(r).begin, f.GetStoredRun(r).end});
    }
    return s;
}

// Equal geometry and cells, and equal stored runs when asked; a failure names the first difference.
::testing::AssertionResult Same(const Snap& g, const Snap& w, bool runs) {
    if (std::tie(g.x0, g.y0, g.w, g.h) != std::tie(w.x0, w.y0, w.w, w.h))
        return ::testing::AssertionFailure() << "geometry " << g.x0 << " " << g.y0 << " " << g.w << "x" << g.h;
    for (size_t i = 0; i < g.v.size(); ++i)
        if (!(g.v[i] == w.v[i]))
            return ::testing::AssertionFailure() << "cell " << i % size_t(w.w) << ", " << i / size_t(w.w);
    for (size_t r = 0; runs && r < g.runs.size(); ++r)
        if (g.runs[r] != w.runs[r]) return ::testing::AssertionFailure() << "run of row " << r;
    return ::testing::AssertionSuccess();
}

int Pick(std::mt19937& rng, int lo, int hi) { return lo + int(rng() % unsigned(hi - lo + 1)); }

// About two rows in three store a run of up to maxLen columns with nonzero ends and about half of its
// inside set; the other inside cells are stored as the fill.
void Scatter(VectorField& f, std::mt19937& rng, int maxLen) {
    std::uniform_real_distribution<float> mag(0.5f, 10.f);
    for (int r = 0; r < f.height(); ++r) {
        const int a = Pick(rng, 0, f.width() - 1), b = std::min(f.width(), a + Pick(rng, 1, maxLen));
        if (rng() % 3 == 0) continue;
        for (int c = a; c < b; ++c)
            if (c == a || c == b - 1 || rng() % 2)
                f.Set(f.GetCGIRECT().left + c, f.GetCGIRECT().bottom + r, {rng() % 2 ? mag(rng) : -mag(rng), mag(rng)});
    }
}

// Blit(s, dx, dy) cell by cell: each cell whose point minus (dx, dy) lies in s takes s's value there, which
// is the fill (0, 0) where s stores nothing; every other cell keeps its value.
Snap ModelBlit(Snap d, Snap s, long long dx, long long dy) {
    for (long long y = d.y0; y < d.y0 + d.h; ++y)
        for (long long x = d.x0; x < d.x0 + d.w; ++x)
            if (s.In(x - dx, y - dy)) d.At(x, y) = s.At(x - dx, y - dy);
    return d;
}

// s's cells moved into a fresh w × h field at (left, bottom): the stored runs come along clipped, nothing else
// is stored.
Snap ModelMove(Snap s, long long left, long long bottom, int w, int h) {
    Snap n{left, bottom, w, h, std::vector<V>(size_t(w) * size_t(h), V{0, 0}), std::vector<Span>(size_t(h))};
    for (long long y = std::max(bottom, s.y0); y < std::min(bottom + h, s.y0 + s.h); ++y) {
        for (long long x = left; x < left + w; ++x)
            if (s.In(x, y)) n.At(x, y) = s.At(x, y);
        const Span sr = s.runs[size_t(y - s.y0)];
        const long long a = std::max(0LL, (long long)sr.first + s.x0 - left);
        const long long b = std::min(w + 0LL, (long long)sr.second + s.x0 - left);
        if (sr.first < sr.second && a < b) n.runs[size_t(y - bottom)] = {size_t(a), size_t(b)};
    }
    return n;
}

}  // namespace

TEST(VectorFieldBlockCopy, EdgeCases) {
    VectorField base(8, 6, 10, 20), src(4, 3, -7, 3), empty, d;
    for (int y = 20; y < 26; ++y)
        for (int x = 10; x < 18; ++x) base.Set(x, y, {float(x), y + 0.5f});  // no cell equals the fill
    src.Set(-6, 4, {1, 2});
    src.Set(-5, 4, {3, 4});  // source row 1 stores columns 1, 2; the rest of the source is its fill
    const Snap b0 = Take(base), s0 = Take(src);
    EXPECT_TRUE(base.Blit(base, 0, 0) && Same(Take(base), b0, true));
    d = base;  // shifted onto itself: rows are read before they are overwritten
    EXPECT_TRUE(!d.Blit(d, 2, 1) && Same(Take(d), ModelBlit(b0, b0, 2, 1), true));
    // (ox, oy): where the source's corner lands in the destination's cells.
    const struct { long long ox, oy; bool fits, untouched; } cases[] = {
        {0, 0, 1, 0},  {4, 3, 1, 0},  {2, 1, 1, 0},  {-1, 1, 0, 0},  {1, -2, 0, 0},  {-3, -2, 0, 0},  // in, clipped
        {5, 0, 0, 0},  {0, 4, 0, 0},  {8, 0, 0, 1},  {0, 6, 0, 1},   {-4, 0, 0, 1},  {0, -3, 0, 1},   // out
        {INT_MAX - 17LL, 0, 0, 1},    {INT_MIN - 17LL, 0, 0, 1},     {0, INT_MIN - 17LL, 0, 1}};      // int limits
    for (const auto& c : cases) {
        d = base;
        const long long dx = c.ox + 17, dy = c.oy + 17;
        EXPECT_EQ(d.Blit(src, int(dx), int(dy)), c.fits) << c.ox << " " << c.oy;
        EXPECT_TRUE(Same(Take(d), c.untouched ? b0 : ModelBlit(b0, s0, dx, dy), c.untouched)) << c.ox << " " << c.oy;
    }
    // Origins at opposite int limits: the offset between them does not fit an int.
    VectorField lowLeft(8, 6, INT_MIN, INT_MIN), highRight(4, 3, INT_MAX - 3, INT_MAX - 2);
    highRight.Set(INT_MAX, INT_MAX, {1, 1});
    EXPECT_FALSE(lowLeft.Blit(highRight, 0, 0) || highRight.Blit(lowLeft, 0, 0));
    EXPECT_TRUE(lowLeft.GetStoredCellCount() == 0 && highRight.GetStoredCellCount() == 1);
    // Nothing to copy: true; nowhere to copy to: false. Contents that leave with an empty rectangle do not fit.
    EXPECT_TRUE(d.Blit(empty, 3, 3) && !empty.Blit(base, 0, 0) && empty.width() == 0);
    EXPECT_TRUE(!d.Rebound({5, 0, 3, 0}) && d.width() == 0 && empty.Rebound({5, 0, 3, 0}));
    // GetRegion needs two columns and two rows of overlap.
    for (tagRECT r : {tagRECT{12, 30, 12, 0}, tagRECT{0, 23, 40, 23}, tagRECT{17, 99, 30, 25}, tagRECT{0, 10, 40, 30}})
        EXPECT_EQ(base.GetRegion(r).width(), 0) << r.left << " " << r.top;
    EXPECT_TRUE(Same(Take(base.GetRegion({16, 25, 30, 24})), ModelMove(b0, 16, 24, 2, 2), true));
}

TEST(VectorFieldBlockCopy, ExtendAndBlitExtend) {
    std::mt19937 rng(4);
    VectorField f(6, 4, 0, 0), src(5, 4, -3, 7), thin(1, 5, 3, 3), none, e;
    Scatter(f, rng, 6);
    Scatter(src, rng, 5);
    thin.Set(3, 4, {1, 1});
    thin.Set(3, 6, {2, 1});
    const Snap f0 = Take(f), s0 = Take(src), t0 = Take(thin);
    // Inside, equal or degenerate: nothing changes.
    for (tagRECT r : {tagRECT{1, 2, 4, 1}, tagRECT{0, 3, 5, 0}, tagRECT{-5, 9, -5, -9}, tagRECT{-5, 7, 9, 7}})
        EXPECT_TRUE(!f.Extend(r) && Same(Take(f), f0, true)) << r.left << " " << r.top;
    EXPECT_TRUE(f.Extend({-2, 9, 3, 1}) && Same(Take(f), ModelMove(f0, -2, 0, 8, 10), true));  // the union
    // One cell wide, or empty: r replaces the rectangle, even a smaller one.
    EXPECT_TRUE(thin.Extend({2, 6, 4, 4}) && Same(Take(thin), ModelMove(t0, 2, 4, 3, 3), true));
    EXPECT_TRUE(none.Extend({2, 6, 4, 4}) && Same(Take(none), ModelMove(Snap{}, 2, 4, 3, 3), true));
    // BlitExtend onto an empty field adopts the shifted source rectangle and copies everything.
    Snap shifted = s0;
    shifted.x0 += 10, shifted.y0 -= 2;
    EXPECT_TRUE(e.BlitExtend(src, 10, -2) && Same(Take(e), shifted, true));
    e.Set(8, 6, {5, 5});
    EXPECT_TRUE(!e.BlitExtend(src, 10, -2) && Same(Take(e), shifted, false));  // covered already; still copies
    // Onto a populated field: grow to the union with the source at {-2, 2, 2, -1}, keep the cells, copy.
    const Snap f1 = Take(f);
    EXPECT_TRUE(f.BlitExtend(src, 1, -8) && Same(Take(f), ModelBlit(ModelMove(f1, -2, -1, 8, 11), s0, 1, -8), false));
}

TEST(VectorFieldBlockCopy, LargeRandomFieldsMatchTheCellModel) {
    std::mt19937 rng(11);
    for (int trial = 0; trial < 12; ++trial) {
        VectorField dst(320, 300, Pick(rng, -1000, 1000), Pick(rng, -1000, 1000));
        VectorField src(Pick(rng, 1, 250), Pick(rng, 1, 250), Pick(rng, -1000, 1000), Pick(rng, -1000, 1000));
        Scatter(dst, rng, 200);
        Scatter(src, rng, 200);
        const Snap d0 = Take(dst), s0 = Take(src);
        // Where the source's corner lands: inside, or anywhere from fully left/below to fully right/above.
        const int ox = trial % 2 ? Pick(rng, 0, 320 - s0.w) : Pick(rng, -s0.w - 2, 322);
        const int oy = trial % 2 ? Pick(rng, 0, 300 - s0.h) : Pick(rng, -s0.h - 2, 302);
        const long long dx = d0.x0 + ox - s0.x0, dy = d0.y0 + oy - s0.y0;
        EXPECT_EQ(dst.Blit(src, int(dx), int(dy)), ox >= 0 && oy >= 0 && ox + s0.w <= 320 && oy + s0.h <= 300);
        const Snap a0 = Take(dst);
        EXPECT_TRUE(Same(a0, ModelBlit(d0, s0, dx, dy), false) && Same(Take(src), s0, true)) << trial;
        // Rebound and GetRegion to random rectangles: partly overlapping, containing, disjoint or empty.
        const int l = int(a0.x0) - (trial % 3 ? Pick(rng, -350, 350) : Pick(rng, 0, 9));
        const int b = int(a0.y0) - (trial % 3 ? Pick(rng, -350, 350) : Pick(rng, 0, 9));
        const tagRECT r{l, b + (trial % 3 ? Pick(rng, -2, 330) : 309), l + (trial % 3 ? Pick(rng, -2, 340) : 329), b};
        const long long gl = std::max<long long>(a0.x0, l), gr = std::min<long long>(a0.x0 + 319, r.right);
        const long long gb = std::max<long long>(a0.y0, b), gt = std::min<long long>(a0.y0 + 299, r.top);
        const Snap region = gl < gr && gb < gt ? ModelMove(a0, gl, gb, int(gr - gl + 1), int(gt - gb + 1)) : Snap{};
        EXPECT_TRUE(Same(Take(dst.GetRegion(r)), region, true)) << trial;
        const bool nonEmpty = r.right >= l && r.top >= b;
        const bool fits = nonEmpty && l <= a0.x0 && b <= a0.y0 && r.right >= a0.x0 + 319 && r.top >= a0.y0 + 299;
        EXPECT_EQ(dst.Rebound(r), fits);
        EXPECT_TRUE(Same(Take(dst), nonEmpty ? ModelMove(a0, l, b, r.right - l + 1, r.top - b + 1) : Snap{}, true));
    }
}

TEST(VectorFieldBlockCopy, ParallelRowsEqualTheSerialLoop) {
    std::mt19937 rng(17);
    VectorField src(300, 280, 5, -7), base(330, 310, 0, 0);
    Scatter(src, rng, 250);
    Scatter(base, rng, 250);
    // Blit, Rebound, BlitExtend and GetRegion into fields of their own, all reading the shared source.
    const auto run = [&] {
        VectorField d, m, g;
        d = base, m = src, g = base;
        const bool flags[] = {d.Blit(src, 3, 9), m.Rebound({-40, 400, 260, -20}), g.BlitExtend(src, -50, 60)};
        return std::pair(std::vector<Snap>{Take(d), Take(m), Take(g), Take(src.GetRegion({20, 250, 290, -3}))},
                         std::vector<bool>(flags, flags + 3));
    };
    // One worker, then all processors: on the calling thread, and on three more threads at once.
    const auto serial = tbb::task_arena(1).execute(run);
    std::vector<decltype(run())> results(4);
    std::vector<std::thread> threads;
    results[0] = run();
    for (size_t i = 1; i < results.size(); ++i) threads.emplace_back([&, i] { results[i] = run(); });
    for (std::thread& t : threads) t.join();
    for (const auto& r : results) {
        EXPECT_EQ(r.second, serial.second);
        for (size_t i = 0; i < 4; ++i) EXPECT_TRUE(Same(r.first[i], serial.first[i], true)) << i;
    }
}
