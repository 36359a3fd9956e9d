#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

using namespace QorMath;

namespace {
template <typename P, size_t N>
bool Collinear(const P (&pts)[N], double tolerance) {
    return AreCollinear(pts, N, tolerance);
}
}  // namespace

TEST(PointSets, AreCollinearEdgeCases) {
    EXPECT_TRUE(AreCollinear(static_cast<const Point2d*>(nullptr), 0, 0.0));
    EXPECT_TRUE(Collinear<Point2d>({{0, 0}, {NAN, 7}}, 0.0));  // two points always are
    EXPECT_TRUE(Collinear<Point2d>({{0, 0}, {1, 1}, {2, 2}}, 1e-12));
    EXPECT_FALSE(Collinear<Point2d>({{0, 0}, {1, 0}, {2, 1}}, 0.01));
    EXPECT_TRUE(Collinear<Point2d>({{3, -1}, {3, 8}, {3, 2}, {3, 0}}, 0.0));
    EXPECT_FALSE(Collinear<Point2d>({{0, 0}, {1, NAN}, {2, 2}}, 1e300));
    EXPECT_TRUE(Collinear<tagPOINT>({{-5, 10}, {0, 0}, {5, -10}}, 1e-12));
    EXPECT_FALSE(Collinear<tagPOINT>({{0, 0}, {1, 0}, {2, 1}}, 0.01));
    // The fitted line of these corners is y = 1 and each lies at squared distance
    // exactly 1: the tolerance is a squared length, and inclusive.
    EXPECT_TRUE(Collinear<Point2d>({{0, 0}, {4, 0}, {0, 2}, {4, 2}}, 1.0));
    EXPECT_FALSE(Collinear<Point2d>({{0, 0}, {4, 0}, {0, 2}, {4, 2}}, std::nextafter(1.0, 0.0)));
    EXPECT_TRUE(Collinear<tagPOINT>({{0, 0}, {4, 0}, {0, 2}, {4, 2}}, 1.0));
    EXPECT_FALSE(Collinear<tagPOINT>({{0, 0}, {4, 0}, {0, 2}, {4, 2}}, std::nextafter(1.0, 0.0)));
}

TEST(PointSets, AreCollinearNoisyLine) {
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> t(-50.0, 50.0), noise(-1e-4, 1e-4);
    for (double ang : {0.3, 1.2, 2.0, 2.9}) {
        const Vector2d dir = Radians::AngleToVector(ang), nrm{-dir.y, dir.x};
        std::vector<Point2d> pts;
        for (int i = 0; i < 40; ++i) pts.push_back(Point2d{5, -3} + dir * t(rng) + nrm * noise(rng));
        EXPECT_TRUE(AreCollinear(pts.data(), pts.size(), 1e-7)) << ang;  // (2e-4)², with room
        pts[17] += nrm * 0.05;                                           // one point off the line
        EXPECT_FALSE(AreCollinear(pts.data(), pts.size(), 1e-4)) << ang;
        EXPECT_TRUE(AreCollinear(pts.data(), pts.size(), 0.0026)) << ang;
    }
}

TEST(PointSets, DistanceToLineSegmentSqrd) {
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {5, 5}), 25.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {12, 0}), 4.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {-3, 4}), 25.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({1, 1}, {1, 1}, {4, 5}), 25.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {10, 0}), 0.0);
    EXPECT_DOUBLE_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {9.95, 3}), 9.0);

    // Against the nearest of 20001 samples along the segment.
    std::mt19937 rng(23);
    std::uniform_real_distribution<double> u(-20.0, 20.0);
    for (int k = 0; k < 60; ++k) {
        const Point2d a{u(rng), u(rng)}, b{u(rng), u(rng)}, p{u(rng), u(rng)};
        const int n = 20000;
        double best = 1e300;
        for (int i = 0; i <= n; ++i) best = std::min(best, MagnitudeSqrd(p - (a + (b - a) * (double(i) / n))));
        const double d = std::sqrt(DistanceToLineSegmentSqrd(a, b, p)), s = std::sqrt(best);
        ASSERT_LE(d, s + 1e-12) << k;
        ASSERT_GE(d, s - Magnitude(b - a) / (2 * n) - 1e-12) << k;
    }
}

TEST(PointSets, ReflectAcross) {
    auto reflect1 = [](tagPOINT d, tagPOINT lp, tagPOINT q) {
        ReflectAcross(d, lp, &q, 1);
        return std::pair{q.x, q.y};
    };
    EXPECT_EQ(reflect1({1, 0}, {0, 2}, {3, 5}), std::pair(3, -1));
    EXPECT_EQ(reflect1({1, 1}, {0, 0}, {2, 0}), std::pair(0, 2));
    EXPECT_EQ(reflect1({3, 4}, {0, 0}, {5, 0}), std::pair(-1, 5));  // exactly (-1.4, 4.8)
    // The direction's squared length is taken in int32 and wraps: 2·50000² ≡
    // 705032704 (mod 2³²), so this is not the true mirror image (0, 1).
    EXPECT_EQ(reflect1({50000, 50000}, {0, 0}, {1, 0}), std::pair(6, 7));
    ReflectAcross({1, 1}, {0, 0}, nullptr, 4);
    tagPOINT p{2, 0};
    ReflectAcross({1, 1}, {0, 0}, &p, 0);
    EXPECT_TRUE(p.x == 2 && p.y == 0);

    // Mirrors whose images are whole numbers: the midpoint of each point and its
    // image lies on the line, the chord is perpendicular, and twice is identity.
    std::mt19937 rng(29);
    std::uniform_int_distribution<int32_t> u(-1000, 1000);
    for (const tagPOINT& d : {tagPOINT{1, 0}, tagPOINT{0, 3}, tagPOINT{2, 2}, tagPOINT{-5, 5}, tagPOINT{7, -7}}) {
        const tagPOINT lp{u(rng), u(rng)};
        std::vector<tagPOINT> pts(50), orig;
        for (auto& q : pts) q = {u(rng), u(rng)};
        orig = pts;
        ReflectAcross(d, lp, pts.data(), pts.size());
        for (size_t i = 0; i < pts.size(); ++i) {
            const int64_t mx = int64_t(pts[i].x) + orig[i].x - 2 * lp.x, my = int64_t(pts[i].y) + orig[i].y - 2 * lp.y;
            EXPECT_EQ(mx * d.y - my * d.x, 0);
            EXPECT_EQ((int64_t(pts[i].x) - orig[i].x) * d.x + (int64_t(pts[i].y) - orig[i].y) * d.y, 0);
        }
        ReflectAcross(d, lp, pts.data(), pts.size());
        for (size_t i = 0; i < pts.size(); ++i) EXPECT_TRUE(pts[i].x == orig[i].x && pts[i].y == orig[i].y) << i;
    }
}

TEST(PointSets, TranslatePoints) {
    Point2d d[3] = {{0, 0}, {1.5, -2}, {-7, 3.25}};
    TranslatePoints(d, 0, Point2d{100, 100});
    TranslatePoints(d, 2, Point2d{0.5, -1});
    EXPECT_TRUE(d[0] == (Point2d{0.5, -1}) && d[1] == (Point2d{2, -3}) && d[2] == (Point2d{-7, 3.25}));
    tagPOINT i[2] = {{INT32_MAX, 5}, {-3, INT32_MIN}};
    TranslatePoints(i, 0, tagPOINT{9, 9});
    TranslatePoints(i, 2, tagPOINT{1, -1});  // wraps around
    EXPECT_TRUE(i[0].x == INT32_MIN && i[0].y == 4 && i[1].x == -2 && i[1].y == INT32_MAX);
}
