// Reference-counted pointers: making one with its object, and sharing one.

#include "operation.h"

#include <memory>

#include <portinglayer/counters.h>

namespace {

struct OurPointer : PPtr<int> {
    explicit OurPointer(int* p) : PPtr<int>(p, SINGLE) {}
};

template <typename Pointer>
int _make() {
    Pointer const pointer(new int(42));
    return *pointer;
}

template <typename Pointer>
Pointer const shared(new int(42));

template <typename Pointer>
int _share() {
    Pointer const copy(shared<Pointer>);
    return *copy;
}

}  // namespace

void addPointers() {
    Operation making("pointer make and release", NO_LIMIT, 42, "std::shared_ptr");
    making.way(BARE, _make<std::shared_ptr<int>>);
    WITH_QT(making.way("Qt", _make<QSharedPointer<int>>));
    WITH_BOOST(making.way("Boost", _make<boost::shared_ptr<int>>));
    WITH_POCO(making.way("POCO", _make<Poco::SharedPtr<int>>));
    making.way(OURS, _make<OurPointer>);

    Operation sharing("pointer share and release", NO_LIMIT, 42, "std::shared_ptr");
    sharing.way(BARE, _share<std::shared_ptr<int>>);
    WITH_QT(sharing.way("Qt", _share<QSharedPointer<int>>));
    WITH_BOOST(sharing.way("Boost", _share<boost::shared_ptr<int>>));
    WITH_POCO(sharing.way("POCO", _share<Poco::SharedPtr<int>>));
    sharing.way(OURS, _share<OurPointer>);
}
