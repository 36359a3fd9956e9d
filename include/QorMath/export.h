#ifndef QORMATH_EXPORT_H
#define QORMATH_EXPORT_H

/// \file
/// The export mark of the shared library.

/// QORMATH_API marks the documented interface. The library is built with hidden
/// visibility, so everything without this mark stays internal to the shared object.
/// Empty with QORMATH_STATIC (a static build), dllexport/dllimport on Windows,
/// default visibility elsewhere.
#if defined(QORMATH_STATIC)
#define QORMATH_API
#elif defined(_WIN32)
#if defined(QORMATH_BUILDING)
#define QORMATH_API __declspec(dllexport)
#else
#define QORMATH_API __declspec(dllimport)
#endif
#else
#define QORMATH_API __attribute__((visibility("default")))
#endif

#endif
