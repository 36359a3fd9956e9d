// qormath matrix: one matrix, everything the library can say about it.

#include <CLI/CLI.hpp>

#include <cfloat>
#include <cmath>
#include <memory>

#include "QorMath/angles.h"
#include "QorMath/matrix.h"
#include "args.h"
#include "commands.h"
#include "output.h"

namespace qtool {

namespace {

struct MatrixOptions {
    std::vector<std::string> words;
    double tolerance = 1e-9;
};

// The predicates that take a tolerance, by name.
struct Predicate {
    const char* name;
    bool (MATRIX::*test)(double) const;
};
const Predicate kPredicates[] = {
    {"IsRotated", &MATRIX::IsRotated},
    {"IsScaledOnly", &MATRIX::IsScaledOnly},
    {"IsSkewedOrRotated", &MATRIX::IsSkewedOrRotated},
    {"IsSkewedOrRotatedOrMirrored", &MATRIX::IsSkewedOrRotatedOrMirrored},
    {"IsScaledOrSkewedOrRotated", &MATRIX::IsScaledOrSkewedOrRotated},
    {"IsNonUniformScaledOrSkewedOrRotated", &MATRIX::IsNonUniformScaledOrSkewedOrRotated},
    {"IsScaled", &MATRIX::IsScaled},
    {"IsOrthogonal", &MATRIX::IsOrthogonal},
    {"IsOrthonormal", &MATRIX::IsOrthonormal},
    {"IsUniformOrthogonal", &MATRIX::IsUniformOrthogonal},
    {"IsOrthonormalAxisAligned", &MATRIX::IsOrthonormalAxisAligned},
};

void report(Output& out, const MATRIX& m, double tol) {
    out.matrix("matrix", m);
    out.number("determinant", m.a * m.d - m.c * m.b);
    out.number("maximumScale", m.GetMaximumMatrixVectorScale());

    out.begin("classification");
    out.number("tolerance", tol);
    out.boolean("IsIdentity", m.IsIdentity(true, tol));
    for (const auto& p : kPredicates) out.boolean(p.name, (m.*p.test)(tol));
    out.boolean("IsMirrored", m.IsMirrored());
    out.end();

    QorMath::AFF_TRANSFORM parts{};
    if (QorMath::DecomposeAffineTransform(parts, m)) {
        out.begin("decomposition");
        out.number("scaleX", parts.scaleX);
        out.number("scaleY", parts.scaleY);
        out.number("skew", parts.skew);
        out.number("skewDegrees", std::atan(parts.skew) * QorMath::DegreesPerRadian);
        out.number("rotation", parts.rotation);
        out.number("rotationDegrees", parts.rotation * QorMath::DegreesPerRadian);
        out.point("origin", parts.origin);
        out.end();
    } else {
        out.none("decomposition", "none (the y axis vanishes, lies along the x axis, or leans 89.1 degrees or more)");
    }

    MATRIX inverse = m;
    if (inverse.Invert(DBL_EPSILON))
        out.matrix("inverse", inverse);
    else
        out.none("inverse", "singular (|determinant| <= DBL_EPSILON)");

    // Fixed set: a point when linear - I is invertible, else possibly a line;
    // the identity fixes every point and a translation none.
    out.begin("fixed");
    QorMath::Point2d p{0, 0}, q{0, 0};
    if (m.GetCenterOfTransformation(p)) {
        out.text("kind", "point");
        out.point("point", p);
    } else if (m.GetLineOfTransformation(p, q)) {
        out.text("kind", "line");
        out.point("through", p);
        out.point("and", q);
    } else if (m.a == 1 && m.b == 0 && m.c == 0 && m.d == 1 && m.tx == 0 && m.ty == 0) {
        out.text("kind", "all");
    } else {
        out.text("kind", "none");
    }
    out.end();
}

}  // namespace

Command addMatrixCommand(CLI::App& parent, const GlobalOptions& global) {
    auto opts = std::make_shared<MatrixOptions>();
    CLI::App* app = parent.add_subcommand(
        "matrix", "Show a matrix, its classification, decomposition, inverse and fixed point or line");
    app->add_option("MATRIX", opts->words, "Six numbers a b tx c d ty, or a chain of operations")->required();
    app->add_option("--tolerance", opts->tolerance, "Tolerance of the classification predicates (>= 0)")
        ->capture_default_str();
    app->footer(std::string(kOperationsHelp) +
                "\nExample: qormath matrix rotate 30 about 10,0 scale 2,3 skew 10,0 translate 5,5");
    return {app, [opts, &global] {
                if (!(opts->tolerance >= 0))
                    throw UsageError("--tolerance: " + formatNumber(opts->tolerance) + " is negative");
                const MATRIX m = parseMatrix(opts->words, "matrix");
                Output out(global.json);
                out.text("input", joinWords(opts->words));
                report(out, m, opts->tolerance);
                return 0;
            }};
}

}  // namespace qtool
