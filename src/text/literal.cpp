#include <algorithm>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <utility>

#include <portinglayer/strings.h>

#include "text/allocation.h"
#include "text/multibyte.h"

namespace {

constexpr std::size_t CONVERSION_SPARE = 8;  // zero characters behind every converted text

unsigned long _measure(wchar_t const* s) {
    return s == nullptr ? 0 : wcslen(s);
}

/// Zero-fills what a conversion left of a buffer of `limit` characters and the spare ones.
template <typename Character>
void _zeroTail(Character* buffer, std::size_t done, std::size_t limit) {
    std::fill(buffer + done, buffer + limit + CONVERSION_SPARE, Character{});
}

}  // namespace

PLiteral::PLiteral() : text(nullptr), length(0) {
}

PLiteral::PLiteral(wchar_t const* s) : text(s), length(_measure(s)) {
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
    length = _measure(s);
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
    if (n == P_WHOLE_STRING && s != nullptr) n = wcslen(s);
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
    return cmp(s, _measure(s)) == 0;
}
bool PLiteral::operator!=(PLiteral const& o) const {
    return cmp(o) != 0;
}
bool PLiteral::operator!=(wchar_t const* s) const {
    return cmp(s, _measure(s)) != 0;
}
bool PLiteral::operator<(PLiteral const& o) const {
    return cmp(o) < 0;
}
bool PLiteral::operator<(wchar_t const* s) const {
    return cmp(s, _measure(s)) < 0;
}
bool PLiteral::operator<=(PLiteral const& o) const {
    return cmp(o) <= 0;
}
bool PLiteral::operator<=(wchar_t const* s) const {
    return cmp(s, _measure(s)) <= 0;
}
bool PLiteral::operator>(PLiteral const& o) const {
    return cmp(o) > 0;
}
bool PLiteral::operator>(wchar_t const* s) const {
    return cmp(s, _measure(s)) > 0;
}
bool PLiteral::operator>=(PLiteral const& o) const {
    return cmp(o) >= 0;
}
bool PLiteral::operator>=(wchar_t const* s) const {
    return cmp(s, _measure(s)) >= 0;
}

PLiteral::operator char*() const {
    return ascii();
}

char* PLiteral::ascii() const {
    return pwchar2pchar(text, length);
}

char* PLiteral::pwchar2pchar(wchar_t const* s, unsigned long n) {
    if (n == 0 || s == nullptr) return nullptr;
    if (n == P_WHOLE_STRING) n = wcslen(s);

    std::unique_ptr<char[]> buffer(_newText<char>(n, 0, CONVERSION_SPARE));
    if (!buffer) return nullptr;
    std::size_t const done = _narrow(buffer.get(), s, n);
    if (done == 0 || done == MULTIBYTE_FAILED) return nullptr;
    _zeroTail(buffer.get(), done, n);
    return buffer.release();
}

wchar_t* PLiteral::pchar2pwchar(char const* s, unsigned long n) {
    if (n == 0 || s == nullptr) return nullptr;
    if (n == P_WHOLE_STRING) n = strlen(s);

    std::unique_ptr<wchar_t[]> buffer(_newText<wchar_t>(n, 0, CONVERSION_SPARE));
    if (!buffer) return nullptr;
    std::size_t const done = _widen(buffer.get(), s, n);
    if (done == 0 || done == MULTIBYTE_FAILED) return nullptr;
    _zeroTail(buffer.get(), done, n);
    return buffer.release();
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
    if (!found) {
        token = std::move(src);  // the source is emptied anyway
        src.clear();             // NOLINT(bugprone-use-after-move): it may be the token itself
    } else {
        if (token.set(src.ptr(), pos) != PERR_OK) return PERR_TOKEN;
        if (src.erase(0, pos + 1) != PERR_OK) return PERR_TOKEN;
    }
    return token.trim() == PERR_OK ? PERR_OK : PERR_TOKEN;
}
