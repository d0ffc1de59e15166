// What is done to one text: copying, comparing, appending, trimming.

#include "operation.h"

#include <random>

std::wstring letters(std::size_t length) {
    std::mt19937 random(7);
    std::wstring text(length, L' ');
    for (wchar_t& c : text)
        if (auto const letter = random() % 27; letter < 26) c = static_cast<wchar_t>(L'a' + letter);
    return text;
}

namespace {

void _addCopy() {
    static Forms const text(letters(64));
    Operation op("copy 64", 1.05, text.narrow, "std::wstring");
    op.way(BARE, [] { return std::wstring(text.wide); });
    WITH_QT(op.way("Qt (shared)", [] { return QString(text.qt); }));
    op.way(OURS, [] { return PString(text.ours); });
}

void _addCompare() {
    static Forms const a(letters(64));
    static Forms const b(letters(64));
    Operation op("compare equal 64", NO_LIMIT, true, "std::wstring ==");
    op.way(BARE, [] { return a.wide == b.wide; });
    WITH_QT(op.way("Qt", [] { return a.qt == b.qt; }));
    op.way(OURS, [] { return a.ours == static_cast<PLiteral const&>(b.ours); });
}

template <typename Text, typename Piece>
auto _appending(Piece piece) {
    return [=] {
        Text text;
        for (int i = 0; i < 100; ++i) text += piece;
        return text;
    };
}

void _addAppend() {
    auto const expected = _appending<std::string>("0123456789")();
    Operation op("append 10 characters 100 times", NO_LIMIT, expected, "std::wstring +=");
    op.way(BARE, _appending<std::wstring>(L"0123456789"));
    WITH_QT(op.way("Qt", _appending<QString>(QString("0123456789"))));
    op.way(OURS, _appending<PString>(PLiteral(L"0123456789")));
}

void _addTrim() {
    static Forms const text(L" \t<" + letters(58) + L">\r\n");
    Operation op("trim 64", NO_LIMIT, text.narrow.substr(2, 60), "std::wstring");
    op.way(BARE, [] { return trimmed(text.wide); });
    WITH_QT(op.way("Qt", [] { return text.qt.trimmed(); }));
    WITH_POCO(op.way("POCO (bytes)", [] { return Poco::trim(text.narrow); }));
    WITH_BOOST(op.way("Boost", [] { return boost::trim_copy(text.wide); }));
    op.way(OURS, [] {
        PString copy(text.ours);
        (void)copy.trim();
        return copy;
    });
}

}  // namespace

void addEditing() {
    _addCopy();
    _addCompare();
    _addAppend();
    _addTrim();
}
