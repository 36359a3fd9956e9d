#ifndef QORMATH_TOOLS_OUTPUT_H
#define QORMATH_TOOLS_OUTPUT_H

// One way for commands to report results, printed either as aligned text or as
// JSON. A command writes keys and values once; the mode picks the rendering.

#include <iosfwd>
#include <string>
#include <vector>

#include "QorMath/matrix.h"

namespace qtool {

class Output {
public:
    explicit Output(bool json);
    Output(bool json, std::ostream& os);
    ~Output();  // closes the JSON document
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /// A nested group of keys (a JSON object). Inside a list, key only heads the
    /// item in text; JSON items have no key.
    void begin(const std::string& key);
    /// A list of groups (a JSON array of objects), each item opened with begin().
    void beginList(const std::string& key);
    /// Closes the innermost group or list.
    void end();

    void number(const std::string& key, double v);
    void boolean(const std::string& key, bool v);
    void text(const std::string& key, const std::string& v);
    /// A missing result: JSON null, in text the reason.
    void none(const std::string& key, const std::string& reason);
    void point(const std::string& key, const QorMath::Point2d& p);
    /// In text, perLine points to a line (0: all on one line), each after its
    /// index "[i]" when indexed.
    void points(const std::string& key, const std::vector<QorMath::Point2d>& ps, size_t perLine = 0,
                bool indexed = false);
    /// In text, an empty list reads "none".
    void numbers(const std::string& key, const std::vector<double>& vs);
    void rect(const std::string& key, double left, double top, double right, double bottom);
    void matrix(const std::string& key, const MATRIX& m);

private:
    // textValue may hold several lines; they are aligned under the first.
    void put(const std::string& key, const std::string& jsonValue, const std::string& textValue);
    void open(const std::string& key, bool list);
    std::string indent() const;

    // Text is kept until the end so that each group's values share a column.
    struct Row {
        size_t group;
        size_t depth;
        std::string key;
        std::string value;
        bool header;
    };

    bool json_;
    std::ostream& os_;
    std::vector<bool> first_;     // per open group: nothing written in it yet
    std::vector<bool> list_;      // per open group: a list rather than an object
    std::vector<size_t> groups_;  // text: ids of the open groups
    std::vector<Row> rows_;
    size_t groupCount_ = 1;
};

/// Text form of a number: 12 significant digits, no negative zero.
std::string formatNumber(double v);
/// JSON form: the shortest text that reads back to v; null when not finite.
std::string jsonNumber(double v);
/// A JSON string literal.
std::string jsonString(const std::string& s);

}  // namespace qtool

#endif
