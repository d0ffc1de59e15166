/// Why the system did not open a file, in codes.
#ifndef PORTINGLAYER_FS_OPEN_FAILURE_H
#define PORTINGLAYER_FS_OPEN_FAILURE_H

#include <cerrno>

#include <portinglayer/result_codes.h>

inline int _openFailure(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return PERR_NO_SUCH_FILE;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBUSY:
    case ENXIO:
    case ELOOP: return PERR_REFUSED;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
    case EIO: return PERR_WRITE;
    case ENOMEM: return PERR_NO_MEMORY;
    default: return PERR_SYSTEM;
    }
}

#endif
