// Export macro of the MFCQMUtils library: only what is marked with it leaves the library.
// It sits with the framework types at the bottom of the layers, so that every layer may use it.
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
