#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

using namespace QorMath;

namespace {

struct Row {
    double a, b, c;
};

TridiagonalMatrix Build(const std::vector<Row>& rows) {
    TridiagonalMatrix m;
    for (const Row& r : rows) m.AddRow(r.a, r.b, r.c);
    return m;
}

// The same system as a dense matrix (the cyclic corners added onto whatever
// entry they share), solved by Gauss-Jordan elimination in long double; the
// rows are diagonally dominant, so no pivoting is needed.
std::vector<long double> Dense(const std::vector<Row>& rows, const std::vector<double>& d, bool cyclic) {
    const size_t n = rows.size();
    std::vector<std::vector<long double>> m(n, std::vector<long double>(n + 1, 0));
    for (size_t i = 0; i < n; ++i) {
        if (i > 0 || cyclic) m[i][(i + n - 1) % n] += rows[i].a;
        m[i][i] += rows[i].b;
        if (i + 1 < n || cyclic) m[i][(i + 1) % n] += rows[i].c;
        m[i][n] = d[i];
    }
    for (size_t j = 0; j < n; ++j)  // k runs down so that m[r][j] changes last
        for (size_t r = 0; r < n; ++r)
            for (size_t k = n + 1; r != j && k-- > j;) m[r][k] -= m[r][j] / m[j][j] * m[j][k];
    std::vector<long double> x(n);
    for (size_t i = 0; i < n; ++i) x[i] = m[i][n] / m[i][i];
    return x;
}

// Strictly diagonally dominant rows (|b| > |a| + |c| + 0.5), so neither solve meets a small pivot.
std::vector<Row> RandomRows(std::mt19937& rng, size_t n) {
    std::uniform_real_distribution<double> u(-2, 2);
    std::vector<Row> rows;
    for (size_t i = 0; i < n; ++i) {
        const double a = u(rng), c = u(rng), s = u(rng) < 0 ? -1 : 1;
        rows.push_back({a, s * (std::fabs(a) + std::fabs(c) + 0.5 + std::fabs(u(rng))), c});
    }
    return rows;
}

}  // namespace

TEST(Tridiagonal, OpenAndCyclicMatchDenseElimination) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> u(-10, 10);
    for (const bool cyclic : {false, true})
        for (const size_t n : {1, 2, 3, 4, 7, 31}) {  // one row cyclic: (a + b + c)·x = d
            for (int rep = 0; rep < 20; ++rep) {
                const std::vector<Row> rows = RandomRows(rng, n);
                std::vector<double> dx(n + 3), dy(n + 3);
                std::vector<Point2d> dp(n + 3);
                for (size_t i = 0; i < n + 3; ++i) dp[i] = {dx[i] = u(rng), dy[i] = u(rng)};
                const TridiagonalMatrix m = Build(rows);
                // d longer than n: the surplus stays zero.
                const std::vector<double> x = m.Solve(dx, cyclic), y = m.Solve(dy, cyclic);
                const std::vector<Point2d> p = m.Solve(dp, cyclic);
                ASSERT_EQ(x.size(), n + 3);
                ASSERT_EQ(p.size(), n + 3);
                const std::vector<long double> want = Dense(rows, dx, cyclic);
                for (size_t i = 0; i < n; ++i)
                    ASSERT_NEAR(x[i], double(want[i]), 1e-13 * (1 + std::fabs(double(want[i])))) << n << cyclic << i;
                for (size_t i = n; i < n + 3; ++i) ASSERT_TRUE(x[i] == 0 && p[i] == (Point2d{0, 0}));
                // Both coordinates at once: exactly the two scalar solves.
                for (size_t i = 0; i < n; ++i) ASSERT_TRUE(p[i].x == x[i] && p[i].y == y[i]) << n << cyclic << i;
            }
        }
}

TEST(Tridiagonal, DegenerateSystems) {
    // No rows, or d shorter than n: zeros of d's size.
    const TridiagonalMatrix three = Build({{0, 2, 1}, {1, 2, 1}, {1, 2, 0}});
    for (const bool cyclic : {false, true}) {
        EXPECT_EQ(TridiagonalMatrix().Solve(std::vector<double>{1, 2}, cyclic), std::vector<double>(2, 0.0));
        EXPECT_EQ(three.Solve(std::vector<double>{1, 2}, cyclic), std::vector<double>(2, 0.0));
        const std::vector<Point2d> p = three.Solve(std::vector<Point2d>{{1, 1}}, cyclic);
        EXPECT_TRUE(p.size() == 1 && p[0] == (Point2d{0, 0}));
    }

    // Zero pivots are divided by, not reported: b0 = 0 in the open solve, and
    // the cyclic [[2, 2], [2, 2]] whose final denominator is exactly 0.
    for (double v : Build({{0, 0, 1}, {1, 3, 0}}).Solve(std::vector<double>{1, 1}, false)) EXPECT_FALSE(std::isfinite(v));
    for (double v : Build({{1, 2, 1}, {1, 2, 1}}).Solve(std::vector<double>{1, 3}, true)) EXPECT_FALSE(std::isfinite(v));
}

TEST(Tridiagonal, CopyAndMove) {
    const std::vector<double> d{1, 2, 3};
    TridiagonalMatrix m = Build({{0, 4, 1}, {1, 4, 1}, {1, 4, 0}}), assigned = Build({{0, 1, 0}});
    const std::vector<double> want = m.Solve(d, false);
    TridiagonalMatrix copy(m);
    assigned = copy;
    assigned = *&assigned;  // self-assignment keeps the rows
    EXPECT_TRUE(m.Rows() == 3 && copy.Solve(d, false) == want && assigned.Solve(d, false) == want);
    TridiagonalMatrix moved(std::move(copy));
    EXPECT_TRUE(copy.Rows() == 0 && moved.Solve(d, false) == want);  // NOLINT(bugprone-use-after-move)
    assigned = std::move(moved);
    EXPECT_TRUE(moved.Rows() == 0 && assigned.Rows() == 3);  // NOLINT(bugprone-use-after-move)
    assigned = static_cast<TridiagonalMatrix&&>(assigned);
    EXPECT_EQ(assigned.Solve(d, false), want);
    moved.AddRow(0, 2, 0);  // usable again after the move
    EXPECT_EQ(moved.Solve(std::vector<double>{3}, false), std::vector<double>{1.5});
}
