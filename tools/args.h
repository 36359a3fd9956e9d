#ifndef QORMATH_TOOLS_ARGS_H
#define QORMATH_TOOLS_ARGS_H

// Parsing of command-line values: numbers, "x,y" pairs, and matrices given as six
// numbers or as a chain of operations. Every failure is a UsageError whose
// message names the offending argument.

#include <stdexcept>
#include <string>
#include <vector>

#include "QorMath/matrix.h"

namespace qtool {

/// Bad input on the command line: reported on one line, exit status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// text as a finite double; what names the argument in the message.
double parseNumber(const std::string& text, const std::string& what);
/// Comma-separated numbers; exactly count of them unless count is 0.
std::vector<double> parseNumbers(const std::string& text, size_t count, const std::string& what);
/// "x,y".
QorMath::Point2d parsePoint(const std::string& text, const std::string& what);
/// text split at white space, and at commas too when commas is true.
std::vector<std::string> splitWords(const std::string& text, bool commas = false);
std::string joinWords(const std::vector<std::string>& words);
/// The words joined by spaces, or all of standard input when they are the one
/// word "-".
std::string wordsOrStdin(const std::vector<std::string>& words);

/// The operation chain, e.g. "rotate 30 about 10,0 scale 2,3 translate 5,5":
/// each operation applies after the ones before it, angles in degrees.
MATRIX parseOperations(const std::vector<std::string>& words, const std::string& what);
/// Six numbers "a b tx c d ty" when the first word is a number, otherwise an
/// operation chain.
MATRIX parseMatrix(const std::vector<std::string>& words, const std::string& what);

/// Help text on the operation chain syntax, for command footers.
extern const char* const kOperationsHelp;

}  // namespace qtool

#endif
