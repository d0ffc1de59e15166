#include <algorithm>
#include <random>

#include <support/expect.h>
#include <support/locales.h>
#include <text/view.h>

namespace {

/// Letters of few kinds, in which much matches in vain; one text in twenty is long.
std::wstring _randomText(std::mt19937& random) {
    static constexpr wchar_t LETTERS[] = L"aAbiI\u00e1\u00c1\u0130\u0131\u01c5\u01c6\x10428";
    auto const first = random(), kinds = 1 + random() % 4;
    std::size_t const period = 1 + random() % 6;
    std::wstring text(3 + random() % (random() % 20 == 0 ? 3000 : 20), L' ');
    std::size_t const exception = random() % text.size();
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = i < period || i == exception ? LETTERS[(first + random() % kinds) % 12]
                                               : text[i - period];
    return text;
}

/// Part of a text, with one of its letters at another place.
std::wstring _randomPart(std::wstring const& text, std::mt19937& random) {
    std::wstring part = text.substr(random() % text.size(), 1 + random() % text.size());
    part[random() % part.size()] = text[random() % text.size()];
    return part;
}

}  // namespace

TEST(SearchModel, AgreesOnShortTextsAndOnLongOnesInWhichMuchMatchesInVain) {
    char const* const locales[] = {"C", "C.UTF-8", "UTF-8"};
    MadeLocale const turkish("UTF-8", "tr_TR");
    std::mt19937 random(20240);
    for (int round = 0; round < 200'000 && !HasFailure(); ++round) {
        SCOPED_TRACE(round);
        std::setlocale(LC_CTYPE, locales[random() % 3]);
        bool const fromEnd = random() % 2, ignoreCase = random() % 2;
        std::wstring const whole = _randomText(random);
        std::wstring text = whole.substr(1, whole.size() - 2), part = _randomPart(whole, random);
        View const searched(whole.data() + 1, text.size()), what(part.data(), part.size());
        if (ignoreCase) {
            std::ranges::transform(text, text.begin(), PLiteral::toupper);
            std::ranges::transform(part, part.begin(), PLiteral::toupper);
        }
        std::size_t pos = text.npos;
        std::size_t const expected = fromEnd ? text.rfind(part) : text.find(part);
        EXPECT_CODE(expected == text.npos ? PERR_NOT_FOUND : PERR_OK,
                    searched.str(what, pos, fromEnd, ignoreCase));
        EXPECT_EQ(expected, pos);
        EXPECT_EQ(text.starts_with(part), searched.startsWith(what, ignoreCase));
        EXPECT_EQ(text.ends_with(part), searched.endsWith(what, ignoreCase));
    }
}
