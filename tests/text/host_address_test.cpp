#include <cstdlib>
#include <cstring>

#include <netdb.h>

#include <text/models.h>

namespace {

// Numbers are names that the real resolver always knows, so the address tells which name was asked.
struct Machine {
    char const* variable;  // null: not set
    char const* host;      // null: gethostname fails
    char const* entry[5];  // official name, aliases, null; "none": gethostbyname finds nothing
    wchar_t const* expected;
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
        {"no address", nullptr, {}, L"0 no address"},
        {"", nullptr, {}, L"0 none"},
        {nullptr, nullptr, {}, L"-500 old"},  // no name to be had
        {nullptr, "10.0.0.1", {}, L"0 10.0.0.1"},
        {nullptr, "1", {}, L"-500 old"},  // no entry
        {nullptr, "1", {"10.0.0.2", "10.0.0.2.x"}, L"0 10.0.0.2"},
        {nullptr, "1", {"0xA", "0xA.3", "0Xa.4", "0xAB"}, L"0 10.0.0.4"},
        {nullptr, "7", {"8", "9.0.0.5"}, L"0 0.0.0.7"},  // nothing fuller
        {nullptr, "", {"8", "9.0.0.5"}, L"-504 old"},
        {nullptr, "::10.0.0.1", {}, L"-500 old"},  // no address of version 4
    };
    for (auto const& row : machines) {
        machine = row;
        (void)(row.variable ? setenv("TALV_HOST_IP", row.variable, 1) : unsetenv("TALV_HOST_IP"));
        PString out(L"old", 3);
        EXPECT_EQ(after(PUtils::getHostAddress(out), out), row.expected) << &row - machines;
    }
}
