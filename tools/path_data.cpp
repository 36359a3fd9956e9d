#include "path_data.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace qtool {

namespace {

using QorMath::Point2d;

constexpr double kPi = 3.14159265358979323846;

// Handles at the thirds: the cubic that traces the line at constant speed.
Cubic line(const Point2d& a, const Point2d& b) {
    return {a, Point2d{(2 * a.x + b.x) / 3, (2 * a.y + b.y) / 3}, Point2d{(a.x + 2 * b.x) / 3, (a.y + 2 * b.y) / 3},
            b};
}

// Degree elevation of the quadratic a, q, b: P1 = a + 2/3 (q − a), P2 = b + 2/3 (q − b),
// written as (a + 2q)/3 so that the handles are exact whenever they are representable.
Cubic quadratic(const Point2d& a, const Point2d& q, const Point2d& b) {
    return {a, Point2d{(a.x + 2 * q.x) / 3, (a.y + 2 * q.y) / 3}, Point2d{(b.x + 2 * q.x) / 3, (b.y + 2 * q.y) / 3},
            b};
}

// p mirrored through centre: the implied first handle of S and T.
Point2d reflect(const Point2d& p, const Point2d& centre) { return {2 * centre.x - p.x, 2 * centre.y - p.y}; }

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool startsNumber(char c) { return isDigit(c) || c == '.' || c == '+' || c == '-'; }

// Operands per command letter (either case); -1 for a letter that is no command.
int operandCount(char c) {
    switch (c | 0x20) {  // lower case
        case 'm': case 'l': case 't': return 2;
        case 'h': case 'v': return 1;
        case 'c': return 6;
        case 's': case 'q': return 4;
        case 'a': return 7;
        case 'z': return 0;
        default: return -1;
    }
}

class Reader {
public:
    explicit Reader(const std::string& text) : text_(text) {}

    std::vector<Subpath> read() {
        skipSpace();
        if (atEnd()) return {};
        if ((peek() | 0x20) != 'm') fail(pos_, "path data must start with a moveto (M or m)");
        char command = 0;
        while (!atEnd()) {
            const char c = peek();
            if (operandCount(c) >= 0) {
                command = c;
                ++pos_;
                skipSpace();
                if ((command | 0x20) == 'z') {
                    closePath();
                    continue;
                }
            } else if (startsNumber(c) && command != 0 && (command | 0x20) != 'z') {
                // Another operand group repeats the command; after a moveto it is a lineto.
                if (command == 'M') command = 'L';
                if (command == 'm') command = 'l';
            } else if (startsNumber(c)) {
                fail(pos_, "expected a command letter after Z");
            } else if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
                fail(pos_, std::string("unknown command '") + c + "'");
            } else {
                fail(pos_, std::string("unexpected character '") + c + "'");
            }
            segment(command);
        }
        flush();
        return std::move(out_);
    }

private:
    // One operand group of command, then the separator after it.
    void segment(char command) {
        group_ = pos_;
        const bool rel = command >= 'a';
        auto point = [&] {
            const double x = number(), y = number();
            return finite(rel ? Point2d{cur_.x + x, cur_.y + y} : Point2d{x, y});
        };
        char kind = static_cast<char>(command & ~0x20);  // upper case
        switch (kind) {
            case 'M':
                flush();
                cur_ = start_ = point();
                break;
            case 'L': add(line(cur_, point())); break;
            case 'H': {
                const double x = number();
                add(line(cur_, {rel ? cur_.x + x : x, cur_.y}));
                break;
            }
            case 'V': {
                const double y = number();
                add(line(cur_, {cur_.x, rel ? cur_.y + y : y}));
                break;
            }
            case 'C': {
                const Point2d p1 = point(), p2 = point(), p3 = point();
                add({cur_, p1, p2, p3});
                lastHandle_ = p2;
                break;
            }
            case 'S': {
                const Point2d p1 = previous_ == 'C' ? reflect(lastHandle_, cur_) : cur_;
                const Point2d p2 = point(), p3 = point();
                add({cur_, p1, p2, p3});
                lastHandle_ = p2;
                kind = 'C';
                break;
            }
            case 'Q': {
                const Point2d q = point(), p3 = point();
                add(quadratic(cur_, q, p3));
                lastHandle_ = q;
                break;
            }
            case 'T': {
                const Point2d q = previous_ == 'Q' ? reflect(lastHandle_, cur_) : cur_;
                add(quadratic(cur_, q, point()));
                lastHandle_ = q;
                kind = 'Q';
                break;
            }
            case 'A': {
                const double rx = number(), ry = number(), rotation = number();
                const bool large = flag(), sweep = flag();
                const Point2d to = point();
                for (const Cubic& c : arcToCubics(cur_, rx, ry, rotation, large, sweep, to)) add(c);
                cur_ = to;
                break;
            }
        }
        previous_ = kind;
    }

