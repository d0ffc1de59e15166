#include <algorithm>
#include <cwchar>
#include <memory>
#include <utility>

#include <portinglayer/strings.h>

#include "text/allocation.h"
#include "text/measured.h"
#include "text/white_space.h"

namespace {

using Buffer = std::unique_ptr<wchar_t[]>;

/// The owned characters: what a string holds was allocated by itself, so it may write there.
wchar_t* _own(wchar_t const* text) {
    return const_cast<wchar_t*>(text);
}

/// A terminated text of two parts; null without memory for it.
Buffer _joined(wchar_t const* first, unsigned long firstLength, wchar_t const* second,
               unsigned long secondLength) {
    Buffer buffer(_newText<wchar_t>(firstLength, secondLength, 1));
    if (!buffer) return buffer;
    std::copy_n(first, firstLength, buffer.get());
    std::copy_n(second, secondLength, buffer.get() + firstLength);
    buffer[firstLength + secondLength] = L'\0';
    return buffer;
}

}  // namespace

PString::PString() = default;

PString::PString(wchar_t const* s, unsigned long n) {
    text = dupPtr(s, n, length);
}

PString::PString(char const* s, unsigned long n) {
    text = pchar2pwchar(s, n);
    length = text == nullptr ? 0 : wcslen(text);
}

PString::PString(PString const& o) : PLiteral() {
    text = dupPtr(o.text, o.length, length);
}

PString::PString(PLiteral const& o) {
    text = dupPtr(o.ptr(), o.len(), length);
}

PString::PString(PString&& o) noexcept : PLiteral(o) {
    o.text = nullptr;
    o.length = 0;
}

PString::~PString() {
    clear();
}

PString& PString::operator=(PLiteral const& o) {
    (void)set(o.ptr(), o.len());  // without memory the string is empty, which callers can see
    return *this;
}

PString& PString::operator=(wchar_t const* s) {
    Buffer const old(_own(text));  // freed last: the new text may stand in it
    length = 0;
    text = dupPtr(s, P_WHOLE_STRING, length);  // which has a buffer for an empty text, unlike `set`
    return *this;
}

PString& PString::operator=(PString const& o) {
    return *this = static_cast<PLiteral const&>(o);
}

PString& PString::operator=(PString&& o) noexcept {
    if (this == &o) return *this;
    clear();
    text = std::exchange(o.text, nullptr);
    length = std::exchange(o.length, 0);
    return *this;
}

PString& PString::operator+=(PLiteral const& o) {
    (void)cat(o);  // the operator has no way to tell
    return *this;
}

PString& PString::operator+=(wchar_t const* s) {
    (void)cat(s, P_WHOLE_STRING);  // the operator has no way to tell
    return *this;
}

void PString::clear() {
    delete[] text;
    text = nullptr;
    length = 0;
}

int PString::cat(wchar_t const* s, unsigned long n) {
    n = _measured(s, n);
    if (n == 0) return PERR_OK;

    Buffer joined = _joined(text, length, s, n);
    if (!joined) return PERR_NO_MEMORY;
    delete[] text;  // only now: the appended text may stand in it
    text = joined.release();
    length += n;
    return PERR_OK;
}

int PString::cat(PLiteral const& o) {
    return cat(o.ptr(), o.len());
}

int PString::cat(char const* s, unsigned long n) {
    n = _measured(s, n);
    if (n == 0) return PERR_OK;

    Buffer wide(pchar2pwchar(s, n));
    if (!wide) return PERR_NO_MEMORY;
    if (text != nullptr) {
        wide = _joined(text, length, wide.get(), n);
        if (!wide) return PERR_NO_MEMORY;
        delete[] text;
    }
    text = wide.release();
    length += n;  // bytes, not characters: multibyte text counts the zero characters behind it
    return PERR_OK;
}

