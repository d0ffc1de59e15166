/// Gives a configuration file new content. Whoever reads it meanwhile, and whatever happens to this
/// process or to the machine, finds the old content or the new one, each whole.
#include <cstdio>

#include <portinglayer/replacements.h>

int main() {
    PReplacement config;
    int result = config.begin(L"product.conf");
    if (result == PERR_OK) result = config.writeLine(L"# written by replace_file");
    if (result == PERR_OK) result = config.writeLine(L"name = Zo\x00eb");
    if (result == PERR_OK) result = config.commit();  // left out, the old content stays

    if (result != PERR_OK) return std::printf("not replaced: %s\n", perrorName(result)), 1;
    std::puts("replaced");
    return 0;
}
