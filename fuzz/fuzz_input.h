#ifndef QORMATH_FUZZ_FUZZ_INPUT_H
#define QORMATH_FUZZ_FUZZ_INPUT_H

// The byte reader of the fuzz targets: values off the input, zeros once it is
// used up. A tag byte picks a value from a table of awkward ones, a small
// number, or raw bits, so that mutation reaches the interesting values often;
// each target brings its own tables.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

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

}  // namespace qfuzz

#endif
