/// How a name of a file reaches the system.
#ifndef PORTINGLAYER_FS_NARROW_PATH_H
#define PORTINGLAYER_FS_NARROW_PATH_H

#include <cerrno>

#include <portinglayer/strings.h>

#include "text/narrow_text.h"

/// The multibyte form of a name after its backslashes were turned into slashes: none when it is
/// empty, cannot be converted, or no memory is left.
NarrowText _narrowPath(PLiteral const& name);

/// Whether there is a name to make a system call with. Where there is none, `errno` says what the
/// kernel says of a null name, which the C library may not be handed.
inline bool _isName(NarrowText const& name) {
    if (name.get() == nullptr) errno = EFAULT;
    return name.get() != nullptr;
}

#endif
