// qormath misc: quaternions and their slerp, the fixed-point 3D matrix and
// projection, the scalar shaping functions, GCD, cube root and random numbers.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>

#include "QorMath/angles.h"
#include "QorMath/misc.h"
#include "args.h"
#include "commands.h"
#include "output.h"

namespace qtool {

namespace {

using QorMath::Quaternion;
using V3 = QorMath::vector3dT<double>;

struct MiscOptions {
    std::string from, to;
    std::vector<std::string> t;
    std::vector<std::string> points, projects;
    std::string eye = "0,0,1000";
    std::string bias, gain, logBase, gcd, cubeRoot, random;
    std::string count = "5";
};

// "(a, b, c)" in text, an array in JSON.
void tuple(Output& out, bool json, const std::string& key, const std::vector<double>& v) {
    if (json) return out.numbers(key, v);
    std::string s;
    for (double x : v) s += (s.empty() ? "(" : ", ") + formatNumber(x);
    out.text(key, s + ")");
}

// v as an int32, when it is a whole number in range.
int32_t wholeInt32(double v, const std::string& what) {
    if (v != std::floor(v)) throw UsageError(what + ": " + formatNumber(v) + " is not a whole number");
    if (v < INT32_MIN || v > INT32_MAX) throw UsageError(what + ": " + formatNumber(v) + " is outside the int32 range");
    return int32_t(v);
}

MTH3DPOINT parsePoint3(const std::string& text, const std::string& what) {
    const std::vector<double> v = parseNumbers(text, 3, what);
    int32_t c[3];
    for (int i = 0; i < 3; ++i) c[i] = wholeInt32(v[i], what);
    return {c[0], c[1], c[2]};
}

// "DEG,X,Y,Z": the turn by DEG degrees about the axis (X, Y, Z), made unit length
// first (the library uses the axis as given).
Quaternion parseRotation(const std::string& text, const std::string& what) {
    const std::vector<double> v = parseNumbers(text, 4, what);
    const double len = std::sqrt(v[1] * v[1] + v[2] * v[2] + v[3] * v[3]);
    if (!(len > 0)) throw UsageError(what + ": the axis (0, 0, 0) has no direction");
    const V3 axis{v[1] / len, v[2] / len, v[3] / len};
    return Quaternion(v[0] * QorMath::RadiansPerDegree, axis);
}

// The fixed-point matrix: three rows of four in text, twelve numbers in JSON.
void matrix3d(Output& out, bool json, const std::string& key, const MTH3DMATRIX m) {
    if (json) return out.numbers(key, std::vector<double>(m, m + 12));
    std::string cell[12], rows;
    size_t width[4] = {0, 0, 0, 0};
    for (int i = 0; i < 12; ++i) {
        cell[i] = std::to_string(m[i]);
        width[i % 4] = std::max(width[i % 4], cell[i].size());
    }
    for (int r = 0; r < 3; ++r) {
        rows += r ? "\n[" : "[";
        for (int c = 0; c < 4; ++c) rows += std::string(width[c] - cell[4 * r + c].size() + 2, ' ') + cell[4 * r + c];
        rows += "  ]";
    }
    out.text(key, rows);
}

// The quaternion, the turn it stands for, its fixed-point matrix and the
// quaternion read back from that matrix.
void quaternion(Output& out, bool json, const Quaternion& q) {
    tuple(out, json, "quaternion", {q.x, q.y, q.z, q.w});
    out.number("magnitude", q.Magnitude());
    // The angle from the vector part's length and w: RotationTheta's 2·acos(w)
    // loses the small angles.
    const double s = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z);
    out.number("degrees", 2 * std::atan2(s, q.w) * QorMath::DegreesPerRadian);
    if (s > 1e-12)
        tuple(out, json, "axis", {q.x / s, q.y / s, q.z / s});
    else
        out.none("axis", "none (no turn)");
    const double qa[4] = {q.x, q.y, q.z, q.w};
    MTH3DMATRIX m;
    VECT_QuaternionToMat(qa, m);
    matrix3d(out, json, "matrix", m);
    double back[4];
    VECT_MatToQuaternion(m, back);
    tuple(out, json, "fromMatrix", {back[0], back[1], back[2], back[3]});
}

int run(const MiscOptions& o, const GlobalOptions& global) {
    const bool json = global.json;
    const bool shaping = !o.bias.empty() || !o.gain.empty() || !o.logBase.empty();
    if (!o.to.empty() && o.from.empty()) throw UsageError("--to needs --from");
    if (!o.points.empty() && o.from.empty()) throw UsageError("--point needs --from");
    if (o.from.empty() && o.projects.empty() && !shaping && o.gcd.empty() && o.cubeRoot.empty() && o.random.empty())
        throw UsageError("nothing to do: give --from, --project, --bias, --gain, --log-base, --gcd, --cube-root or "
                         "--random");
    if (!o.t.empty() && o.to.empty() && !shaping) throw UsageError("--t needs --to, --bias, --gain or --log-base");

    // Parse everything before printing anything.
    std::vector<double> ts;
    for (const std::string& text : o.t)
        for (double v : parseNumbers(text, 0, "--t")) ts.push_back(v);
    if (ts.empty()) ts.push_back(0.5);
    Quaternion from, to;
    if (!o.from.empty()) from = parseRotation(o.from, "--from");
    if (!o.to.empty()) to = parseRotation(o.to, "--to");
    std::vector<MTH3DPOINT> points, projects;
    for (size_t i = 0; i < o.points.size(); ++i)
        points.push_back(parsePoint3(o.points[i], "--point value " + std::to_string(i + 1)));
    for (size_t i = 0; i < o.projects.size(); ++i)
        projects.push_back(parsePoint3(o.projects[i], "--project value " + std::to_string(i + 1)));
    const MTH3DPOINT eye = parsePoint3(o.eye, "--eye");
    const double bias = o.bias.empty() ? 0 : parseNumber(o.bias, "--bias");
    const double gain = o.gain.empty() ? 0 : parseNumber(o.gain, "--gain");
    const double logBase = o.logBase.empty() ? 0 : parseNumber(o.logBase, "--log-base");
    if (!o.logBase.empty() && !(logBase > 0)) throw UsageError("--log-base: " + o.logBase + " is not positive");
    int32_t gcd[2] = {0, 0};
    if (!o.gcd.empty()) {
        const std::vector<double> v = parseNumbers(o.gcd, 2, "--gcd");
        for (int i = 0; i < 2; ++i) gcd[i] = wholeInt32(v[i], "--gcd");
    }
    const double cubeRoot = o.cubeRoot.empty() ? 0 : parseNumber(o.cubeRoot, "--cube-root");
    // Whole numbers written without a point or exponent ask for integers.
    bool integers = false;
    double range[2] = {0, 0};
    int32_t count = 0;
    if (!o.random.empty()) {
        const std::vector<double> v = parseNumbers(o.random, 2, "--random");
        range[0] = v[0], range[1] = v[1];
        integers = o.random.find_first_of(".eE") == std::string::npos;
        if (integers)
            for (double x : v) wholeInt32(x, "--random");
        const double n = parseNumber(o.count, "--count");
        if (n != std::floor(n) || n < 1 || n > 100000)
            throw UsageError("--count: " + o.count + " is outside 1 to 100000");
        count = int32_t(n);
    }

    Output out(json);
    if (!o.from.empty()) {
        out.begin("from");
        out.text("input", o.from);
        quaternion(out, json, from);
        out.end();
        if (!points.empty()) {
            const Quaternion& q = from;
            const double qa[4] = {q.x, q.y, q.z, q.w};
            MTH3DMATRIX m;
            VECT_QuaternionToMat(qa, m);
            std::vector<MTH3DPOINT> moved = points;
            MTHTransform3DPoints(moved.data(), m, int32_t(moved.size()));
            out.beginList("points");
            for (size_t i = 0; i < points.size(); ++i) {
                V3 v{double(points[i].x), double(points[i].y), double(points[i].z)};
                q.Rotate(v);
                out.begin("point " + std::to_string(i + 1));
                tuple(out, json, "at", {double(points[i].x), double(points[i].y), double(points[i].z)});
                tuple(out, json, "rotated", {v.x, v.y, v.z});
                tuple(out, json, "byMatrix", {double(moved[i].x), double(moved[i].y), double(moved[i].z)});
                out.end();
            }
            out.end();
        }
    }
    if (!o.to.empty()) {
        out.begin("to");
        out.text("input", o.to);
        quaternion(out, json, to);
        out.end();
        out.number("cosine", from.DotProduct(to));
        out.beginList("slerp");
        for (size_t i = 0; i < ts.size(); ++i) {
            Quaternion q;
            const bool ok = Quaternion::Interpolate(from, to, ts[i], q);
            out.begin("step " + std::to_string(i + 1));
            out.number("t", ts[i]);
            out.boolean("interpolated", ok);
            quaternion(out, json, q);
            out.end();
        }
        out.end();
    }
    if (!projects.empty()) {
        out.begin("projection");
        tuple(out, json, "eye", {double(eye.x), double(eye.y), double(eye.z)});
        std::vector<tagPOINT> flat(projects.size());
        MTHPerspective3DProjection(projects.data(), flat.data(), int32_t(projects.size()), eye);
        out.beginList("points");
        for (size_t i = 0; i < projects.size(); ++i) {
            out.begin("point " + std::to_string(i + 1));
            tuple(out, json, "at", {double(projects[i].x), double(projects[i].y), double(projects[i].z)});
            if (projects[i].z == eye.z)
                out.none("projected", "none (level with the eye: " + std::to_string(flat[i].x) + ", " +
                                          std::to_string(flat[i].y) + ")");
            else
                out.point("projected", {double(flat[i].x), double(flat[i].y)});
            out.end();
        }
        out.end();
        out.end();
    }
    if (shaping) {
        out.beginList("shaping");
        for (size_t i = 0; i < ts.size(); ++i) {
            out.begin("step " + std::to_string(i + 1));
            out.number("t", ts[i]);
            if (!o.bias.empty()) out.number("bias", QorMath::Bias(ts[i], bias));
            if (!o.gain.empty()) out.number("gain", QorMath::Gain(ts[i], gain));
            if (!o.bias.empty() && !o.gain.empty())
                out.number("biasThenGain", QorMath::GetBiasGainBlendFactor(ts[i], gain, bias));
            if (!o.logBase.empty()) out.number("logBlend", QorMath::GetLogarithmicBlendFactor(ts[i], logBase));
            out.end();
        }
        out.end();
    }
    if (!o.gcd.empty()) {
        out.begin("gcd");
        out.numbers("of", {double(gcd[0]), double(gcd[1])});
        out.number("value", QorMath::GCD(gcd[0], gcd[1]));
        out.end();
    }
    if (!o.cubeRoot.empty()) {
        out.begin("cubeRoot");
        out.number("of", cubeRoot);
        out.number("value", QorMath::CubeRoot(cubeRoot));
        out.end();
    }
    if (!o.random.empty()) {
        std::vector<double> values;
        for (int32_t i = 0; i < count; ++i)
            values.push_back(integers ? QorMath::Random::Generate(int32_t(range[0]), int32_t(range[1]))
                                      : QorMath::Random::Generate(range[0], range[1]));
        out.begin("random");
        out.text("kind", integers ? "integer, both ends included" : "real, the upper end excluded");
        out.numbers("range", {range[0], range[1]});
        out.numbers("values", values);
        out.end();
    }
    return 0;
}

}  // namespace

