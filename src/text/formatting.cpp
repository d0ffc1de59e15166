/// PUtils: formatted text, key and value, argument vectors, and the fix-ups of paths.
#include <cerrno>
#include <cstdarg>
#include <cwchar>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include <portinglayer/strings.h>

#include "text/assigned_text.h"
#include "text/multibyte.h"

namespace {

constexpr unsigned long HEADROOM = 2048;  // wide characters beyond the format, terminator included
constexpr unsigned long SHORT_TEXT = 256;
constexpr wchar_t PROGRAM_KEY[] = L"process.name";

/// Formats into `shortText`; false when the text does not fit or a conversion fails. `args` stays
/// usable for another pass.
bool _formatShort(wchar_t (&shortText)[SHORT_TEXT], wchar_t const* format, va_list args) {
    int const error = errno;
    va_list copy;
    va_copy(copy, args);
    // The analyzer loses sight of the copy when it is given several files at once.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    int const written = std::vswprintf(shortText, SHORT_TEXT, format, copy);
    va_end(copy);
    if (written < 0) errno = error;  // "%m" shows it in the next pass
    return written >= 0;
}

/// Sets an element from its argument; the first one becomes a pair unless it is one already.
int _setArgument(PString& element, char const* argument, bool first, wchar_t sep) {
    std::unique_ptr<wchar_t[]> converted;
    int result = _widenCopy(argument, P_WHOLE_STRING, converted);
    if (result != PERR_OK) return result;

    PLiteral const text(converted.get());
    bool const pair =
        std::wstring_view(text.ptr(), text.len()).find(sep) != std::wstring_view::npos;
    if (first && !pair) {
        result = element.set(PROGRAM_KEY, P_WHOLE_STRING);
        if (result == PERR_OK) result = element.cat(&sep, 1);
    }
    return result == PERR_OK ? element.cat(text) : result;
}

}  // namespace

/// Formats on the stack; whatever does not end well there is done again with all the room there is,
/// on a ground of zeros: it gives the text cut by the limit, or what stands before a conversion
/// that fails. The output is assigned last, so that arguments may point into its former text.
int PUtils::vformatString(PString& out, PLiteral const& format, va_list args) {
    bool const emptied = &format == &out || format.ptr() == nullptr;  // the output goes first
    if (emptied) return _assign(out, L"");
    wchar_t shortText[SHORT_TEXT];
    if (_formatShort(shortText, format.ptr(), args)) return _assign(out, shortText);

    unsigned long const limit = format.len() + HEADROOM;
    std::unique_ptr<wchar_t[]> const buffer(new (std::nothrow) wchar_t[limit + 1]());
    if (!buffer) {
        out.clear();
        return PERR_NO_MEMORY;
    }
    (void)std::vswprintf(buffer.get(), limit, format.ptr(), args);  // longer text is cut on purpose
    return _assign(out, buffer.get());
}

int PUtils::pformatString(PString& out, wchar_t const* format, ...) {
    va_list args;
    va_start(args, format);
    int const result = vformatString(out, format, args);
    va_end(args);
    return result;
}

int PUtils::getKeyValue(PLiteral const& text, PString& key, PString& value, wchar_t sep) {
    unsigned long pos = 0;
    if (text.chr(sep, pos, false, false) != PERR_OK || pos >= text.len()) return PERR_NOT_FOUND;

    PString head;  // both are whole before an output changes: the text may be either
    PString tail;
    int result = _setTrimmed(head, {text.ptr(), pos});
    bool const hasKey = result == PERR_OK;
    if (hasKey) result = _setTrimmed(tail, {text.ptr() + pos + 1, text.len() - pos - 1});
    key = std::move(head);
    if (hasKey) value = std::move(tail);
    return result;
}

int PUtils::convertArgs(int argc, char** argv, PString*& out, unsigned long& outCount,
                        wchar_t sep) {
    out = nullptr;
    if (argc < 0) return PERR_NO_MEMORY;
    auto const count = static_cast<unsigned long>(argc);
    std::unique_ptr<PString[]> elements(new (std::nothrow) PString[count]);
    if (!elements) return PERR_NO_MEMORY;
    for (unsigned long i = 0; i < count; ++i) {
        char const* const argument = argv != nullptr ? argv[i] : nullptr;
        int const result = _setArgument(elements[i], argument, i == 0, sep);
        if (result != PERR_OK) return result;
    }
    out = elements.release();
    outCount = count;
    return PERR_OK;
}

int PUtils::parseLink(PLiteral const& /*link*/, PString& path, PString& args) {
    path.clear();
    args.clear();
    return PERR_INVALID_ARGUMENT;  // no program ends in an extension here, so no link has a path
}

int PUtils::fixFileSeparator(PString& path) {
    return path.replace(L'\\', L'/');
}

int PUtils::fixExecFileExtension(PString& /*path*/) {
    return PERR_OK;
}
