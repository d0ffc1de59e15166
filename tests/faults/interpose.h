/// Standing in for calls of the C library: the definitions of a program win over it.
#ifndef TESTS_FAULTS_INTERPOSE_H
#define TESTS_FAULTS_INTERPOSE_H

#include <dlfcn.h>

/// Each is defined under a name of its own and bears the real one as its symbol only, since the C
/// library declares it with other types: one signature does for all, with up to seven whole numbers
/// or addresses. What is given may return; `pass()` is the real call, which follows otherwise. The
/// address sanitizer is not told when a cancelled thread leaves it, so it does not look.
#define INTERPOSE(name, ...)                                                                       \
    extern "C" long our_##name(long a, long b, long c, long d, long e, long f,                     \
                               long g) __asm__(#name);                                             \
    [[gnu::no_sanitize_address]] long our_##name(long a, long b, long c, long d, long e, long f,   \
                                                 long g) {                                         \
        using Call = long (*)(long, long, long, long, long, long, long);                           \
        static auto const real = reinterpret_cast<Call>(dlsym(RTLD_NEXT, #name));                  \
        auto const pass = [&] { return real(a, b, c, d, e, f, g); };                               \
        __VA_ARGS__;                                                                               \
        return pass();                                                                             \
    }

#endif
