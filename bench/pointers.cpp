// Reference-counted pointers: making one with its object, and sharing one.

#include "operation.h"

#include <memory>

#include <portinglayer/counters.h>

#ifdef BENCH_BOOST
#include <boost/shared_ptr.hpp>
#endif
#ifdef BENCH_POCO
#include <Poco/SharedPtr.h>
#endif
#ifdef BENCH_QT
#include <QSharedPointer>
#endif

namespace {

struct OurPointer : PPtr<int> {
    explicit OurPointer(int* p) : PPtr<int>(p, SINGLE) {}
};

template <typename Pointer>
void _addWay(Operation<int>& making, Operation<int>& sharing, char const* name) {
    making.way(name, [] {
        Pointer const pointer(new int(42));
        return *pointer;
    });
    auto const shared = std::make_shared<Pointer>(new int(42));
    sharing.way(name, [=] {
        Pointer const copy(*shared);
        return *copy;
    });
}

}  // namespace

void addPointers() {
    Operation making("pointer make and release", NO_LIMIT, 42, "std::shared_ptr");
    Operation sharing("pointer share and release", NO_LIMIT, 42, "std::shared_ptr");
    _addWay<std::shared_ptr<int>>(making, sharing, BARE);
#ifdef BENCH_QT
    _addWay<QSharedPointer<int>>(making, sharing, "Qt");
#endif
#ifdef BENCH_BOOST
    _addWay<boost::shared_ptr<int>>(making, sharing, "Boost");
#endif
#ifdef BENCH_POCO
    _addWay<Poco::SharedPtr<int>>(making, sharing, "POCO");
#endif
    _addWay<OurPointer>(making, sharing, OURS);
}
