/// Texts for the system as UTF-8, whatever the locale is.
#ifndef PORTINGLAYER_TEXT_UTF8_NAME_H
#define PORTINGLAYER_TEXT_UTF8_NAME_H

#include <string>

#include <portinglayer/strings.h>

/// Encodes a text that the system ends at its first zero. Gives PERR_OK, PERR_INVALID_ARGUMENT for
/// a zero character, PERR_BAD_FORMAT or PERR_NO_MEMORY; `bytes` is written only on success.
int _utf8Text(PLiteral const& text, std::string& bytes);

/// As above, for a name: an empty one is PERR_INVALID_ARGUMENT, too.
int _utf8Name(PLiteral const& name, std::string& bytes);

#endif
