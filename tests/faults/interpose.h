/// Standing in for calls of the C library: the definitions of a program win over it.
#ifndef TESTS_FAULTS_INTERPOSE_H
#define TESTS_FAULTS_INTERPOSE_H

#include <dlfcn.h>

/// Each is defined under a name of its own and bears the real one as its symbol only, since the C
/// library declares it with other types: one signature does for all, with up to seven whole numbers
/// or addresses. What is given may change these and may return. The real call follows otherwise;
/// `pass()` makes it before, as it was asked for. The address sanitizer is not told when a cancelled
/// thread leaves the function, so it does not look at it.
#define INTERPOSE(name, ...)                                                                       \
    extern "C" long our_##name(long a, long b, long c, long d, long e, long f,                     \
                               long g) __asm__(#name);                                             \
    [[gnu::no_sanitize_address]] long our_##name(long a, long b, long c, long d, long e, long f,   \
                                                 long g) {                                         \
        using Call = long (*)(long, long, long, long, long, long, long);                           \
        static auto const real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, #name));                  \
        [[maybe_unused]] auto const pass = [=] { return real(a, b, c, d, e, f, g); };              \
        __VA_ARGS__;                                                                               \
        return real(a, b, c, d, e, f, g);                                                          \
    }

#endif
