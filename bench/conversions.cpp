// Between wide text and multibyte text.

#include "operation.h"

#include <cwchar>

namespace {

void _addNarrowing(std::string const& name, Both const& both, double limit) {
    auto const text = std::make_shared<Both>(both);
    Operation op("wide to multibyte, " + name, limit, text->utf8, "wcstombs");
    op.way(BARE, [=] {
        std::unique_ptr<char[]> bytes(new char[text->utf8.size() + 1]);
        wcstombs(bytes.get(), text->wide.c_str(), text->utf8.size() + 1);
        return bytes;
    });
    WITH_QT(op.way("Qt (from UTF-16)",
                   [qt = QString::fromStdWString(text->wide)] { return qt.toUtf8(); }));
    WITH_GLIB(op.way("GLib", [=] {
        auto const* const wide = reinterpret_cast<gunichar const*>(text->wide.c_str());
        return GText(g_ucs4_to_utf8(wide, -1, nullptr, nullptr, nullptr));
    }));
    WITH_POCO(op.way("POCO", [=] {
        std::string bytes;
        Poco::UnicodeConverter::toUTF8(text->wide, bytes);
        return bytes;
    }));
    op.way(OURS, [=] {
        return std::unique_ptr<char[]>(
            PLiteral::pwchar2pchar(text->wide.c_str(), text->utf8.size()));
    });
}

void _addWidening(std::string const& name, Both const& both, double limit) {
    auto const text = std::make_shared<Both>(both);
    Operation op("multibyte to wide, " + name, limit, text->wide, "mbstowcs");
    op.way(BARE, [=] {
        std::unique_ptr<wchar_t[]> wide(new wchar_t[text->utf8.size() + 1]);
        mbstowcs(wide.get(), text->utf8.c_str(), text->utf8.size() + 1);
        return wide;
    });
    WITH_QT(op.way("Qt (to UTF-16)", [=] { return QString::fromStdString(text->utf8); }));
    WITH_GLIB(op.way("GLib", [=] {
        return GWide(g_utf8_to_ucs4(text->utf8.c_str(), -1, nullptr, nullptr, nullptr));
    }));
    WITH_POCO(op.way("POCO", [=] {
        std::wstring wide;
        Poco::UnicodeConverter::toUTF32(text->utf8, reinterpret_cast<Poco::UTF32String&>(wide));
        return wide;
    }));
    op.way(OURS, [=] {
        return std::unique_ptr<wchar_t[]>(
            PLiteral::pchar2pwchar(text->utf8.c_str(), text->utf8.size()));
    });
}

}  // namespace

void addConversions() {
    struct {
        char const* name;
        Both text;
        double limit;
    } const rows[] = {
        {"ASCII 16", {16, false}, 0.95},
        {"ASCII 4096", {4096, false}, 0.25},
        {"mixed 4096", {4096, true}, 1.0},
    };
    for (auto const& row : rows) _addNarrowing(row.name, row.text, row.limit);
    for (auto const& row : rows) _addWidening(row.name, row.text, row.limit);
}
