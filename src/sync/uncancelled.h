/// Calls that are cancellation points, made where a thread must not end.
#ifndef PORTINGLAYER_SYNC_UNCANCELLED_H
#define PORTINGLAYER_SYNC_UNCANCELLED_H

#include <pthread.h>

/// While it lives, the calling thread is not cancelled: a request made meanwhile waits for the next
/// cancellation point. Whatever closes or destroys holds one, since a thread that unwinds out of a
/// destructor ends the program, and one that unwinds out of a close leaks what was being closed.
/// `errno` stays as it is.
class Uncancelled {
public:
    Uncancelled() { (void)pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before); }
    ~Uncancelled() { (void)pthread_setcancelstate(before, nullptr); }
    Uncancelled(Uncancelled const&) = delete;
    Uncancelled& operator=(Uncancelled const&) = delete;

private:
    int before = PTHREAD_CANCEL_ENABLE;
};

#endif
