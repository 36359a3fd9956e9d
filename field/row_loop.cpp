// The row loop on oneTBB.
//
// Under ThreadSanitizer this file is compiled without instrumentation, like the
// oneTBB library itself, whose synchronisation the sanitizer cannot see. The
// two happens-before edges that oneTBB guarantees are then stated explicitly:
// the caller's work before the loop precedes every row, and every row precedes
// the caller's work after it. Rows stay unordered among themselves, so a race
// between two rows is still reported.

#include "field/row_loop.h"

#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>

// QORMATH_THREAD_SANITIZER comes from the build: this file itself is compiled
// without the sanitizer, so the compiler's own marker is absent.
#if defined(QORMATH_THREAD_SANITIZER)
extern "C" void __tsan_acquire(void* address);
extern "C" void __tsan_release(void* address);
#endif

namespace QorMath {

namespace {

void Release([[maybe_unused]] void* token) {
#if defined(QORMATH_THREAD_SANITIZER)
    __tsan_release(token);
#endif
}

void Acquire([[maybe_unused]] void* token) {
#if defined(QORMATH_THREAD_SANITIZER)
    __tsan_acquire(token);
#endif
}

}  // namespace

void ForEachRow(int first, int last, RowBody body, void* context) {
    if (last - first == 1) {
        body(context, first);
        return;
    }
    if (last - first < 1) return;
    char before = 0;
    char after = 0;
    Release(&before);
    tbb::parallel_for(
        first, last,
        [&](int row) {
            Acquire(&before);
            body(context, row);
            Release(&after);
        },
        tbb::auto_partitioner());
    Acquire(&after);
}

}  // namespace QorMath
