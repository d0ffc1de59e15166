#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <memory>

#include <portinglayer/strings.h>

#include "text/allocation.h"
#include "text/assigned_text.h"
#include "text/measured.h"
#include "text/multibyte.h"

PLiteral::PLiteral() : text(nullptr), length(0) {
}

PLiteral::PLiteral(wchar_t const* s) : text(s), length(_measured(s)) {
}

PLiteral::PLiteral(PLiteral const& o) = default;

PLiteral::~PLiteral() {
    text = nullptr;
    length = 0;
}

PLiteral& PLiteral::operator=(PLiteral const& o) {
    if (this == &o) return *this;
    text = o.text;
    length = o.length;
    return *this;
}

PLiteral& PLiteral::operator=(wchar_t const* s) {
    if (s == text) return *this;  // not measured anew: callers rely on reading the old length back
    text = s;
    length = _measured(s);
    return *this;
}

unsigned long PLiteral::len() const {
    return length;
}

wchar_t const* PLiteral::ptr() const {
    return text;
}

PLiteral::operator wchar_t const*() const {
    return text;
}

int PLiteral::cmp(wchar_t const* s, unsigned long n) const {
    if (s != nullptr) n = _measured(s, n);
    if (length == 0 && n == 0) return 0;
    if (text == nullptr || n > length) return -1;
    if (n < length || s == nullptr) return 1;
    return wcsncmp(text, s, length);
}

int PLiteral::cmp(PLiteral const& o) const {
    return cmp(o.text, o.length);
}

bool PLiteral::operator==(PLiteral const& o) const {
    return cmp(o) == 0;
}
bool PLiteral::operator==(wchar_t const* s) const {
    return cmp(s, _measured(s)) == 0;
}
bool PLiteral::operator!=(PLiteral const& o) const {
    return cmp(o) != 0;
}
bool PLiteral::operator!=(wchar_t const* s) const {
    return cmp(s, _measured(s)) != 0;
}
bool PLiteral::operator<(PLiteral const& o) const {
    return cmp(o) < 0;
}
bool PLiteral::operator<(wchar_t const* s) const {
    return cmp(s, _measured(s)) < 0;
}
bool PLiteral::operator<=(PLiteral const& o) const {
    return cmp(o) <= 0;
}
bool PLiteral::operator<=(wchar_t const* s) const {
    return cmp(s, _measured(s)) <= 0;
}
bool PLiteral::operator>(PLiteral const& o) const {
    return cmp(o) > 0;
}
bool PLiteral::operator>(wchar_t const* s) const {
    return cmp(s, _measured(s)) > 0;
}
bool PLiteral::operator>=(PLiteral const& o) const {
    return cmp(o) >= 0;
}
bool PLiteral::operator>=(wchar_t const* s) const {
    return cmp(s, _measured(s)) >= 0;
}

PLiteral::operator char*() const {
    return ascii();
}

char* PLiteral::ascii() const {
    return pwchar2pchar(text, length);
}

char* PLiteral::pwchar2pchar(wchar_t const* s, unsigned long n) {
    n = _measured(s, n);
    if (n == 0) return nullptr;

    std::unique_ptr<char[]> buffer(_newText<char>(n, 0, CONVERSION_SPARE));
    if (!buffer) return nullptr;
    std::size_t const done = _narrow(buffer.get(), s, n);
    if (done == 0 || done == MULTIBYTE_FAILED) return nullptr;
    std::fill(buffer.get() + done, buffer.get() + n + CONVERSION_SPARE, '\0');
    return buffer.release();
}

wchar_t* PLiteral::pchar2pwchar(char const* s, unsigned long n) {
    std::unique_ptr<wchar_t[]> made;
    (void)_widenCopy(s, n, made);  // null says it all
    return made.release();
}

wchar_t PLiteral::toupper(wchar_t c) {
    return static_cast<wchar_t>(towupper(static_cast<wint_t>(c)));
}

wchar_t PLiteral::tolower(wchar_t c) {
    return static_cast<wchar_t>(towlower(static_cast<wint_t>(c)));
}

int PLiteral::getNextToken(PString& src, PString& token, wchar_t sep) {
    if (src.len() == 0) return PERR_TOKEN;

    unsigned long pos = 0;
    bool const found = src.chr(sep, pos, false, false) == PERR_OK && pos < src.len();
    if (!found) pos = src.len();
    if (_setTrimmed(token, {src.ptr(), pos}) != PERR_OK) return PERR_TOKEN;
    return src.erase(0, std::min(pos + 1, src.len())) == PERR_OK ? PERR_OK : PERR_TOKEN;
}
