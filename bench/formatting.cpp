// Formatting as printf does.

#include "operation.h"

#include <array>

namespace {

unsigned volatile id = 4711;
double volatile load = 12.5;
char const* volatile name = "watcher";
wchar_t const* volatile wideName = L"watcher";

// What is formatted, by a function that takes bytes.

template <typename Print>
auto _path(Print print) {
    return print("/proc/%u/task/%s", unsigned{id}, name);
}
template <typename Print>
auto _mixed(Print print) {
    return print("%-8s #%08u at %.2f %% of %d", name, unsigned{id}, double{load}, -3);
}

using Buffer = std::array<wchar_t, 64>;
constexpr auto UP_TO_ZERO = [](Buffer const& text) { return bytesOf(std::wstring(text.data())); };

void _addPath() {
    Operation op("formatted path", 1.5, std::string("/proc/4711/task/watcher"), "swprintf");
    op.way(
        BARE,
        [] {
            Buffer text;
            (void)swprintf(text.data(), text.size(), L"/proc/%u/task/%ls", id, wideName);
            return text;
        },
        UP_TO_ZERO);
    WITH_QT(op.way("Qt", [] { return _path(QString::asprintf); }));
    WITH_GLIB(op.way("GLib", [] { return GText(_path(g_strdup_printf)); }));
    WITH_POCO(op.way(
        "POCO", [] { return Poco::format("/proc/%u/task/%s", unsigned{id}, std::string(name)); }));
    WITH_NSPR(op.way("NSPR", [] { return NsprText(_path(PR_smprintf)); }));
    op.way(OURS, [] {
        PString text;
        (void)PUtils::pformatString(text, L"/proc/%u/task/%ls", id, wideName);
        return text;
    });
}

void _addMixed() {
    Operation op("mixed formatted text", 1.25, std::string("watcher  #00004711 at 12.50 % of -3"),
                 "swprintf");
    op.way(
        BARE,
        [] {
            Buffer text;
            (void)swprintf(text.data(), text.size(), L"%-8ls #%08u at %.2f %% of %d", wideName, id,
                           load, -3);
            return text;
        },
        UP_TO_ZERO);
    WITH_QT(op.way("Qt", [] { return _mixed(QString::asprintf); }));
    WITH_GLIB(op.way("GLib", [] { return GText(_mixed(g_strdup_printf)); }));
    WITH_POCO(op.way("POCO", [] {
        return Poco::format("%-8s #%08u at %.2f %% of %d", std::string(name), unsigned{id},
                            double{load}, -3);
    }));
    WITH_NSPR(op.way("NSPR", [] { return NsprText(_mixed(PR_smprintf)); }));
    op.way(OURS, [] {
        PString text;
        (void)PUtils::pformatString(text, L"%-8ls #%08u at %.2f %% of %d", wideName, id, load, -3);
        return text;
    });
}

}  // namespace

void addFormatting() {
    _addPath();
    _addMixed();
}
