#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "stream_model.h"

/// Byte 0 picks the locale, byte 1 the number of operations; those follow, then the stream.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* input, std::size_t size) {
    if (size < 2) return 0;
    setlocale(LC_CTYPE, input[0] % 2 == 0 ? "C" : "C.UTF-8");
    std::uint8_t const* const operations = input + 2;
    std::size_t const count = input[1] % 32 < size - 2 ? input[1] % 32 : size - 2;
    std::string const difference =
        differenceFromModel({operations, operations + count}, {operations + count, input + size});
    if (difference.empty()) return 0;
    (void)fprintf(stderr, "%s\n", difference.c_str());
    abort();
}
