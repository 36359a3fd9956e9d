#include "args.h"

#include <charconv>
#include <cmath>
#include <iostream>
#include <iterator>

#include "QorMath/angles.h"

namespace qtool {

using QorMath::Point2d;

const char* const kOperationsHelp =
    "Operations, applied in the order written (angles in degrees, counter-clockwise, y up):\n"
    "  rotate DEG [about X,Y]     scale S|SX,SY [about X,Y]\n"
    "  skew AX[,AY] [about X,Y]   translate DX,DY\n"
    "skew AX,AY maps x' = x - tan(AX)*y, then y' = tan(AY)*x + y.";

double parseNumber(const std::string& text, const std::string& what) {
    // from_chars ignores the locale and takes no leading '+'; allow one.
    const char* first = text.data();
    const char* last = first + text.size();
    if (first != last && *first == '+') ++first;
    double v = 0;
    auto [end, ec] = std::from_chars(first, last, v);
    if (text.empty() || ec == std::errc::invalid_argument || end != last)
        throw UsageError(what + ": \"" + text + "\" is not a number");
    if (ec == std::errc::result_out_of_range || !std::isfinite(v))
        throw UsageError(what + ": \"" + text + "\" is not a finite number");
    return v;
}

std::vector<double> parseNumbers(const std::string& text, size_t count, const std::string& what) {
    std::vector<double> out;
    size_t start = 0;
    for (;;) {
        size_t comma = text.find(',', start);
        out.push_back(parseNumber(text.substr(start, comma - start), what));
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    if (count != 0 && out.size() != count)
        throw UsageError(what + ": expected " + std::to_string(count) + " comma-separated numbers, got " +
                         std::to_string(out.size()) + " in \"" + text + "\"");
    return out;
}

Point2d parsePoint(const std::string& text, const std::string& what) {
    auto v = parseNumbers(text, 2, what);
    return {v[0], v[1]};
}

std::vector<std::string> splitWords(const std::string& text, bool commas) {
    std::vector<std::string> words;
    std::string word;
    for (char ch : text) {
        if (ch == ' ' || ch == '\t' || ch == '\n' || (commas && ch == ',')) {
            if (!word.empty()) words.push_back(word);
            word.clear();
        } else {
            word += ch;
        }
    }
    if (!word.empty()) words.push_back(word);
    return words;
}

std::string joinWords(const std::vector<std::string>& words) {
    std::string s;
    for (const auto& w : words) s += (s.empty() ? "" : " ") + w;
    return s;
}

std::string wordsOrStdin(const std::vector<std::string>& words) {
    if (words.size() != 1 || words[0] != "-") return joinWords(words);
    std::string text((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    if (std::cin.bad()) throw std::runtime_error("cannot read standard input");
    // Trailing white space only; the rest keeps its lines and columns for messages.
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ' || text.back() == '\t'))
        text.pop_back();
    return text;
}

namespace {

// One operation: its name, the shape of its argument, whether it takes
// "about X,Y", and the matrix it stands for.
struct Operation {
    const char* name;
    const char* argument;
    bool takesAbout;
    MATRIX (*build)(const std::string& arg, const Point2d& about, const std::string& what);
};

// Numbers "a" or "a,b"; a single value gives (a, fill).
std::pair<double, double> oneOrTwo(const std::string& arg, double fillFromFirst, const std::string& what) {
    auto v = parseNumbers(arg, 0, what);
    if (v.size() > 2) throw UsageError(what + ": expected one or two comma-separated numbers in \"" + arg + "\"");
    return {v[0], v.size() == 2 ? v[1] : (std::isnan(fillFromFirst) ? v[0] : fillFromFirst)};
}

const Operation kOperations[] = {
    {"rotate", "an angle in degrees", true,
     [](const std::string& arg, const Point2d& p, const std::string& what) {
         return QorMath::ConstructRotateAroundMatrix(parseNumber(arg, what) * QorMath::RadiansPerDegree, p);
     }},
    {"scale", "S or SX,SY", true,
     [](const std::string& arg, const Point2d& p, const std::string& what) {
         auto [sx, sy] = oneOrTwo(arg, NAN, what);  // a single factor scales both axes
         return QorMath::ConstructScaleAroundMatrix(sx, sy, p);
     }},
    {"skew", "AX or AX,AY in degrees", true,
     [](const std::string& arg, const Point2d& p, const std::string& what) {
         auto [ax, ay] = oneOrTwo(arg, 0.0, what);  // a single angle skews x only
         return QorMath::ConstructSkewAroundMatrix(ax * QorMath::RadiansPerDegree, ay * QorMath::RadiansPerDegree, p);
     }},
    {"translate", "DX,DY", false,
     [](const std::string& arg, const Point2d&, const std::string& what) {
         return QorMath::ConstructTranslationMatrix(QorMath::AsVector(parsePoint(arg, what)));
     }},
};

std::string operationNames() {
    std::string s;
    for (const auto& op : kOperations) s += (s.empty() ? "" : ", ") + std::string(op.name);
    return s;
}

}  // namespace

MATRIX parseOperations(const std::vector<std::string>& words, const std::string& what) {
    if (words.empty()) throw UsageError(what + ": no operations given (" + operationNames() + ")");
    MATRIX m = QorMath::IdentityMatrix();
    for (size_t i = 0; i < words.size();) {
        const std::string& name = words[i];
        const Operation* op = nullptr;
        for (const auto& o : kOperations)
            if (name == o.name) op = &o;
        if (!op) throw UsageError(what + ": unknown operation \"" + name + "\" (expected " + operationNames() + ")");
        if (i + 1 >= words.size())
            throw UsageError(what + ": \"" + name + "\" needs " + op->argument);
        const std::string where = what + ": " + name;
        const std::string& arg = words[i + 1];
        i += 2;
        Point2d about{0, 0};
        if (i < words.size() && words[i] == "about") {
            if (!op->takesAbout) throw UsageError(where + ": \"about\" does not apply");
            if (i + 1 >= words.size()) throw UsageError(where + " about: needs X,Y");
            about = parsePoint(words[i + 1], where + " about");
            i += 2;
        }
        m = op->build(arg, about, where) * m;  // the new operation applies after the chain so far
    }
    return m;
}

MATRIX parseMatrix(const std::vector<std::string>& words, const std::string& what) {
    if (words.empty()) throw UsageError(what + ": expected six numbers a b tx c d ty, or operations");
    const char c = words[0][0];
    const bool numeric = (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    if (!numeric) return parseOperations(words, what);
    if (words.size() != 6)
        throw UsageError(what + ": expected six numbers a b tx c d ty, got " + std::to_string(words.size()));
    double v[6];
    for (size_t i = 0; i < 6; ++i)
        v[i] = parseNumber(words[i], what + " value " + std::to_string(i + 1));
    return MATRIX{v[0], v[1], v[2], v[3], v[4], v[5]};
}

}  // namespace qtool
