// Text: searching, comparing, editing, conversions, numbers, formatting and splitting.

#include "operation.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <random>

#include <portinglayer/strings.h>

#ifdef BENCH_BOOST
#include <boost/algorithm/string.hpp>
#include <boost/lexical_cast.hpp>
#endif
#ifdef BENCH_GLIB
#include <glib.h>
#endif
#ifdef BENCH_POCO
#include <Poco/Format.h>
#include <Poco/NumberFormatter.h>
#include <Poco/NumberParser.h>
#include <Poco/String.h>
#include <Poco/StringTokenizer.h>
#include <Poco/UnicodeConverter.h>
#endif
#ifdef BENCH_QT
#include <QString>
#include <QStringList>
#endif
#ifdef BENCH_APR
#include <apr_strings.h>
#endif
#ifdef BENCH_NSPR
#include <nspr.h>
#endif

namespace {

std::string _narrow(std::wstring const& text) {
    return {text.begin(), text.end()};
}

/// What a way gives, as bytes: the form in which results are compared.
template <typename Text>
std::string _bytes(Text const& text) {
    return {text.begin(), text.end()};
}
std::string _bytes(PString const& text) {
    return {text.ptr(), text.ptr() + text.len()};
}
std::string _bytes(std::unique_ptr<char[]> const& text) {
    return text.get();
}
#ifdef BENCH_QT
std::string _bytes(QString const& text) {
    return text.toStdString();
}
#endif
#ifdef BENCH_GLIB
struct GFree {
    void operator()(void* text) const { g_free(text); }
};
using GText = std::unique_ptr<char[], GFree>;
std::string _bytes(GText const& text) {
    return text.get();
}
#endif
constexpr auto AS_BYTES = [](auto const& text) { return _bytes(text); };

bool _sameUpper(wchar_t a, wchar_t b) {
    return towupper(static_cast<wint_t>(a)) == towupper(static_cast<wint_t>(b));
}

/// Small letters and spaces, the same in every run.
std::wstring _letters(std::size_t length) {
    std::mt19937 random(7);
    std::wstring text(length, L' ');
    for (wchar_t& c : text)
        if (auto const letter = random() % 27; letter < 26) c = static_cast<wchar_t>(L'a' + letter);
    return text;
}

/// A text with what is sought in it, in the forms of the peers.
struct Haystack {
    Haystack(std::size_t length, std::size_t position, bool otherCase) : text(_letters(length)) {
        text.replace(position, what.size(), what);
        if (otherCase) what = L"WANTED";
        narrow = _narrow(text);
        narrowWhat = _narrow(what);
        ours = text.c_str();
        oursWhat = what.c_str();
#ifdef BENCH_QT
        qt = QString::fromStdWString(text);
        qtWhat = QString::fromStdWString(what);
#endif
    }

