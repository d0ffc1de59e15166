// Between numbers and text.

#include "operation.h"

#include <array>
#include <charconv>
#include <cwchar>

namespace {

void _addNumberToText() {
    static long long volatile number = 1234567890123;
    Operation op("integer to text", 3.7, std::string("1234567890123"), "std::to_chars");
    op.way(
        BARE,
        [] {
            std::array<char, 24> text{};
            std::to_chars(text.data(), text.data() + text.size(), number);
            return text;
        },
        [](auto const& text) { return std::string(text.data()); });
    op.way("std::to_wstring", [] { return std::to_wstring(number); });
    WITH_QT(op.way("Qt", [] { return QString::number(number); }));
    WITH_POCO(op.way("POCO", [] { return Poco::NumberFormatter::format(number); }));
    WITH_BOOST(op.way("Boost", [] { return boost::lexical_cast<std::wstring>(number); }));
    op.way(OURS, [] { return out<PString>(PUtils::int64ToStr, number); });
}

void _addTextToNumber() {
    static Forms const text(L"1234567890123");
    Operation op("text to integer", 2, 1234567890123LL, "std::from_chars");
    op.way(BARE, [] {
        long long value = 0;
        std::from_chars(text.narrow.data(), text.narrow.data() + text.narrow.size(), value);
        return value;
    });
    op.way("wcstoll", [] { return std::wcstoll(text.wide.c_str(), nullptr, 10); });
    WITH_QT(op.way("Qt", [] { return text.qt.toLongLong(); }));
    WITH_POCO(op.way("POCO", [] { return Poco::NumberParser::parse64(text.narrow); }));
    WITH_GLIB(op.way("GLib", [] { return g_ascii_strtoll(text.c(), nullptr, 10); }));
    WITH_APR(op.way("APR", [] { return apr_strtoi64(text.c(), nullptr, 10); }));
    WITH_BOOST(op.way("Boost", [] { return boost::lexical_cast<long long>(text.wide); }));
    op.way(OURS, [] { return out<long long>(PUtils::strToInt64, text.ours); });
}

}  // namespace

void addNumbers() {
    _addNumberToText();
    _addTextToNumber();
}
