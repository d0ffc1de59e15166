#include "fs/narrow_path.h"

#include <cwchar>

namespace {

bool _holdsBackslash(PLiteral const& name) {
    return name.len() != 0 && wmemchr(name.ptr(), L'\\', name.len()) != nullptr;
}

PString _withSlashes(PLiteral const& name) {
    PString copy(name);
    (void)PUtils::fixFileSeparator(copy);  // cannot fail
    return copy;
}

}  // namespace

// Without memory for the copy there is no name at all: the one with backslashes is that of another
// file.
NarrowPath::NarrowPath(PLiteral const& name)
    : holdsBackslash(_holdsBackslash(name)),
      fixed(holdsBackslash ? _withSlashes(name) : PString()),
      text(holdsBackslash ? fixed : name) {
}
