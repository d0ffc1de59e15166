#include <portinglayer/counters.h>

template class PPtr<char>;
template class PPtr<wchar_t>;
template class PPtr<char*>;
