#ifndef QORMATH_TOOLS_PATH_DATA_H
#define QORMATH_TOOLS_PATH_DATA_H

// A reader of SVG path data ("M 0 0 C 10 20 30 20 40 0 Z") into cubic Bezier
// segments, the one curve form the library works on.
//
// Every command is accepted in absolute and relative form: M L H V C S Q T A Z.
// Lines become cubics with handles at the thirds of the segment, quadratics are
// raised to cubic degree exactly, and elliptical arcs are cut into pieces of at
// most 90 degrees, each approximated by one cubic. Coordinates are taken as
// written; the library's y axis points up.

#include <array>
#include <string>
#include <vector>

#include "QorMath/types.h"
#include "args.h"

namespace qtool {

using Cubic = std::array<QorMath::Point2d, 4>;

/// One subpath: segments joined end to start (each segment's P0 is the previous
/// segment's P3, bit for bit). closed when a Z ended it; the closing line, if
/// the current point was elsewhere, is then the last segment.
struct Subpath {
    std::vector<Cubic> segments;
    bool closed = false;
};

/// Malformed path data. The message names the offending character's column
/// (and line, for multi-line data) and quotes the data around it.
struct PathDataError : UsageError {
    using UsageError::UsageError;
};

/// The subpaths of text, in order. Subpaths without segments ("M 5 5" alone, a
/// closed one-point subpath, an arc to its own start) are left out. Empty data
/// (only white space) gives no subpaths. Throws PathDataError.
std::vector<Subpath> parsePathData(const std::string& text);

/// The cubic approximation of the elliptical arc from `from` to `to` with radii
/// rx, ry, the x axis rotated by xAxisRotationDeg, and the SVG large-arc and
/// sweep flags: pieces of at most 90 degrees. Out-of-range radii are handled as
/// SVG does: negative ones made positive, too small ones scaled up until the
/// ellipse reaches both end points; a zero radius gives a straight line, and
/// equal end points give no segment at all. Values near the double limit that
/// overflow give non-finite points.
std::vector<Cubic> arcToCubics(const QorMath::Point2d& from, double rx, double ry, double xAxisRotationDeg,
                               bool largeArc, bool sweep, const QorMath::Point2d& to);

}  // namespace qtool

#endif
