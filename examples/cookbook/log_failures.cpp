/// Logs what fails: where, what was tried, the code and its name, and what the system said.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <portinglayer/files.h>

//! [helper]
/// Hands the code on, so that it can stand around any call.
int logged(int code, char const* what, PLiteral const& object, int reason = 0) {
    if (code == PERR_OK) return code;
    std::fprintf(stderr, "%s \"%ls\": %s (%d)%s%s\n", what, object.ptr(), perrorName(code), code,
                 reason != 0 ? ": " : "", reason != 0 ? std::strerror(reason) : "");
    return code;
}
//! [helper]

int main() {
    //! [use]
    PFile file;
    PLiteral const name(L"/proc/self/no-such-file");
    int result = file.popen(name, PFile::OPEN_READ, PFile::UNLOCKED);
    result = logged(result, "open", name, errno);  // files promise errno
    //! [use]
    return result == PERR_NO_SUCH_FILE ? 0 : 1;
}
