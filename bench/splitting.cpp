// Taking a text apart: token by token, and into key and value.

#include "operation.h"

#include <cstring>
#include <vector>

namespace {

std::size_t _splitStandard(std::wstring rest) {
    std::size_t characters = 0;
    while (!rest.empty()) {
        std::size_t const end = rest.find(L',');
        std::wstring const token = trimmed(rest.substr(0, end));
        rest.erase(0, end == std::wstring::npos ? end : end + 1);
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

void _addTokens(unsigned tokens) {
    std::wstring list;
    for (unsigned i = 0; i < tokens; ++i) list += (i == 0 ? L"" : L", ") + std::wstring(L"token");
    auto const text = std::make_shared<Forms>(list);
    Operation op("split tokens " + std::to_string(tokens), NO_LIMIT, std::size_t{5} * tokens,
                 "std::wstring");
    op.way(BARE, [=] { return _splitStandard(text->wide); });
    WITH_QT(op.way("Qt", [=] {
        QStringList parts = text->qt.split(',');
        for (QString& token : parts) token = token.trimmed();
        return charactersIn(parts);
    }));
    WITH_POCO(op.way("POCO", [=] {
        auto const trimming = Poco::StringTokenizer::TOK_TRIM;
        return charactersIn(Poco::StringTokenizer(text->narrow, ",", trimming));
    }));
    WITH_GLIB(op.way("GLib", [=] {
        std::unique_ptr<char*, decltype(&g_strfreev)> const parts(g_strsplit(text->c(), ",", -1),
                                                                  g_strfreev);
        std::size_t characters = 0;
        for (char** token = parts.get(); *token != nullptr; ++token)
            characters += strlen(g_strstrip(*token));
        return characters;
    }));
    WITH_BOOST(op.way("Boost", [=] {
        std::vector<std::wstring> parts;
        boost::split(parts, text->wide, [](wchar_t c) { return c == L','; });
        for (std::wstring& token : parts) boost::trim(token);
        return charactersIn(parts);
    }));
    op.way(OURS, [=] { return _splitOurs(text->ours); });
}

void _addKeyAndValue() {
    static Forms const text(L" connection.timeout = 2500 milliseconds ");
    Operation op("split key and value", 0.95, std::size_t{18 + 17}, "std::wstring");
    op.way(BARE, [] {
        std::size_t const at = text.wide.find(L'=');
        std::wstring const key = trimmed(text.wide.substr(0, at));
        std::wstring const value = trimmed(text.wide.substr(at + 1));
        return key.size() + value.size();
    });
    WITH_QT(op.way("Qt", [] {
        auto const at = text.qt.indexOf('=');
        return text.qt.left(at).trimmed().size() + text.qt.mid(at + 1).trimmed().size();
    }));
    op.way(OURS, [] {
        PString key;
        PString value;
        (void)PUtils::getKeyValue(text.ours, key, value, L'=');
        return key.len() + value.len();
    });
}

}  // namespace

void addSplitting() {
    for (unsigned const tokens : {100U, 1600U, 25600U}) _addTokens(tokens);
    _addKeyAndValue();
}
