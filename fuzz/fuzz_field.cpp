// Drives the layout functions, the vector field and the scalar, random, quaternion and fixed-point 3D functions with
// arbitrary values: invalid enumerators, NaN and infinities, origins at the int32 extremes, rectangles anywhere.
//
// Three fields live through one input, each shadowed by a plain model of the grid (per row a run of cells, every
// other cell (0, 0)) that follows the documented rules for writing, widening, erasing, row copies, re-bounding and
// regions. After every field operation the field must match its model cell for cell, run for run; sampling must
// match the model's bilinear formula bit for bit. Sizes are bounded so that nothing allocates more than a few MB:
// at most 4096 rows and 2^17 stored cells per field (wide fields are fine, cells cost only once stored).

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "QorMath/field.h"
#include "QorMath/layout.h"
#include "QorMath/misc.h"
#include "fuzz_input.h"

namespace {
using namespace QorMath;
using qfuzz::kInf;
using qfuzz::kNaN;
using qfuzz::Same;
using Vec = VectorField::Vector;
using FPos = vector2dT<float, 1>;
using V3 = vector3dT<double>;

constexpr int kSlots = 3;
constexpr long long kMaxRows = 4096;
constexpr long long kMaxCells = 1 << 17;
constexpr float kFNaN = std::numeric_limits<float>::quiet_NaN(), kFInf = std::numeric_limits<float>::infinity();

int32_t Wrap(long long v) { return static_cast<int32_t>(static_cast<uint32_t>(static_cast<unsigned long long>(v))); }
// Equal values, or both NaN: for results whose zero sign is not promised.
bool Eq(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }
bool SameV(const Vec& a, const Vec& b) { return Same(a.x, b.x) && Same(a.y, b.y); }
bool SameRect(const tagRECT& a, const tagRECT& b) { return Same(a, b); }

// ---- The model of a field -------------------------------------------------------------------------------------------

struct MRow {
    long long b = 0, e = 0;  // the stored run [b, e); (0, 0) when empty
    std::vector<Vec> cells;
};

// Row counts and column counts of an inclusive rectangle, 0 for an empty or unrepresentable one.
struct Extent {
    long long w, h;
    explicit Extent(const tagRECT& r) : w(1LL + r.right - r.left), h(1LL + r.top - r.bottom) {
        if (w < 1 || h < 1 || w > INT_MAX || h > INT_MAX) w = h = 0;
    }
};

struct Model {
    std::vector<MRow> rows;
    long long w = 0, h = 0;
    int32_t ox = 0, oy = 0;
    bool moved = false;  // a moved-from field: geometry kept, no rows

    bool Has() const { return !moved && w >= 1 && h >= 1; }
    void Init(long long width, long long height, int32_t x, int32_t y) {
        *this = Model();
        if (width < 1 || height < 1) return;
        w = width, h = height, ox = x, oy = y;
        rows.resize(size_t(h));
    }
    void Init(const tagRECT& r) {
        const Extent e(r);
        Init(e.w, e.h, r.left, r.bottom);
    }
    tagRECT Rect() const { return {ox, Wrap(oy + h - 1), Wrap(ox + w - 1), oy}; }
    size_t Cells() const {
        size_t n = 0;
        for (const MRow& r : rows) n += size_t(r.e - r.b);
        return n;
    }
    Vec Read(long long c, long long r) const {
        const MRow& row = rows[size_t(r)];
        return c >= row.b && c < row.e ? row.cells[size_t(c - row.b)] : Vec{0, 0};
    }

    static void Widen(MRow& r, long long a, long long b) {
        if (a >= b) return;
        if (r.b == r.e) r.b = r.e = a;
        if (a < r.b) r.cells.insert(r.cells.begin(), size_t(r.b - a), Vec{0, 0}), r.b = a;
        if (b > r.e) r.cells.insert(r.cells.end(), size_t(b - r.e), Vec{0, 0}), r.e = b;
    }
    static void Erase(MRow& r, long long a, long long b) {
        a = std::max(a, r.b), b = std::min(b, r.e);
        if (a >= b) return;
        if (a == r.b && b == r.e) {
            r = MRow();
        } else if (a == r.b) {
            r.cells.erase(r.cells.begin(), r.cells.begin() + (b - r.b)), r.b = b;
        } else if (b == r.e) {
            r.cells.erase(r.cells.begin() + (a - r.b), r.cells.end()), r.e = a;
        } else {
            std::fill(r.cells.begin() + (a - r.b), r.cells.begin() + (b - r.b), Vec{0, 0});
        }
    }
    // The write rule: inside the run overwrite; outside store only what differs from the fill (0, 0).
    void Write(long long c, long long r, const Vec& v) {
        MRow& row = rows[size_t(r)];
        if (!(c >= row.b && c < row.e)) {
            if (v.x == 0 && v.y == 0) return;
            Widen(row, c, c + 1);
        }
        row.cells[size_t(c - row.b)] = v;
    }
    // Local cell of plane (x, y), or false outside the grid (or without rows).
    bool Local(long long x, long long y, long long& c, long long& r) const {
        c = x - ox, r = y - oy;
        return Has() && c >= 0 && c < w && r >= 0 && r < h;
    }
    void Set(int32_t x, int32_t y, const Vec& v) {
        long long c, r;
        if (Local(x, y, c, r)) Write(c, r, v);
    }
    void Add(int32_t x, int32_t y, const Vec& v) {
        long long c, r;
        if (!Local(x, y, c, r)) return;
        MRow& row = rows[size_t(r)];
        if (c >= row.b && c < row.e) {
            Vec& cell = row.cells[size_t(c - row.b)];
            cell.x += v.x, cell.y += v.y;
        } else {
            Write(c, r, Vec{0.0f + v.x, 0.0f + v.y});
        }
    }
    // Stored cells after writing v at plane (x, y).
    size_t CellsAfterWrite(int32_t x, int32_t y, const Vec& v, bool add) const {
        long long c, r;
        if (!Local(x, y, c, r)) return Cells();
        const MRow& row = rows[size_t(r)];
        const Vec s = add ? Vec{0.0f + v.x, 0.0f + v.y} : v;
        if ((c >= row.b && c < row.e) || (s.x == 0 && s.y == 0)) return Cells();
        const long long len = row.b == row.e ? 1 : std::max(row.e, c + 1) - std::min(row.b, c);
        return Cells() - size_t(row.e - row.b) + size_t(len);
    }

