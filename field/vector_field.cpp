// The grid: row runs, cell access and bilinear sampling.

#include <algorithm>
#include <cmath>

#include "QorMath/field.h"
#include "geometry/wrap.h"

namespace QorMath {

namespace {

using Vector = VectorField::Vector;

// Local index of plane coordinate v in an axis starting at origin with count
// cells, or -1 when outside; the difference is taken in 64 bits, where it
// cannot overflow.
int LocalIndex(int v, int origin, int count) {
    const long long local = static_cast<long long>(v) - origin;
    return (local >= 0 && local < count) ? static_cast<int>(local) : -1;
}

}  // namespace

VectorField::VectorField() = default;

VectorField::VectorField(int width, int height, int originX, int originY) {
    Initialize(width, height, originX, originY);
}

VectorField::VectorField(const tagRECT& r) {
    Initialize(r);
}

VectorField::VectorField(const VectorField& other) = default;

VectorField::VectorField(VectorField&& other) noexcept
    : rows_(std::move(other.rows_)),
      width_(other.width_),
      height_(other.height_),
      originX_(other.originX_),
      originY_(other.originY_) {
    other.rows_.clear();
}

VectorField& VectorField::operator=(VectorField&& other) noexcept {
    if (this == &other) return *this;
    rows_ = std::move(other.rows_);
    other.rows_.clear();
    width_ = other.width_;
    height_ = other.height_;
    originX_ = other.originX_;
    originY_ = other.originY_;
    return *this;
}

VectorField& VectorField::operator=(const VectorField& other) = default;

VectorField::~VectorField() = default;

void VectorField::Initialize(int width, int height, int originX, int originY) {
    if (width < 1 || height < 1) {
        std::vector<Row>().swap(rows_);
        width_ = height_ = originX_ = originY_ = 0;
        return;
    }
    rows_.clear();
    if (rows_.capacity() < static_cast<size_t>(height)) {
        rows_.reserve(std::max(static_cast<size_t>(height), rows_.capacity() * 3 / 2));
    }
    rows_.resize(static_cast<size_t>(height), Row{Vector{0.0f, 0.0f}, 0, 0, static_cast<size_t>(width), {}});
    width_ = width;
    height_ = height;
    originX_ = originX;
    originY_ = originY;
}

void VectorField::Initialize(const tagRECT& r) {
    // Inclusive bounds: r.right - r.left + 1 columns. In 64 bits, so that an
    // extent beyond int either way (a rectangle spanning most of the int32
    // plane, or inverted across it) becomes an empty field, not a wrapped size.
    const long long w = static_cast<long long>(r.right) - r.left + 1;
    const long long h = static_cast<long long>(r.top) - r.bottom + 1;
    if (w < 1 || h < 1 || w > INT32_MAX || h > INT32_MAX) {
        Initialize(0, 0, 0, 0);
        return;
    }
    Initialize(static_cast<int>(w), static_cast<int>(h), r.left, r.bottom);
}

tagRECT VectorField::GetCGIRECT() const {
    return {originX_, WrappingAdd(originY_, WrappingSub(height_, 1)), WrappingAdd(originX_, WrappingSub(width_, 1)),
            originY_};
}

bool VectorField::HasCells() const {
    // A moved-from field keeps its geometry without rows: it counts as empty.
    return width_ >= 1 && height_ >= 1 && rows_.size() == static_cast<size_t>(height_);
}

const Vector& VectorField::ReadAt(int col, int row) const {
    const Row& r = rows_[static_cast<size_t>(row)];
    const auto c = static_cast<size_t>(col);
    return (c >= r.runBegin && c < r.runEnd) ? r.cells[c - r.runBegin] : r.fill;
}

const Vector& VectorField::Get_nooffset(int col, int row) const {
    return ReadAt(col, row);
}

void VectorField::WriteAt(int col, int row, const Vector& v) {
    Row& r = rows_[static_cast<size_t>(row)];
    const auto c = static_cast<size_t>(col);
    if (c >= r.runBegin && c < r.runEnd) {
        r.cells[c - r.runBegin] = v;
        return;
    }
    if (v == r.fill) return;
    Widen(r, c, c + 1);
    r.cells[c - r.runBegin] = v;
}

void VectorField::WriteAt_Safe(int col, int row, const Vector& v) {
    if (col < 0 || col >= width_ || row < 0 || row >= height_ || !HasCells()) return;
    WriteAt(col, row, v);
}

void VectorField::AddAt_Safe(int col, int row, const Vector& v) {
    if (col < 0 || col >= width_ || row < 0 || row >= height_ || !HasCells()) return;
    Row& r = rows_[static_cast<size_t>(row)];
    const auto c = static_cast<size_t>(col);
    if (c >= r.runBegin && c < r.runEnd) {
        r.cells[c - r.runBegin] += v;
        return;
    }
    WriteAt(col, row, r.fill + v);
}

void VectorField::Set(int x, int y, const Vector& v) {
    const int col = LocalIndex(x, originX_, width_);
    const int row = LocalIndex(y, originY_, height_);
    if (col >= 0 && row >= 0) WriteAt_Safe(col, row, v);
}

void VectorField::Add(int x, int y, const Vector& v) {
    const int col = LocalIndex(x, originX_, width_);
    const int row = LocalIndex(y, originY_, height_);
    if (col >= 0 && row >= 0) AddAt_Safe(col, row, v);
}

bool VectorField::Remap(const tagPOINT& p, vector2dT<double, 0>& out, bool& /*flag*/) const {
    const int col = LocalIndex(p.x, originX_, width_);
    const int row = LocalIndex(p.y, originY_, height_);
    if (col < 0 || row < 0 || !HasCells()) return false;
    const Vector& v = ReadAt(col, row);
    out = {static_cast<double>(v.x), static_cast<double>(v.y)};
    return true;
}

bool VectorField::Remap_point2d(const vector2dT<double, 1>& p, vector2dT<double, 0>& out) const {
    if (!HasCells()) return false;
    const float fx = static_cast<float>(p.x) - static_cast<float>(originX_);
    const float fy = static_cast<float>(p.y) - static_cast<float>(originY_);
    if (!(fx >= 0.0f && fx < static_cast<float>(width_) && fy >= 0.0f && fy < static_cast<float>(height_))) {
        return false;
    }
    // Get subtracts the origin once more: the published double offset.
    const Vector v = Get(vector2dT<float, 1>{fx, fy});
    out = {static_cast<double>(v.x), static_cast<double>(v.y)};
    return true;
}

Vector VectorField::Get(vector2dT<float, 1> p) const {
    if (!HasCells()) return {0.0f, 0.0f};
    const float fx = p.x - static_cast<float>(originX_);
    const float fy = p.y - static_cast<float>(originY_);
    // Clamped to [0, n - 2] so that the +1 neighbour exists; NaN fails every
    // comparison and lands on the upper clamp.
    const float cx = fx < 0.0f ? 0.0f : std::min(static_cast<float>(width_) - 2.0f, fx);
    const float cy = fy < 0.0f ? 0.0f : std::min(static_cast<float>(height_) - 2.0f, fy);
    // Truncated toward zero; through double so that the float rounding of a
    // width near 2^31 cannot push the index past int.
    const int ix = static_cast<int>(std::min(static_cast<double>(cx), static_cast<double>(width_) - 2.0));
    const int iy = static_cast<int>(std::min(static_cast<double>(cy), static_cast<double>(height_) - 2.0));
    const float sx = cx - static_cast<float>(ix);
    const float sy = cy - static_cast<float>(iy);
    // A field one cell wide or high has no +1 neighbour (and clamps to -1):
    // read its edge cells instead.
    auto column = [this](int c) { return std::min(std::max(c, 0), width_ - 1); };
    auto line = [this](int r) { return std::min(std::max(r, 0), height_ - 1); };
    const Vector& c00 = ReadAt(column(ix), line(iy));
    const Vector& c10 = ReadAt(column(ix + 1), line(iy));
    const Vector& c01 = ReadAt(column(ix), line(iy + 1));
    const Vector& c11 = ReadAt(column(ix + 1), line(iy + 1));
    const Vector a = (c10 - c00) * sx + c00;
    const Vector b = (c11 - c01) * sx + c01;
    return (b - a) * sy + a;
}

void VectorField::ClearVectors() {
    for (Row& r : rows_) {
        if (r.runBegin == r.runEnd) continue;
        std::vector<Vector>().swap(r.cells);
        r.runBegin = r.runEnd = 0;
    }
}

VectorField::Run VectorField::GetStoredRun(int row) const {
    const Row& r = rows_[static_cast<size_t>(row)];
    return {r.runBegin, r.runEnd};
}

size_t VectorField::GetStoredCellCount() const {
    size_t count = 0;
    for (const Row& r : rows_) count += r.runEnd - r.runBegin;
    return count;
}

void VectorField::Widen(Row& row, size_t a, size_t b) {
    if (a >= b) return;
    if (row.runBegin == row.runEnd) row.runBegin = row.runEnd = a;
    if (a >= row.runBegin && b <= row.runEnd) return;
    const size_t left = a < row.runBegin ? row.runBegin - a : 0;
    const size_t right = b > row.runEnd ? b - row.runEnd : 0;
    const size_t missing = left + right;
    if (row.cells.size() + missing > row.cells.capacity()) {
        const size_t grown = std::min(row.length, row.cells.capacity() * 3 / 2 + missing);
        row.cells.reserve(std::max(grown, row.cells.size() + missing));
    }
    row.cells.insert(row.cells.begin(), left, row.fill);
    row.cells.insert(row.cells.end(), right, row.fill);
    row.runBegin = std::min(a, row.runBegin);
    row.runEnd = std::max(b, row.runEnd);
}

void VectorField::Erase(Row& row, size_t a, size_t b) {
    a = std::max(a, row.runBegin);
    b = std::min(b, row.runEnd);
    if (a >= b) return;
    if (a == row.runBegin && b == row.runEnd) {
        row.cells.clear();
        row.runBegin = row.runEnd = 0;
    } else if (a == row.runBegin) {
        row.cells.erase(row.cells.begin(), row.cells.begin() + static_cast<std::ptrdiff_t>(b - row.runBegin));
        row.runBegin = b;
    } else if (b == row.runEnd) {
        row.cells.erase(row.cells.begin() + static_cast<std::ptrdiff_t>(a - row.runBegin), row.cells.end());
        row.runEnd = a;
    } else {
        std::fill(row.cells.begin() + static_cast<std::ptrdiff_t>(a - row.runBegin),
                  row.cells.begin() + static_cast<std::ptrdiff_t>(b - row.runBegin), row.fill);
    }
}

}  // namespace QorMath
