/// System semaphores by name, as the named lock and the named semaphore share them.
#ifndef PORTINGLAYER_SYNC_NAMED_SEMAPHORE_H
#define PORTINGLAYER_SYNC_NAMED_SEMAPHORE_H

#include <semaphore.h>

/// Creates `name` with the given count (the name must be new), or opens an existing one. A name that
/// the system finds too long is cut in place to its first 13 characters, for all later use, and tried
/// once more. Returns null on failure, `errno` telling why; a null name is an invalid one (EINVAL).
sem_t* _openNamedSemaphore(char* name, bool create, unsigned int value);

/// Closes the semaphore and removes its name from the system, also when closing failed. Returns
/// whether closing succeeded.
bool _closeNamedSemaphore(sem_t* semaphore, char const* name);

#endif
