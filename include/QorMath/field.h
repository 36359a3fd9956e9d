#ifndef QORMATH_FIELD_H
#define QORMATH_FIELD_H

/// \file
/// A sparse grid of 2D float vectors with bilinear sampling and a row-parallel
/// block copy.
///
/// The grid is `width` columns by `height` rows placed at an integer origin in a
/// y-up plane: plane point (X, Y) is local column X - originX, local row
/// Y - originY, and row 0 is the bottom row. Each row stores one contiguous run
/// of cells [runBegin, runEnd); every other cell of the row reads as the row's
/// fill value, (0, 0) for a fresh row. A mostly uniform field therefore costs a
/// few words per row.
///
/// Blit, BlitExtend, Rebound, Extend and GetRegion copy row by row; when more
/// than one row is involved the rows are spread over the processors (oneTBB,
/// auto-partitioned). Each task writes only its own destination rows, so the
/// result equals the serial loop's. The field being written must not be used by
/// other threads during the call; distinct fields may be worked on concurrently.

#include <cstddef>
#include <vector>

#include "QorMath/types.h"

namespace QorMath {

/// A width × height grid of float vectors at an integer origin, y-up, each row
/// one stored run plus a fill value. A value type: movable and assignable, with
/// copies made through operator= or GetRegion.
// Exported member by member, so the row helpers stay internal.
class VectorField {
public:
    /// The cell value: a float vector.
    using Vector = vector2dT<float, 0>;

    /// The columns a row stores explicitly: [begin, end), empty when equal.
    struct Run {
        size_t begin;  ///< first stored local column
        size_t end;    ///< one past the last stored local column
    };

    /// An empty field: no rows, width, height and origin 0.
    QORMATH_API VectorField();
    /// Initialize(width, height, originX, originY).
    QORMATH_API VectorField(int width, int height, int originX, int originY);
    /// Initialize(r).
    QORMATH_API explicit VectorField(const tagRECT& r);
    /// Takes other's rows and copies its geometry; other keeps its geometry but
    /// has no rows and acts as an empty field until initialised or assigned.
    QORMATH_API VectorField(VectorField&& other) noexcept;
    /// As the move constructor; self-assignment changes nothing.
    QORMATH_API VectorField& operator=(VectorField&& other) noexcept;
    /// Deep copy of rows and geometry.
    QORMATH_API VectorField& operator=(const VectorField& other);
    /// Frees the rows.
    QORMATH_API ~VectorField();

    /// A grid of width × height cells, all (0, 0), at (originX, originY).
    /// A width or height below 1 makes the field empty with origin (0, 0).
    QORMATH_API void Initialize(int width, int height, int originX, int originY);
    /// Initialize(r.right - r.left + 1, r.top - r.bottom + 1, r.left, r.bottom):
    /// r is inclusive and y-up. Extents beyond the int range count as empty.
    QORMATH_API void Initialize(const tagRECT& r);

    /// The number of columns; 0 for a default or empty-initialised field.
    int width() const { return width_; }
    /// The number of rows; 0 for a default or empty-initialised field.
    int height() const { return height_; }
    /// The plane rectangle, inclusive: {originX, originY + height - 1,
    /// originX + width - 1, originY} (int32 wrap-around at the extremes).
    QORMATH_API tagRECT GetCGIRECT() const;

    /// The cell at local (col, row): its stored value inside the row's run, the
    /// row's fill outside it. No bounds check: 0 <= col < width, 0 <= row < height.
    QORMATH_API const Vector& Get_nooffset(int col, int row) const;
    /// Stores v at plane (x, y); ignored outside the grid. A value equal to the
    /// row's fill is not stored outside the run; any other value widens the run.
    QORMATH_API void Set(int x, int y, const Vector& v);
    /// Adds v to the cell at plane (x, y); ignored outside the grid.
    QORMATH_API void Add(int x, int y, const Vector& v);
    /// The cell at plane point p widened to double, true; false (out untouched)
    /// outside the grid. flag is never written.
    QORMATH_API bool Remap(const tagPOINT& p, vector2dT<double, 0>& out, bool& flag) const;
    /// False unless p - origin (narrowed to float) lies in [0, width) × [0, height);
    /// then out = Get(p - origin), true. Get subtracts the origin again, so the
    /// field is sampled at p - 2·origin: kept as published, and the same for a
    /// field at (0, 0).
    QORMATH_API bool Remap_point2d(const vector2dT<double, 1>& p, vector2dT<double, 0>& out) const;
    /// Bilinear sample at plane point p, in float. The position is clamped to
    /// [0, width - 2] × [0, height - 2] (NaN to the upper clamp), so the last
    /// column and row are reached as the right and top neighbours. A field one
    /// cell wide or high samples its edge cells; an empty field gives (0, 0).
    QORMATH_API Vector Get(vector2dT<float, 1> p) const;
    /// Empties every row's run; fills and geometry stay.
    QORMATH_API void ClearVectors();

    /// Copies src into this field, src's origin shifted by (dx, dy) cells. Only
    /// cells of this field are written; cells under src's extent that src does
    /// not store take this field's fill (src's fill is not copied). True when
    /// all of src landed inside, or src has no cells; false when this field is
    /// empty or src sticks out (the part inside is still copied).
    QORMATH_API bool Blit(const VectorField& src, int dx, int dy);
    /// Extend to src's shifted rectangle, then Blit. Returns whether the
    /// rectangle changed.
    QORMATH_API bool BlitExtend(const VectorField& src, int dx, int dy);
    /// Moves this field to the plane rectangle r (inclusive, y-up), keeping the
    /// cells that fall inside. True when all old contents fit (or there were none).
    QORMATH_API bool Rebound(const tagRECT& r);
    /// Grows the rectangle to the union with r and returns true, or returns
    /// false when that changes nothing. A field one cell wide or high (or empty)
    /// takes r itself; a degenerate r (left >= right or bottom >= top) is ignored.
    QORMATH_API bool Extend(const tagRECT& r);
    /// A new field holding the intersection of r with this field's rectangle;
    /// empty when that intersection is less than two columns or two rows.
    QORMATH_API VectorField GetRegion(const tagRECT& r) const;

    /// The stored run of local row `row` (0 <= row < height).
    QORMATH_API Run GetStoredRun(int row) const;
    /// The number of explicitly stored cells over all rows.
    QORMATH_API size_t GetStoredCellCount() const;

private:
    struct Row {
        Vector fill;
        size_t runBegin;
        size_t runEnd;
        size_t length;
        std::vector<Vector> cells;
    };

    // Copies are made through operator= or GetRegion.
    VectorField(const VectorField& other);

    bool HasCells() const;
    const Vector& ReadAt(int col, int row) const;
    void WriteAt(int col, int row, const Vector& v);
    void WriteAt_Safe(int col, int row, const Vector& v);
    void AddAt_Safe(int col, int row, const Vector& v);
    bool CopyRowsFrom(const VectorField& src, long long ox, long long oy);

    static void Widen(Row& row, size_t a, size_t b);
    static void Erase(Row& row, size_t a, size_t b);
    static void CopyRow(Row& dst, const Row& src, long long ox);

    std::vector<Row> rows_;
    int width_ = 0;
    int height_ = 0;
    int originX_ = 0;
    int originY_ = 0;
};

}  // namespace QorMath

#endif
