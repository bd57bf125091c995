// Export macro of the MFCQMUtils module: only what is marked with it leaves the library.
#pragma once

#if defined(MFCQMUTILS_STATIC)
#define MFCQMUTILS_API
#elif defined(_WIN32)
#if defined(MFCQMUTILS_BUILDING)
#define MFCQMUTILS_API __declspec(dllexport)
#else
#define MFCQMUTILS_API __declspec(dllimport)
#endif
#else
#define MFCQMUTILS_API __attribute__((visibility("default")))
#endif
