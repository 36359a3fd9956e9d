#include <chrono>
#include <functional>
#include <random>
#include <thread>

#include "QorMath/misc.h"

namespace QorMath {
namespace Random {

namespace {

// One 32-bit seed from the operating system's random device; where it has none
// (the device throws), the clock and the thread's identity differ between runs.
uint32_t FreshSeed() {
    try {
        std::random_device device;
        return static_cast<uint32_t>(device());
    } catch (...) {
        const auto ticks = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
        const auto thread = static_cast<uint64_t>(std::hash<std::thread::id>()(std::this_thread::get_id()));
        return static_cast<uint32_t>(ticks ^ (ticks >> 32) ^ thread);
    }
}

// The calling thread's engine, created and seeded on its first use.
std::mt19937& Engine() {
    thread_local std::mt19937 engine(FreshSeed());
    return engine;
}

}  // namespace

double Generate(double lo, double hi) {
    std::mt19937& engine = Engine();
    const uint64_t a = engine();
    const uint64_t b = engine();
    // 53 random bits: the second output on top, the first output's top 21 bits below.
    const uint64_t n = (b << 21) + (a >> 11);
    const double u = static_cast<double>(n) * 1.1102230246251565e-16;
    return u * (hi - lo) + lo;
}

int32_t Generate(int32_t lo, int32_t hi) {
    std::mt19937& engine = Engine();
    const uint32_t base = static_cast<uint32_t>(lo);
    const uint32_t span = static_cast<uint32_t>(hi) - base;
    if (span == UINT32_MAX) return static_cast<int32_t>(base + static_cast<uint32_t>(engine()));
    // Multiply and reject (Lemire, "Fast random integer generation in an
    // interval", 2019): x·n / 2^32 is uniform on [0, n) once the
    // (2^32 mod n) low products that would favour some values are rejected.
    const uint32_t n = span + 1;
    uint64_t m = static_cast<uint64_t>(static_cast<uint32_t>(engine())) * n;
    auto low = static_cast<uint32_t>(m);
    if (low < n) {
        const uint32_t threshold = (0u - n) % n;
        while (low < threshold) {
            m = static_cast<uint64_t>(static_cast<uint32_t>(engine())) * n;
            low = static_cast<uint32_t>(m);
        }
    }
    return static_cast<int32_t>(base + static_cast<uint32_t>(m >> 32));
}

}  // namespace Random
}  // namespace QorMath
