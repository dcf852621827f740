// Definitions of exported C functions carry KELO_EXPORT; everything else in the
// shared object stays hidden (-fvisibility=hidden).
#ifndef KELO_COMMON_INTERNAL_API_H_
#define KELO_COMMON_INTERNAL_API_H_

#if defined(__GNUC__)
#define KELO_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define KELO_EXPORT extern "C"
#endif

#endif  // KELO_COMMON_INTERNAL_API_H_
