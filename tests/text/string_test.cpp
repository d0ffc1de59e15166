#include <climits>
#include <clocale>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <portinglayer/strings.h>

using namespace std::string_literals;

namespace {

/// One random edit, done to the string and to its model alike; some read the string's own buffer.
int _edit(std::mt19937& random, PString& text, std::wstring& model) {
    std::wstring const all = model + L"\v x\t";
    unsigned long const pos = random() % (model.size() + 1);
    unsigned long const from = random() % (model.size() + 1);
    unsigned long const n = random() % (model.size() - from + 1);
    bool const own = random() % 2 == 0 && text.ptr() != nullptr;
    wchar_t const* const source = (own ? text.ptr() : all.c_str()) + from;
    switch (random() % (model.size() < 60 ? 7 : 4)) {
    case 0:
        model.erase(0, model.find_first_not_of(L"\t\n\r "));
        model.erase(model.find_last_not_of(L"\t\n\r ") + 1);
        return text.trim();
    case 1:
        std::erase_if(model, [](wchar_t c) { return c < L'!' && c != L'\v'; });
        return text.stripall();
    case 2: model = all.substr(from, n); return text.set(source, n);
    case 3: model.erase(from, n); return text.erase(from, n);
    case 4: model += all.substr(from, n); return text.cat(source, n);
    case 5: model.insert(pos, all.substr(from, n)); return text.insert(pos, source, n);
    default: model.assign(60, L'f'); return text.fill(L'f', 60);
    }
}

}  // namespace

TEST(String, EditsAsItsModelDoes) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        PString text(L" ab\tx\r", 6);
        std::wstring model = L" ab\tx\r";
        for (unsigned step = 0; step < 60; ++step) {
            ASSERT_EQ(_edit(random, text, model), PERR_OK) << seed << " " << step;
            ASSERT_EQ(std::wstring(text.ptr() ? text.ptr() : L"", text.len()), model) << seed;
            ASSERT_TRUE(text.ptr() == nullptr || text.ptr()[text.len()] == L'\0') << seed;
        }
    }
}

TEST(String, RefusesWhatIsOutOfRangeOrTooLargeAndStays) {
    PString text(L"abc", 3);
    EXPECT_EQ(text.insert(4, nullptr, 0), PERR_INVALID_ARGUMENT) << "the place is checked first";
    EXPECT_EQ(text.erase(2, ULONG_MAX), PERR_INVALID_ARGUMENT) << "the sum wraps";
    EXPECT_EQ(text.set(PLiteral(L"ab"), 3), PERR_INVALID_ARGUMENT);
    for (unsigned long n : {ULONG_MAX, ULONG_MAX - 3, 1UL << 62U}) {
        EXPECT_EQ(text.cat(L"x", n) + text.cat("x", n), 2 * PERR_NO_MEMORY) << n;
        EXPECT_EQ(text.insert(1, L"x", n) + text.fill(L'x', n), 2 * PERR_NO_MEMORY) << n;
    }
    EXPECT_TRUE(text == L"abc") << "a failure leaves the text";
    EXPECT_EQ(text.set(L"x", ULONG_MAX), PERR_NO_MEMORY);
    EXPECT_EQ(text.ptr(), nullptr) << "but set begins with clearing";
}

TEST(String, KeepsItsBufferOrGivesItUp) {
    PString text(L" \t\r\n", P_WHOLE_STRING);
    EXPECT_EQ(text.trim(), PERR_OK);
    EXPECT_TRUE(text.ptr() != nullptr && text.len() == 0) << "white space alone";
    static_cast<PLiteral&>(text) = L"abcd";
    text = text.ptr() + 2;
    text = static_cast<PLiteral const&>(text);
    EXPECT_TRUE(text == L"cd") << "assigned from its own buffer";
    wchar_t const* const buffer = text.ptr();
    PString moved(std::move(text));
    EXPECT_TRUE(moved.ptr() == buffer && text.ptr() == nullptr && text.len() == 0);  // NOLINT
    EXPECT_EQ(moved.erase(0, 2), PERR_OK);
    EXPECT_EQ(moved.ptr(), nullptr) << "erasing all";
    moved = L"";
    EXPECT_NE(moved.ptr(), nullptr) << "an empty text was given, unlike none";
}

TEST(String, SomeLengthsDifferFromTheText) {
    PString text(L"abcd", 4), fresh;
    EXPECT_EQ(text.fill(L'x', 2), PERR_OK);
    EXPECT_EQ(std::wstring(text.ptr(), text.len() + 1), L"xx\0d\0"s) << "filled";
    unsigned long pos = 0;
    EXPECT_EQ(text.chr(L'd', pos, false, false), PERR_NOT_FOUND) << "behind the terminator";
    setlocale(LC_CTYPE, "C.UTF-8");
    EXPECT_EQ(fresh.set("\u00e9", P_WHOLE_STRING) + fresh.cat("\u00e9", 2), PERR_OK);
    EXPECT_EQ(std::wstring(fresh.ptr(), fresh.len() + 1), L"\u00e9\0\u00e9\0\0"s);
    EXPECT_EQ(fresh.cat("\xff", 1), PERR_NO_MEMORY) << "no text in this locale";
    EXPECT_EQ(PString("\u00e9", 2).len(), 1U) << "the constructor counts characters";
    setlocale(LC_CTYPE, "C");
}
