// What need not be looked at afterwards: it tells that memory ran out, and works again.
#include <clocale>
#include <optional>

#include <data/bytes.h>
#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>

/// `before` lets go of what the operation would otherwise find room in.
static void _told(char const* what, std::function<void()> const& before,
                  std::function<int()> const& operation) {
    Sweep swept{what, {PERR_NO_MEMORY, PERR_NOT_FOUND, PERR_LIBRARY_LOAD}, operation, before};
    swept.most = 150;
    swept.tellsMemory = true;
    sweep(swept);
}

static void _nothing() {
}

TEST(MemorySweep, IsToldByTextsAndStreams) {
    ASSERT_NE(nullptr, setlocale(LC_CTYPE, "C.UTF-8"));
    PString const wide(L"\u20acxyz", P_WHOLE_STRING);
    PTargetInfo const record{{wide, 1}, {wide, wide}};
    std::vector<PString> const list{wide};
    PString text;
    PTargetInfo read;
    static unsigned char const BYTES[] = {1, 2};
    Bytes const bytes{0xC3, 0xA9};
    Bytes data, made;
    unsigned char* given = nullptr;
    unsigned long count = 0;
    auto const empty = [&] { Bytes().swap(data); };
    _told("binaryToStr", _nothing, [&] { return PUtils::binaryToStr(BYTES, 2, text); });
    _told("encodeUtf8", _nothing, [&] { return PDataReader(made).encodeUtf8(bytes, text); });
    _told("decodeUtf8", empty, [&] { return PDataWriter(made).decodeUtf8(wide, data); });
    _told("writeString", empty, [&] { return PDataWriter(data).writeString(wide); });
    _told("writeStrings", empty, [&] { return PDataWriter(data).writeStrings(list); });
    auto const readBytes = [&] {
        int const code = PUtils::strToBinary(L"0x01", given, count);
        delete[] std::exchange(given, nullptr);
        return code;
    };
    _told("strToBinary", _nothing, readBytes);
    PDataWriter writer(made);
    ASSERT_CODE(PERR_OK, PDataFormaterUtils::writePTargetInfo(writer, record));
    auto const readRecord = [&] {
        PDataReader reader(made);
        return PDataFormaterUtils::readPTargetInfo(reader, read);
    };
    _told("readPTargetInfo", _nothing, readRecord);
}

TEST(MemorySweep, IsToldByQueriesOfProcessesAndByLibraries) {
    unsigned int const self = PProcess::getCurrentPID();
    PString text;
    std::vector<unsigned int> ids;
    PLibrary* library = nullptr;
    auto const forget = [&] { std::vector<unsigned int>().swap(ids); };
    auto const load = [&] {
        int const code = PLibrary::load(L"libBrokenLocale.so.1", library, true);
        delete std::exchange(library, nullptr);
        return code;
    };
    _told("getCmdLine", _nothing, [&] { return PProcess::getCmdLine(self, text); });
    std::vector<PString> entries;
    auto const empty = [&] { std::vector<PString>().swap(entries); };
    _told("getEnvironment", empty, [&] { return PProcess::getEnvironment(self, entries); });
    _told("listPIDs", forget, [&] { return PProcess::listPIDs(ids); });
    _told("PLibrary::load", _nothing, load);
    auto const userName = [&] { return PProcess::getUserName(self, text); };
    EXPECT_CODE(PERR_NO_MEMORY, runFailing(1, true, userName));
}

TEST(MemorySweep, IsToldByACommandThatWasMadeWithoutIt) {
    std::optional<PCommand> made;
    auto const make = [&] { return made.emplace(L"true"), int{PERR_OK}; };
    PEnding ending{};
    (void)runFailing(1, true, make);
    EXPECT_CODE(PERR_NO_MEMORY, made->addArgument(L"a"));
    EXPECT_CODE(PERR_NO_MEMORY, made->setEnvironment(L"A", L"b"));
    EXPECT_CODE(PERR_NO_MEMORY, made->setWorkingDir(L"/"));
    EXPECT_CODE(PERR_NO_MEMORY, made->start());
    EXPECT_CODE(PERR_NO_PROCESS, made->wait(ending, 0));
}
