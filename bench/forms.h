/// @file
/// Text in the forms that the ways take and give.
#ifndef PORTINGLAYER_BENCH_FORMS_H
#define PORTINGLAYER_BENCH_FORMS_H

#include <cstdlib>
#include <memory>
#include <string>

#include <portinglayer/strings.h>

#include "peers.h"

/// What a way gives, as bytes: the form in which texts are compared.
template <typename Text>
std::string bytesOf(Text const& text) {
    return {text.begin(), text.end()};
}
inline std::string bytesOf(PString const& text) {
    return {text.ptr(), text.ptr() + text.len()};
}
template <typename Character, typename Deleter>
std::string bytesOf(std::unique_ptr<Character[], Deleter> const& text) {
    return bytesOf(std::basic_string<Character>(text.get()));
}

/// The same as wide characters.
inline std::wstring wideOf(std::wstring const& text) {
    return text;
}
inline std::wstring wideOf(PString const& text) {
    return {text.ptr(), text.len()};
}
inline std::wstring wideOf(std::unique_ptr<wchar_t[]> const& text) {
    return text.get();
}

/// One text in all the forms.
struct Forms {
    explicit Forms(std::wstring text)
        : wide(std::move(text)), narrow(bytesOf(wide)), ours(wide.c_str(), wide.size()) {
        WITH_QT(qt = QString::fromStdWString(wide));
    }
    char const* c() const { return narrow.c_str(); }

    std::wstring wide;
    std::string narrow;
    PString ours;
    WITH_QT(QString qt;)
};

/// Small letters and spaces, the same in every run.
std::wstring letters(std::size_t length);

/// Wide text and the same in UTF-8.
struct Both {
    Both(std::size_t length, bool mixed) : wide(letters(length)) {
        for (std::size_t i = 5; mixed && i < length; i += 8)
            wide[i] = i % 3 == 0 ? L'\u6f22' : L'\u00e9';
        utf8.resize(4 * length);
        utf8.resize(wcstombs(utf8.data(), wide.c_str(), utf8.size()));
    }
    std::wstring wide;
    std::string utf8;
};

/// Trimmed with the standard library.
inline std::wstring trimmed(std::wstring text) {
    text.erase(text.find_last_not_of(L" \t\r\n") + 1);
    text.erase(0, text.find_first_not_of(L" \t\r\n"));
    return text;
}

/// What an operation of the library hands out through its last argument.
template <typename Out, typename Operation, typename... In>
Out out(Operation operation, In const&... in) {
    Out result{};
    (void)operation(in..., result);
    return result;
}

/// The number of characters in all texts of a list.
template <typename List>
std::size_t charactersIn(List const& list) {
    std::size_t characters = 0;
    for (auto const& text : list) characters += static_cast<std::size_t>(text.size());
    return characters;
}

#endif
