#ifndef QORMATH_FUZZ_FUZZ_INPUT_H
#define QORMATH_FUZZ_FUZZ_INPUT_H

// What the fuzz targets share: the byte reader (values off the input, zeros once it is used up; a tag byte picks a
// value from a table of awkward ones, a small number, or raw bits, so that mutation reaches the interesting values
// often; each target brings its own tables), points and curves read through those tables, the checks of output
// contracts that recur, and the loop that runs operations picked by the input.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "QorMath/types.h"

// Aborts, so that libFuzzer keeps the input, when a promise is broken.
#define CHECK(c) \
    ((c) ? (void)0 : (std::fprintf(stderr, "check failed, line %d: %s\n", __LINE__, #c), std::abort()))

namespace qfuzz {

class ByteReader {
public:
    static constexpr double kInf = std::numeric_limits<double>::infinity();
    static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

    ByteReader(const uint8_t* d, size_t n) : d_(d), n_(n) {}
    size_t Left() const { return n_; }
    uint8_t Byte() { return n_ ? (--n_, *d_++) : 0; }
    template <typename T>
    T Raw() {  // little-endian bytes, zero-padded at the end of the input
        uint64_t bits = 0;
        for (size_t i = 0; i < sizeof(T); ++i) bits |= uint64_t(Byte()) << (8 * i);
        T v;
        std::memcpy(&v, &bits, sizeof v);
        return v;
    }
    // tag < tableEnd: an entry of the table; tag < smallEnd: the next byte as int8
    // times scale; otherwise raw bits.
    template <typename T, size_t K>
    T Tagged(const T (&table)[K], int tableEnd, int smallEnd, double scale) {
        const uint8_t tag = Byte();
        if (tag < tableEnd) return table[tag % K];
        if (tag < smallEnd) return T(static_cast<int8_t>(Byte()) * scale);
        return Raw<T>();
    }

private:
    const uint8_t* d_;
    size_t n_;
};

constexpr double kInf = ByteReader::kInf, kNaN = ByteReader::kNaN;
using Point = QorMath::vector2dT<double, 1>;

// Points, parameters and curves from the deriving target's own D() (a double) and I() (an int32).
template <typename In>
class Reader : public ByteReader {
public:
    using ByteReader::ByteReader;
    Point Pt() { return {Self().D(), Self().D()}; }
    tagPOINT IPt() { return {Self().I(), Self().I()}; }
    double T() {  // a parameter: mostly inside [0, 1], sometimes anything
        const uint8_t tag = Byte();
        return tag < 192 ? tag / 191.0 : Self().D();
    }
    template <typename T>  // Point or tagPOINT
    void Read(T* p, size_t n) {
        for (size_t i = 0; i < n; ++i) p[i] = Next<T>();
    }
    template <typename T>
    std::vector<T> Points(size_t n) {
        std::vector<T> v(n);
        Read(v.data(), n);
        return v;
    }
    // Four points, then some made to coincide: the low six bits of a byte say which point copies its predecessor's
    // coordinates (or only x, for axis-aligned handles); the top bit closes the curve.
    template <typename Pt>
    void Curve(Pt p[4]) {
        Read(p, 4);
        const uint8_t mask = Byte();
        for (int i = 1; i < 4; ++i) {
            if (mask & (1 << i)) p[i] = p[i - 1];
            if (mask & (8 << i)) p[i].x = p[i - 1].x;
        }
        if (mask & 0x80) p[3] = p[0];
    }

private:
    In& Self() { return static_cast<In&>(*this); }
    template <typename T>
    T Next() {
        if constexpr (std::is_same_v<T, tagPOINT>) return IPt();
        else return Pt();
    }
};

// What output slots hold before a call, to see what it writes; and the values guarding the end of a root array.
constexpr double kMarker = 123.25, kGuard = -98765.4321;
constexpr int kGuards = 4;

template <typename T>
bool Same(const T& x, const T& y) { return std::memcmp(&x, &y, sizeof(T)) == 0; }  // bitwise: NaN matches NaN
template <typename T>
bool SameN(const T* x, const T* y, size_t n) { return std::memcmp(x, y, n * sizeof(T)) == 0; }
template <typename T>
bool SameAll(const std::vector<T>& x, const std::vector<T>& y) {
    return x.size() == y.size() && (x.empty() || SameN(x.data(), y.data(), x.size()));
}
inline bool Within(double v, double lo, double hi) { return !(v < lo) && !(v > hi); }  // NaN passes
inline bool Finite(const Point* p, int n) {
    for (int i = 0; i < n; ++i)
        if (!std::isfinite(p[i].x) || !std::isfinite(p[i].y)) return false;
    return true;
}

// solve(out) with room for `capacity` roots and guards after it: the count is within the capacity and the guards
// survive.
template <typename F>
int Guarded(int capacity, F solve) {
    std::vector<double> r(size_t(capacity + kGuards), kGuard);
    const int count = solve(r.data());
    CHECK(count >= 0 && count <= capacity);
    for (int i = capacity; i < capacity + kGuards; ++i) CHECK(Same(r[size_t(i)], kGuard));
    return count;
}

// fill(v) on a vector holding `before` markers, returning how many values it may append: the markers are kept, and
// what was appended is in [lo, hi] (NaN aside), ascending if `sorted`.
template <typename F>
void Appended(size_t before, F fill, double lo = 0, double hi = 1, bool sorted = true) {
    std::vector<double> v(before, kMarker);
    const size_t most = fill(v);
    CHECK(v.size() >= before && v.size() - before <= most);
    for (size_t i = 0; i < before; ++i) CHECK(Same(v[i], kMarker));
    for (size_t i = before; i < v.size(); ++i)
        CHECK(Within(v[i], lo, hi) && (!sorted || i == before || !(v[i] < v[i - 1])));
}

// The body of LLVMFuzzerTestOneInput: up to `rounds` operations, each picked by a byte, while input is left.
template <typename In, size_t N>
int Run(const uint8_t* data, size_t size, void (*const (&ops)[N])(In&), int rounds) {
    In in(data, size);
    for (int op = 0; op < rounds && in.Left() > 0; ++op) ops[in.Byte() % N](in);
    return 0;
}

}  // namespace qfuzz

#endif
