/// Logs what fails: where, what was tried, the code and its name, and what the system said.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include <portinglayer/files.h>
#include <portinglayer/utf8.h>

//! [helper]
/// Hands the code on, so that it can stand around any call.
int logged(int code, char const* what, PLiteral const& object, int reason = 0) {
    if (code == PERR_OK) return code;
    std::string name;
    (void)PUtf8::encode(object, name);  // "%ls" loses the line where the locale lacks a character
    std::fprintf(stderr, "%s \"%s\": %s (%d)%s%s\n", what, name.c_str(), perrorName(code), code,
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