    std::wstring text;
    std::wstring what = L"wanted";
    std::string narrow;
    std::string narrowWhat;
    PString ours;
    PString oursWhat;
#ifdef BENCH_QT
    QString qt;
    QString qtWhat;
#endif
};

unsigned long _find(Haystack const& hay, bool fromEnd, bool ignoreCase) {
    unsigned long position = 0;
    return hay.ours.str(hay.oursWhat, position, fromEnd, ignoreCase) == PERR_OK ? position : ~0UL;
}

void _addSearchForward(std::size_t length) {
    std::size_t const at = length - 10;
    auto const hay = std::make_shared<Haystack>(length, at, false);
    Operation op("search forward " + std::to_string(length), 1.05, at, "std::wstring::find");
    op.way(BARE, [=] { return hay->text.find(hay->what); });
#ifdef BENCH_QT
    op.way("Qt", [=] { return static_cast<std::size_t>(hay->qt.indexOf(hay->qtWhat)); });
#endif
#ifdef BENCH_GLIB
    op.way("GLib (bytes)", [=] {
        return static_cast<std::size_t>(
            g_strstr_len(hay->narrow.c_str(), -1, hay->narrowWhat.c_str()) - hay->narrow.c_str());
    });
#endif
    op.way(OURS, [=] { return _find(*hay, false, false); });
}

void _addSearchBackward(std::size_t length) {
    std::size_t const at = 4;
    auto const hay = std::make_shared<Haystack>(length, at, false);
    Operation op("search backward " + std::to_string(length), 0.5, at, "std::wstring::rfind");
    op.way(BARE, [=] { return hay->text.rfind(hay->what); });
#ifdef BENCH_QT
    op.way("Qt", [=] { return static_cast<std::size_t>(hay->qt.lastIndexOf(hay->qtWhat)); });
#endif
#ifdef BENCH_GLIB
    op.way("GLib (bytes)", [=] {
        return static_cast<std::size_t>(g_strrstr(hay->narrow.c_str(), hay->narrowWhat.c_str()) -
                                        hay->narrow.c_str());
    });
#endif
    op.way(OURS, [=] { return _find(*hay, true, false); });
}

void _addSearchIgnoringCase(std::size_t length) {
    std::size_t const at = length - 10;
    auto const hay = std::make_shared<Haystack>(length, at, true);
    Operation op("search ignoring case " + std::to_string(length), length < 4096 ? 1.0 : 0.3, at,
                 "std::search with towupper");
    op.way(BARE, [=] {
        return static_cast<std::size_t>(std::search(hay->text.begin(), hay->text.end(),
                                                    hay->what.begin(), hay->what.end(),
                                                    _sameUpper) -
                                        hay->text.begin());
    });
#ifdef BENCH_QT
    op.way("Qt", [=] {
        return static_cast<std::size_t>(hay->qt.indexOf(hay->qtWhat, 0, Qt::CaseInsensitive));
    });
#endif
#ifdef BENCH_BOOST
    op.way("Boost", [=] {
        return static_cast<std::size_t>(boost::ifind_first(hay->text, hay->what).begin() -
                                        hay->text.begin());
    });
#endif
    op.way(OURS, [=] { return _find(*hay, false, true); });
}

void _addCompare() {
    auto const a = std::make_shared<Haystack>(64, 0, false);
    auto const b = std::make_shared<Haystack>(64, 0, false);
    Operation op("compare equal 64", NO_LIMIT, true, "std::wstring ==");
    op.way(BARE, [=] { return a->text == b->text; });
#ifdef BENCH_QT
    op.way("Qt", [=] { return a->qt == b->qt; });
#endif
    op.way(OURS, [=] { return a->ours == static_cast<PLiteral const&>(b->ours); });
}

template <typename Text, typename Piece>
void _addAppending(Operation<std::string>& op, char const* name, Piece piece) {
    auto const append = [=] {
        Text text;
        for (int i = 0; i < 100; ++i) text += piece;
        return text;
    };
    op.way(name, append, AS_BYTES);
}

void _addAppend() {
    std::string expected;
    for (int i = 0; i < 100; ++i) expected += "0123456789";
    Operation op("append 10 characters 100 times", NO_LIMIT, expected, "std::wstring +=");
    _addAppending<std::wstring>(op, BARE, L"0123456789");
#ifdef BENCH_QT
    _addAppending<QString>(op, "Qt", QString("0123456789"));
#endif
    _addAppending<PString>(op, OURS, PLiteral(L"0123456789"));
}

void _trim(std::wstring& text) {
    text.erase(text.find_last_not_of(L" \t\r\n") + 1);
    text.erase(0, text.find_first_not_of(L" \t\r\n"));
}

void _addTrim() {
    static std::wstring const text = L" \t<" + _letters(58) + L">\r\n";
    static std::string const narrow = _narrow(text);
    Operation op("trim 64", NO_LIMIT, narrow.substr(2, 60), "std::wstring");
    op.way(
        BARE,
        [] {
            std::wstring trimmed = text;
            _trim(trimmed);
            return trimmed;
        },
        AS_BYTES);
#ifdef BENCH_QT
    static QString const qt = QString::fromStdWString(text);
    op.way(
        "Qt", [] { return qt.trimmed(); }, AS_BYTES);
#endif
#ifdef BENCH_POCO
    op.way("POCO (bytes)", [] { return Poco::trim(narrow); });
#endif
#ifdef BENCH_BOOST
    op.way(
        "Boost", [] { return boost::trim_copy(text); }, AS_BYTES);
#endif
    op.way(
        OURS,
        [] {
            PString trimmed(text.c_str(), text.size());
            (void)trimmed.trim();
            return trimmed;
        },
        AS_BYTES);
}

/// Wide text and the same in UTF-8.
struct BothForms {
    BothForms(std::size_t length, bool mixed) : wide(_letters(length)) {
        for (std::size_t i = 5; mixed && i < length; i += 8)
            wide[i] = i % 3 == 0 ? L'\u6f22' : L'\u00e9';
        utf8.resize(4 * length);
        utf8.resize(wcstombs(utf8.data(), wide.c_str(), utf8.size()));
    }
    std::wstring wide;
    std::string utf8;
};

void _addNarrowing(std::string const& name, double limit, std::size_t length, bool mixed) {
    auto const forms = std::make_shared<BothForms>(length, mixed);
    Operation op("wide to multibyte, " + name, limit, forms->utf8, "wcstombs");
    op.way(
        BARE,
        [=] {
            std::unique_ptr<char[]> bytes(new char[forms->utf8.size() + 1]);
            wcstombs(bytes.get(), forms->wide.c_str(), forms->utf8.size() + 1);
            return bytes;
        },
        AS_BYTES);
#ifdef BENCH_QT
    auto const qt = QString::fromStdWString(forms->wide);
    op.way(
        "Qt (from UTF-16)", [=] { return qt.toUtf8(); }, AS_BYTES);
#endif
#ifdef BENCH_GLIB
    op.way(
        "GLib",
        [=] {
            auto const* const wide = reinterpret_cast<gunichar const*>(forms->wide.c_str());
            return GText(g_ucs4_to_utf8(wide, -1, nullptr, nullptr, nullptr));
        },
        AS_BYTES);
#endif
#ifdef BENCH_POCO
    op.way("POCO", [=] {
        std::string bytes;
        Poco::UnicodeConverter::toUTF8(forms->wide, bytes);
        return bytes;
    });
#endif
    op.way(
        OURS,
        [=] {
            return std::unique_ptr<char[]>(
                PLiteral::pwchar2pchar(forms->wide.c_str(), forms->utf8.size()));
        },
        AS_BYTES);
}

void _addWidening(std::string const& name, double limit, std::size_t length, bool mixed) {
    auto const forms = std::make_shared<BothForms>(length, mixed);
    auto const asWide = [](auto const& text) { return std::wstring(text.get()); };
    Operation op("multibyte to wide, " + name, limit, forms->wide, "mbstowcs");
    op.way(
        BARE,
        [=] {
            std::unique_ptr<wchar_t[]> wide(new wchar_t[forms->utf8.size() + 1]);
            mbstowcs(wide.get(), forms->utf8.c_str(), forms->utf8.size() + 1);
            return wide;
        },
        asWide);
#ifdef BENCH_QT
    op.way(
        "Qt (to UTF-16)", [=] { return QString::fromStdString(forms->utf8); },
        [](QString const& text) { return text.toStdWString(); });
#endif
#ifdef BENCH_GLIB
    op.way(
        "GLib",
        [=] {
            return std::unique_ptr<gunichar[], GFree>(
                g_utf8_to_ucs4(forms->utf8.c_str(), -1, nullptr, nullptr, nullptr));
        },
        [](auto const& text) { return std::wstring(reinterpret_cast<wchar_t*>(text.get())); });
#endif
#ifdef BENCH_POCO
    op.way("POCO", [=] {
        std::wstring wide;
        Poco::UnicodeConverter::toUTF32(forms->utf8, reinterpret_cast<Poco::UTF32String&>(wide));
        return wide;
    });
#endif
    op.way(
        OURS,
        [=] {
            return std::unique_ptr<wchar_t[]>(
                PLiteral::pchar2pwchar(forms->utf8.c_str(), forms->utf8.size()));
        },
        asWide);
}

void _addNumberToText() {
    static long long volatile number = 1234567890123;
    Operation op("integer to text", 4, std::string("1234567890123"), "std::to_chars");
    op.way(
        BARE,
        [] {
            std::array<char, 24> text{};
            std::to_chars(text.data(), text.data() + text.size(), number);
            return text;
        },
        [](auto const& text) { return std::string(text.data()); });
    op.way(
        "std::to_wstring", [] { return std::to_wstring(number); }, AS_BYTES);
#ifdef BENCH_QT
    op.way(
        "Qt", [] { return QString::number(number); }, AS_BYTES);
#endif
#ifdef BENCH_POCO
    op.way("POCO", [] { return Poco::NumberFormatter::format(number); });
#endif
#ifdef BENCH_BOOST
    op.way(
        "Boost", [] { return boost::lexical_cast<std::wstring>(number); }, AS_BYTES);
#endif
    op.way(
        OURS,
        [] {
            PString text;
            (void)PUtils::int64ToStr(number, text);
            return text;
        },
        AS_BYTES);
}

void _addTextToNumber() {
    static std::wstring const wide = L"1234567890123";
    static std::string const narrow = _narrow(wide);
    Operation op("text to integer", 2, 1234567890123LL, "std::from_chars");
    op.way(BARE, [] {
        long long value = 0;
        std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
        return value;
    });
    op.way("wcstoll", [] { return std::wcstoll(wide.c_str(), nullptr, 10); });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdWString(wide);
    op.way("Qt", [] { return qt.toLongLong(); });
#endif
#ifdef BENCH_POCO
    op.way("POCO", [] { return static_cast<long long>(Poco::NumberParser::parse64(narrow)); });
#endif
#ifdef BENCH_GLIB
    op.way("GLib",
           [] { return static_cast<long long>(g_ascii_strtoll(narrow.c_str(), nullptr, 10)); });
#endif
#ifdef BENCH_APR
    op.way("APR", [] { return static_cast<long long>(apr_strtoi64(narrow.c_str(), nullptr, 10)); });
#endif
#ifdef BENCH_BOOST
    op.way("Boost", [] { return boost::lexical_cast<long long>(wide); });
#endif
    static PLiteral const ours(wide.c_str());
    op.way(OURS, [] {
        long long value = 0;
        (void)PUtils::strToInt64(ours, value);
        return value;
    });
}

void _addFormatting() {
    static unsigned volatile id = 4711;
    static char const* volatile name = "watcher";
    static wchar_t const* volatile wideName = L"watcher";
    Operation op("formatted text", 1.5, std::string("/proc/4711/task/watcher:-3"), "swprintf");
    op.way(
        BARE,
        [] {
            std::array<wchar_t, 64> text;
            (void)swprintf(text.data(), text.size(), L"/proc/%u/task/%ls:%d", id, wideName, -3);
            return text;
        },
        [](auto const& text) { return _narrow(text.data()); });
#ifdef BENCH_QT
    op.way(
        "Qt", [] { return QString::asprintf("/proc/%u/task/%s:%d", id, name, -3); }, AS_BYTES);
#endif
#ifdef BENCH_GLIB
    op.way(
        "GLib", [] { return GText(g_strdup_printf("/proc/%u/task/%s:%d", id, name, -3)); },
        AS_BYTES);
#endif
#ifdef BENCH_POCO
    op.way("POCO",
           [] { return Poco::format("/proc/%u/task/%s:%d", unsigned{id}, std::string(name), -3); });
#endif
#ifdef BENCH_NSPR
    op.way(
        "NSPR",
        [] {
            return std::unique_ptr<char, decltype(&PR_smprintf_free)>(
                PR_smprintf("/proc/%u/task/%s:%d", id, name, -3), PR_smprintf_free);
        },
        [](auto const& text) { return std::string(text.get()); });
#endif
    op.way(
        OURS,
        [] {
            PString text;
            (void)PUtils::pformatString(text, L"/proc/%u/task/%ls:%d", id, wideName, -3);
            return text;
        },
        AS_BYTES);
}

std::size_t _splitStandard(std::wstring rest) {
    std::size_t characters = 0;
    while (!rest.empty()) {
        std::size_t const end = rest.find(L',');
        std::wstring token = rest.substr(0, end);
        rest.erase(0, end == std::wstring::npos ? end : end + 1);
        _trim(token);
        characters += token.size();
    }
    return characters;
}

std::size_t _splitOurs(PString rest) {
    std::size_t characters = 0;
    PString token;
    while (PLiteral::getNextToken(rest, token, L',') == PERR_OK) characters += token.len();
    return characters;
}

/// The number of characters in all texts of a list.
template <typename List>
std::size_t _characters(List const& list) {
    std::size_t characters = 0;
    for (auto const& text : list) characters += static_cast<std::size_t>(text.size());
    return characters;
}

void _addSplitting(unsigned tokens) {
    std::wstring text;
    for (unsigned i = 0; i < tokens; ++i) text += (i == 0 ? L"" : L", ") + std::wstring(L"token");
    std::string const narrow = _narrow(text);
    PString const ours(text.c_str(), text.size());
    Operation op("split tokens " + std::to_string(tokens), tokens == 100 ? 3.0 : NO_LIMIT,
                 std::size_t{5} * tokens, "std::wstring");
    op.way(BARE, [=] { return _splitStandard(text); });
#ifdef BENCH_QT
    QString const qt = QString::fromStdWString(text);
    op.way("Qt", [=] {
        QStringList list = qt.split(',');
        for (QString& token : list) token = token.trimmed();
        return _characters(list);
    });
#endif
#ifdef BENCH_POCO
    op.way("POCO", [=] {
        return _characters(Poco::StringTokenizer(narrow, ",", Poco::StringTokenizer::TOK_TRIM));
    });
#endif
#ifdef BENCH_GLIB
    op.way("GLib", [=] {
        std::unique_ptr<char*, decltype(&g_strfreev)> const list(
            g_strsplit(narrow.c_str(), ",", -1), g_strfreev);
        std::size_t characters = 0;
        for (char** token = list.get(); *token != nullptr; ++token)
            characters += strlen(g_strstrip(*token));
        return characters;
    });
#endif
#ifdef BENCH_BOOST
    op.way("Boost", [=] {
        std::vector<std::wstring> list;
        boost::split(list, text, [](wchar_t c) { return c == L','; });
        for (std::wstring& token : list) boost::trim(token);
        return _characters(list);
    });
#endif
    op.way(OURS, [=] { return _splitOurs(ours); });
}

void _addKeyAndValue() {
    static std::wstring const text = L" connection.timeout = 2500 milliseconds ";
    Operation op("split key and value", 1.15, std::size_t{18 + 17}, "std::wstring");
    op.way(BARE, [] {
        std::size_t const at = text.find(L'=');
        std::wstring key = text.substr(0, at);
        std::wstring value = text.substr(at + 1);
        _trim(key);
        _trim(value);
        return key.size() + value.size();
    });
#ifdef BENCH_QT
    static QString const qt = QString::fromStdWString(text);
    op.way("Qt", [] {
        auto const at = qt.indexOf('=');
        return static_cast<std::size_t>(qt.left(at).trimmed().size() +
                                        qt.mid(at + 1).trimmed().size());
    });
#endif
    static PLiteral const ours(text.c_str());
    op.way(OURS, [] {
        PString key;
        PString value;
        (void)PUtils::getKeyValue(ours, key, value, L'=');
        return key.len() + value.len();
    });
}

}  // namespace

void addText() {
    for (std::size_t const length : {64UL, 4096UL, 65536UL, 1048576UL}) {
        _addSearchForward(length);
        _addSearchBackward(length);
        _addSearchIgnoringCase(length);
    }
    _addCompare();
    _addAppend();
    _addTrim();
    _addNarrowing("ASCII 16", 1.0, 16, false);
    _addNarrowing("ASCII 4096", 0.25, 4096, false);
    _addNarrowing("mixed 4096", 1.0, 4096, true);
    _addWidening("ASCII 16", 1.0, 16, false);
    _addWidening("ASCII 4096", 0.25, 4096, false);
    _addWidening("mixed 4096", 1.0, 4096, true);
    _addNumberToText();
    _addTextToNumber();
    _addFormatting();
    for (unsigned const tokens : {100U, 1600U, 25600U}) _addSplitting(tokens);
    _addKeyAndValue();
}
