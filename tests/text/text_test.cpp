#include <array>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cstdarg>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <portinglayer/portinglayer.h>

using namespace std::string_literals;

namespace {

std::mt19937_64 dice(20240);  // seeded: every run is the same

std::wstring pick(std::wstring const& letters, size_t most) {
    std::wstring text(dice() % (most + 1), L' ');
    for (wchar_t& c : text) c = letters[dice() % letters.size()];
    return text;
}

/// A result with the string that an operation left, in which no buffer differs from no text.
std::wstring after(int code, PString const& s) {
    EXPECT_TRUE(s.ptr() == nullptr || s.ptr()[s.len()] == L'\0') << "not terminated";
    std::wstring const text = s.ptr() == nullptr ? L"none" : std::wstring(s.ptr(), s.len());
    return std::to_wstring(code) + L" " + text;
}

std::array<bool, 6> compared(auto const& a, auto const& b) {
    return {a == b, a != b, a<b, a <= b, a> b, a >= b};
}

template <typename T>
void _compare(int (*read)(PLiteral const&, T&), int (*write)(T, PString&), wchar_t const* format,
              std::wstring const& text) {
    T ours = 77, scanned = 77;
    int const code = swscanf(text.c_str(), format, &scanned) == 1 ? PERR_OK : PERR_BAD_FORMAT;
    ASSERT_EQ(read(text.c_str(), ours), code) << text << format;
    ASSERT_EQ(ours, scanned) << text << format;
    PString written;
    ASSERT_EQ(after(write(ours, written), written), L"0 " + std::to_wstring(ours));
}

void _compareDigits(std::wstring const& text) {
    std::wstring const hex = L"0123456789abcdefABCDEF";
    SCOPED_TRACE(testing::PrintToString(text));
    ASSERT_EQ(PUtils::isHex(text.c_str(), text.size()), text.find_first_not_of(hex) == text.npos);
    char digit = 77, byte = 77, scanned = 77;
    size_t const place = hex.find(PLiteral::tolower(text[0]));
    ASSERT_EQ(PUtils::hexToDec(text[0], digit), place < 16 ? PERR_OK : PERR_BAD_FORMAT);
    ASSERT_EQ(static_cast<size_t>(digit), place < 16 ? place : 77);
    bool const good = text.size() < 3 && swscanf(text.c_str(), L"%hhx", &scanned) == 1;
    ASSERT_EQ(PUtils::hexToByte(text.c_str(), byte), good ? PERR_OK : PERR_BAD_FORMAT);
    ASSERT_EQ(byte, scanned);
}

/// What strToBinary does, on a text that is really taken apart item by item.
std::string _naiveBinary(PString rest) {
    std::string bytes;
    bool good = rest.len() > 0;
    while (good && rest.trim() == PERR_OK && rest.len() > 0) {
        unsigned long comma = rest.len();
        (void)rest.chr(L',', comma, false, false);  // without one the item is all that is left
        bytes.push_back(0);
        good = rest.startsWith(L"0x", false) &&
               PUtils::hexToByte(PString(rest.ptr() + 2, comma - 2), bytes.back()) == PERR_OK;
        (void)rest.erase(0, comma < rest.len() ? comma + 1 : comma);
    }
    return good ? bytes : "bad";
}

std::string events;

struct Watched : PCounterSync {
    using PCounterSync::PCounterSync;
    using PCounterSync::operator=;
    int change(int d) override {
        events += std::to_string(d) + " ";
        return PCounterSync::change(d);
    }
    void set(int v) override { events += "=" + std::to_string(v) + " "; }
};

struct Noted {
    ~Noted() { events += name; }
    char name;
    PPtr<Noted> next = nullptr;
};

}  // namespace

TEST(Comparisons, AreByLengthBeforeCharactersAndByCount) {
    wchar_t const* const ascending[] = {nullptr, L"b", L"aa", L"abc", L"abd", L"abcd"};
    for (int i = 0; i < 36; ++i) {
        PLiteral const a(ascending[i / 6]), b(ascending[i % 6]);
        auto const expected = compared(i / 6, i % 6);
        EXPECT_EQ(compared(a, b), expected) << i;
        EXPECT_EQ(compared(a, static_cast<wchar_t const*>(b)), expected) << i;
        EXPECT_EQ(compared(++(PCounter(9) = i / 6 - 1), PCounter(i % 6)), expected) << i;
        EXPECT_EQ(compared(PCounterSync(9) = PCounterSync(i / 6), i % 6), expected) << i;
    }
}

