#include <cstdlib>
#include <cstring>

#include <netdb.h>

#include <gtest/gtest.h>
#include <portinglayer/strings.h>

namespace {

// Numbers are names that the real resolver always knows, so the address tells which name was asked.
struct Machine {
    char const* variable;  // null: not set
    char const* host;      // null: gethostname fails
    char const* entry[5];  // official name, aliases, null; "none": gethostbyname finds nothing
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
    entry.h_name = const_cast<char*>(machine.entry[0]);
    entry.h_aliases = const_cast<char**>(machine.entry + 1);
    return entry.h_name == nullptr ? nullptr : &entry;
}

TEST(HostAddress, IsTheVariableElseThatOfTheNameThatTheResolverCompletes) {
    Machine const machines[] = {
        {"no address", nullptr, {}, PERR_OK, L"no address"},
        {"", nullptr, {}, PERR_OK, nullptr},
        {nullptr, nullptr, {}, PERR_SYSTEM, L"old"},  // no name to be had
        {nullptr, "10.0.0.1", {}, PERR_OK, L"10.0.0.1"},
        {nullptr, "1", {}, PERR_SYSTEM, L"old"},  // no entry
        {nullptr, "1", {"10.0.0.2", "10.0.0.2.x"}, PERR_OK, L"10.0.0.2"},
        {nullptr, "1", {"0xA", "0xA.3", "0Xa.4", "0xAB"}, PERR_OK, L"10.0.0.4"},
        {nullptr, "7", {"8", "9.0.0.5"}, PERR_OK, L"0.0.0.7"},  // nothing fuller
        {nullptr, "", {"8", "9.0.0.5"}, PERR_NOT_FOUND, L"old"},
        {nullptr, "::10.0.0.1", {}, PERR_SYSTEM, L"old"},  // no address of version 4
    };
    for (auto const& row : machines) {
        machine = row;
        (void)(row.variable ? setenv("TALV_HOST_IP", row.variable, 1) : unsetenv("TALV_HOST_IP"));
        PString out(L"old", 3);
        EXPECT_EQ(PUtils::getHostAddress(out), row.code) << &row - machines;
        EXPECT_STREQ(out.ptr(), row.address) << &row - machines;
    }
}
