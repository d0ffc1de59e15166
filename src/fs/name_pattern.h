/// Matching names of a directory against a pattern.
#ifndef PORTINGLAYER_FS_NAME_PATTERN_H
#define PORTINGLAYER_FS_NAME_PATTERN_H

#include <portinglayer/strings.h>

/// Whether a name in a directory matches: the answer of fnmatch with FNM_PATHNAME and FNM_NOESCAPE.
bool _matchesPattern(PLiteral const& pattern, char const* name);

#endif
