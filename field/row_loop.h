#ifndef QORMATH_FIELD_ROW_LOOP_H
#define QORMATH_FIELD_ROW_LOOP_H

// Internal: the one parallel loop of the library.

namespace QorMath {

/// Work on one row; context carries the caller's state.
using RowBody = void (*)(void* context, int row);

/// Calls body(context, row) for every row in [first, last): over oneTBB's
/// workers, auto-partitioned, when there is more than one row; directly on the
/// calling thread for a single row. Returns when every row is done. The body
/// must touch only its own row's destination.
void ForEachRow(int first, int last, RowBody body, void* context);

}  // namespace QorMath

#endif
