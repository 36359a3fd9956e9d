// Prints one hash per family over the exact bits of many results on fixed
// pseudo-random inputs. Two builds (Debug, Release -march=native) must print the
// same lines: results may not depend on optimisation or on FMA availability.

#include <cstdio>
#include <cstring>
#include <random>

#include <QorMath/QorMath.h>

using namespace QorMath;

namespace {

class Fingerprint {
public:
    // Records hash by their bytes: all of them are doubles or int32 without padding.
    template <typename T>
    void Add(const T& v) {
        AddBytes(&v, sizeof v);
    }
    unsigned long long Value() const { return hash_; }

private:
    void AddBytes(const void* data, size_t n) {  // FNV-1a, 64 bits
        const auto* p = static_cast<const unsigned char*>(data);
        for (size_t i = 0; i < n; ++i) hash_ = (hash_ ^ p[i]) * 1099511628211ULL;
    }
    unsigned long long hash_ = 14695981039346656037ULL;
};

std::mt19937_64 rng(20261121);
double Real() { return std::uniform_real_distribution<double>(-100, 100)(rng); }
vector2dT<double, 1> P() { return {Real(), Real()}; }
vector2dT<double, 0> V() { return {Real(), Real()}; }
MATRIX M() { return {Real(), Real(), Real(), Real(), Real(), Real()}; }
tagPOINT IP() { return {static_cast<int32_t>(Real() * 1000), static_cast<int32_t>(Real() * 1000)}; }

void Matrices(Fingerprint& f) {
    for (int i = 0; i < 2000; ++i) {
        MATRIX m = M();
        const MATRIX n = M();
        f.Add(m(P())), f.Add(m(V())), f.Add(m * n), f.Add(m.GetMaximumMatrixVectorScale());
        f.Add(m.GetTransformedRadians(Real())), f.Add(m.GetUntransformedRadians(Real()));
        vector2dT<double, 1> c{}, p2{};
        f.Add(m.GetCenterOfTransformation(c)), f.Add(c);
        tagPOINT pts[3] = {IP(), IP(), IP()};
        m.TransformPoints(pts, 3);
        f.Add(pts[0]), f.Add(pts[1]), f.Add(pts[2]);
        MATRIX r = m;
        r.RotateAroundPoint(Real(), P());
        r.ScaleMatrix(V(), P());
        r.TransformAroundPoint(n, P());
        f.Add(r), f.Add(r.Invert(1e-12)), f.Add(r);
        r.RemoveScaling();
        f.Add(r);
        AFF_TRANSFORM t{};
        f.Add(DecomposeAffineTransform(t, m)), f.Add(t.scaleX), f.Add(t.scaleY), f.Add(t.skew), f.Add(t.rotation);
        f.Add(ComposeAffineTransform(r, t)), f.Add(r);
        vector2dT<double, 0> s{};
        f.Add(TransformMatrixAndSeparateScale(m, n, s)), f.Add(s);
        f.Add(ConstructSkewAroundMatrix(Real() / 100, Real() / 100, P()));
        f.Add(ConstructRotateAroundMatrix(Real(), P())), f.Add(ConstructVectorTransformMatrix(V(), V()));
        f.Add(ConstructLineSegmentTransformMatrix(P(), P(), P(), P()));
        f.Add(ConstructRectTransformMatrix({Real(), Real(), Real(), Real()}, {Real(), Real(), Real(), Real()},
                                           static_cast<MapMode>(i % 3)));
        UTLRotateMatrixAround(&m, static_cast<int32_t>(Real() * 1e6), 3, 4);
        UTLSkewMatrix(&m, static_cast<int32_t>(Real() * 1e5), static_cast<int32_t>(Real() * 1e5), 1, 2);
        UTLStretchMatrix(&m, Real(), Real(), 5, 6);
        f.Add(m);
        f.Add(m.GetLineOfTransformation(c, p2)), f.Add(c), f.Add(p2);
    }
}

void Angles(Fingerprint& f) {
    for (int i = 0; i < 5000; ++i) {
        f.Add(Radians::VectorToAngle(V())), f.Add(Radians::GetAngle(V(), V()));
        f.Add(Radians::NormalizeFineAngle(Real())), f.Add(Radians::Constrain(Real(), i % 13 - 6, Real()));
        f.Add(Radians::RotatePoint(P(), Real(), P())), f.Add(Degrees::GetFineAngle(V(), V()));
        f.Add(TURNANGLE::GetAngle(P(), P(), P())), f.Add(TURNANGLE::NormalizeAngle(static_cast<int32_t>(Real() * 1e7)));
        const tagSIZE s = Degrees::GetRotatedSize({static_cast<int32_t>(Real()), static_cast<int32_t>(Real())}, Real());
        f.Add(s.cx), f.Add(s.cy);
        tagPOINT pts[2] = {IP(), IP()};
        Degrees::RotatePoints(pts, 2, Real(), P());
        f.Add(pts[0]), f.Add(pts[1]);
    }
}

void Bounds(Fingerprint& f) {
    for (int i = 0; i < 2000; ++i) {
        const MATRIX m = M();
        const tagRECT r{IP().x, IP().y, IP().x, IP().y};
        f.Add(GetTransformedBBox(r, m)), f.Add(GetUntransformedBBox(r, m));
        f.Add(GetTransformedBBox(BoundsT<double>{Real(), Real(), Real(), Real()}, m));
        const tagPOINT ipts[4] = {IP(), IP(), IP(), IP()};
        const vector2dT<double, 1> dpts[4] = {P(), P(), P(), P()};
        f.Add(GetTransformedPointsBBox(ipts, 4, m)), f.Add(GetTransformedPointsBBox(dpts, 4, m));
        f.Add(GetTransformedCircleBBox(m, Real(), P()));
        double major = 0, minor = 0;
        GetTransformedCircleAxisLengths(m, major, minor);
        vector2dT<double, 0> a{}, b{};
        GetTransformedCircleAxes(m, a, b);
        f.Add(major), f.Add(minor), f.Add(a), f.Add(b);
        f.Add(GetNormalOnTransformedCircle(m, P())), f.Add(FindPointOnEllipseThatHasNormal(V(), Real(), Real()));
        f.Add(DistanceToLineSegmentSqrd(P(), P(), P())), f.Add(AreCollinear(dpts, 4, std::fabs(Real())));
        vector2dT<double, 1> o{};
        vector2dT<double, 0> d{};
        GetLeastSquaresLines(dpts, 4, o, d);
        f.Add(o), f.Add(d);
        tagPOINT refl[4];
        std::memcpy(refl, ipts, sizeof refl);
        ReflectAcross({ipts[0].x % 100, ipts[0].y % 100 + 101}, ipts[1], refl, 4);
        f.Add(refl[2]), f.Add(refl[3]);
    }
}

}  // namespace

int main() {
    const struct {
        const char* name;
        void (*run)(Fingerprint&);
    } families[] = {{"matrix", Matrices}, {"angles", Angles}, {"bounds", Bounds}};
    for (const auto& family : families) {
        Fingerprint f;
        family.run(f);
        std::printf("%-8s %016llx\n", family.name, f.Value());
    }
    return 0;
}
