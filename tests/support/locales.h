/// Locales of any codeset that the C library knows, made for a test: machines have few of them.
#ifndef TESTS_SUPPORT_LOCALES_H
#define TESTS_SUPPORT_LOCALES_H

#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <support/scratch.h>

/// While it lives, characters of the process are those of a codeset such as EUC-JP, GB_1988-80 or
/// DIN_66003 (of the Debian package `locales`); afterwards those of the C locale.
class MadeLocale {
public:
    /// `source` is a definition that the package has, such as tr_TR, or the path of one.
    explicit MadeLocale(std::string const& codeset, std::string const& source = "POSIX") {
        std::string const make =
            "localedef --quiet --no-warnings=ascii -c -i " + source + " -f " + codeset;
        (void)std::system((make + " " + folder.path(codeset) + " 2>/dev/null").c_str());
        (void)setenv("LOCPATH", folder.dir().c_str(), 1);
        if (std::setlocale(LC_CTYPE, codeset.c_str()) == nullptr)
            throw std::runtime_error("localedef of the package locales made none of " + codeset);
    }
    ~MadeLocale() {
        (void)unsetenv("LOCPATH");
        (void)std::setlocale(LC_CTYPE, "C");
    }

private:
    Scratch folder;
};

#endif
