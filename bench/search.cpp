// Searching: forward, backward and ignoring case, for what stands far from where the search begins, and
// for what nearly stands everywhere.

#include "operation.h"

#include <algorithm>
#include <cwctype>

namespace {

constexpr std::size_t NOWHERE = std::wstring::npos;

/// A text with what is sought in it.
struct Haystack {
    Haystack(std::wstring hay, std::wstring sought)
        : text(std::move(hay)), what(std::move(sought)) {}
    Forms text;
    Forms what;
};

std::shared_ptr<Haystack const> _wantedAt(std::size_t place, std::size_t length,
                                          std::wstring const& sought = L"wanted") {
    std::wstring text = letters(length);
    text.replace(place, 6, L"wanted");
    return std::make_shared<Haystack>(text, sought);
}

std::size_t _ours(Haystack const& hay, bool fromEnd, bool ignoreCase) {
    unsigned long position = NOWHERE;
    (void)hay.text.ours.str(hay.what.ours, position, fromEnd, ignoreCase);
    return position;
}

bool _sameUpper(wchar_t a, wchar_t b) {
    return towupper(static_cast<wint_t>(a)) == towupper(static_cast<wint_t>(b));
}

std::size_t _standard(Haystack const& hay) {
    std::wstring const& text = hay.text.wide;
    std::wstring const& what = hay.what.wide;
    auto const found = std::search(text.begin(), text.end(), what.begin(), what.end(), _sameUpper);
    return found == text.end() ? NOWHERE : static_cast<std::size_t>(found - text.begin());
}

void _addForward(std::string const& size, std::size_t length, double limit) {
    auto const hay = _wantedAt(length - 10, length);
    Operation op("search forward " + size, limit, length - 10, "std::wstring::find");
    op.way(BARE, [=] { return hay->text.wide.find(hay->what.wide); });
    WITH_QT(op.way("Qt", [=] { return hay->text.qt.indexOf(hay->what.qt); }));
    WITH_GLIB(op.way("GLib (bytes)", [=] {
        return g_strstr_len(hay->text.c(), -1, hay->what.c()) - hay->text.c();
    }));
    op.way(OURS, [=] { return _ours(*hay, false, false); });
}

void _addBackward(std::string const& size, std::size_t length, double limit) {
    auto const hay = _wantedAt(4, length);
    Operation op("search backward " + size, limit, std::size_t{4}, "std::wstring::rfind");
    op.way(BARE, [=] { return hay->text.wide.rfind(hay->what.wide); });
    WITH_QT(op.way("Qt", [=] { return hay->text.qt.lastIndexOf(hay->what.qt); }));
    WITH_GLIB(op.way("GLib (bytes)",
                     [=] { return g_strrstr(hay->text.c(), hay->what.c()) - hay->text.c(); }));
    op.way(OURS, [=] { return _ours(*hay, true, false); });
}

void _addIgnoringCase(std::string const& size, std::size_t length, double limit) {
    auto const hay = _wantedAt(length - 10, length, L"WANTED");
    Operation op("search ignoring case " + size, limit, length - 10, "std::search with towupper");
    op.way(BARE, [=] { return _standard(*hay); });
    WITH_QT(
        op.way("Qt", [=] { return hay->text.qt.indexOf(hay->what.qt, 0, Qt::CaseInsensitive); }));
    WITH_BOOST(op.way("Boost", [=] {
        return boost::ifind_first(hay->text.wide, hay->what.wide).begin() - hay->text.wide.begin();
    }));
    op.way(OURS, [=] { return _ours(*hay, false, true); });
}

/// The first character of what is sought stands nowhere: what its own search is worth.
void _addRare() {
    auto const hay = std::make_shared<Haystack>(letters(4096), L"Wanted");
    Operation op("search forward, rare character 4096", 1.05, NOWHERE, "std::wstring::find");
    op.way(BARE, [=] { return hay->text.wide.find(hay->what.wide); });
    WITH_QT(op.way("Qt", [=] { return hay->text.qt.indexOf(hay->what.qt); }));
    op.way(OURS, [=] { return _ours(*hay, false, false); });
}

/// All but one character of what is sought stands at every place, at which plain ways compare 500.
void _addWorst(std::size_t length, bool fromEnd, bool ignoreCase) {
    std::wstring const most(500, L'a');
    auto const hay = std::make_shared<Haystack>(std::wstring(length, L'a'), most + L"b" + most);
    std::string const kind =
        std::string(fromEnd ? "backward" : "forward") + (ignoreCase ? ", ignoring case " : " ");
    Operation op("worst search " + kind + std::to_string(length),
                 {.nanoseconds = 10.0 * static_cast<double>(length)}, NOWHERE,
                 ignoreCase ? "std::search with towupper" : "std::wstring");
    if (!ignoreCase)
        op.way(BARE, [=] {
            return fromEnd ? hay->text.wide.rfind(hay->what.wide)
                           : hay->text.wide.find(hay->what.wide);
        });
    else if (!fromEnd && length < 100000)  // a long text takes seconds
        op.way(BARE, [=] { return _standard(*hay); });
    op.way(OURS, [=] { return _ours(*hay, fromEnd, ignoreCase); });
}

}  // namespace

void addSearch() {
    struct {
        std::size_t length;
        double forward, backward, ignoringCase;  // limits
    } const rows[] = {
        {64, 1.05, 0.15, 0.75},
        {4096, 0.65, 0.08, 0.15},
        {65536, 0, 0, 0},
        {1048576, 0.35, 0.10, 0.12},
    };
    for (auto const& row : rows) {
        std::string const size = std::to_string(row.length);
        _addForward(size, row.length, row.forward);
        _addBackward(size, row.length, row.backward);
        _addIgnoringCase(size, row.length, row.ignoringCase);
    }
    _addRare();
    for (std::size_t const length : {65536UL, 1048576UL})
        for (bool const fromEnd : {false, true})
            for (bool const ignoreCase : {false, true}) _addWorst(length, fromEnd, ignoreCase);
}
