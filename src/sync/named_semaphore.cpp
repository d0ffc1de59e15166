#include "sync/named_semaphore.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

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

sem_t* _openNamedSemaphore(char* name, bool create, unsigned int value) {
    if (name == nullptr) {
        errno = EINVAL;
        return nullptr;
    }

    sem_t* const semaphore = _open(name, create, value);
    if (semaphore != nullptr || errno != ENAMETOOLONG) return semaphore;
    if (std::strlen(name) < SAFE_NAME_LENGTH) return nullptr;

    name[SAFE_NAME_LENGTH] = '\0';
    return _open(name, create, value);
}

bool _closeNamedSemaphore(sem_t* semaphore, char const* name) {
    bool const closed = sem_close(semaphore) == 0;
    (void)sem_unlink(name);  // a partner may have removed the name already
    return closed;
}
