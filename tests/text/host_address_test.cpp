#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <netdb.h>

#include <gtest/gtest.h>

#include <portinglayer/strings.h>

namespace {

// Numbers are names that the real resolver always knows, so the address tells which name was asked.
struct Machine {
    char const* host;                // null: gethostname fails
    std::vector<char const*> entry;  // official name, aliases; empty: gethostbyname finds nothing
    int code;
    wchar_t const* address;
};

Machine machine;

}  // namespace

// The definitions of a test program win over those of the C library.
extern "C" int gethostname(char* name, size_t size) noexcept {
    if (machine.host != nullptr) strncpy(name, machine.host, size);
    return machine.host != nullptr ? 0 : -1;
}

extern "C" hostent* gethostbyname(char const* /*name*/) {
    static hostent entry;
    if (machine.entry.empty()) return nullptr;
    if (machine.entry.back() != nullptr) machine.entry.push_back(nullptr);
    auto** const names = const_cast<char**>(machine.entry.data());
    entry.h_name = names[0];
    entry.h_aliases = names + 1;
    return &entry;
}

TEST(HostAddress, IsFoundByTheNameThatTheResolverCompletes) {
    unsetenv("TALV_HOST_IP");
    Machine const machines[] = {
        {nullptr, {}, PERR_SYSTEM, L"old"},  // no name to be had
        {"10.0.0.1", {}, PERR_OK, L"10.0.0.1"},
        {"1", {}, PERR_SYSTEM, L"old"},  // no entry
        {"1", {"10.0.0.2", "10.0.0.2.x"}, PERR_OK, L"10.0.0.2"},
        {"1", {"0xA", "0xA.3", "0Xa.4", "0xAB"}, PERR_OK, L"10.0.0.4"},
        {"7", {"8", "9.0.0.5"}, PERR_OK, L"0.0.0.7"},  // nothing fuller
        {"", {"8", "9.0.0.5"}, PERR_NOT_FOUND, L"old"},
        {"::10.0.0.1", {}, PERR_SYSTEM, L"old"},  // no address of version 4
    };
    for (auto const& row : machines) {
        machine = row;
        PString out(L"old", P_WHOLE_STRING);
        EXPECT_EQ(PUtils::getHostAddress(out), row.code) << &row - machines;
        EXPECT_STREQ(out.ptr(), row.address) << &row - machines;
    }
}

TEST(HostAddress, IsWhateverTheEnvironmentSays) {
    machine = {};  // nothing else is asked: it would fail
    for (char const* text : {"10.1.2.3", "no address", ""}) {
        setenv("TALV_HOST_IP", text, 1);
        PString out(L"old", P_WHOLE_STRING);
        EXPECT_EQ(PUtils::getHostAddress(out), PERR_OK);
        EXPECT_TRUE(out == PString(text, P_WHOLE_STRING)) << text;
    }
    unsetenv("TALV_HOST_IP");
}