TEST(String, HoldsThisAfterEachEdit) {
    setlocale(LC_CTYPE, "C.UTF-8");
    PString s(L"abcd", P_WHOLE_STRING);
    EXPECT_EQ(after(s.fill(L'x'), s), L"0 xxxx");
    EXPECT_EQ(after(s.fill(L'y', 2), s), L"0 yy\0x"s) << "keeps the length";
    EXPECT_EQ(after(s.set("\u00e9", P_WHOLE_STRING), s), L"0 \u00e9\0"s) << "bytes are counted";
    EXPECT_EQ(after(s.cat("\u00e9", 2), s), L"0 \u00e9\0\u00e9\0"s);
    EXPECT_EQ(after(PUtils::fixFileSeparator(s = L"a\\b/\\"), s), L"0 a/b//");

    EXPECT_EQ(after(s.cat(s.ptr() + 1, 2), s), L"0 a/b///b") << "from its own buffer, as below";
    EXPECT_EQ(after(s.insert(1, s.ptr() + 2, 2), s), L"0 ab//b///b");
    EXPECT_EQ(after(s.set(s.ptr() + 1, 4), s), L"0 b//b");
    EXPECT_EQ(after(PUtils::fixExecFileExtension(s = s.ptr() + 1), s), L"0 //b");
    EXPECT_EQ(after(0, (s = std::as_const(s)) = static_cast<PLiteral&>(s)), L"0 //b");
    EXPECT_EQ(after(PUtils::pformatString(s, L"%d%ls", 42, s.ptr()), s), L"0 42//b");

    EXPECT_EQ(after(s.erase(2, ULONG_MAX), s), L"-502 42//b");
    EXPECT_EQ(after(s.set(PLiteral(L"ab"), 3), s), L"-502 42//b");
    EXPECT_EQ(after(s.insert(1, PLiteral(L"x"), ULONG_MAX - 3), s), L"-501 42//b")
        << "the sum wraps";
    EXPECT_EQ(after(s.set("\xff", 1), s), L"-501 none");
    EXPECT_EQ(after(PUtils::parseLink(L"#/x", s = L"a", s), s), L"-502 none");
}

TEST(Parts, StandBeforeAndBehindTheFirstSeparatorTrimmed) {
    PString s(L" a =\tb\v = \r\n", P_WHOLE_STRING), token, value;
    EXPECT_EQ(after(PLiteral::getNextToken(s, token, L'='), s), L"0 \tb\v = \r\n");
    EXPECT_EQ(after(PUtils::getKeyValue(s, s, value, L'='), s), L"0 b\v") << "from itself";
    EXPECT_EQ(after(0, token) + after(0, value), L"0 a0 ") << "an empty value keeps its buffer";
    EXPECT_EQ(after(PUtils::getKeyValue(PString(L"\0=", 2), s, value, L'='), s), L"-504 b\v");
    EXPECT_EQ(after(PUtils::getKeyValue(PString(L"= k\0k ", 6), s, value, L'='), s), L"0 none");
    EXPECT_EQ(after(PLiteral::getNextToken(value, token, L'\0'), value), L"0 none");
    char* arguments[] = {PLiteral(L"/bin/x")};
    PString* list = nullptr;
    unsigned long count = 0;
    ASSERT_EQ(PUtils::convertArgs(1, arguments, list, count, L'='), PERR_OK);
    EXPECT_EQ(after(0, list[0]), L"0 process.name=/bin/x");
    delete[] list;
    delete[] arguments[0];
}

// Around the room on the stack and the limit of all room, and where a conversion fails.
TEST(Formatting, GivesWhatOnePassWithFixedRoomGives) {
    wchar_t format[] = L"%m%ls%s|", unusual[] = L"%2$d%3$n";
    PString out;
    for (size_t length : {0UL, 254UL, 255UL, 256UL, 2052UL, 2053UL, 2054UL, 9000UL})
        for (char const* bytes : {"", "x", "\xff"}) {
            std::wstring const text(length, L'x');
            std::wstring room(wcslen(format) + 2049, L'\0');
            errno = ENOENT;
            (void)swprintf(room.data(), room.size() - 1, format, text.c_str(), bytes);
            errno = ENOENT;
            ASSERT_EQ(PUtils::pformatString(out, format, text.c_str(), bytes), PERR_OK);
            ASSERT_STREQ(out.ptr(), room.c_str()) << length << bytes;
        }
    int count = 0;  // written as without checks of formats
    EXPECT_TRUE(PUtils::pformatString(out, unusual, 1, 2, &count) == PERR_OK && count == 1);
    va_list none{};
    EXPECT_EQ(after(PUtils::vformatString(out, L"%%", none), out), L"0 %");
    EXPECT_EQ(after(PUtils::vformatString(out, out, none), out), L"0 ") << "emptied first";
}

