#include <algorithm>
#include <clocale>
#include <random>

#include <portinglayer/data_streams.h>
#include <portinglayer/files.h>
#include <portinglayer/utf8.h>
#include <support/expect.h>
#include <support/scratch.h>

namespace {

constexpr wchar_t LAST = 0x10FFFF;

bool _isSurrogate(wchar_t c) {
    return c >= 0xD800 && c <= 0xDFFF;
}

/// The form that the C library gives, in a locale of UTF-8.
std::string _formOf(std::wstring const& text) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    std::string form(4 * text.size() + 1, '\0');
    form.resize(wcstombs(form.data(), text.c_str(), form.size()));
    return form;
}

PString _string(std::wstring const& text) {
    return {text.data(), text.size()};
}

/// Characters that any name may hold, in runs of one byte, of up to two, and so on.
std::wstring _randomText(std::mt19937& random, std::size_t least) {
    wchar_t const ends[] = {0x80, 0x80, 0x800, 0xD800, LAST};
    std::wstring text;
    while (text.size() < least) {
        wchar_t const end = ends[random() % 5];
        for (auto left = random() % 40; left > 0; --left)
            text += static_cast<wchar_t>(L'a' + random() % (end - L'a'));
    }
    std::replace_if(text.begin(), text.end(), _isSurrogate, L'0');
    return text;
}

void _expectThereAndBack(std::wstring const& text) {
    std::string bytes;
    PString back;
    ASSERT_CODE(PERR_OK, PUtf8::encode(_string(text), bytes));
    ASSERT_TRUE(_formOf(text) == bytes);
    ASSERT_CODE(PERR_OK, PUtf8::decode(bytes.data(), bytes.size(), back));
    ASSERT_TRUE(text == view(back));
}

}  // namespace

TEST(Utf8, TurnsEveryCharacterIntoItsFormAndBackInAnyOrder) {
    std::wstring all;
    for (wchar_t c = 1; c <= LAST; ++c)
        if (!_isSurrogate(c)) all += c;
    _expectThereAndBack(all);
    std::mt19937 random(1);
    for (std::size_t place = 0; place < 100; ++place) {
        SCOPED_TRACE(place);
        std::wstring text(100, L'a');
        text[place] = L'\u00e9';
        _expectThereAndBack(text);
        _expectThereAndBack(_randomText(random, 10'000));
    }
}

TEST(Utf8, RefusesCharactersWithoutAFormWhereverTheyStand) {
    std::string bytes = "former";
    PString fitted(L"former", P_WHOLE_STRING);
    for (wchar_t const c : {wchar_t(0xD800), wchar_t(0xDFFF), wchar_t(LAST + 1), wchar_t(-1)}) {
        for (std::size_t before = 0; before < 70; ++before) {
            PString const text = _string(std::wstring(before, L'a') + c + L"after");
            EXPECT_CODE(PERR_BAD_FORMAT, PUtf8::encode(text, bytes));
            EXPECT_CODE(PERR_BAD_FORMAT, PUtf8::padded(text, fitted));
        }
    }
    EXPECT_EQ("former", bytes);
    EXPECT_TEXT(L"former", fitted);
}

TEST(Utf8, RefusesBytesThatAreNotWellFormedWhereverTheyStand) {
    std::string const malformed[] = {
        "\x80",              // a byte that only continues
        "\xC0\xAF",          // a slash in two bytes
        "\xE0\x9F\xBF",      // U+07FF in three bytes
        "\xF0\x8F\xBF\xBF",  // U+FFFF in four bytes
        "\xED\xA0\x80",      // the first surrogate
        "\xF4\x90\x80\x80",  // U+110000
        "\xE2\x82",          // two of three bytes
        "\xF0\x9F\x61\x80",  // a letter within
        "\xF8\x90\x80\x80",  // a byte that begins none
    };
    for (std::string const& bad : malformed) {
        for (std::size_t before = 0; before < 70; ++before) {
            std::string bytes = std::string(before, 'a') + bad;
            if (before % 2 == 0) bytes.append(40, 'a');
            PString text(L"former", P_WHOLE_STRING);
            ASSERT_CODE(PERR_BAD_FORMAT, PUtf8::decode(bytes.data(), bytes.size(), text))
                << testing::PrintToString(bytes);
            ASSERT_TEXT(L"former", text);
        }
    }
}

TEST(Utf8, TakesZerosAndEmptyTextsAsTheyAre) {
    std::string bytes = "former";
    EXPECT_CODE(PERR_OK, PUtf8::encode(_string({L"\0\xE9\0", 3}), bytes));
    EXPECT_EQ(std::string("\0\xC3\xA9\0", 4), bytes);
    EXPECT_CODE(PERR_OK, PUtf8::encode(PLiteral(), bytes));
    EXPECT_EQ("", bytes);
    PString text;
    EXPECT_CODE(PERR_OK, PUtf8::decode("\0b\0", 3, text));
    EXPECT_TEXT(std::wstring_view(L"\0b\0", 3), text);
    EXPECT_CODE(PERR_OK, PUtf8::decode("\xC3\xA9\0c", P_WHOLE_STRING, text));
    EXPECT_TEXT(L"\xE9", text);
    EXPECT_CODE(PERR_BAD_FORMAT, PUtf8::decode("\xE0\xA4\xB9", 2, text)) << "cut by the length";
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtf8::decode(nullptr, P_WHOLE_STRING, text));
    EXPECT_CODE(PERR_OK, PUtf8::decode(nullptr, 0, text));
    EXPECT_TEXT(L"", text);
}

TEST(PaddedText, HasAnXForEachByteThatItsFormHasMore) {
    PString text(L"\x20AC\xE9 \\", P_WHOLE_STRING);
    EXPECT_CODE(PERR_OK, PUtf8::padded(text, text)) << "in place";
    EXPECT_TEXT(L"\x20AC\xE9 \\xxx", text);
    EXPECT_CODE(PERR_INVALID_ARGUMENT, PUtf8::padded(_string({L"a\0b", 3}), text));
    EXPECT_TEXT(L"\x20AC\xE9 \\xxx", text) << "as it was";
    EXPECT_CODE(PERR_OK, PUtf8::padded(L"", text));
    EXPECT_TEXT(L"", text);
}

TEST(PaddedText, ComesThroughNamesLinesAndStreamsWhole) {
    std::setlocale(LC_CTYPE, "C.UTF-8");
    Scratch scratch;
    std::mt19937 random(2);
    for (int i = 0; i < 500; ++i) {
        std::wstring const text = _randomText(random, 1 + i % 20);
        PString padded, back;
        ASSERT_CODE(PERR_OK, PUtf8::padded(_string(text), padded));

        PFile file;
        PString const name = _string(scratch.wpath("") + std::wstring(view(padded)));
        ASSERT_CODE(PERR_OK, file.popen(name, PFile::OPEN_WRITE | PFile::OPEN_CREATE, 1));
        ASSERT_CODE(PERR_OK, file.pwriteLine(padded));
        ASSERT_EQ(_formOf(text) + "\n", scratch.read(_formOf(text)));

        std::vector<unsigned char> bytes;
        ASSERT_CODE(PERR_OK, PDataWriter(bytes).writeString(padded));
        ASSERT_EQ(_formOf(text), std::string(bytes.begin() + 6, bytes.end()));
        ASSERT_CODE(PERR_OK, PDataReader(bytes).readString(back));
        ASSERT_TEXT(text, back) << "from writeString to readString";
    }
}
