// A program as a user of the library has it, as old as C++17, also without exceptions and type
// information.
#include <cstdio>
#include <vector>

#include <portinglayer/portinglayer.h>

namespace {

bool _foundEverywhere(std::vector<PString>& lines) {
    PPtr<int> const shared(new int(3));
    PPtr<int> const copy(shared);
    PCounter counter(0);
    counter.change(*copy);

    PFile file;
    if (file.popen(PLiteral(L"/proc/self/status"), PFile::OPEN_READ, 1) != PERR_OK) return false;
    PString line;
    while (file.preadLine(line) == PERR_OK) lines.push_back(line);
    return counter == 3;
}

}  // namespace

int main() {
    std::vector<PString> lines;
    bool const found = _foundEverywhere(lines) && lines.size() > 10;
    std::printf("headers %u, library %u, %zu lines\n", PORTINGLAYER_VERSION, portinglayerVersion(),
                lines.size());
    return found && portinglayerVersion() == PORTINGLAYER_VERSION ? 0 : 1;
}
