#ifndef QORMATH_BENCH_CURVE_SETS_H
#define QORMATH_BENCH_CURVE_SETS_H

// The curves every Bezier benchmark runs on: random cubics of 100 to 500 units,
// and hand-made hard ones (loop, cusp, nearly straight, overshooting, closed,
// S-bend, collapsed handle) at three scales and twelve turns.

#include <QorMath/types.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

namespace bench {

using QorMath::Point2d;

constexpr size_t kRandomCount = 4000;
constexpr uint64_t kSeed = 0x5eed2024;
constexpr double kPi = 3.14159265358979323846;

struct Cubic {
    Point2d p[4];
};

inline std::vector<Cubic> RandomCubics() {
    std::mt19937_64 rng(kSeed);
    std::uniform_real_distribution<double> origin(-1000.0, 1000.0), size(100.0, 500.0), unit(0.0, 1.0);
    std::vector<Cubic> curves(kRandomCount);
    for (Cubic& c : curves) {
        const double ox = origin(rng), oy = origin(rng), s = size(rng);
        for (Point2d& p : c.p) p = {ox + s * unit(rng), oy + s * unit(rng)};
    }
    return curves;
}

inline std::vector<Cubic> HardCubics() {
    // Control points in a unit frame, P0 at the origin.
    static const double kShapes[][8] = {
        {0, 0, 1.33, 0.67, -0.33, 0.67, 1, 0},  // loop
        {0, 0, 1, 0.67, 0, 0.67, 1, 0},         // cusp: B'(0.5) = 0
        {0, 0, 0.33, 1e-4, 0.67, -1e-4, 1, 0},  // nearly straight, inflected
        {0, 0, 1.5, 0, -0.5, 0, 1, 0},          // straight, overshooting both ends
        {0, 0, 1, 1.2, -1, 1.2, 0, 0},          // closed: P3 = P0
        {0, 0, 0.5, 1, 0.5, -1, 1, 0},          // S-bend
        {0, 0, 0, 0, 1, 1, 1, 0},               // zero-length start handle
    };
    std::vector<Cubic> curves;
    for (const double* shape : kShapes) {
        for (double scale : {150.0, 300.0, 500.0}) {
            for (int turn = 0; turn < 12; ++turn) {
                const double a = turn * (kPi / 6.0), cs = std::cos(a), sn = std::sin(a);
                const double ox = 37.0 * turn - 200.0, oy = 0.5 * scale - 300.0;
                Cubic c;
                for (int i = 0; i < 4; ++i) {
                    const double x = scale * shape[2 * i], y = scale * shape[2 * i + 1];
                    c.p[i] = {ox + x * cs - y * sn, oy + x * sn + y * cs};
                }
                curves.push_back(c);
            }
        }
    }
    return curves;
}

}  // namespace bench

#endif