    // Destination row d (dLen columns) receives source row s (sLen columns) at column offset o.
    static void CopyRow(MRow& d, long long dLen, const MRow& s, long long sLen, long long o) {
        const long long db = d.b, de = d.e;
        Erase(d, std::max(o, db), std::min(de, o + s.b));
        Erase(d, std::max(o + s.e, db), std::min(de, o + sLen));
        const long long lo = std::max(o + s.b, 0LL), hi = std::min(dLen, o + s.e);
        if (lo >= hi) return;
        Widen(d, lo, hi);
        std::copy(s.cells.begin() + (lo - o - s.b), s.cells.begin() + (hi - o - s.b), d.cells.begin() + (lo - d.b));
    }
    bool CopyFrom(const Model& s, long long cx, long long cy) {
        if (cy >= h || cx >= w) return false;
        const bool fits = cx >= 0 && cy >= 0 && s.h + cy <= h && s.w + cx <= w;
        for (long long r = std::max(cy, 0LL); r < std::min(h, s.h + cy); ++r)
            CopyRow(rows[size_t(r)], w, s.rows[size_t(r - cy)], s.w, cx);
        return fits;
    }
    bool Blit(const Model& s, int32_t dx, int32_t dy) {
        if (!(s.w >= 1 && s.h >= 0) || !s.Has()) return true;
        if (!Has()) return false;
        return CopyFrom(s, dx + (1LL * s.ox - ox), dy + (1LL * s.oy - oy));
    }
    bool Rebound(const tagRECT& r) {
        Model n;
        n.Init(r);
        bool fits = true;
        if (Has()) fits = n.Has() && n.CopyFrom(*this, 1LL * ox - n.ox, 1LL * oy - n.oy);
        *this = std::move(n);
        return fits;
    }
    static bool Degenerate(const tagRECT& r) { return r.left >= r.right || r.bottom >= r.top; }
    tagRECT ExtendTarget(const tagRECT& r) const {
        const tagRECT c = Rect();
        if (Degenerate(c)) return r;
        if (Degenerate(r)) return c;
        return {std::min(c.left, r.left), std::max(c.top, r.top), std::max(c.right, r.right),
                std::min(c.bottom, r.bottom)};
    }
    bool Extend(const tagRECT& r) {
        const tagRECT t = ExtendTarget(r);
        if (SameRect(t, Rect())) return false;
        Rebound(t);
        return true;
    }
    static tagRECT Shifted(const Model& s, int32_t dx, int32_t dy) {
        return {Wrap(1LL * s.ox + dx), Wrap(1LL * s.oy + s.h - 1 + dy), Wrap(1LL * s.ox + s.w - 1 + dx),
                Wrap(1LL * s.oy + dy)};
    }
    bool BlitExtend(const Model& s, int32_t dx, int32_t dy) {
        const bool changed = Extend(Shifted(s, dx, dy));
        Blit(s, dx, dy);
        return changed;
    }
    // The intersection with r when at least two columns and two rows thick.
    bool RegionRect(const tagRECT& r, tagRECT& m) const {
        const tagRECT c = Rect();
        if (!Has() || !(r.top >= r.bottom && c.top >= c.bottom)) return false;
        m = {std::max(c.left, r.left), std::min(c.top, r.top), std::min(c.right, r.right),
             std::max(c.bottom, r.bottom)};
        return !Degenerate(m);
    }
    Model Region(const tagRECT& r) const {
        Model out;
        tagRECT m;
        if (!RegionRect(r, m)) return out;
        out.Init(m);
        out.CopyFrom(*this, 1LL * ox - out.ox, 1LL * oy - out.oy);
        return out;
    }
    // Bilinear sampling: clamp to [0, n - 2] (NaN to the top), neighbours clamped into the grid.
    Vec Get(FPos p) const {
        if (!Has()) return {0, 0};
        const float fx = p.x - float(ox), fy = p.y - float(oy);
        const float tx = float(w) - 2.0f, ty = float(h) - 2.0f;
        const float cx = fx < 0 ? 0.0f : (fx < tx ? fx : tx), cy = fy < 0 ? 0.0f : (fy < ty ? fy : ty);
        const long long ix = (long long)cx, iy = (long long)cy;
        const float sx = cx - float(ix), sy = cy - float(iy);
        auto col = [this](long long c) { return std::min(std::max(c, 0LL), w - 1); };
        auto row = [this](long long r) { return std::min(std::max(r, 0LL), h - 1); };
        const Vec c00 = Read(col(ix), row(iy)), c10 = Read(col(ix + 1), row(iy));
        const Vec c01 = Read(col(ix), row(iy + 1)), c11 = Read(col(ix + 1), row(iy + 1));
        const float ax = (c10.x - c00.x) * sx + c00.x, ay = (c10.y - c00.y) * sx + c00.y;
        const float bx = (c11.x - c01.x) * sx + c01.x, by = (c11.y - c01.y) * sx + c01.y;
        return {(bx - ax) * sy + ax, (by - ay) * sy + ay};
    }
};

// Cells stored after copying s (shifted by dx, dy) into d, at most: per plane row the hull of the two runs. Holds for
// Blit and BlitExtend alike, since re-bounding keeps cells where they are in the plane or drops them.
size_t CellsAfterCopy(const Model& d, const Model& s, int32_t dx, int32_t dy) {
    size_t n = d.Cells();
    if (!s.Has()) return n;
    for (long long r = 0; r < s.h; ++r) {
        const MRow& sr = s.rows[size_t(r)];
        if (sr.b == sr.e) continue;
        const long long lo = 1LL * s.ox + dx + sr.b, hi = 1LL * s.ox + dx + sr.e;
        const long long y = 1LL * s.oy + dy + r - d.oy;
        if (d.Has() && y >= 0 && y < d.h && d.rows[size_t(y)].b != d.rows[size_t(y)].e) {
            const MRow& dr = d.rows[size_t(y)];
            const long long len = std::max(hi, d.ox + dr.e) - std::min(lo, d.ox + dr.b);
            n += size_t(len - (dr.e - dr.b));
        } else {
            n += size_t(hi - lo);
        }
    }
    return n;
}

void Compare(const VectorField& f, const Model& m) {
    CHECK(f.width() == m.w && f.height() == m.h);
    CHECK(SameRect(f.GetCGIRECT(), m.Rect()));
    if (!m.Has()) {
        CHECK(f.GetStoredCellCount() == 0);
        return;
    }
    size_t total = 0;
    for (int r = 0; r < m.h; ++r) {
        const MRow& row = m.rows[size_t(r)];
        const VectorField::Run run = f.GetStoredRun(r);
        CHECK(run.begin <= run.end && run.end <= size_t(m.w) && (run.begin < run.end || run.begin == 0));
        CHECK(run.begin == size_t(row.b) && run.end == size_t(row.e));
        total += run.end - run.begin;
        for (long long c = row.b; c < row.e; ++c) CHECK(SameV(f.Get_nooffset(int(c), r), row.cells[size_t(c - row.b)]));
        for (long long c : {0LL, row.b - 1, row.e, m.w - 1})
            if (c >= 0 && c < m.w && !(c >= row.b && c < row.e)) CHECK(SameV(f.Get_nooffset(int(c), r), Vec{0, 0}));
    }
    CHECK(f.GetStoredCellCount() == total);
}

// ---- Input ----------------------------------------------------------------------------------------------------------

class Input : public qfuzz::Reader<Input> {
public:
    using Reader::Reader;
    double D() {
        static const double k[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 1e-10, -1e-10, 1.0000000001e-10, DBL_EPSILON,
                                   DBL_MIN, 4.9e-324, DBL_MAX, -DBL_MAX, kInf, -kInf, kNaN, 1e300, -1e300, 100.0,
                                   200.0, 0.1, 65536.0, 2147483648.0, -2147483649.0, 32768.0, 0.5 + DBL_EPSILON,
                                   1 - 1e-9, 0.7071067811865476, 3.141592653589793, 1e-8, 3.0};
        return Tagged(k, 96, 176, 1 / 8.0);
    }
    int32_t I() {
        static const int32_t k[] = {0, 1, -1, 2, -2, INT32_MIN, INT32_MAX,
                                    INT32_MIN + 1, INT32_MAX - 1, 64, 65, 4096, -4096, 1 << 20, 65536, -65536,
                                    1 << 30, 46341, INT32_MIN + 63, INT32_MAX - 63};
        return Tagged(k, 96, 176, 1);
    }
    float F() {
        static const float k[] = {0.0f, -0.0f, 0.5f, 1.0f, -1.0f, kFNaN, kFInf, -kFInf, FLT_MAX, -FLT_MAX, 1e-45f,
                                  16777216.0f, 2147483648.0f, -2147483648.0f, 63.5f, 64.0f, 62.999996f, 1.0f - 6e-8f};
        return Tagged(k, 64, 176, 0.25);
    }
    Vec Value() { return {F(), F()}; }
    // An int32 near base (wrapping), or anywhere.
    int32_t Near(int32_t base, int spread) { return Byte() < 200 ? Wrap(1LL * base + Byte() % spread - 8) : I(); }
    float NearF(int32_t base, long long extent) {
        const uint8_t t = Byte();
        if (t < 176) return float(base) + float(Byte()) / 255.0f * float(extent + 2) - 1.0f;
        return F();
    }
    // A rectangle near r (each edge moved by up to ±8), around it (each edge moved out by up to 8), or anywhere.
    tagRECT RectNear(const tagRECT& r) {
        const uint8_t t = Byte();
        if (t < 96)
            return {Wrap(1LL * r.left + int8_t(Byte()) % 9), Wrap(1LL * r.top + int8_t(Byte()) % 9),
                    Wrap(1LL * r.right + int8_t(Byte()) % 9), Wrap(1LL * r.bottom + int8_t(Byte()) % 9)};
        if (t < 192)
            return {Wrap(1LL * r.left - Byte() % 9), Wrap(1LL * r.top + Byte() % 9), Wrap(1LL * r.right + Byte() % 9),
                    Wrap(1LL * r.bottom - Byte() % 9)};
        return {I(), I(), I(), I()};
    }
    // A shift by a few cells from base (the offset that lines two origins up), or anywhere.
    int32_t Shift(long long base) { return Byte() < 192 ? Wrap(base + int8_t(Byte()) % 12) : I(); }
    int Slot() { return Byte() % kSlots; }
    BoundsT<double> Box() { return {D(), D(), D(), D()}; }

