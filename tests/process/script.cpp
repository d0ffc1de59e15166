#include <process/script.h>

#include <faults/interpose.h>

namespace {

Script* active = nullptr;

}  // namespace

Script::Script(std::vector<std::string> given) : contents(std::move(given)) {
    showNext();
    active = this;
}

Script::~Script() {
    active = nullptr;
}

int Script::record(std::string const& call, long argument) {
    recorded.push_back(call + " " + std::to_string(static_cast<int>(argument)));
    showNext();
    return 0;
}

long Script::path(long real) const {
    return contents.empty() ? real : reinterpret_cast<long>(file.c_str());
}

void Script::showNext() {
    if (shown < contents.size()) (void)scratch.write("file", contents[shown++]);
}

// clang-format off
INTERPOSE(fopen, if (active) a = active->path(a))
INTERPOSE(open, if (active) a = active->path(a))
INTERPOSE(sleep, if (active) return active->record("sleep", a))
INTERPOSE(usleep, if (active) return active->record("usleep", a))
INTERPOSE(kill, if (active) return active->record("kill " + std::to_string(int(a)), b);
          if (int(a) <= 0) return -1)  // never the processes of others
INTERPOSE(fork, if (active) return -1)
// clang-format on
