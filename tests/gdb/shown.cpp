#include <portinglayer/counters.h>
#include <portinglayer/strings.h>

namespace {
[[gnu::noinline]] int _stop(PLiteral const& view, PString const& owned, PPtr<char> const& shared,
                            int result) {
    return view.len() + owned.len() == 0 && shared.get() == nullptr ? 0 : result;
}
}  // namespace

int main() {
    PPtr<char> const first(new char[8]{"pointee"}, PPtr<char>::ARRAY);
    PPtr<char> second;
    second = first;
    return _stop(PLiteral(), PString(L"wide \x20ac", P_WHOLE_STRING), second, PERR_LOCKED);
}
