// The path-data reader of the qormath tool: grammar, conversions to cubics, and
// errors. Expected values come from worked examples, from a second spelling of
// the same path, and from the closed forms of quadratics and ellipses.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "path_data.h"

namespace {

using QorMath::Point2d;
using qtool::Cubic;
using qtool::parsePathData;
using qtool::Subpath;

constexpr double kPi = 3.14159265358979323846;

std::string num(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
}

// The cubic at t by its Bernstein form, in long double.
std::pair<long double, long double> bezierAt(const Cubic& c, long double t) {
    const long double s = 1 - t, w[4] = {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
    long double x = 0, y = 0;
    for (int i = 0; i < 4; ++i) x += w[i] * c[i].x, y += w[i] * c[i].y;
    return {x, y};
}

// All segments of all subpaths, in order.
std::vector<Cubic> cubics(const std::string& text) {
    std::vector<Cubic> out;
    for (const Subpath& s : parsePathData(text)) out.insert(out.end(), s.segments.begin(), s.segments.end());
    return out;
}

void expectSamePaths(const std::string& a, const std::string& b) {
    SCOPED_TRACE(a + "  vs  " + b);
    const auto pa = parsePathData(a), pb = parsePathData(b);
    ASSERT_EQ(pa.size(), pb.size());
    for (size_t i = 0; i < pa.size(); ++i) {
        EXPECT_EQ(pa[i].closed, pb[i].closed) << "subpath " << i;
        ASSERT_EQ(pa[i].segments.size(), pb[i].segments.size()) << "subpath " << i;
        for (size_t j = 0; j < pa[i].segments.size(); ++j)
            for (int k = 0; k < 4; ++k) {
                EXPECT_NEAR(pa[i].segments[j][k].x, pb[i].segments[j][k].x, 1e-12) << i << "/" << j << "/" << k;
                EXPECT_NEAR(pa[i].segments[j][k].y, pb[i].segments[j][k].y, 1e-12) << i << "/" << j << "/" << k;
            }
    }
}

TEST(PathData, EquivalentSpellings) {
    const char* pairs[][2] = {
        // relative forms
        {"M 10 20 L 30 40 H 50 V 60 Z", "m10 20 l20 20 h20 v20 z"},
        {"M0 0 C 10 20 30 20 40 0 S 70 -20 80 0", "m0 0c10 20 30 20 40 0s30-20 40 0"},
        {"M0 0 Q 10 20 20 0 T 40 0 T 60 0", "m0,0q10,20,20,0t20,0,20,0"},
        {"M 10 10 A 5 7 30 0 1 20 0", "M10 10 a5 7 30 0 1 10 -10"},
        {"M 5 5 l 10 0 z m 1 1 l 1 0", "M 5 5 L 15 5 Z M 6 6 L 7 6"},
        // implicit repetition
        {"M 0 0 10 10 20 0", "M 0 0 L 10 10 L 20 0"},
        {"m 1 1 2 2 3 3", "M 1 1 L 3 3 L 6 6"},
        {"M0 0 C 1 1 2 2 3 3 4 4 5 5 6 6", "M0 0 C 1 1 2 2 3 3 C 4 4 5 5 6 6"},
        {"M0 0 h 1 2 v 3 -4", "M0 0 H 1 H 3 V 3 V -1"},
        {"M0 0 a1 1 0 001 1", "M 0 0 a 1 1 0 0 0 1 1"},
        {"M0 0 A2 2 0 1110 0", "M 0 0 A 2 2 0 1 1 10 0"},
        // implied handles: S and T after other commands reflect nothing
        {"M0 0 L 10 0 S 20 10 30 0", "M0 0 L10 0 C 10 0 20 10 30 0"},
        {"M0 0 T 10 10", "M 0 0 Q 0 0 10 10"},
        {"M0 0 Q 5 5 10 0 L 20 0 T 30 0", "M0 0 Q 5 5 10 0 L 20 0 Q 20 0 30 0"},
        // drawing on after Z starts again at the subpath start
        {"M 0 0 L 10 0 L 10 10 Z L 0 10", "M 0 0 L 10 0 L 10 10 Z M 0 0 L 0 10"},
        // number forms and separators
        {"M1.5.5L-1-2e1", "M 1.5 0.5 L -1 -20"},
        {"M+1,+2l.5.5", "M1 2L1.5 2.5"},
        {"M1E1 0L.5e+1,5.", "M10 0 L 5 5"},
        {"\tM 0 0\nL 1 1\r\n", "M0 0L1 1"},
        {"M 0 0 L 1 1e-400", "M 0 0 L 1 0"},
    };
    for (const auto& p : pairs) expectSamePaths(p[0], p[1]);
}

TEST(PathData, WorkedConversions) {
    struct Case {
        const char* text;
        std::vector<Cubic> expected;
    };
    const Case cases[] = {
        {"M 0 0 L 3 6", {{{{0, 0}, {1, 2}, {2, 4}, {3, 6}}}}},
        {"M 0 0 Q 3 6 6 0", {{{{0, 0}, {2, 4}, {4, 4}, {6, 0}}}}},
        // T reflects the control point (3, 6) through (6, 0) to (9, -6)
        {"M 0 0 Q 3 6 6 0 T 12 0", {{{{0, 0}, {2, 4}, {4, 4}, {6, 0}}}, {{{6, 0}, {8, -4}, {10, -4}, {12, 0}}}}},
        // S reflects the handle (3, 3) through (3, 0)
        {"M 0 0 C 0 3 3 3 3 0 S 6 -3 6 0", {{{{0, 0}, {0, 3}, {3, 3}, {3, 0}}}, {{{3, 0}, {3, -3}, {6, -3}, {6, 0}}}}},
        // Z adds the closing line only when the current point is elsewhere
        {"M 0 0 L 3 0 Z", {{{{0, 0}, {1, 0}, {2, 0}, {3, 0}}}, {{{3, 0}, {2, 0}, {1, 0}, {0, 0}}}}},
        {"M 0 0 L 3 0 L 0 0 Z", {{{{0, 0}, {1, 0}, {2, 0}, {3, 0}}}, {{{3, 0}, {2, 0}, {1, 0}, {0, 0}}}}},
        // zero radius: a line; end point equal to the start: nothing
        {"M 0 0 A 0 5 0 0 1 3 3 A 5 5 0 0 1 3 3", {{{{0, 0}, {1, 1}, {2, 2}, {3, 3}}}}},
        {"M 5 5", {}},
        {"M 5 5 Z M 1 1", {}},
        {" \n", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const auto got = cubics(c.text);
        ASSERT_EQ(got.size(), c.expected.size());
        for (size_t i = 0; i < got.size(); ++i)
            for (int k = 0; k < 4; ++k) {
                EXPECT_EQ(got[i][k].x, c.expected[i][k].x) << i << "/" << k;
                EXPECT_EQ(got[i][k].y, c.expected[i][k].y) << i << "/" << k;
            }
    }
    const auto subpaths = parsePathData("M 0 0 L 1 0 Z M 5 5 L 6 6 z L 7 7");
    ASSERT_EQ(subpaths.size(), 3u);
    EXPECT_TRUE(subpaths[0].closed);
    EXPECT_TRUE(subpaths[1].closed);
    EXPECT_FALSE(subpaths[2].closed);
    EXPECT_EQ(subpaths[1].segments.size(), 2u);  // the line and the closing line
    EXPECT_EQ(subpaths[2].segments[0][0], (Point2d{5, 5}));
}

// The raised cubic traces the quadratic exactly: compare in long double.
TEST(PathData, QuadraticRaiseIsExact) {
    unsigned state = 12345;
    auto next = [&] { return double((state = state * 1103515245u + 12345u) >> 8) / double(1 << 24) * 200 - 100; };
    for (int trial = 0; trial < 50; ++trial) {
        const Point2d a{next(), next()}, q{next(), next()}, b{next(), next()};
        const auto got = cubics("M" + num(a.x) + " " + num(a.y) + "Q" + num(q.x) + " " + num(q.y) + " " + num(b.x) +
                                " " + num(b.y));
        ASSERT_EQ(got.size(), 1u);
        const Cubic& c = got[0];
        EXPECT_EQ(c[0], a);
        EXPECT_EQ(c[3], b);
        for (int i = 0; i <= 100; ++i) {
            const long double t = i / 100.0L, s = 1 - t;
            const long double qx = s * s * a.x + 2 * s * t * q.x + t * t * b.x;
            const long double qy = s * s * a.y + 2 * s * t * q.y + t * t * b.y;
            const auto [cx, cy] = bezierAt(c, t);
            EXPECT_NEAR(double(cx - qx), 0, 1e-12);
            EXPECT_NEAR(double(cy - qy), 0, 1e-12);
        }
    }
}

// Arcs built from a known ellipse: centre, radii, rotation, start angle and
// signed sweep give the end points and flags; every point of the cubics must
// lie on that ellipse and sweep the same angle.
TEST(PathData, ArcsFollowTheEllipse) {
    struct Case {
        double cx, cy, rx, ry, phiDeg, startDeg, sweepDeg;
    };
    const Case cases[] = {
        {0, 0, 10, 10, 0, 0, 90},       {5, -3, 10, 10, 0, 180, 180},    {0, 0, 50, 20, 30, 10, 270},
        {100, 50, 8, 30, -75, 200, -300}, {1, 2, 40, 40, 0, 45, 10},     {0, 0, 3, 7, 120, -30, 359},
        {-20, 10, 25, 5, 10, 90, -135},  {0, 0, 1000, 600, 45, 0, 200},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("arc sweeping " + num(c.sweepDeg) + " from " + num(c.startDeg) + ", rx " + num(c.rx) + " ry " +
                     num(c.ry) + " phi " + num(c.phiDeg));
        const double phi = c.phiDeg * kPi / 180, a0 = c.startDeg * kPi / 180, da = c.sweepDeg * kPi / 180;
        auto onEllipse = [&](double a) {
            return Point2d{c.cx + c.rx * std::cos(phi) * std::cos(a) - c.ry * std::sin(phi) * std::sin(a),
                           c.cy + c.rx * std::sin(phi) * std::cos(a) + c.ry * std::cos(phi) * std::sin(a)};
        };
        const Point2d from = onEllipse(a0), to = onEllipse(a0 + da);
        for (const double sign : {1.0, -1.0}) {  // negative radii act as positive ones
            const std::string text = "M" + num(from.x) + "," + num(from.y) + " A" + num(sign * c.rx) + "," +
                                     num(sign * c.ry) + " " + num(c.phiDeg) + " " +
                                     (std::fabs(c.sweepDeg) > 180 ? "1" : "0") + " " + (c.sweepDeg > 0 ? "1" : "0") +
                                     " " + num(to.x) + "," + num(to.y);
            const auto got = cubics(text);
            ASSERT_EQ(got.size(), size_t(std::ceil(std::fabs(c.sweepDeg) / 90 - 1e-9)));
            EXPECT_EQ(got.front()[0], from);
            EXPECT_EQ(got.back()[3], to);
            double previous = a0, swept = 0;
            for (const Cubic& p : got)
                for (int i = 0; i <= 64; ++i) {
                    const auto [bx, by] = bezierAt(p, i / 64.0L);
                    const double x = double(bx), y = double(by);
                    // In the ellipse's own frame, scaled to the unit circle.
                    const double u = (std::cos(phi) * (x - c.cx) + std::sin(phi) * (y - c.cy)) / c.rx;
                    const double v = (-std::sin(phi) * (x - c.cx) + std::cos(phi) * (y - c.cy)) / c.ry;
                    EXPECT_NEAR(std::hypot(u, v), 1, 1e-3);
                    const double step = std::remainder(std::atan2(v, u) - previous, 2 * kPi);
                    EXPECT_GE(step * da, -1e-9);  // never backwards
                    swept += step;
                    previous = std::atan2(v, u);
                }
            EXPECT_NEAR(swept, da, 1e-6);
        }
    }
}

// Radii too small to reach the end point grow in proportion until the end
// points are opposite: (0,0) to (10,0) with radii 1, 2 becomes radii 5, 10
// about (5, 0); sweep 1 runs through positive angles, past (5, -10).
TEST(PathData, ArcRadiiScaledUp) {
    const auto got = cubics("M 0 0 A 1 2 0 0 1 10 0");
    ASSERT_EQ(got.size(), 2u);
    EXPECT_NEAR(got[0][3].x, 5, 1e-12);
    EXPECT_NEAR(got[0][3].y, -10, 1e-12);
    const auto other = cubics("M 0 0 A 1 2 0 1 0 10 0");
    ASSERT_EQ(other.size(), 2u);
    EXPECT_NEAR(other[0][3].y, 10, 1e-12);
    const auto tiny = cubics("M 0 0 A 1e-300 1e-300 0 0 1 10 0");
    ASSERT_EQ(tiny.size(), 2u);
    EXPECT_NEAR(tiny[0][3].x, 5, 1e-12);
    EXPECT_NEAR(tiny[0][3].y, -5, 1e-12);
}

TEST(PathData, ErrorsNameTheColumn) {
    const std::string longPath = "M 0 0" + std::string(40, ' ') + "L 1 q" + std::string(40, ' ');
    const std::pair<std::string, std::string> cases[] = {
        {"M 0 0 L x", "path data: expected a number at column 9: \"M 0 0 L x\""},
        {"L 0 0", "must start with a moveto (M or m) at column 1:"},
        {"M 0 0 X 1", "unknown command 'X' at column 7:"},
        {"M 0 0 L 1", "expected a number at column 10 (end of data):"},
        {"M 0 0 A 1 1 0 2 1 5 5", "expected an arc flag (0 or 1) at column 15:"},
        {"M 0 0 Z 5 5", "expected a command letter after Z at column 9:"},
        {"M 0,,0", "expected a number after ',' at column 5:"},
        {"M 0 0 L 1 2,", "expected a number after ',' at column 13 (end of data):"},
        {"M 1e999 0", "number out of range at column 3:"},
        {"M 1e308 0 l 1e308 0", "coordinates beyond the double range at column 13:"},
        {"M 0 0 L 1 1e", "unknown command 'e' at column 12:"},
        {"M 0 0 L 1 2 #", "unexpected character '#' at column 13:"},
        {"M .", "expected a number at column 3:"},
        {"M 0 0\nL 1 x", "at line 2, column 5: \"L 1 x\""},
        // 30 characters either side of the offending one
        {longPath, "at column 50: \"..." + std::string(26, ' ') + "L 1 q" + std::string(30, ' ') + "...\""},
    };
    for (const auto& [text, message] : cases) {
        SCOPED_TRACE(text);
        try {
            parsePathData(text);
            ADD_FAILURE() << "no error";
        } catch (const qtool::UsageError& e) {
            EXPECT_NE(std::string(e.what()).find(message), std::string::npos) << e.what();
            EXPECT_EQ(std::string(e.what()).find('\n'), std::string::npos) << e.what();
        }
    }
}

}  // namespace
