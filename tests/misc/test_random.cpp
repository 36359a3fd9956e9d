#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "../test_util.h"

using namespace QorMath;

TEST(Random, IntegerRangesHoldBothEndsAndWrap) {
    // Ranges of at most 5 values: each value turns up in 2000 draws (missed with probability <= (4/5)^2000 < 1e-193).
    // A range with hi < lo runs through the int32 overflow.
    const struct { int32_t lo, hi; } ranges[] = {
        {5, 5}, {0, 1}, {-2, 2}, {INT32_MAX - 1, INT32_MAX}, {INT32_MIN, INT32_MIN + 2}, {INT32_MAX - 1, INT32_MIN + 1},
        {INT32_MAX, INT32_MIN}, {-1000, 1000}, {0, INT32_MAX}, {INT32_MIN, 0}, {INT32_MAX - 100, INT32_MIN + 100},
        {1000, -1000}};
    for (const auto& r : ranges) {
        const uint32_t span = uint32_t(r.hi) - uint32_t(r.lo);
        std::set<int32_t> seen;
        for (int i = 0; i < 2000; ++i) {
            const int32_t v = Random::Generate(r.lo, r.hi);
            ASSERT_LE(uint32_t(v) - uint32_t(r.lo), span) << r.lo << " " << r.hi << ": " << v;
            seen.insert(v);
        }
        EXPECT_TRUE(span > 4 || seen.size() == span + 1) << r.lo << " " << r.hi;
    }
}

TEST(Random, DoublesOnA53BitGridAndCountsAreUniform) {
    // Hoeffding: the share of N draws falling in a set of probability p strays from p by eps or more with
    // probability at most 2·exp(-2·N·eps²) = 2·exp(-48) ≈ 2.8e-21 for N = 60000, eps = 0.02. Over the
    // 10 + 16 bins and the two bias statistics the test fails by chance with probability below 1e-19.
    constexpr int N = 60000;
    constexpr double eps = 0.02;
    int ints[10] = {}, reals[16] = {}, multiplesOf3 = 0, below2to30 = 0;
    bool odd = false;  // the last of the 53 bits set in some draw: missed with probability 2^-60000
    // Full-range draws are raw 32-bit values: each bit is both 0 and 1 (stuck with probability 2^-59999).
    // Repeats among the first 2000 number 2000²/2^33 ≈ 4.7e-4 on average; more than 10 has probability below 1e-40.
    uint32_t any = 0, all = ~0u;
    std::set<int32_t> distinct;
    EXPECT_TRUE(Random::Generate(2.0, 2.0) == 2.0 && Random::Generate(-0.5, -0.5) == -0.5);
    for (int i = 0; i < N; ++i) {
        const int32_t v = Random::Generate(-3, 6);
        ASSERT_TRUE(v >= -3 && v <= 6) << v;
        ++ints[v + 3];
        const double u = Random::Generate(0.0, 1.0), n = std::ldexp(u, 53);
        const double a = Random::Generate(-2.5, 7.0), b = Random::Generate(3.0, 1.0);
        ASSERT_TRUE(u >= 0 && u < 1 && n == std::floor(n)) << u;
        ASSERT_TRUE(a >= -2.5 && a < 7.0 && b > 1.0 && b <= 3.0) << a << " " << b;
        odd |= std::fmod(n, 2) == 1;
        ++reals[int(u * 16)];
        // Over the 3·2^30 values from INT32_MIN, a plain modulo would favour the first 2^30 and a multiply
        // without rejection the multiples of 3: probability 1/2 instead of 1/3 each.
        const uint32_t k = uint32_t(Random::Generate(INT32_MIN, (1 << 30) - 1)) ^ 0x80000000u;
        multiplesOf3 += k % 3 == 0;
        below2to30 += k < (1u << 30);
        const int32_t raw = Random::Generate(INT32_MIN, INT32_MAX);
        any |= uint32_t(raw), all &= uint32_t(raw);
        if (i < 2000) distinct.insert(raw);
    }
    EXPECT_TRUE(odd && any == ~0u && all == 0u && distinct.size() >= 1990u) << any << " " << all << " " << odd;
    for (int c : ints) EXPECT_NEAR(c / double(N), 0.1, eps);
    for (int c : reals) EXPECT_NEAR(c / double(N), 1 / 16.0, eps);
    EXPECT_NEAR(multiplesOf3 / double(N), 1 / 3.0, eps);
    EXPECT_NEAR(below2to30 / double(N), 1 / 3.0, eps);
}

TEST(Random, ThreadsDrawIndependentSequences) {
    // Each thread seeds its own engine from the random device. Two sequences of 1000 outputs agree, for
    // all practical purposes, only if two of the three 32-bit seeds do: probability 3·2^-32 < 7e-10.
    constexpr int kThreads = 3;
    std::vector<std::vector<int32_t>> seq(kThreads);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (++ready; ready < kThreads;) std::this_thread::yield();  // start together
            for (int i = 0; i < 1000; ++i) {
                seq[size_t(t)].push_back(Random::Generate(INT32_MIN, INT32_MAX));
                const double u = Random::Generate(-1.0, 1.0);
                EXPECT_TRUE(u >= -1 && u < 1) << u;
            }
        });
    for (std::thread& t : threads) t.join();
    EXPECT_TRUE(seq[0] != seq[1] && seq[0] != seq[2] && seq[1] != seq[2]);
}