int PString::set(wchar_t const* s, unsigned long n) {
    Buffer const old(_own(text));  // freed last: the new text may stand in it
    text = nullptr;
    length = 0;
    return cat(s, n);
}

int PString::set(PLiteral const& o, unsigned long n) {
    if (n == P_WHOLE_STRING) return set(o.ptr(), o.len());
    return n > o.len() ? PERR_INVALID_ARGUMENT : set(o.ptr(), n);
}

int PString::set(char const* s, unsigned long n) {
    clear();
    return cat(s, n);
}

int PString::insert(unsigned long pos, wchar_t const* s, unsigned long n) {
    n = _measured(s, n);
    if (pos > length) return PERR_INVALID_ARGUMENT;
    if (n == 0) return PERR_OK;
    if (text == nullptr || length == 0) return set(s, n);
    if (pos == length) return cat(s, n);

    Buffer grown(_newText<wchar_t>(length, n, 1));
    if (!grown) return PERR_NO_MEMORY;
    wchar_t* const gap = std::copy_n(text, pos, grown.get());
    wchar_t* const rest = std::copy_n(s, n, gap);
    *std::copy(text + pos, text + length, rest) = L'\0';
    delete[] text;  // only now: the inserted text may stand in it
    text = grown.release();
    length += n;
    return PERR_OK;
}

int PString::insert(unsigned long pos, PLiteral const& o, unsigned long n) {
    return insert(pos, o.ptr(), n == P_WHOLE_STRING ? o.len() : n);
}

int PString::erase(unsigned long pos, unsigned long count) {
    if (pos > length || count > length - pos) return PERR_INVALID_ARGUMENT;
    if (length == 0 || count == 0) return PERR_OK;
    if (count == length) {
        clear();
        return PERR_OK;
    }
    wchar_t* const gap = _own(text) + pos;
    std::copy(gap + count, _own(text) + length, gap);
    length -= count;
    _own(text)[length] = L'\0';
    return PERR_OK;
}

int PString::trim() {
    if (text == nullptr || length == 0) return PERR_OK;
    std::wstring_view const kept = _trimmed({text, length});
    *std::copy(kept.begin(), kept.end(), _own(text)) = L'\0';
    length = kept.size();
    return PERR_OK;
}

int PString::stripall() {
    if (text == nullptr || length == 0) return PERR_OK;
    Buffer kept(_newText<wchar_t>(length, 0, 1));
    if (!kept) return PERR_NO_MEMORY;

    wchar_t* const end = std::remove_copy_if(text, text + length, kept.get(), _isWhite);
    *end = L'\0';
    length = static_cast<unsigned long>(end - kept.get());
    delete[] text;
    text = kept.release();
    return PERR_OK;
}

int PString::fill(wchar_t c) {
    std::fill_n(_own(text), length, c);
    return PERR_OK;
}

int PString::fill(wchar_t c, unsigned long n) {
    if (n == 0) return PERR_OK;
    if (n > length) {
        Buffer grown(_newText<wchar_t>(n, 0, 1));
        if (!grown) return PERR_NO_MEMORY;
        delete[] text;
        text = grown.release();
        length = n;
    }
    std::fill_n(_own(text), n, c);
    _own(text)[n] = L'\0';  // below the length this ends the text, yet the stored length stays
    return PERR_OK;
}

int PString::replace(wchar_t from, wchar_t to) {
    if (text == nullptr) return PERR_OK;
    wchar_t* at = _own(text);
    wchar_t* const end = at + length;
    while ((at = wmemchr(at, from, static_cast<std::size_t>(end - at))) != nullptr) *at++ = to;
    return PERR_OK;
}

wchar_t* PString::dupPtr(wchar_t const* s, unsigned long n, unsigned long& outLen) {
    if (n == 0 || s == nullptr) {
        outLen = 0;
        return nullptr;
    }
    n = _measured(s, n);
    Buffer copy = _joined(nullptr, 0, s, n);
    if (copy) outLen = n;
    return copy.release();
}
