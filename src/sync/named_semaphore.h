/// System semaphores by name, as the named lock and the named semaphore share them.
#ifndef PORTINGLAYER_SYNC_NAMED_SEMAPHORE_H
#define PORTINGLAYER_SYNC_NAMED_SEMAPHORE_H

#include <semaphore.h>

/// How a class says why it has no named semaphore.
struct NamedSemaphoreCodes {
    int exists;
    int missing;
    int refused;
};

/// Creates `name` with the given count (the name must be new), or opens an existing one. A name
/// that the system finds too long is cut in place to its first 13 characters, for all later use,
/// and tried once more; a null name is refused. Returns PERR_OK, PERR_NOT_SUPPORTED or one of
/// `codes`; `semaphore` is null on failure.
int _openNamedSemaphore(sem_t*& semaphore, char* name, bool create, unsigned int value,
                        NamedSemaphoreCodes const& codes);

/// Closes the semaphore and removes its name from the system, also when closing failed. Returns
/// whether closing succeeded.
bool _closeNamedSemaphore(sem_t* semaphore, char const* name);

#endif