    // Relative coordinates, reflections and arcs can leave the double range.
    Point2d finite(const Point2d& p) const {
        if (!std::isfinite(p.x) || !std::isfinite(p.y)) fail(group_, "coordinates beyond the double range");
        return p;
    }

    void add(const Cubic& c) {
        for (const Point2d& p : c) finite(p);
        current_.segments.push_back(c);
        cur_ = c[3];
    }

    void closePath() {
        if (cur_ != start_) add(line(cur_, start_));
        current_.closed = true;
        flush();
        cur_ = start_;
        previous_ = 'Z';
    }

    // Ends the subpath in progress; a drawing command after Z starts the next one
    // at the same start point.
    void flush() {
        if (!current_.segments.empty()) out_.push_back(std::move(current_));
        current_ = Subpath{};
    }

    // sign? (digits ('.' digits?)? | '.' digits) ([eE] sign? digits)?, so "1.5.5"
    // is 1.5 then .5 and "1-2" is 1 then -2.
    double number() {
        const size_t begin = pos_;
        size_t i = pos_;
        if (i < text_.size() && (text_[i] == '+' || text_[i] == '-')) ++i;
        size_t digits = 0;
        while (i < text_.size() && isDigit(text_[i])) ++i, ++digits;
        if (i < text_.size() && text_[i] == '.') {
            ++i;
            while (i < text_.size() && isDigit(text_[i])) ++i, ++digits;
        }
        if (digits == 0) fail(begin, "expected a number");
        bool negativeExponent = false;
        if (i < text_.size() && (text_[i] == 'e' || text_[i] == 'E')) {
            size_t j = i + 1;
            if (j < text_.size() && (text_[j] == '+' || text_[j] == '-')) negativeExponent = text_[j++] == '-';
            if (j < text_.size() && isDigit(text_[j])) {
                while (j < text_.size() && isDigit(text_[j])) ++j;
                i = j;
            } else {
                negativeExponent = false;  // "1e" or "1e+": the e is not part of the number
            }
        }
        const char* first = text_.data() + begin + (text_[begin] == '+' ? 1 : 0);
        double v = 0;
        const auto [end, ec] = std::from_chars(first, text_.data() + i, v);
        if (ec == std::errc::result_out_of_range) {
            if (!negativeExponent) fail(begin, "number out of range");
            v = text_[begin] == '-' ? -0.0 : 0.0;  // underflow
        } else if (ec != std::errc() || end != text_.data() + i || !std::isfinite(v)) {
            fail(begin, "expected a number");
        }
        pos_ = i;
        separator();
        return v;
    }

    // Arc flags are single characters, so "001" is two flags and then 1.
    bool flag() {
        if (atEnd() || (peek() != '0' && peek() != '1')) fail(pos_, "expected an arc flag (0 or 1)");
        const bool v = text_[pos_++] == '1';
        separator();
        return v;
    }

    // White space, at most one comma, white space; a comma must be followed by an operand.
    void separator() {
        skipSpace();
        if (!atEnd() && peek() == ',') {
            ++pos_;
            skipSpace();
            if (atEnd() || !startsNumber(peek())) fail(pos_, "expected a number after ','");
        }
    }

    void skipSpace() {
        while (!atEnd() && isSpace(peek())) ++pos_;
    }
    bool atEnd() const { return pos_ >= text_.size(); }
    char peek() const { return text_[pos_]; }

    // "<what> at column C: "<the line around it>"", with the line number as well
    // when the data spans several lines.
    [[noreturn]] void fail(size_t at, const std::string& what) const {
        const size_t lineStart = at == 0 ? 0 : text_.rfind('\n', at - 1) + 1;  // npos + 1 = 0
        size_t lineEnd = text_.find('\n', lineStart);
        if (lineEnd == std::string::npos) lineEnd = text_.size();
        const size_t line = size_t(std::count(text_.begin(), text_.begin() + long(lineStart), '\n')) + 1;
        const bool multiLine = text_.find('\n') != std::string::npos;
        std::string where = multiLine ? "line " + std::to_string(line) + ", column " : "column ";
        where += std::to_string(at - lineStart + 1);
        if (at >= text_.size()) where += " (end of data)";
        // At most 30 characters either side of the offending one.
        const size_t from = std::max(lineStart, at >= 30 ? at - 30 : 0);
        const size_t to = std::min(lineEnd, at + 31);
        std::string excerpt = text_.substr(from, to - from);
        for (char& c : excerpt)
            if (static_cast<unsigned char>(c) < 0x20) c = ' ';
        if (from > lineStart) excerpt = "..." + excerpt;
        if (to < lineEnd) excerpt += "...";
        throw PathDataError("path data: " + what + " at " + where + ": \"" + excerpt + "\"");
    }

