#include "cubic_arg.h"

#include "QorMath/bezier.h"

namespace qtool {

using QorMath::Point2d;

const char* const kCubicHelp =
    "Eight numbers x0 y0 x1 y1 x2 y2 x3 y3 (start, two handles, end), or path data of one "
    "segment, e.g. \"M 0 0 C 10 20 30 20 40 0\"; - reads standard input";

namespace {

bool startsWithNumber(const std::string& text) {
    const char c = text.empty() ? 'M' : text[0];
    return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

// "x0 y0 x1 y1 x2 y2 x3 y3", commas allowed.
Cubic eightNumbers(const std::string& text, const std::string& what) {
    const auto numbers = splitWords(text, true);
    if (numbers.size() != 8)
        throw UsageError(what + ": expected eight numbers x0 y0 x1 y1 x2 y2 x3 y3, got " +
                         std::to_string(numbers.size()));
    double v[8];
    for (size_t i = 0; i < 8; ++i) v[i] = parseNumber(numbers[i], what + " value " + std::to_string(i + 1));
    return {Point2d{v[0], v[1]}, Point2d{v[2], v[3]}, Point2d{v[4], v[5]}, Point2d{v[6], v[7]}};
}

std::vector<Cubic> allSegments(const std::string& text) {
    std::vector<Cubic> segments;
    for (const Subpath& s : parsePathData(text)) segments.insert(segments.end(), s.segments.begin(), s.segments.end());
    return segments;
}

}  // namespace

std::vector<Cubic> parseSegments(const std::string& text, const std::string& what) {
    if (startsWithNumber(text)) return {eightNumbers(text, what)};
    std::vector<Cubic> segments = allSegments(text);
    if (segments.empty()) throw UsageError(what + ": no segments in \"" + joinWords(splitWords(text)) + "\"");
    return segments;
}

Cubic parseCubic(const std::vector<std::string>& words, const std::string& command) {
    const std::string text = wordsOrStdin(words);
    if (startsWithNumber(text)) return eightNumbers(text, "curve");
    const std::vector<Cubic> segments = allSegments(text);
    if (segments.size() != 1)
        throw UsageError("curve: the path data gives " + std::to_string(segments.size()) + " cubic segments, " +
                         command + " takes one (an arc over 90 degrees gives several)");
    return segments[0];
}

std::vector<Point2d> sampledOffset(const Cubic& c, double d, int samples) {
    std::vector<Point2d> out;
    for (int i = 0; i <= samples; ++i)
        out.push_back(QorMath::CubicBezier::MapToBezier(c.data(), double(i) / samples, d, 1.0));
    return out;
}

}  // namespace qtool
