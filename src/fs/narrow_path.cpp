#include "fs/narrow_path.h"

#include <cwchar>

namespace {

/// A copy of the name with slashes; empty when the name can stay as it is.
PString _withSlashes(PLiteral const& name) {
    PString copy;
    if (name.len() == 0 || wmemchr(name.ptr(), L'\\', name.len()) == nullptr) return copy;
    copy = name;
    (void)PUtils::fixFileSeparator(copy);  // cannot fail
    return copy;
}

}  // namespace

NarrowPath::NarrowPath(PLiteral const& name)
    : fixed(_withSlashes(name)), text(fixed.len() != 0 ? fixed : name) {
}
