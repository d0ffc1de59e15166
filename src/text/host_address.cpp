/// PUtils: the address under which this machine is reached.
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <portinglayer/strings.h>

namespace {

constexpr char const* OVERRIDE_VARIABLE = "TALV_HOST_IP";
constexpr std::size_t NAME_BYTES = 512;

struct FreeAddresses {
    void operator()(addrinfo* a) const { freeaddrinfo(a); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

/// The reason is looked up where a debugger can see it, and goes nowhere else: nothing is logged.
int _systemFailure() {
    (void)strerror(errno);
    return PERR_SYSTEM;
}

bool _isQualified(char const* name) {
    return strchr(name, '.') != nullptr;
}

/// The full name that the resolver knows for `name`: its official name, else the last alias that is
/// qualified and begins with it, else `name` itself. Null when the resolver has no entry.
char const* _qualify(char const* name) {
    hostent const* const entry = gethostbyname(name);
    if (entry == nullptr) return nullptr;
    char const* const official = entry->h_name;
    if (official == nullptr) return name;
    if (_isQualified(official)) return official;
    if (entry->h_aliases == nullptr) return name;
    std::size_t const length = strlen(official);
    for (char** alias = entry->h_aliases; *alias != nullptr; ++alias)
        if (_isQualified(*alias) && strncasecmp(*alias, official, length) == 0) name = *alias;
    return name;
}

int _resolve(char const* name, Addresses& found) {
    addrinfo hints{};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_V4MAPPED | AI_ADDRCONFIG;
    addrinfo* first = nullptr;
    if (getaddrinfo(name, nullptr, &hints, &first) != 0) return _systemFailure();
    found.reset(first);
    return PERR_OK;
}

int _setNumeric(addrinfo const& address, PString& out) {
    char text[NAME_BYTES] = {};
    if (getnameinfo(address.ai_addr, sizeof(sockaddr_in), text, sizeof text, nullptr, 0,
                    NI_NUMERICHOST) != 0)
        return _systemFailure();
    std::unique_ptr<wchar_t[]> const numeric(PLiteral::pchar2pwchar(text, P_WHOLE_STRING));
    out = numeric.get();
    return PERR_OK;
}

}  // namespace

int PUtils::getHostAddress(PString& out) {
    char const* const given = getenv(OVERRIDE_VARIABLE);
    if (given != nullptr) {
        (void)out.set(given, P_WHOLE_STRING);  // whatever it holds, also nothing, is the answer
        return PERR_OK;
    }
    char own[NAME_BYTES + 1] = {};  // one more than is offered: always terminated
    if (gethostname(own, NAME_BYTES) != 0) return _systemFailure();
    char const* const name = _isQualified(own) ? own : _qualify(own);
    if (name == nullptr) return _systemFailure();
    if (*name == '\0') return PERR_NOT_FOUND;

    Addresses found;
    int const result = _resolve(name, found);
    return result == PERR_OK ? _setNumeric(*found, out) : result;
}
