// Chord-length parameters: each point's accumulated distance along the
// polyline, as a fraction of the whole.

#include <cmath>
#include <stdexcept>

#include "QorMath/fitting.h"

namespace QorMath {

void Calculate_u(const vector2dT<double, 1>* points, int count, std::vector<double>& u) {
    if (count <= 0) {
        // The chord array would have count − 1 entries: no such array exists.
        if (count == 0) u.clear();
        throw std::length_error("vector too long");
    }
    u.resize(static_cast<size_t>(count));
    std::vector<double> chord(static_cast<size_t>(count - 1));
    for (int i = 0; i + 1 < count; ++i) {
        const double dx = points[i].x - points[i + 1].x, dy = points[i].y - points[i + 1].y;
        chord[i] = std::sqrt(dx * dx + dy * dy);
    }
    double total = 0;
    for (const double l : chord) total += l;
    const double inverse = 1.0 / total;
    u[0] = 0.0;
    for (int i = 1; i + 1 < count; ++i) u[i] = inverse * chord[i - 1] + u[i - 1];
    u[count - 1] = 1.0;
}

}  // namespace QorMath
