/// Names of files that are put together.
#ifndef PORTINGLAYER_FS_JOINED_NAME_H
#define PORTINGLAYER_FS_JOINED_NAME_H

#include <initializer_list>

#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>

/// Makes `name` of its parts. What it holds after a failure must not be used: a name that lacks its
/// last parts is that of another file.
inline int _joinName(PString& name, std::initializer_list<PLiteral> parts) {
    name.clear();
    for (PLiteral const& part : parts)
        if (name.cat(part) != PERR_OK) return PERR_NO_MEMORY;
    return PERR_OK;
}

#endif
