// Orthogonal (total) least-squares line: through the centroid, along the major
// axis of the points' scatter matrix.

#include "QorMath/fitting.h"

namespace QorMath {

void GetLeastSquaresLines(const vector2dT<double, 1>* points, int count, vector2dT<double, 1>& origin,
                          vector2dT<double, 0>& direction) {
    if (count < 2 || points == nullptr) return;
    double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0, sumYY = 0;
    for (int i = 0; i < count; ++i) {
        const double x = points[i].x, y = points[i].y;
        sumX += x;
        sumY += y;
        sumXX += x * x;
        sumXY += x * y;
        sumYY += y * y;
    }
    GetLeastSquaresLines(sumX, sumY, sumXY, sumXX, sumYY, points, count, origin, direction);
}

void GetLeastSquaresLines(double sumX, double sumY, double sumXY, double sumXX, double sumYY,
                          const vector2dT<double, 1>* points, int count, vector2dT<double, 1>& origin,
                          vector2dT<double, 0>& direction) {
    const double n = count;
    const double mx = sumX / n;
    const double my = sumY / n;
    // A = Σ(x - mx)² - Σ(y - my)² and B = Σ(x - mx)(y - my), expanded over the sums.
    const double A = (sumXX - mx * 2 * sumX + mx * mx * n) - (sumYY - my * 2 * sumY + my * my * n);
    const double B = sumXY - my * sumX - mx * sumY + my * mx * n;
    if (B != 0) {
        // The major-axis slope solves B·m² − A·m − B = 0 for dx/dy; the line is
        // reported by its crossing with y = 0 and a direction with y = 1.
        const double s = std::sqrt(B * 4 * B + A * A);
        const double k = -(s + A);
        const double twoB = 2 * B;
        direction = {-k / twoB, 1.0};
        origin = {(my * k + mx * twoB) / twoB, 0.0};
        return;
    }
    // No cross moment: the scatter is axis-aligned; take the wider extent
    // (ties, including a single repeated point, give the vertical).
    origin = {mx, my};
    double minX = 0, maxX = 0, minY = 0, maxY = 0;
    if (points != nullptr && count > 0) {
        minX = maxX = points[0].x;
        minY = maxY = points[0].y;
        for (int i = 1; i < count; ++i) {
            if (points[i].x < minX) minX = points[i].x;
            if (points[i].x > maxX) maxX = points[i].x;
            if (points[i].y < minY) minY = points[i].y;
            if (points[i].y > maxY) maxY = points[i].y;
        }
    }
    direction = (maxX - minX) > (maxY - minY) ? vector2dT<double, 0>{1.0, 0.0} : vector2dT<double, 0>{0.0, 1.0};
}

}  // namespace QorMath
