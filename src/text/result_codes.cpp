#include <portinglayer/result_codes.h>

char const* perrorName(int code) {
    switch (code) {
#define PORTINGLAYER_NAME_CODE(name, value, meaning)                                               \
    case value: return #name;
        PORTINGLAYER_RESULT_CODES(PORTINGLAYER_NAME_CODE)
#undef PORTINGLAYER_NAME_CODE
    default: return nullptr;
    }
}
