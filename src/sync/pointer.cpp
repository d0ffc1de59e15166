#include <portinglayer/counters.h>

PORTINGLAYER_HELD_PPTR(, char);
PORTINGLAYER_HELD_PPTR(, wchar_t);
PORTINGLAYER_HELD_PPTR(, char*);
