// Block copy between fields, re-bounding and regions: one row copy applied to
// the destination rows, spread over the processors when there is more than one.

#include <algorithm>

#include "QorMath/field.h"
#include "field/row_loop.h"
#include "geometry/wrap.h"

namespace QorMath {

namespace {

bool IsDegenerate(const tagRECT& r) {
    return r.left >= r.right || r.bottom >= r.top;
}

}  // namespace

// Destination row dst receives source row src placed at column offset ox.
// Cells under the source's extent that the source does not store revert to
// dst's fill (src's fill is not carried over); the stored run is copied in one
// piece after widening dst's run once.
void VectorField::CopyRow(Row& dst, const Row& src, long long ox) {
    const auto begin = static_cast<long long>(src.runBegin);
    const auto end = static_cast<long long>(src.runEnd);
    const auto length = static_cast<long long>(src.length);
    const auto dBegin = static_cast<long long>(dst.runBegin);
    const auto dEnd = static_cast<long long>(dst.runEnd);
    auto erase = [&dst](long long a, long long b) {
        if (a < b) Erase(dst, static_cast<size_t>(a), static_cast<size_t>(b));
    };
    erase(std::max(ox, dBegin), std::min(dEnd, ox + begin));
    erase(std::max(ox + end, dBegin), std::min(dEnd, ox + length));

    const long long lo = std::max(ox + begin, 0LL);
    const long long hi = std::min(static_cast<long long>(dst.length), ox + end);
    if (lo >= hi) return;
    Widen(dst, static_cast<size_t>(lo), static_cast<size_t>(hi));
    const auto from = src.cells.begin() + static_cast<std::ptrdiff_t>(lo - ox - begin);
    std::copy(from, from + static_cast<std::ptrdiff_t>(hi - lo),
              dst.cells.begin() + static_cast<std::ptrdiff_t>(static_cast<size_t>(lo) - dst.runBegin));
}

// Copies src's rows into this field with src's local (0, 0) at this field's
// local (ox, oy). Returns whether src lies wholly inside; copies nothing and
// returns false when it lies beyond the right or top edge.
bool VectorField::CopyRowsFrom(const VectorField& src, long long ox, long long oy) {
    if (oy >= height_ || ox >= width_) return false;
    const bool fits = ox >= 0 && oy >= 0 && src.height_ + oy <= height_ && src.width_ + ox <= width_;
    // Beyond the left or bottom edge the clamped range is simply empty.
    const auto first = static_cast<int>(std::max(oy, 0LL));
    const auto last = static_cast<int>(std::max(std::min<long long>(height_, src.height_ + oy), 0LL));
    struct Job {
        VectorField* dst;
        const VectorField* src;
        long long ox;
        long long oy;
    } job{this, &src, ox, oy};
    ForEachRow(first, last, [](void* context, int r) {
        const Job& j = *static_cast<const Job*>(context);
        CopyRow(j.dst->rows_[static_cast<size_t>(r)], j.src->rows_[static_cast<size_t>(r - j.oy)], j.ox);
    }, &job);
    return fits;
}

bool VectorField::Blit(const VectorField& src, int dx, int dy) {
    if (&src == this) {
        // In place every cell lands on itself; shifted, the rows would be read
        // as they are written, so the source is copied first.
        if (dx == 0 && dy == 0) return true;
        VectorField copy;
        copy = src;
        return Blit(copy, dx, dy);
    }
    if (!(src.width_ >= 1 && src.height_ >= 0) || !src.HasCells()) return true;
    if (!HasCells()) return false;
    const long long ox = static_cast<long long>(dx) + (static_cast<long long>(src.originX_) - originX_);
    const long long oy = static_cast<long long>(dy) + (static_cast<long long>(src.originY_) - originY_);
    return CopyRowsFrom(src, ox, oy);
}

bool VectorField::Rebound(const tagRECT& r) {
    VectorField next(r);
    bool fits = true;
    if (width_ >= 1 && height_ >= 0 && HasCells()) {
        if (!next.HasCells()) {
            fits = false;
        } else {
            const long long ox = static_cast<long long>(originX_) - next.originX_;
            const long long oy = static_cast<long long>(originY_) - next.originY_;
            fits = next.CopyRowsFrom(*this, ox, oy);
        }
    }
    *this = std::move(next);
    return fits;
}

bool VectorField::Extend(const tagRECT& r) {
    const tagRECT c = GetCGIRECT();
    tagRECT target = c;
    if (IsDegenerate(c)) {
        target = r;
    } else if (!IsDegenerate(r)) {
        target = {std::min(c.left, r.left), std::max(c.top, r.top), std::max(c.right, r.right),
                  std::min(c.bottom, r.bottom)};
    }
    if (target.left == c.left && target.top == c.top && target.right == c.right && target.bottom == c.bottom) {
        return false;
    }
    Rebound(target);
    return true;
}

bool VectorField::BlitExtend(const VectorField& src, int dx, int dy) {
    if (&src == this) {
        // Extend would replace the rows being read.
        VectorField copy;
        copy = src;
        return BlitExtend(copy, dx, dy);
    }
    const int left = WrappingAdd(src.originX_, dx);
    const int bottom = WrappingAdd(src.originY_, dy);
    const tagRECT shifted{left, WrappingAdd(bottom, WrappingSub(src.height_, 1)),
                          WrappingAdd(left, WrappingSub(src.width_, 1)), bottom};
    const bool changed = Extend(shifted);
    Blit(src, dx, dy);
    return changed;
}

VectorField VectorField::GetRegion(const tagRECT& r) const {
    VectorField region;
    if (!HasCells()) return region;
    const tagRECT c = GetCGIRECT();
    if (!(r.top >= r.bottom && c.top >= c.bottom)) return region;
    const tagRECT meet{std::max(c.left, r.left), std::min(c.top, r.top), std::min(c.right, r.right),
                       std::max(c.bottom, r.bottom)};
    // A region one column or one row thick is not usable.
    if (IsDegenerate(meet)) return region;
    region.Initialize(meet);
    const long long ox = static_cast<long long>(originX_) - region.originX_;
    const long long oy = static_cast<long long>(originY_) - region.originY_;
    region.CopyRowsFrom(*this, ox, oy);
    return region;
}

}  // namespace QorMath
