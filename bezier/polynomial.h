#ifndef QORMATH_BEZIER_POLYNOMIAL_H
#define QORMATH_BEZIER_POLYNOMIAL_H

// Internal: small dense polynomials in power basis, highest power first, for
// expanding products (the implicit substitution, the offset-cusp polynomial).
// Fixed sizes, on the stack.

#include <array>

namespace QorMath {

template <int Degree>
using Poly = std::array<double, Degree + 1>;

// p·q, each coefficient summed in increasing power of p's term.
template <int P, int Q>
Poly<P + Q> Multiply(const Poly<P>& p, const Poly<Q>& q) {
    Poly<P + Q> r{};
    for (int i = 0; i <= P; ++i)
        for (int j = 0; j <= Q; ++j) r[i + j] += p[i] * q[j];
    return r;
}

// s·p, added into r aligned at the constant term (r may be of higher degree).
template <int R, int P>
void AddScaled(Poly<R>& r, double s, const Poly<P>& p) {
    static_assert(P <= R, "the sum holds the addend");
    for (int i = 0; i <= P; ++i) r[R - P + i] += s * p[i];
}

}  // namespace QorMath

#endif
