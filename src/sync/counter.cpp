#include <portinglayer/counters.h>

namespace {

/// Sums in unsigned numbers, which wrap around.
int _sum(int a, int b) {
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

int _negated(int v) {
    return static_cast<int>(0U - static_cast<unsigned int>(v));
}

}  // namespace

PCounter::PCounter(int v) : value(v) {
}

PCounter::PCounter(PCounter const& o) = default;

PCounter::~PCounter() {
    // Volatile, or the compiler leaves out what no correct program reads.
    const_cast<int volatile&>(value) = 0;
}

int PCounter::change(int d) {
    value = _sum(value, d);
    return value;
}

void PCounter::set(int v) {
    value = v;
}

PCounter& PCounter::operator=(PCounter const& o) {
    return *this = o.value;
}

PCounter& PCounter::operator=(int v) {
    set(v);
    return *this;
}

PCounter& PCounter::operator+=(PCounter const& o) {
    return *this += o.value;
}

PCounter& PCounter::operator+=(int d) {
    (void)change(d);  // the new value is the operator's result
    return *this;
}

PCounter& PCounter::operator-=(PCounter const& o) {
    return *this -= o.value;
}

PCounter& PCounter::operator-=(int d) {
    return *this += _negated(d);
}

PCounter& PCounter::operator++() {
    return *this += 1;
}

PCounter& PCounter::operator--() {
    return *this += -1;
}

bool PCounter::operator==(PCounter const& o) const {
    return value == o.value;
}
bool PCounter::operator==(int v) const {
    return value == v;
}
bool PCounter::operator!=(PCounter const& o) const {
    return value != o.value;
}
bool PCounter::operator!=(int v) const {
    return value != v;
}
bool PCounter::operator<(PCounter const& o) const {
    return value < o.value;
}
bool PCounter::operator<(int v) const {
    return value < v;
}
bool PCounter::operator<=(PCounter const& o) const {
    return value <= o.value;
}
bool PCounter::operator<=(int v) const {
    return value <= v;
}
bool PCounter::operator>(PCounter const& o) const {
    return value > o.value;
}
bool PCounter::operator>(int v) const {
    return value > v;
}
bool PCounter::operator>=(PCounter const& o) const {
    return value >= o.value;
}
bool PCounter::operator>=(int v) const {
    return value >= v;
}

PCounter::operator int() const {
    return value;
}

// The results of lock and unlock are ignored throughout: the mutex is never initialised, so both
// fail, and a counter has no way to tell.

PCounterSync::PCounterSync(int v) : PCounter(v) {
}

PCounterSync::PCounterSync(PCounterSync const& o) : PCounter(o), mutex() {
}

PCounterSync::~PCounterSync() = default;

PCounterSync& PCounterSync::operator=(PCounterSync const& o) {
    set(o.value);
    return *this;
}

int PCounterSync::change(int d) {
    (void)mutex.lock();
    value = _sum(value, d);
    int const changed = value;
    (void)mutex.unlock();
    return changed;
}

void PCounterSync::set(int v) {
    (void)mutex.lock();
    value = v;
    (void)mutex.unlock();
}