    const std::string& text_;
    size_t pos_ = 0;
    size_t group_ = 0;  // where the operands of the segment being read start
    Point2d cur_{0, 0};
    Point2d start_{0, 0};
    Point2d lastHandle_{0, 0};  // second handle of the last C or S, control point of the last Q or T
    char previous_ = 0;         // C for C and S, Q for Q and T, else the command in upper case
    Subpath current_;
    std::vector<Subpath> out_;
};

}  // namespace

std::vector<Subpath> parsePathData(const std::string& text) { return Reader(text).read(); }

std::vector<Cubic> arcToCubics(const Point2d& from, double rx, double ry, double xAxisRotationDeg, bool largeArc,
                               bool sweep, const Point2d& to) {
    if (from == to) return {};
    rx = std::fabs(rx);
    ry = std::fabs(ry);
    if (rx == 0 || ry == 0) return {line(from, to)};

    // Centre parameterisation: work in the ellipse's own frame, rotated by -phi and
    // centred between the end points, where the end points are (x1, y1) and -(x1, y1).
    const double phi = std::fmod(xAxisRotationDeg, 360.0) * (kPi / 180);
    const double cosPhi = std::cos(phi), sinPhi = std::sin(phi);
    const double hx = (from.x - to.x) / 2, hy = (from.y - to.y) / 2;
    const double x1 = cosPhi * hx + sinPhi * hy;
    const double y1 = -sinPhi * hx + cosPhi * hy;
    // An ellipse too small to reach both end points grows, keeping its proportions,
    // until it just does (the end points are then opposite each other).
    const double grow = std::hypot(x1 / rx, y1 / ry);  // hypot: tiny radii must not overflow
    if (grow > 1) {
        rx *= grow;
        ry *= grow;
    }
    const double rx2 = rx * rx, ry2 = ry * ry;
    const double den = rx2 * y1 * y1 + ry2 * x1 * x1;
    double coef = std::sqrt(std::max(0.0, (rx2 * ry2 - den) / den));
    if (largeArc == sweep) coef = -coef;
    const double cx1 = coef * rx * y1 / ry, cy1 = -coef * ry * x1 / rx;
    const double cx = cosPhi * cx1 - sinPhi * cy1 + (from.x + to.x) / 2;
    const double cy = sinPhi * cx1 + cosPhi * cy1 + (from.y + to.y) / 2;

    // Start angle and sweep on the unit circle the ellipse is the image of.
    const double ux = (x1 - cx1) / rx, uy = (y1 - cy1) / ry;
    const double vx = (-x1 - cx1) / rx, vy = (-y1 - cy1) / ry;
    const double theta = std::atan2(uy, ux);
    double delta = std::atan2(ux * vy - uy * vx, ux * vx + uy * vy);
    if (!sweep && delta > 0) delta -= 2 * kPi;
    if (sweep && delta < 0) delta += 2 * kPi;

    // Pieces of at most a quarter turn; the slack keeps an exact half turn at two.
    // (Overflowed input leaves delta NaN: one piece of non-finite points.)
    int n = 1;
    while (n < 4 && std::fabs(delta) > n * (kPi / 2) + 1e-9) ++n;
    const double step = delta / n;
    // A unit-circle arc of angle step from a has handles along the tangents of
    // length 4/3·tan(step/4); the affine map to the ellipse carries them along.
    const double k = 4.0 / 3.0 * std::tan(step / 4);
    auto map = [&](double x, double y) {
        return Point2d{cx + rx * cosPhi * x - ry * sinPhi * y, cy + rx * sinPhi * x + ry * cosPhi * y};
    };
    std::vector<Cubic> out;
    Point2d p0 = from;
    for (int i = 0; i < n; ++i) {
        const double a0 = theta + step * i, a1 = i + 1 == n ? theta + delta : theta + step * (i + 1);
        const double c0 = std::cos(a0), s0 = std::sin(a0), c1 = std::cos(a1), s1 = std::sin(a1);
        const Point2d p3 = i + 1 == n ? to : map(c1, s1);
        out.push_back({p0, map(c0 - k * s0, s0 + k * c0), map(c1 + k * s1, s1 - k * c1), p3});
        p0 = p3;
    }
    return out;
}

}  // namespace qtool