    VectorField field[kSlots];
    Model model[kSlots];
};

// ---- Field operations -----------------------------------------------------------------------------------------------

void FieldInit(Input& in) {
    const int s = in.Slot();
    const int w = in.Byte() % 67 - 2, h = in.Byte() % 67 - 2;
    const int32_t x = in.I(), y = in.I();
    switch (in.Byte() % 4) {
        case 0: in.field[s].Initialize(w, h, x, y); break;
        case 1: in.field[s] = VectorField(w, h, x, y); break;
        default: {
            // Inclusive and y-up; a rectangle anywhere may be empty, too tall (skipped) or beyond int.
            const tagRECT r = in.Byte() < 192 ? tagRECT{x, Wrap(1LL * y + h - 1), Wrap(1LL * x + w - 1), y}
                                              : tagRECT{x, in.I(), in.I(), y};
            if (Extent(r).h > kMaxRows) return;
            in.model[s].Init(r);
            if (in.Byte() & 1) in.field[s].Initialize(r);
            else in.field[s] = VectorField(r);
            Compare(in.field[s], in.model[s]);
            return;
        }
    }
    in.model[s].Init(w, h, x, y);
    Compare(in.field[s], in.model[s]);
}

void FieldWrite(Input& in) {
    const int s = in.Slot();
    VectorField& f = in.field[s];
    Model& m = in.model[s];
    // Single cells, or blocks of up to 16 × 16 with values rising by one per cell.
    for (int n = in.Byte() % 24; n-- > 0;) {
        const int32_t x = in.Near(m.ox, 80), y = in.Near(m.oy, 80);
        const Vec v = in.Value();
        const bool add = in.Byte() & 1;
        const int bw = in.Byte() < 64 ? in.Byte() % 16 + 1 : 1, bh = bw > 1 ? in.Byte() % 16 + 1 : 1;
        for (int j = 0; j < bh; ++j) {
            for (int i = 0; i < bw; ++i) {
                const int32_t cx = Wrap(1LL * x + i), cy = Wrap(1LL * y + j);
                const Vec c{v.x + float(i), v.y + float(j)};
                if (m.CellsAfterWrite(cx, cy, c, add) > size_t(kMaxCells)) continue;
                if (add) f.Add(cx, cy, c), m.Add(cx, cy, c);
                else f.Set(cx, cy, c), m.Set(cx, cy, c);
            }
        }
    }
    if (in.Byte() % 8 == 0) {
        f.ClearVectors();
        for (MRow& r : m.rows) r = MRow();
    }
    Compare(f, m);
}

void FieldRead(Input& in) {
    const int s = in.Slot();
    const VectorField& f = in.field[s];
    const Model& m = in.model[s];
    // Exact float arithmetic of the clamps needs the extents to be floats exactly.
    const bool exact = m.w <= (1 << 24) && m.h <= (1 << 24);
    for (int n = in.Byte() % 8; n-- > 0;) {
        const FPos p{in.NearF(m.ox, m.w), in.NearF(m.oy, m.h)};
        const Vec v = f.Get(p);
        if (exact) CHECK(SameV(v, m.Get(p)));

        const tagPOINT q{in.Near(m.ox, 80), in.Near(m.oy, 80)};
        vector2dT<double, 0> out{qfuzz::kMarker, qfuzz::kMarker};
        bool flag = in.Byte() & 1;
        const bool flag0 = flag;
        long long c, r;
        const bool inside = m.Local(q.x, q.y, c, r);
        CHECK(f.Remap(q, out, flag) == inside && flag == flag0);
        if (inside) CHECK(Same(out.x, double(m.Read(c, r).x)) && Same(out.y, double(m.Read(c, r).y)));
        else CHECK(out.x == qfuzz::kMarker && out.y == qfuzz::kMarker);

        // The range test at p - origin, the sample at p - 2·origin.
        const vector2dT<double, 1> d{in.Byte() < 128 ? double(in.NearF(m.ox, m.w)) : in.D(),
                                     in.Byte() < 128 ? double(in.NearF(m.oy, m.h)) : in.D()};
        out = {qfuzz::kMarker, qfuzz::kMarker};
        const bool ok = f.Remap_point2d(d, out);
        const float fx = float(d.x) - float(m.ox), fy = float(d.y) - float(m.oy);
        if (!exact) continue;
        CHECK(ok == (m.Has() && fx >= 0 && fx < float(m.w) && fy >= 0 && fy < float(m.h)));
        if (ok) {
            const Vec e = m.Get({fx, fy});
            CHECK(Same(out.x, double(e.x)) && Same(out.y, double(e.y)));
        } else {
            CHECK(out.x == qfuzz::kMarker && out.y == qfuzz::kMarker);
        }
    }
}

void FieldBlit(Input& in) {
    const int d = in.Slot(), s = in.Slot();
    // Onto itself the source is what the field held before the call.
    const Model src = in.model[s];
    Model& m = in.model[d];
    const bool aligned = in.Byte() < 160;
    const int32_t dx = in.Shift(aligned ? 1LL * m.ox - src.ox : 0), dy = in.Shift(aligned ? 1LL * m.oy - src.oy : 0);
    const bool extend = in.Byte() & 1;
    if (CellsAfterCopy(m, src, dx, dy) > size_t(kMaxCells)) return;
    if (extend) {
        const Extent e(m.ExtendTarget(Model::Shifted(src, dx, dy)));
        if (e.h > kMaxRows) return;
        CHECK(in.field[d].BlitExtend(in.field[s], dx, dy) == m.BlitExtend(src, dx, dy));
    } else {
        CHECK(in.field[d].Blit(in.field[s], dx, dy) == m.Blit(src, dx, dy));
    }
    Compare(in.field[d], m);
    Compare(in.field[s], in.model[s]);
}

void FieldRebound(Input& in) {
    const int s = in.Slot();
    Model& m = in.model[s];
    const tagRECT r = in.RectNear(m.Rect());
    if (in.Byte() & 1) {
        if (Extent(r).h > kMaxRows) return;
        CHECK(in.field[s].Rebound(r) == m.Rebound(r));
    } else {
        if (Extent(m.ExtendTarget(r)).h > kMaxRows) return;
        CHECK(in.field[s].Extend(r) == m.Extend(r));
    }
    Compare(in.field[s], m);
}

void FieldRegion(Input& in) {
    const int s = in.Slot(), d = in.Slot();
    const tagRECT r = in.RectNear(in.model[s].Rect());
    Model region = in.model[s].Region(r);
    VectorField got = in.field[s].GetRegion(r);
    Compare(got, region);
    Compare(in.field[s], in.model[s]);
    if (in.Byte() & 1) in.field[d] = std::move(got), in.model[d] = std::move(region);
}

// Copies and moves between the slots, self-assignment included.
void FieldAssign(Input& in) {
    const int a = in.Slot(), b = in.Slot();
    VectorField& fa = in.field[a];
    VectorField& fb = in.field[b];
    switch (in.Byte() % 3) {
        case 0:
            fa = fb;
            in.model[a] = in.model[b];
            break;
        case 1:
            fa = std::move(fb);
            if (a != b) {
                in.model[a] = in.model[b];
                in.model[b].rows.clear(), in.model[b].moved = true;
            }
            break;
        default: {
            VectorField t(std::move(fb));
            Model mt = in.model[b];
            in.model[b].rows.clear(), in.model[b].moved = true;
            Compare(t, mt);
            Compare(fb, in.model[b]);
            fa = std::move(t);
            in.model[a] = mt;
            break;
        }
    }
    Compare(fa, in.model[a]);
    Compare(fb, in.model[b]);
}

// ---- Layout ---------------------------------------------------------------------------------------------------------

int32_t Kind(Input& in) {
    static const int32_t k[] = {0, 1, 2, 3, -1, INT32_MIN, INT32_MAX, 255};
    return in.Byte() < 224 ? in.Byte() % 3 : in.Tagged(k, 96, 97, 1);
}

double SignOf(double e) { return e > 0 ? 1.0 : e < 0 ? -1.0 : 0.0; }
double Resolve(const Layout::Value& v, double e, double fallback) {
    return v.kind == 1 ? SignOf(e) * v.amount : v.kind == 2 ? e * v.amount : fallback;
}

// One axis of the layout: lo/hi are the container's edges in the order the extent is taken (left/right, top/bottom),
// a1/a2 the alignments keeping lo and hi, size/minimum/mLo/mHi the Values. A centred box of set size is placed from
// lo horizontally, (left + right - w)/2, and from hi vertically, (bottom + top + h)/2.
void LayAxis(double lo, double hi, int32_t align, int32_t a1, int32_t a2, bool centreFromHi, const Layout::Value& size,
             const Layout::Value& minimum, const Layout::Value& mLo, const Layout::Value& mHi, double& rLo,
             double& rHi) {
    const double e = hi - lo, s = Resolve(size, e, e), ml = Resolve(mLo, e, 0), mh = Resolve(mHi, e, 0);
    if (size.kind != 0) {
        if (align == a1) rLo = lo + ml, rHi = rLo + s;
        else if (align == a2) rHi = hi - mh, rLo = rHi - s;
        else if (align == 2 && centreFromHi) rHi = (hi + lo + s) / 2, rLo = rHi - s;
        else if (align == 2) rLo = (lo + hi - s) / 2, rHi = rLo + s;
        return;
    }
    rLo = lo + ml, rHi = hi - mh;
    if (minimum.kind == 0) return;
    const double mn = Resolve(minimum, e, 0);
    if (!(mn > rHi - rLo || (mn < 0 && rHi - rLo > mn))) return;
    if (align == a1) rHi = rLo + mn;
    else if (align == a2) rLo = rHi - mn;
    else if (align == 2) rLo = (e - mn) / 2, rHi = rLo + mn;
}

void LayoutOps(Input& in) {
    Layout l;
    CHECK(!l.DoesLayout() && l.CanMaintainSkew() && l.GetMaintianSkewIfPossible());
    Layout::Value v[8] = {};
    int32_t horizontal = 0, vertical = 0;
    bool keep = true;
    for (int n = in.Byte() % 12; n-- > 0;) {
        const uint8_t which = in.Byte() % 11;
        if (which < 8) {
            const Layout::Value x{Kind(in), in.D()};
            v[which] = x;
            void (Layout::*const set[8])(const Layout::Value&) = {
                &Layout::SetWidth,      &Layout::SetHeight,      &Layout::SetMinimumWidth, &Layout::SetMinimumHeight,
                &Layout::SetLeftMargin, &Layout::SetRightMargin, &Layout::SetTopMargin,    &Layout::SetBottomMargin};
            (l.*set[which])(x);
        } else if (which == 8) {
            horizontal = Kind(in);
            l.SetHorizontalAlignment(static_cast<Horizontal::Alignment>(horizontal));
        } else if (which == 9) {
            vertical = Kind(in);
            l.SetVerticalAlignment(static_cast<Vertical::Alignment>(vertical));
        } else {
            keep = in.Byte() & 1;
            l.SetMaintianSkewIfPossible(keep);
        }
    }
    const Layout::Value* got[8] = {&l.GetWidth(),      &l.GetHeight(),      &l.GetMinimumWidth(),
                                   &l.GetMinimumHeight(), &l.GetLeftMargin(), &l.GetRightMargin(),
                                   &l.GetTopMargin(),   &l.GetBottomMargin()};
    bool anySet = false;
    for (int i = 0; i < 8; ++i) {
        CHECK(got[i]->kind == v[i].kind && Same(got[i]->amount, v[i].amount));
        anySet = anySet || v[i].kind != 0;
    }
    CHECK(static_cast<int32_t>(l.GetHorizontalAlignment()) == horizontal);
    CHECK(static_cast<int32_t>(l.GetVerticalAlignment()) == vertical);
    CHECK(l.GetMaintianSkewIfPossible() == keep);
    CHECK(l.DoesLayout() == (anySet || horizontal != 0 || vertical != 0));
    CHECK(l.CanMaintainSkew() == (keep && v[0].kind == 0 && v[1].kind == 0));

    const Layout copy = l;
    const BoundsT<double> b = in.Box(), r = LayoutObject(b, copy);
    BoundsT<double> e = b;
    LayAxis(b.left, b.right, horizontal, 0, 1, false, v[0], v[2], v[4], v[5], e.left, e.right);
    LayAxis(b.top, b.bottom, vertical, 1, 0, true, v[1], v[3], v[6], v[7], e.top, e.bottom);
    CHECK(Eq(r.left, e.left) && Eq(r.top, e.top) && Eq(r.right, e.right) && Eq(r.bottom, e.bottom));

    const BoundsT<double> o = in.Box();
    const MATRIX t = GetLayoutTransformation(b, o, l);
    const double sx = (r.right - r.left) / (o.right - o.left), sy = (r.top - r.bottom) / (o.top - o.bottom);
    CHECK(Eq(t.a, sx) && t.b == 0 && Eq(t.tx, r.left - sx * o.left));
    CHECK(t.c == 0 && Eq(t.d, sy) && Eq(t.ty, r.bottom - sy * o.bottom));
}

void Anchors(Input& in) {
    static const int32_t k[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1, -3, INT32_MIN, INT32_MAX};
    const int32_t a = in.Tagged(k, 192, 193, 1);
    const auto loc = static_cast<AnchorLocation>(a);
    const BoundsT<double> b = in.Box();
    const vector2dT<double, 0> size{in.D(), in.D()};
    // Column by value mod 3 within 0..8, right otherwise; row top below 3, middle to 5, bottom beyond.
    const int col = a >= 0 && a <= 8 ? a % 3 : 2, row = a < 3 ? 0 : a <= 5 ? 1 : 2;
    const double xs[3] = {b.left, (b.left + b.right) / 2, b.right}, ys[3] = {b.top, (b.top + b.bottom) / 2, b.bottom};
    const vector2dT<double, 1> p = GetAnchorPoint(b, loc);
    CHECK(Eq(p.x, xs[col]) && Eq(p.y, ys[row]));
    const vector2dT<double, 0> off = GetAnchorOffset(b, size, loc);
    const double ox[3] = {p.x, p.x - size.x / 2, p.x - size.x}, oy[3] = {p.y - size.y, p.y - size.y / 2, p.y};
    CHECK(Eq(off.x, ox[col]) && Eq(off.y, oy[row]));
}

// ---- Scalars, random numbers ----------------------------------------------------------------------------------------

double RefBias(double t, double b) {
    if (std::fabs(b - 0.5) <= DBL_EPSILON) return t;
    const double c = b < 0 ? 0 : b > 1 ? 1 : b;
    if (c <= DBL_EPSILON) return 0;
    return t * c / ((1 - 2 * c) * (1 - t) + c);
}
double RefGain(double t, double g) {
    if (std::fabs(g) <= DBL_EPSILON) return t;
    const double c = g < -1 ? -1 : g > 1 ? 1 : g, a = c + 1, b = (2 * t - 1) * (2 * c), d = b + a;
    if (std::fabs(d) <= DBL_EPSILON) return 1;
    return t < 0.5 ? a * t / d : (b - a * t) / (b - a);
}

void Scalars(Input& in) {
    const double x = in.D(), t = in.D(), p = in.D(), q = in.D();
    CHECK(!(Gaussian(x, p, q) < 0));
    const double c = CubeRoot(x);
    if (std::fabs(x) <= 1e-10) CHECK(Same(c, 0.0));
    if (x > 1e-10) CHECK(c > 0);
    if (x < -1e-10) CHECK(Same(c, -CubeRoot(-x)));

    const int32_t a = in.I(), b = in.I();
    const int32_t g = GCD(a, b);
    const long long ua = std::llabs(1LL * a), ub = std::llabs(1LL * b);
    if (ua == -1LL * INT32_MIN && (ub == 0 || ub == ua)) CHECK(g == INT32_MIN);  // 2^31 has no int32
    else if (ua == 0 && ub == -1LL * INT32_MIN) CHECK(g == INT32_MIN);
    else CHECK(g >= 0 && g == std::gcd(ua, ub));

    const double rb = Bias(t, p), rg = Gain(t, q);
    if (!std::isnan(p)) CHECK(Same(rb, RefBias(t, p)) || (std::isnan(rb) && std::isnan(RefBias(t, p))));
    if (!std::isnan(q)) CHECK(Same(rg, RefGain(t, q)) || (std::isnan(rg) && std::isnan(RefGain(t, q))));
    CHECK(Eq(GetBiasGainBlendFactor(t, q, p), Gain(Bias(t, p), q)));
    const auto count = [&in]() -> size_t { return in.Byte() < 128 ? in.Byte() : in.Raw<uint64_t>(); };
    const size_t i = count(), n = count();
    CHECK(Same(GetLinearBlendFactor(i, n), n == 0 ? 1.0 : double(i) / double(n)));
    const double lb = GetLogarithmicBlendFactor(t, p);
    CHECK(Eq(lb, std::fabs(p - 1) <= DBL_EPSILON ? t : std::log((p - 1) * t + 1) / std::log(p)));
}

void Randoms(Input& in) {
    for (int n = in.Byte() % 8 + 1; n-- > 0;) {
        const int32_t lo = in.I(), hi = in.I(), r = Random::Generate(lo, hi);
        if (lo <= hi) CHECK(lo <= r && r <= hi);
        else CHECK(r >= lo || r <= hi);  // the range wraps through the int32 ends
        const double a = in.D(), b = in.D(), d = Random::Generate(a, b);
        if (!std::isfinite(b - a)) continue;
        // lo + u·(hi - lo) may round a few ulps past either end.
        const double slack = 4 * DBL_EPSILON * std::max(std::fabs(a), std::fabs(b));
        CHECK(std::min(a, b) - slack <= d && d <= std::max(a, b) + slack);
        if (a == b) CHECK(Same(d, a) || d == a);
        if (a == 0 && b == 1) CHECK(d < 1);
    }
}

// ---- Quaternions and the fixed-point 3D interface -------------------------------------------------------------------

bool SameQ(const Quaternion& a, const Quaternion& b) {
    return Same(a.x, b.x) && Same(a.y, b.y) && Same(a.z, b.z) && Same(a.w, b.w);
}
bool EqQ(const Quaternion& a, const Quaternion& b) {
    return Eq(a.x, b.x) && Eq(a.y, b.y) && Eq(a.z, b.z) && Eq(a.w, b.w);
}

void Quaternions(Input& in) {
    const Quaternion p(in.D(), in.D(), in.D(), in.D()), q(in.D(), in.D(), in.D(), in.D());
    const double s = in.D();
    Quaternion id(1, 2, 3, 4);
    id.Clear();
    CHECK(SameQ(id, Quaternion()) && SameQ(id, Quaternion(0, 0, 0, 1)));
    CHECK(EqQ(p + q, {p.x + q.x, p.y + q.y, p.z + q.z, p.w + q.w}));
    CHECK(EqQ(p * s, {p.x * s, p.y * s, p.z * s, p.w * s}) && EqQ(p / s, {p.x / s, p.y / s, p.z / s, p.w / s}));
    CHECK(EqQ(p * q, {p.w * q.x + p.x * q.w + p.y * q.z - p.z * q.y, p.w * q.y + p.y * q.w + p.z * q.x - p.x * q.z,
                      p.w * q.z + p.z * q.w + p.x * q.y - p.y * q.x, p.w * q.w - p.x * q.x - p.y * q.y - p.z * q.z}));
    CHECK(EqQ(p.GetConjugate(), {-p.x, -p.y, -p.z, p.w}));
    CHECK(Eq(p.DotProduct(q), p.x * q.x + p.y * q.y + p.z * q.z + p.w * q.w));
    CHECK(Eq(p.MagnitudeSqrd(), p.DotProduct(p)) && Eq(p.Magnitude(), std::sqrt(p.MagnitudeSqrd())));
    CHECK(Eq(p.RotationTheta(), 2 * std::acos(p.w)));

    const V3 axis{in.D(), in.D(), in.D()};
    const double angle = in.D();
    Quaternion r;
    r.SetAngleAndAxis(angle, axis);
    const double sh = std::sin(angle / 2);
    CHECK(EqQ(r, {sh * axis.x, sh * axis.y, sh * axis.z, std::cos(angle / 2)}) && EqQ(r, Quaternion(angle, axis)));

    Quaternion u = p;
    const double m = p.Magnitude();
    if (u.Normalize()) CHECK(m > DBL_EPSILON && EqQ(u, {p.x / m, p.y / m, p.z / m, p.w / m}));
    else CHECK(!(m > DBL_EPSILON) && SameQ(u, p));

    V3 v = axis, w = axis;
    p.RotateQuick(v);
    CHECK(Eq(v.x, p.w * axis.x + p.y * axis.z - p.z * axis.y) && Eq(v.y, p.w * axis.y + p.z * axis.x - p.x * axis.z) &&
          Eq(v.z, p.w * axis.z + p.x * axis.y - p.y * axis.x));
    p.Rotate(w);
    const Quaternion sandwich = p * Quaternion(axis.x, axis.y, axis.z, 0) * p.GetConjugate();
    CHECK(Eq(w.x, sandwich.x) && Eq(w.y, sandwich.y) && Eq(w.z, sandwich.z));

    const V3 b{in.D(), in.D(), in.D()};
    r.RotationCreate(axis, b);
    CHECK(EqQ(r, {axis.y * b.z - axis.z * b.y, axis.z * b.x - axis.x * b.z, axis.x * b.y - axis.y * b.x,
                  axis.x * b.x + axis.y * b.y + axis.z * b.z}));

    Quaternion z = q;
    z.ForceZeros();
    const auto snap = [](double c, double tol) { return std::fabs(c) <= tol ? 0.0 : c; };
    const double vt = 2.220446049250313e-13;
    CHECK(SameQ(z, {snap(q.x, vt), snap(q.y, vt), snap(q.z, vt), snap(q.w, DBL_EPSILON)}));

    // Interpolate: a failure leaves out = q0; out may alias either argument.
    const double t = in.T();
    Quaternion out(kNaN, 1, 2, 3), alias = p;
    const bool ok = Quaternion::Interpolate(p, q, t, out);
    if (!ok) CHECK(SameQ(out, p));
    CHECK(Quaternion::Interpolate(alias, q, t, alias) == ok && SameQ(alias, out));
    // q with itself (at unit length) is the equal case.
    if (u.Normalize() && std::fabs(u.MagnitudeSqrd() - 1) < 1e-12) CHECK(!Quaternion::Interpolate(u, u, t, out));
}

void Fixed3D(Input& in) {
    MTH3DMATRIX id;
    std::fill(id, id + 12, 77);
    MTHGet3DIdentityMatrix(id);
    for (int i = 0; i < 12; ++i) CHECK(id[i] == (i == 0 || i == 5 || i == 10 ? 65536 : 0));

    MTH3DMATRIX m;
    for (int32_t& e : m) e = in.Byte() < 128 ? in.I() : int8_t(in.Byte()) * 8192;
    MTH3DMATRIX t;
    std::copy(m, m + 12, t);
    const int32_t dx = in.I(), dy = in.I(), dz = in.I();
    MTHTranslate3DMatrix(t, dx, dy, dz);
    const int32_t shift[3] = {dx, dy, dz};
    for (int i = 0; i < 12; ++i) CHECK(t[i] == (i % 4 == 3 ? Wrap(1LL * m[i] + shift[i / 4]) : m[i]));

    // The first `count` points in place, in float, truncated; the rest untouched.
    const int n = in.Byte() % 9;
    std::vector<MTH3DPOINT> pts(size_t(n) + 2);
    for (auto& p : pts) p = {in.I(), in.I(), in.I()};
    const std::vector<MTH3DPOINT> before = pts;
    static const int32_t counts[] = {0, -1, INT32_MIN};
    const int32_t count = in.Byte() < 192 ? n : counts[in.Byte() % 3];
    MTHTransform3DPoints(pts.data(), m, count);
    for (int i = 0; i < n + 2; ++i) {
        const MTH3DPOINT& p = before[size_t(i)];
        if (i >= count) {
            CHECK(Same(pts[size_t(i)], p));
            continue;
        }
        int32_t e[3];
        for (int k = 0; k < 3; ++k) {
            const float c0 = float(m[4 * k]) * 1.52587890625e-05f, c1 = float(m[4 * k + 1]) * 1.52587890625e-05f;
            const float c2 = float(m[4 * k + 2]) * 1.52587890625e-05f;
            const float sum = c0 * float(p.x) + c1 * float(p.y) + c2 * float(p.z);
            e[k] = Wrap(1LL * TruncateToInt(double(sum)) + m[4 * k + 3]);
        }
        CHECK(pts[size_t(i)].x == e[0] && pts[size_t(i)].y == e[1] && pts[size_t(i)].z == e[2]);
    }

    const MTH3DPOINT eye{in.I(), in.I(), in.I()};
    std::vector<tagPOINT> proj(size_t(n) + 2, tagPOINT{12345, 54321});
    CHECK(MTHPerspective3DProjection(before.data(), proj.data(), count, eye) == 1);
    for (int i = 0; i < n + 2; ++i) {
        const MTH3DPOINT& p = before[size_t(i)];
        const double d = double(eye.z) - p.z;
        const tagPOINT e = i >= count ? tagPOINT{12345, 54321}
                                      : tagPOINT{TruncateToInt((double(p.x) * eye.z - double(p.z) * eye.x) / d),
                                                 TruncateToInt((double(p.y) * eye.z - double(p.z) * eye.y) / d)};
        CHECK(proj[size_t(i)].x == e.x && proj[size_t(i)].y == e.y);
    }

    // Quaternion to matrix: products scaled to 16.16 and truncated, then doubled (int32 wrap-around).
    double qa[4] = {in.D(), in.D(), in.D(), in.D()};
    MTH3DMATRIX qm;
    std::fill(qm, qm + 12, 99);
    CHECK(VECT_QuaternionToMat(qa, qm) == 0);
    const auto tw = [](double v) { return Wrap(2LL * TruncateToInt(v * 65536)); };
    const double x = qa[0], y = qa[1], z = qa[2], w = qa[3];
    const long long xx = tw(x * x), yy = tw(y * y), zz = tw(z * z), xy = tw(x * y), xz = tw(x * z), yz = tw(y * z);
    const long long wx = tw(w * x), wy = tw(w * y), wz = tw(w * z);
    const int32_t em[12] = {Wrap(65536 - zz - yy), Wrap(xy + wz),          Wrap(xz - wy), 0,
                            Wrap(xy - wz),         Wrap(65536 - zz - xx), Wrap(yz + wx), 0,
                            Wrap(xz + wy),         Wrap(yz - wx),          Wrap(65536 - yy - xx), 0};
    for (int i = 0; i < 12; ++i) CHECK(qm[i] == em[i]);

    double back[4] = {kNaN, kNaN, kNaN, kNaN};
    VECT_MatToQuaternion(m, back);
    // A unit quaternion comes back, up to sign, within the fixed-point precision.
    Quaternion unit(x, y, z, w);
    if (std::isfinite(unit.MagnitudeSqrd()) && unit.Normalize()) {
        const double uq[4] = {unit.x, unit.y, unit.z, unit.w};
        VECT_QuaternionToMat(uq, qm);
        VECT_MatToQuaternion(qm, back);
        double plus = 0, minus = 0;
        for (int i = 0; i < 4; ++i) {
            plus = std::max(plus, std::fabs(back[i] - uq[i]));
            minus = std::max(minus, std::fabs(back[i] + uq[i]));
        }
        CHECK(std::min(plus, minus) < 1e-3);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static void (*const ops[])(Input&) = {FieldInit, FieldWrite, FieldRead, FieldBlit,  FieldRebound,
                                          FieldRegion, FieldAssign, FieldWrite, FieldInit, LayoutOps,
                                          Anchors,   Scalars,    Randoms,   Quaternions, Fixed3D};
    return qfuzz::Run(data, size, ops, 32);
}
