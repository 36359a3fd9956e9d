#include "output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace qtool {

std::string formatNumber(double v) {
    if (std::isnan(v)) return "nan";
    if (std::isinf(v)) return v > 0 ? "inf" : "-inf";
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.12g", v);
    std::string s = buf;
    return s == "-0" ? "0" : s;
}

std::string jsonNumber(double v) {
    if (!std::isfinite(v)) return "null";
    char buf[32];
    auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
    (void)ec;
    return std::string(buf, end);
}

std::string jsonString(const std::string& s) {
    std::string out = "\"";
    for (unsigned char ch : s) {
        if (ch == '"' || ch == '\\') {
            out += '\\';
            out += static_cast<char>(ch);
        } else if (ch < 0x20) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\u%04x", ch);
            out += buf;
        } else {
            out += static_cast<char>(ch);
        }
    }
    return out + "\"";
}

Output::Output(bool json) : Output(json, std::cout) {}

Output::Output(bool json, std::ostream& os) : json_(json), os_(os), first_{true}, list_{false}, groups_{0} {
    if (json_) os_ << "{";
}

Output::~Output() {
    while (first_.size() > 1) end();
    if (json_) os_ << (first_.back() ? "}\n" : "\n}\n");
    std::vector<size_t> column(groupCount_, 0);
    for (const auto& row : rows_)
        if (!row.header) column[row.group] = std::max(column[row.group], 2 * row.depth + row.key.size() + 2);
    for (const auto& row : rows_) {
        std::string head = std::string(2 * row.depth, ' ') + row.key;
        if (row.header) {
            os_ << head << "\n";
            continue;
        }
        head.resize(column[row.group], ' ');
        for (size_t start = 0, nl;; start = nl + 1) {
            nl = row.value.find('\n', start);
            os_ << head << row.value.substr(start, nl - start) << "\n";
            if (nl == std::string::npos) break;
            head.assign(column[row.group], ' ');
        }
    }
    os_.flush();
}

std::string Output::indent() const { return std::string(2 * (first_.size() - 1), ' '); }

void Output::put(const std::string& key, const std::string& jsonValue, const std::string& textValue) {
    if (json_)
        os_ << (first_.back() ? "\n" : ",\n") << indent() << "  " << jsonString(key) << ": " << jsonValue;
    else
        rows_.push_back({groups_.back(), first_.size() - 1, key, textValue, false});
    first_.back() = false;
}

void Output::open(const std::string& key, bool list) {
    if (json_)
        os_ << (first_.back() ? "\n" : ",\n") << indent() << "  " << (list_.back() ? "" : jsonString(key) + ": ")
            << (list ? "[" : "{");
    else
        rows_.push_back({groups_.back(), first_.size() - 1, key, {}, true});
    first_.back() = false;
    first_.push_back(true);
    list_.push_back(list);
    groups_.push_back(groupCount_++);
}

void Output::begin(const std::string& key) { open(key, false); }

void Output::beginList(const std::string& key) { open(key, true); }

void Output::end() {
    const bool empty = first_.back(), list = list_.back();
    first_.pop_back();
    list_.pop_back();
    groups_.pop_back();
    if (json_) os_ << (empty ? "" : "\n" + indent() + "  ") << (list ? "]" : "}");
}

void Output::number(const std::string& key, double v) { put(key, jsonNumber(v), formatNumber(v)); }

void Output::boolean(const std::string& key, bool v) { put(key, v ? "true" : "false", v ? "true" : "false"); }

void Output::text(const std::string& key, const std::string& v) { put(key, jsonString(v), v); }

void Output::none(const std::string& key, const std::string& reason) { put(key, "null", reason); }

namespace {
std::string jsonPoint(const QorMath::Point2d& p) {
    return "{\"x\": " + jsonNumber(p.x) + ", \"y\": " + jsonNumber(p.y) + "}";
}
std::string textPoint(const QorMath::Point2d& p) {
    return "(" + formatNumber(p.x) + ", " + formatNumber(p.y) + ")";
}
}  // namespace

void Output::point(const std::string& key, const QorMath::Point2d& p) { put(key, jsonPoint(p), textPoint(p)); }

void Output::points(const std::string& key, const std::vector<QorMath::Point2d>& ps, size_t perLine,
                    bool indexed) {
    std::string j = "[", t;
    for (size_t i = 0; i < ps.size(); ++i) {
        j += (i ? ", " : "") + jsonPoint(ps[i]);
        t += i == 0 ? "" : perLine && i % perLine == 0 ? "\n" : "  ";
        t += (indexed ? "[" + std::to_string(i) + "] " : "") + textPoint(ps[i]);
    }
    put(key, j + "]", t);
}

void Output::numbers(const std::string& key, const std::vector<double>& vs) {
    std::string j = "[", t;
    for (size_t i = 0; i < vs.size(); ++i) {
        j += (i ? ", " : "") + jsonNumber(vs[i]);
        t += (i ? " " : "") + formatNumber(vs[i]);
    }
    put(key, j + "]", vs.empty() ? "none" : t);
}

void Output::rect(const std::string& key, double left, double top, double right, double bottom) {
    put(key,
        "{\"left\": " + jsonNumber(left) + ", \"top\": " + jsonNumber(top) + ", \"right\": " + jsonNumber(right) +
            ", \"bottom\": " + jsonNumber(bottom) + "}",
        "left " + formatNumber(left) + ", top " + formatNumber(top) + ", right " + formatNumber(right) +
            ", bottom " + formatNumber(bottom) + "   (" + formatNumber(right - left) + " x " +
            formatNumber(top - bottom) + ")");
}

void Output::matrix(const std::string& key, const MATRIX& m) {
    const double v[6] = {m.a, m.b, m.tx, m.c, m.d, m.ty};
    std::string json = "{";
    const char* names[6] = {"a", "b", "tx", "c", "d", "ty"};
    for (int i = 0; i < 6; ++i) json += (i ? ", " : "") + jsonString(names[i]) + ": " + jsonNumber(v[i]);
    // Text: two rows [a b tx] and [c d ty], numbers right-aligned per column.
    std::string cell[6];
    size_t width[3] = {0, 0, 0};
    for (int i = 0; i < 6; ++i) {
        cell[i] = formatNumber(v[i]);
        width[i % 3] = std::max(width[i % 3], cell[i].size());
    }
    std::string rows[2];
    for (int r = 0; r < 2; ++r) {
        rows[r] = "[";
        for (int col = 0; col < 3; ++col)
            rows[r] += std::string(width[col] - cell[3 * r + col].size() + 2, ' ') + cell[3 * r + col];
        rows[r] += "  ]";
    }
    put(key, json + "}", rows[0] + "\n" + rows[1]);
}

}  // namespace qtool
