/// @file
/// The version of these headers, and that of the library found at run time.
#ifndef PORTINGLAYER_VERSION_H
#define PORTINGLAYER_VERSION_H

#include <portinglayer/export.h>

/// Raised when callers must be rebuilt; it is also the number in the name of the shared object.
#define PORTINGLAYER_VERSION_MAJOR 1
/// Raised when something is added; callers built against an earlier one run unchanged.
#define PORTINGLAYER_VERSION_MINOR 0
/// Raised when something is mended and nothing added.
#define PORTINGLAYER_VERSION_PATCH 0

/// The three numbers as one that can be compared: 10203 stands for 1.2.3.
#define PORTINGLAYER_VERSION                                                                       \
    (PORTINGLAYER_VERSION_MAJOR * 10000U + PORTINGLAYER_VERSION_MINOR * 100U +                     \
     PORTINGLAYER_VERSION_PATCH)

/// Gives the version of the library that the program runs with, which may be another one than the
/// version of the headers it was compiled with.
///
/// A program fits when both have the same major version and the library is not the older one:
/// `portinglayerVersion() / 10000 == PORTINGLAYER_VERSION_MAJOR` and
/// `portinglayerVersion() >= PORTINGLAYER_VERSION`.
///
/// @return the version in the form of #PORTINGLAYER_VERSION
///
/// Threads: free of shared state, callable from any.
PORTINGLAYER_EXPORT unsigned int portinglayerVersion();

#endif
