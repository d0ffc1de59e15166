#include <cstdlib>
#include <ctime>

#include <portinglayer/files.h>

namespace {

constexpr wchar_t const* TEMPORARY_FOLDER = L"/tmp/";
constexpr double LARGEST_RANDOM = 2147483647.0;

}  // namespace

PString PSystem::getTempDir() {
    PDir const folder(TEMPORARY_FOLDER, PLiteral());
    return folder == PERR_OK ? PString(TEMPORARY_FOLDER, P_WHOLE_STRING) : PString();
}

int PSystem::getRandom(int min, int max) {
    srand(static_cast<unsigned int>(time(nullptr)));
    int const whole = static_cast<int>(rand() / LARGEST_RANDOM);  // 0, or 1 for the very largest
    return static_cast<int>(static_cast<double>(whole) * max + min);
}
