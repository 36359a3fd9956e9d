#ifndef QORMATH_TOOLS_CUBIC_ARG_H
#define QORMATH_TOOLS_CUBIC_ARG_H

// One cubic segment given on the command line, shared by the commands that take
// a single curve.

#include <string>
#include <vector>

#include "path_data.h"

namespace qtool {

/// Eight numbers "x0 y0 x1 y1 x2 y2 x3 y3" (commas allowed) when the first word
/// is a number, as `matrix` takes its six; otherwise path data of exactly one
/// segment. "-" alone reads standard input. command names the caller in the
/// message when the path data has more or fewer segments.
Cubic parseCubic(const std::vector<std::string>& words, const std::string& command);

/// Every cubic segment of text in path order, across subpaths: eight numbers
/// give one segment, path data any number. what names the argument in messages;
/// no segments at all is an error.
std::vector<Cubic> parseSegments(const std::string& text, const std::string& what);

/// The exact offset B(t) + d·n(t), n the unit left normal, at samples + 1
/// evenly spaced t, for drawing.
std::vector<QorMath::Point2d> sampledOffset(const Cubic& c, double d, int samples);

/// Help texts shared by the commands that take a path and an offset distance.
constexpr const char* kSegmentsHelp =
    "SVG path data (quote it), eight numbers x0 y0 x1 y1 x2 y2 x3 y3, or - for standard input";
constexpr const char* kDistanceHelp =
    "Signed offset distance, positive to the left of the direction of travel (y up)";

/// Help text of the CURVE argument.
extern const char* const kCubicHelp;

}  // namespace qtool

#endif
