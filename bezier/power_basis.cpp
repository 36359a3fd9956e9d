// The exported power-basis conversion and evaluation.

#include "bezier/power_basis.h"

#include "QorMath/bezier.h"

namespace QorMath {
namespace CubicBezier {

void GetPowerBasis(const vector2dT<double, 1> points[4], vector2dT<double, 1>& a, vector2dT<double, 1>& b,
                   vector2dT<double, 1>& c, vector2dT<double, 1>& d) {
    const PowerBasis k = ToPowerBasis(points);
    a = k.a;
    b = k.b;
    c = k.c;
    d = k.d;
}

vector2dT<double, 1> Evaluate(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                              const vector2dT<double, 1>& c, const vector2dT<double, 1>& d, double t) {
    return QorMath::Evaluate(PowerBasis{a, b, c, d}, t);
}

vector2dT<double, 0> EvaluateDerivative(const vector2dT<double, 1>& a, const vector2dT<double, 1>& b,
                                        const vector2dT<double, 1>& c, double t) {
    return QorMath::EvaluateDerivative(PowerBasis{a, b, c, {0, 0}}, t);
}

}  // namespace CubicBezier
}  // namespace QorMath