TEST(Values, AreReadAndWrittenAsTheCLibraryDoes) {
    wchar_t const* const fronts[] = {L"922337203685477580", L"-922337203685477580",
                                     L"1844674407370955161", L"-", L""};
    for (int i = 0; i < 40000; ++i) {
        std::wstring const front = i % 2 == 0 ? pick(L"0123456789", 20) : fronts[dice() % 5];
        std::wstring const text = front + pick(L"00156789 -+x\v\x665", 6);
        _compare<int>(PUtils::strToInt32, PUtils::int32ToStr, L"%d", text);
        _compare<unsigned int>(PUtils::strToUint32, PUtils::uint32ToStr, L"%u", text);
        _compare<long long>(PUtils::strToInt64, PUtils::int64ToStr, L"%lld", text);
        _compare<unsigned long long>(PUtils::strToUint64, PUtils::uint64ToStr, L"%llu", text);
        _compareDigits(pick(L"0123456789abcdefABCDEF00000+-++--xxxXgGx/:@` \xff", 3));
    }
    PString word;
    bool read = true;
    EXPECT_EQ(PUtils::boolToStr(false, word), PERR_OK);
    EXPECT_TRUE(PUtils::strToBool(word, read) == PERR_OK && !read);
    EXPECT_TRUE(PUtils::isDec(L"-", P_WHOLE_STRING, true) && !PUtils::isDec(L"1+", 2, true));
    wchar_t room[] = {L'1', L'2', 0, L'4', L'5', 0};
    PLiteral edited;
    (edited = PLiteral(L"x")) = room;
    room[2] = L'3';
    char byte = 0;
    EXPECT_TRUE(PUtils::hexToByte(edited, byte) == PERR_OK && byte == 0x45) << "to the terminator";
    EXPECT_EQ((edited = room).len(), 2U) << "the same pointer is not measured again";
}

TEST(Bytes, AreWrittenAsItemsAndReadAsIfItemsWereTakenOffOneByOne) {
    for (int i = 0; i < 200000; ++i) {
        std::wstring const text = pick(L"00xx1,, \t\0"s, 11);
        PString const whole(text.data(), text.size());
        unsigned char* out = nullptr;
        unsigned long count = 77;
        bool const good = PUtils::strToBinary(whole, out, count) == PERR_OK;
        std::unique_ptr<unsigned char[]> const owner(out);
        ASSERT_EQ(good ? std::string(out, out + count) : "bad", _naiveBinary(whole)) << text;
        ASSERT_TRUE(good || (out == nullptr && count == 77)) << text;
    }
    unsigned char const data[] = {0x00, 0x7F, 0xA0};
    PString text;
    EXPECT_EQ(after(PUtils::binaryToStr(data, 3, text), text), L"0 0x00, 0x7F, 0xA0");
    EXPECT_EQ(PUtils::binaryToStr(data, ULONG_MAX / 4, text), PERR_NO_MEMORY);
}

TEST(Counter, EveryChangeGoesThroughTheVirtualOperations) {
    events.clear();
    Watched counter(5);
    PCounter const three(3);
    --(++((counter += 2) -= three));
    counter = 9;
    static_cast<PCounter&>(counter) = three;
    static_cast<PCounterSync&>(counter) = PCounterSync(4);
    (counter += three) -= INT_MIN;
    EXPECT_EQ(events, "2 -3 1 -1 =9 =3 =4 3 -2147483648 ");
    EXPECT_EQ(static_cast<int>(PCounterSync(counter)), INT_MIN + 7) << "wrapped, then copied";
}

TEST(SharedPointer, DeletesOnceWithTheLastShareInTheModeGivenAtFirst) {
    Noted kept{'k'};
    events.clear();
    PPtr<Noted> first(new Noted[2]{{'a'}, {'b'}}), second(first), third(&kept, 2);
    third = second;
    third = third.get();
    second = first = nullptr;
    EXPECT_EQ(events, "");
    third = new Noted[1]{{'c'}};
    third = nullptr;
    EXPECT_EQ(events, "bac");
    PPtr<Noted> head(new Noted{'d', {new Noted{'e'}, PPtr<Noted>::SINGLE}}, PPtr<Noted>::SINGLE);
    head = head->next;  // assigned from inside what goes
    auto* const own = new Noted{'o', {nullptr, PPtr<Noted>::SINGLE}};
    own->next = own;
    own->next = nullptr;
    EXPECT_EQ(events, "bacdo") << "assigned to inside what goes";
}

TEST(ResultCodes, KeepTheirNumbers) {
    std::string edges;  // the first of each run of codes, and the first behind it
    for (int code = 1; code > -9999; --code)
        if (!perrorName(code) != !perrorName(code + 1)) edges += std::to_string(code) + " ";
    EXPECT_EQ(edges, "0 -1 -500 -513 -601 -602 -611 -616 -619 -629 -630 -631 -701 -706 -711 -718 "
                     "-721 -730 -731 -739 -742 -745 -9001 -9003 -9005 -9007 ");
}
