#include "fs/narrow_path.h"

#include <cwchar>

NarrowText _narrowPath(PLiteral const& name) {
    bool const hasBackslash = name.len() != 0 && wmemchr(name.ptr(), L'\\', name.len()) != nullptr;
    if (!hasBackslash) return NarrowText(name);

    // Without memory the copy is empty, and no name at all: the given one is that of another file.
    PString copy(name);
    (void)PUtils::fixFileSeparator(copy);  // cannot fail
    return NarrowText(copy);
}
