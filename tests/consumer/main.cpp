// An application outside QorMath's build: it includes the installed headers,
// links the shared library, touches several families and checks results that
// can be worked out by hand. Exit status 0 only when every check holds.
#include <QorMath/QorMath.h>

#include <cmath>
#include <cstdio>

using namespace QorMath;

namespace {

int failures = 0;

void Check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "consumer: FAILED %s\n", what);
        ++failures;
    }
}

bool Close(double a, double b) { return std::fabs(a - b) <= 1e-12; }

}  // namespace

int main() {
    // A quarter turn about (1, 0) takes (2, 0) to (1, 1); vectors ignore the pivot.
    const MATRIX m = ConstructRotateAroundMatrix(Pi / 2, {1.0, 0.0});
    const vector2dT<double, 1> p = m(vector2dT<double, 1>{2.0, 0.0});
    const vector2dT<double, 0> v = m(vector2dT<double, 0>{2.0, 0.0});
    Check(Close(p.x, 1.0) && Close(p.y, 1.0), "MATRIX moves a point about the pivot");
    Check(Close(v.x, 0.0) && Close(v.y, 2.0), "MATRIX only turns a vector");

    // Evenly spaced collinear controls: constant speed 3, so the halves meet at
    // (1.5, 0) exactly and the length is 3 (to the eight decimals the
    // quadrature weights carry).
    const vector2dT<double, 1> line[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    vector2dT<double, 1> left[4], right[4];
    CubicBezier::Split(0.5, line, left, right);
    Check(left[3].x == 1.5 && left[3].y == 0.0 && right[0].x == 1.5, "CubicBezier::Split at 0.5");
    Check(std::fabs(CubicBezier::LengthTo(1.0, line) - 3.0) < 1e-6, "CubicBezier::LengthTo a straight cubic");

    // One cell (-1, 0) blitted into a larger field (the parallel row loop, so
    // oneTBB is linked too); half way to it the bilinear sample is (-0.5, 0).
    VectorField swirl(9, 9, 0, 0);
    swirl.Set(4, 5, {-1.0f, 0.0f});
    VectorField canvas(32, 32, 0, 0);
    Check(canvas.Blit(swirl, 10, 10), "VectorField::Blit lands inside");
    const vector2dT<float, 0> s = canvas.Get({14.5f, 15.0f});
    Check(s.x == -0.5f && s.y == 0.0f, "VectorField::Get between cells");

    // A quarter turn about z takes x to y.
    const Quaternion quarter(Pi / 2, {0.0, 0.0, 1.0});
    vector3dT<double> x{1.0, 0.0, 0.0};
    quarter.Rotate(x);
    Check(Close(x.x, 0.0) && Close(x.y, 1.0) && Close(x.z, 0.0), "Quaternion::Rotate");

    // The fixed-point identity leaves integer points where they are, and the
    // C names link unmangled.
    MTH3DMATRIX id;
    MTHGet3DIdentityMatrix(id);
    MTH3DPOINT q[2] = {{7, -3, 2}, {-100000, 0, 65535}};
    MTHTransform3DPoints(q, id, 2);
    Check(id[0] == 65536 && id[5] == 65536 && id[10] == 65536 && id[3] == 0, "MTHGet3DIdentityMatrix");
    Check(q[0].x == 7 && q[0].y == -3 && q[0].z == 2 && q[1].x == -100000 && q[1].z == 65535,
          "MTHTransform3DPoints with the identity");

    if (failures == 0) std::printf("consumer: ok\n");
    return failures == 0 ? 0 : 1;
}
