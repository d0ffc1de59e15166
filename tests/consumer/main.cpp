#include <cstdio>
#include <portinglayer/portinglayer.h>

int main() {
    PString text(L"installed", P_WHOLE_STRING);
    bool const joined = text.cat(PLiteral(L" and found")) == PERR_OK && text.len() == 19;
    std::printf("headers %u, library %u\n", PORTINGLAYER_VERSION, portinglayerVersion());
    return joined && portinglayerVersion() == PORTINGLAYER_VERSION ? 0 : 1;
}
