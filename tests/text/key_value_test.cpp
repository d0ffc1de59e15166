#include <random>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

namespace {

PString _trimmed(wchar_t const* s, unsigned long n) {
    PString text(s, n);
    EXPECT_EQ(PERR_OK, text.trim());
    return text;
}

TEST(KeyAndValue, AreThePartsAroundTheFirstSeparatorTrimmed) {
    std::wstring const characters = L"ab =\t\r\n=\v\u00a0";
    std::mt19937 random(21);
    for (int i = 0; i < 20000; ++i) {
        std::wstring text(random() % 12, L'a');
        for (wchar_t& c : text) c = characters[random() % characters.size()];
        PString key(L"old", 3), value(L"old", 3);
        std::size_t const at = text.find(L'=');
        int const result = PUtils::getKeyValue(text.c_str(), key, value, L'=');
        ASSERT_EQ(at == std::wstring::npos ? PERR_NOT_FOUND : PERR_OK, result);
        if (result != PERR_OK) continue;
        PString const left = _trimmed(text.c_str(), at);
        PString const right = _trimmed(text.c_str() + at + 1, text.size() - at - 1);
        ASSERT_TRUE(key == left && value == right) << i;
        ASSERT_EQ(left.ptr() == nullptr, key.ptr() == nullptr) << i;
        ASSERT_EQ(right.ptr() == nullptr, value.ptr() == nullptr) << i;
    }
}

}  // namespace
