#include <QorMath/QorMath.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

using namespace QorMath;

TEST(PointSets, AreCollinear) {
    auto both = [](std::vector<tagPOINT> ip, double tol) {  // the integer and the double form must agree
        std::vector<Point2d> dp;
        for (const tagPOINT& p : ip) dp.push_back({double(p.x), double(p.y)});
        const bool r = AreCollinear(dp.data(), dp.size(), tol);
        return AreCollinear(ip.data(), ip.size(), tol) == r ? int(r) : -1;
    };
    EXPECT_TRUE(AreCollinear(std::vector<Point2d>{{0, 0}, {NAN, 7}}.data(), 2, 0.0));  // two points always are
    EXPECT_EQ(both({{0, 0}, {1, 1}, {2, 2}}, 1e-12), 1);
    EXPECT_EQ(both({{0, 0}, {1, 0}, {2, 1}}, 0.01), 0);
    EXPECT_EQ(both({{3, -1}, {3, 8}, {3, 2}, {3, 0}}, 0.0), 1);
    // The fitted line of these corners is y = 1 and each lies at squared distance
    // exactly 1: the tolerance is a squared length, and inclusive.
    EXPECT_EQ(both({{0, 0}, {4, 0}, {0, 2}, {4, 2}}, 1.0), 1);
    EXPECT_EQ(both({{0, 0}, {4, 0}, {0, 2}, {4, 2}}, std::nextafter(1.0, 0.0)), 0);
    // Near y = 3x: the farthest from the fitted line, (30, 91), lies at squared
    // distance 0.151539895 (by 50-digit arithmetic).
    const std::vector<tagPOINT> steep{{10, 30}, {20, 59}, {30, 91}, {40, 120}, {50, 150}, {60, 178}};
    EXPECT_TRUE(both(steep, 0.1516) == 1 && both(steep, 0.1515) == 0);
}

TEST(PointSets, DistanceToLineSegmentSqrd) {
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {5, 5}), 25.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {12, 0}), 4.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {10, 0}, {-3, 4}), 25.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({1, 1}, {1, 1}, {4, 5}), 25.0);
    EXPECT_EQ(DistanceToLineSegmentSqrd({0, 0}, {4, 2}, {1, 3}), 5.0);  // foot (2, 1) mid-segment
    EXPECT_EQ(DistanceToLineSegmentSqrd({-2, 7}, {4, -1}, {-5, 11}), 25.0);  // nearest the end (-2, 7)
}

TEST(PointSets, ReflectAndTranslate) {
    auto reflect1 = [](tagPOINT d, tagPOINT lp, tagPOINT q) {
        ReflectAcross(d, lp, &q, 1);
        return std::pair{q.x, q.y};
    };
    EXPECT_EQ(reflect1({1, 0}, {0, 2}, {3, 5}), std::pair(3, -1));
    EXPECT_EQ(reflect1({1, 1}, {0, 0}, {2, 0}), std::pair(0, 2));
    EXPECT_EQ(reflect1({7, -7}, {13, -8}, {-40, 17}), std::pair(-12, 45));  // across x + y = 5
    EXPECT_EQ(reflect1({3, 4}, {7, -2}, {12, -2}), std::pair(6, 3));  // (5.6, 2.8) before rounding
    // The direction's squared length is taken in int32 and wraps: 2·50000² ≡
    // 705032704 (mod 2³²), so this is not the true mirror image (0, 1).
    EXPECT_EQ(reflect1({50000, 50000}, {0, 0}, {1, 0}), std::pair(6, 7));
    ReflectAcross({1, 1}, {0, 0}, nullptr, 4);

    Point2d dp[2] = {{0, 0}, {1.5, -2}};
    tagPOINT ip[2] = {{INT32_MAX, 5}, {-3, INT32_MIN}};
    TranslatePoints(dp, 0, Point2d{100, 100});
    TranslatePoints(dp, 1, Point2d{0.5, -1});
    TranslatePoints(ip, 2, tagPOINT{1, -1});  // wraps around
    EXPECT_TRUE(dp[0] == (Point2d{0.5, -1}) && dp[1] == (Point2d{1.5, -2}));
    EXPECT_TRUE(ip[0].x == INT32_MIN && ip[0].y == 4 && ip[1].x == -2 && ip[1].y == INT32_MAX);
}