Command addMiscCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<MiscOptions>();
    CLI::App* app = parent.add_subcommand(
        "misc", "Quaternions and slerp, fixed-point 3D matrices and projection, shaping curves, GCD, random numbers");
    app->add_option("--from", opts->from, "A rotation DEG,X,Y,Z: DEG degrees about the axis (X, Y, Z)");
    app->add_option("--to", opts->to, "A second rotation DEG,X,Y,Z: slerp from --from to it at each --t");
    app->add_option("--t", opts->t, "Parameters for the slerp and the shaping curves, T[,T...] (default 0.5)");
    app->add_option("--point", opts->points, "Integer points X,Y,Z turned by --from in double and in fixed point");
    app->add_option("--project", opts->projects, "Integer points X,Y,Z to project from --eye onto z = 0");
    app->add_option("--eye", opts->eye, "The eye X,Y,Z of the projection")->capture_default_str();
    app->add_option("--bias", opts->bias, "Bias(t, B) at each --t: 0.5 is neutral");
    app->add_option("--gain", opts->gain, "Gain(t, G) at each --t, G in [-1, 1]: 0 is neutral");
    app->add_option("--log-base", opts->logBase, "The logarithmic blend factor of base BASE at each --t");
    app->add_option("--gcd", opts->gcd, "The greatest common divisor of two int32 values A,B");
    app->add_option("--cube-root", opts->cubeRoot, "The signed cube root of X");
    app->add_option("--random", opts->random,
                    "Uniform random numbers in LO,HI: integers (both ends included) when both are written as "
                    "whole numbers, else reals (HI excluded)");
    app->add_option("--count", opts->count, "How many random numbers (1 to 100000)")->capture_default_str();
    app->footer(
        "A rotation is the unit quaternion (a sin(DEG/2), cos(DEG/2)) of the axis a made unit length. Each\n"
        "quaternion is shown with the turn it stands for, its 16.16 fixed-point matrix (VECT_QuaternionToMat,\n"
        "65536 = 1.0) and the quaternion read back from that matrix (VECT_MatToQuaternion, up to sign). The\n"
        "matrix is the transpose of the rotation Quaternion::Rotate applies: --point shows each point rotated\n"
        "by Rotate and moved by the matrix (MTHTransform3DPoints, truncated), which turns it the other way.\n"
        "The slerp (Quaternion::Interpolate) takes no shortest path: a negative cosine goes the long way round.\n"
        "--project is MTHPerspective3DProjection: the central projection from the eye onto z = 0, truncated.\n"
        "With both --bias and --gain, biasThenGain is GetBiasGainBlendFactor: the bias first, then the gain.\n"
        "Example: qormath misc --from 0,0,0,1 --to 180,0,0,1 --t 0.25,0.5 --project 50,0,50 --eye 0,0,100");
    return {app, [opts, &global] { return run(*opts, global); }};
}

}  // namespace qtool
