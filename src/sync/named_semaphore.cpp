#include "sync/named_semaphore.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

#include <portinglayer/result_codes.h>

namespace {

constexpr mode_t NAME_MODE = 0770;

/// What every system takes for sure: longer names are cut to it when they are refused.
constexpr std::size_t SAFE_NAME_LENGTH = 13;

sem_t* _open(char const* name, bool create, unsigned int value) {
    sem_t* const semaphore =
        create ? sem_open(name, O_CREAT | O_EXCL, NAME_MODE, value) : sem_open(name, 0);
    return semaphore == SEM_FAILED ? nullptr : semaphore;
}

}  // namespace

int _openNamedSemaphore(sem_t*& semaphore, char* name, bool create, unsigned int value,
                        NamedSemaphoreCodes const& codes) {
    semaphore = nullptr;
    if (name == nullptr) return codes.refused;

    semaphore = _open(name, create, value);
    if (semaphore == nullptr && errno == ENAMETOOLONG && std::strlen(name) >= SAFE_NAME_LENGTH) {
        name[SAFE_NAME_LENGTH] = '\0';
        semaphore = _open(name, create, value);
    }
    if (semaphore != nullptr) return PERR_OK;

    switch (errno) {
    case EEXIST: return codes.exists;
    case ENOENT: return codes.missing;
    case ENOSYS: return PERR_NOT_SUPPORTED;
    default: return codes.refused;
    }
}

bool _closeNamedSemaphore(sem_t* semaphore, char const* name) {
    bool const closed = sem_close(semaphore) == 0;
    (void)sem_unlink(name);  // a partner may have removed the name already
    return closed;
}
