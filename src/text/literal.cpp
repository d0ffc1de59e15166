#include <algorithm>
#include <climits>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <utility>

#include <portinglayer/strings.h>

#include "text/allocation.h"
#include "text/multibyte.h"
#include "text/search.h"

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

/// The position of `c` in the terminated text, null when there is none.
wchar_t const* _findCharacter(wchar_t const* text, wchar_t c, bool fromEnd) {
    return fromEnd ? wcsrchr(text, c) : wcschr(text, c);
}

wchar_t const* _findEitherCase(wchar_t const* text, wchar_t c, bool fromEnd) {
    wchar_t const* const upper = _findCharacter(text, PLiteral::toupper(c), fromEnd);
    wchar_t const* const lower = _findCharacter(text, PLiteral::tolower(c), fromEnd);
    if (upper == nullptr) return lower;
    if (lower == nullptr) return upper;
    return fromEnd ? std::max(upper, lower) : std::min(upper, lower);
}

std::size_t _find(SearchedText const& search, bool fromEnd, bool ignoreCase) {
    if (!fromEnd) return ignoreCase ? _findForwardIgnoringCase(search) : _findForward(search);

    // The position counts in signed 32 bits: of texts of 2 Gi characters and more, callers get what
    // the narrowed start leaves.
    auto const start = static_cast<int>(search.length - search.whatLength);
    return ignoreCase ? _findBackwardIgnoringCase(search, start) : _findBackward(search, start);
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

int PLiteral::str(PLiteral const& what, unsigned long& pos, bool fromEnd, bool ignoreCase) const {
    bool const nothingSought = what.text == nullptr || what.length == 0;
    if (text == nullptr || length == 0) {
        if (!nothingSought) return PERR_NOT_FOUND;
        pos = 0;
        return PERR_OK;
    }
    if (nothingSought || what.length > length) return PERR_NOT_FOUND;

    std::size_t const found = _find({text, length, what.text, what.length}, fromEnd, ignoreCase);
    if (found == SEARCH_FAILED) return PERR_NOT_FOUND;
    pos = found;
    return PERR_OK;
}

int PLiteral::chr(wchar_t c, unsigned long& pos, bool fromEnd, bool ignoreCase) const {
    if (text == nullptr || length == 0) return PERR_NOT_FOUND;
    wchar_t const* const found =
        ignoreCase ? _findEitherCase(text, c, fromEnd) : _findCharacter(text, c, fromEnd);
    if (found == nullptr) return PERR_NOT_FOUND;
    pos = static_cast<unsigned long>(found - text);
    return PERR_OK;
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

bool PLiteral::startsWith(wchar_t const* s, unsigned long /*n*/, bool ignoreCase) const {
    PLiteral const prefix(s);
    if (length == 0 || text == nullptr) return prefix.length == 0;
    if (prefix.length == 0 || prefix.length > length) return false;
    return _standsAt({text, length, prefix.text, prefix.length}, 0, ignoreCase);
}

bool PLiteral::startsWith(PLiteral const& p, bool ignoreCase) const {
    return startsWith(p.text, p.length, ignoreCase);
}

bool PLiteral::endsWith(wchar_t const* s, unsigned long n, bool ignoreCase) const {
    if (n == P_WHOLE_STRING && s != nullptr) n = wcslen(s);
    PLiteral const suffix(s);

    // With its true length a suffix can only stand at the end: no search is needed.
    bool const trueLength = n == suffix.length && n != 0 && n <= length;
    if (text != nullptr && trueLength && length - n <= INT_MAX)
        return _standsAt({text, length, suffix.text, n}, length - n, ignoreCase);

    unsigned long pos = 0;
    if (str(suffix, pos, true, ignoreCase) != PERR_OK) return false;
    return n == length - pos;
}

bool PLiteral::endsWith(PLiteral const& p, bool ignoreCase) const {
    return endsWith(p.text, p.length, ignoreCase);
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
        src.clear();
    } else {
        if (token.set(src.ptr(), pos) != PERR_OK) return PERR_TOKEN;
        if (src.erase(0, pos + 1) != PERR_OK) return PERR_TOKEN;
    }
    return token.trim() == PERR_OK ? PERR_OK : PERR_TOKEN;
}
