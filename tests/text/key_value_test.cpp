#include <random>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

namespace {

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
        PString left(text.c_str(), at), right(text.c_str() + at + 1, text.size() - at - 1);
        ASSERT_EQ(PERR_OK, left.trim() + right.trim());
        ASSERT_TRUE(key == left && !key.ptr() == !left.ptr()) << i;
        ASSERT_TRUE(value == right && !value.ptr() == !right.ptr()) << i;
    }
}

}  // namespace
