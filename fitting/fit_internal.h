#ifndef QORMATH_FITTING_FIT_INTERNAL_H
#define QORMATH_FITTING_FIT_INTERNAL_H

// Internal pieces of the least-squares fitters, exposed for their tests.

#include <cmath>
#include <utility>

#include "QorMath/types.h"

namespace QorMath {

// Maps u affinely so that u[0] = 0 and u[count − 1] = 1 exactly.
void NormaliseParameters(double* u, int count);

// Moves each point's parameter to its nearest point on the curve ctrl (Newton
// from the old parameter, else the global nearest stationary point) and returns
// the largest squared distance, raised to the squared overshoot of the curve's
// box past dataBounds. End points whose parameter is exactly 0 or 1 are skipped.
double MeasureFitError(const vector2dT<double, 1>* points, const vector2dT<double, 1>* ctrl, double* u, int count,
                       double* worstParameter, const BoundsT<double>& dataBounds);

// Newton on the quintic q (highest power first) from t, at most 200 steps, each
// strictly shorter than the last; true with *root once a step is below tolerance.
bool PolishQuinticRoot(const double* q, double t, double tolerance, double* root);

// Inverts m (destroyed) into inverse by Gauss-Jordan elimination with partial
// pivoting (the first of equally large candidates wins). False at a zero pivot.
template <int N>
bool GaussJordanInverse(double (&m)[N][N], double (&inverse)[N][N]) {
    for (int i = 0; i < N; ++i)
        for (int j = 0; j < N; ++j) inverse[i][j] = i == j ? 1.0 : 0.0;
    for (int j = 0; j < N; ++j) {
        int pivot = j;
        for (int r = j + 1; r < N; ++r)
            if (std::fabs(m[r][j]) > std::fabs(m[pivot][j])) pivot = r;
        if (std::fabs(m[pivot][j]) == 0.0) return false;
        if (pivot != j) {
            std::swap(m[pivot], m[j]);
            std::swap(inverse[pivot], inverse[j]);
        }
        const double scale = 1 / m[j][j];
        for (int k = 0; k < N; ++k) {
            m[j][k] *= scale;
            inverse[j][k] *= scale;
        }
        for (int r = 0; r < N; ++r) {
            if (r == j) continue;
            const double f = m[r][j];
            for (int k = 0; k < N; ++k) {
                m[r][k] -= f * m[j][k];
                inverse[r][k] -= f * inverse[j][k];
            }
        }
    }
    return true;
}

}  // namespace QorMath

#endif
