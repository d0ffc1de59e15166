#include <clocale>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

// Searches beside those of the standard library, in texts and for texts of few letters.

namespace {

std::wstring _folded(std::wstring text, bool ignoreCase) {
    for (wchar_t& c : text)
        if (ignoreCase) c = PLiteral::toupper(c);
    return text;
}

/// Compares one search with the model, and the tests for beginning and end that build on it.
void _compare(std::wstring const& text, std::wstring const& sought, bool fromEnd, bool ignoreCase) {
    std::wstring const a = _folded(text, ignoreCase);
    std::wstring const b = _folded(sought, ignoreCase);
    bool const never = b.empty() && !a.empty();
    std::size_t const expected = never ? a.npos : fromEnd ? a.rfind(b) : a.find(b);

    PLiteral const literal(text.c_str());
    PLiteral const what(sought.c_str());
    unsigned long pos = a.npos;
    int const code = literal.str(what, pos, fromEnd, ignoreCase);
    ASSERT_EQ(expected, pos);
    ASSERT_EQ(expected == a.npos ? PERR_NOT_FOUND : PERR_OK, code);
    if (never) return;
    ASSERT_EQ(a.starts_with(b), literal.startsWith(what, ignoreCase));
    ASSERT_EQ(a.ends_with(b), literal.endsWith(what, ignoreCase));
}

struct Setting {
    char const* name;
    char const* locale;
    wchar_t const* letters;
};

void PrintTo(Setting const& setting, std::ostream* out) {
    *out << setting.name;
}

class SearchModel : public testing::TestWithParam<Setting> {
protected:
    void SetUp() override { ASSERT_NE(nullptr, std::setlocale(LC_CTYPE, GetParam().locale)); }
    void TearDown() override { (void)std::setlocale(LC_CTYPE, "C"); }

    std::wstring letters(std::size_t most) {
        std::wstring const all = GetParam().letters;
        std::wstring text(dice() % (most + 1), L' ');
        for (wchar_t& c : text) c = all[dice() % all.size()];
        return text;
    }

    /// A few letters again and again, with now and then another one.
    std::wstring pattern(std::size_t most) {
        std::wstring const unit = letters(3) + GetParam().letters[0];
        std::wstring text;
        while (text.size() < most) text += unit;
        for (std::size_t others = dice() % 4; others > 0; --others)
            text[dice() % text.size()] = GetParam().letters[1];
        return text;
    }

    std::wstring partOf(std::wstring const& text) {
        std::size_t const start = dice() % (text.size() + 1);
        return text.substr(start, dice() % (text.size() - start + 1));
    }

    std::mt19937_64 dice{20240};  // every run is the same
};

}  // namespace

TEST_P(SearchModel, AgreesOnShortTexts) {
    for (int round = 0; round < 60000 && !HasFatalFailure(); ++round) {
        std::wstring const text = letters(round % 5 == 0 ? 90 : 12);
        std::wstring const part = partOf(text);
        std::wstring const sought = round % 2 == 0 ? part : letters(3);
        SCOPED_TRACE(testing::PrintToString(sought) + " in " + testing::PrintToString(text));
        _compare(text, sought, round & 2, round & 4);
    }
}

TEST_P(SearchModel, AgreesOnLongTextsInWhichMuchMatchesInVain) {
    for (int round = 0; round < 3000 && !HasFatalFailure(); ++round) {
        std::wstring const text = pattern(3000);
        std::wstring sought = partOf(text);
        if (!sought.empty() && round % 3 != 0)
            sought[dice() % sought.size()] = GetParam().letters[dice() % 2];
        SCOPED_TRACE(testing::Message() << "seed 20240, round " << round);
        _compare(text, sought, round & 1, round & 2);
    }
}

INSTANTIATE_TEST_SUITE_P(, SearchModel,
                         testing::Values(Setting{"Ascii", "C", L"abA"},
                                         Setting{"AllLanguages", "C.UTF-8",
                                                 L"aA\u00e1\u00c1\U00010428\u00df"},
                                         Setting{"SlotsShared", "C.UTF-8", L"a\u00e1\u0161\u0160"}),
                         [](auto const& setting) { return setting.param.name; });
