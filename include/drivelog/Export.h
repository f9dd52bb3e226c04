// Export.h - marks what the library shows to its host.
//
// DRIVELOG_BUILDING is defined while the library itself is compiled, DRIVELOG_STATIC by who links a static
// build of it. Only Windows tells them apart.
#pragma once

#if defined(_WIN32)
#if defined(DRIVELOG_BUILDING)
#define DRIVELOG_API __declspec(dllexport)
#elif defined(DRIVELOG_STATIC)
#define DRIVELOG_API
#else
#define DRIVELOG_API __declspec(dllimport)
#endif
#else
#define DRIVELOG_API __attribute__((visibility("default")))
#endif
