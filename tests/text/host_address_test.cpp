#include <cstdlib>
#include <cstring>

#include <netdb.h>
#include <support/expect.h>

namespace {

/// What the machine says of itself. Numbers are names that the real resolver always knows.
struct Machine {
    char const* what;
    char const* variable;  // null: not set
    char const* host;      // null: the name cannot be read
    char const* entry[5];  // official name and aliases; nothing: the resolver has no entry
    int code;
    wchar_t const* address;
} machine;

}  // namespace

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
    Machine const rows[] = {
        {"the variable, unchecked", "no address", nullptr, {}, PERR_OK, L"no address"},
        {"no name", nullptr, nullptr, {}, PERR_SYSTEM, L"old"},
        {"a full name", nullptr, "10.0.0.1", {"10.0.0.9"}, PERR_OK, L"10.0.0.1"},
        {"a name without an entry", nullptr, "1", {}, PERR_SYSTEM, L"old"},
        {"a full entry", nullptr, "1", {"10.0.0.2"}, PERR_OK, L"10.0.0.2"},
        {"the last alias", nullptr, "1", {"0xA", "0xA.3", "0Xa.4", "0xAB"}, PERR_OK, L"10.0.0.4"},
        {"nothing fuller", nullptr, "7", {"8", "9.0.0.5"}, PERR_OK, L"0.0.0.7"},
        {"an empty name", nullptr, "", {"8"}, PERR_NOT_FOUND, L"old"},
        {"no address of version 4", nullptr, "::10.0.0.1", {}, PERR_SYSTEM, L"old"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        machine = row;
        (void)(row.variable ? setenv("TALV_HOST_IP", row.variable, 1) : unsetenv("TALV_HOST_IP"));
        PString address(L"old", 3);
        EXPECT_CODE(row.code, PUtils::getHostAddress(address));
        EXPECT_TEXT(row.address, address);
    }
    unsetenv("TALV_HOST_IP");
}
