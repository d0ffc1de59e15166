// Between wide text and UTF-8, in any locale.

#include "operation.h"

#include <cwchar>

#include <portinglayer/utf8.h>

namespace {

using Text = std::shared_ptr<Both const>;

void _addEncoding(std::string const& name, Text const& text, double limit) {
    Operation op("encode UTF-8, " + name, Limits{.toPeer = limit}, text->utf8, "wcstombs");
    op.way(BARE, [=] {
        std::string bytes(4 * text->wide.size(), '\0');
        bytes.resize(wcstombs(bytes.data(), text->wide.c_str(), bytes.size()));
        return bytes;
    });
    WITH_QT(op.way("Qt (from UTF-16)",
                   [qt = QString::fromStdWString(text->wide)] { return qt.toUtf8(); }));
    WITH_GLIB(op.way("GLib", [=] {
        auto const* const wide = reinterpret_cast<gunichar const*>(text->wide.c_str());
        auto const length = static_cast<glong>(text->wide.size());
        return GText(g_ucs4_to_utf8(wide, length, nullptr, nullptr, nullptr));
    }));
    op.way(OURS, [ours = PString(text->wide.c_str(), text->wide.size())] {
        return out<std::string>(PUtf8::encode, ours);
    });
}

void _addDecoding(std::string const& name, Text const& text, double limit) {
    Operation op("decode UTF-8, " + name, Limits{.toPeer = limit}, text->wide, "mbstowcs");
    op.way(BARE, [=] {
        std::wstring wide(text->utf8.size(), L'\0');
        wide.resize(mbstowcs(wide.data(), text->utf8.c_str(), wide.size()));
        return wide;
    });
    WITH_QT(op.way("Qt (to UTF-16)", [=] { return QString::fromStdString(text->utf8); }));
    WITH_GLIB(op.way("GLib", [=] {
        auto const length = static_cast<glong>(text->utf8.size());
        return GWide(g_utf8_to_ucs4(text->utf8.c_str(), length, nullptr, nullptr, nullptr));
    }));
    op.way(OURS,
           [=] { return out<PString>(PUtf8::decode, text->utf8.c_str(), text->utf8.size()); });
}

}  // namespace

void addUtf8() {
    struct {
        char const* name;
        Text text;
        double limit;
    } const rows[] = {
        {"ASCII 64", std::make_shared<Both>(64, false), 1.0},
        {"ASCII 4096", std::make_shared<Both>(4096, false), 1.0},
        {"mixed 64", std::make_shared<Both>(64, true), 1.2},
        {"mixed 4096", std::make_shared<Both>(4096, true), 1.2},
    };
    for (auto const& row : rows) _addEncoding(row.name, row.text, row.limit);
    for (auto const& row : rows) _addDecoding(row.name, row.text, row.limit);
}
