/// How a name of a file reaches the system.
#ifndef PORTINGLAYER_FS_NARROW_PATH_H
#define PORTINGLAYER_FS_NARROW_PATH_H

#include <cerrno>

#include <portinglayer/strings.h>

#include "text/narrow_text.h"

/// The multibyte form of a name after its backslashes were turned into slashes. Only a name that
/// holds a backslash is copied for that.
class NarrowPath {
public:
    explicit NarrowPath(PLiteral const& name);

    /// The terminated name; null when it is empty or cannot be converted.
    char const* get() const { return text.get(); }

private:
    bool holdsBackslash;
    PString fixed;  ///< with slashes instead; empty where there is nothing to replace
    NarrowText text;
};

/// Whether there is a name to make a system call with. Where there is none, `errno` says what the
/// kernel says of a null name, which the C library may not be handed.
inline bool _isName(char const* path) {
    if (path == nullptr) errno = EFAULT;
    return path != nullptr;
}

#endif
