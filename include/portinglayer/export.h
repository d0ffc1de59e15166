/// @file
/// The one macro that marks what the shared object exports; everything else in it is hidden.
#ifndef PORTINGLAYER_EXPORT_H
#define PORTINGLAYER_EXPORT_H

/// Makes a class or function visible outside the shared object, which is built with hidden
/// visibility. A caller sees the same attribute, so that the type information of exported classes
/// is shared between programs and the library.
#define PORTINGLAYER_EXPORT __attribute__((visibility("default")))

#endif
