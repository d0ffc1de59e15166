/// Matching names of a directory against a pattern.
#ifndef PORTINGLAYER_FS_NAME_PATTERN_H
#define PORTINGLAYER_FS_NAME_PATTERN_H

#include <portinglayer/strings.h>

#include "text/narrow_text.h"

/// A pattern for as long as names are matched with it. The answers are those of fnmatch with
/// FNM_PATHNAME and FNM_NOESCAPE, which decides about everything out of the ordinary. The pattern
/// must outlive this object.
class NamePattern {
public:
    explicit NamePattern(PLiteral const& pattern);

    bool matches(char const* name) const;

private:
    PLiteral const wide;
    bool const plain;       ///< characters that mean the same in every locale, "*" and "?" only
    NarrowText const text;  ///< for fnmatch; null while plain
};

#endif
