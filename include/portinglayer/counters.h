/// @file
/// Counters whose changes can be intercepted, and the reference-counted pointer `PPtr<T>`.
#ifndef PORTINGLAYER_COUNTERS_H
#define PORTINGLAYER_COUNTERS_H

#include <new>
#include <utility>

#include <portinglayer/export.h>
#include <portinglayer/synchronisation.h>

/// An integer whose every change goes through the two virtual operations `change` and `set`, so
/// that a derived counter can act on each of them. Comparisons and `operator int` read the value
/// directly. Arithmetic wraps around in two's complement; there is no undefined overflow.
///
/// Threads: no lock and no atomic operation; one counter belongs to one thread at a time.
class PORTINGLAYER_EXPORT PCounter {
public:
    /// Starts with `v`, without a call of `set`.
    PCounter(int v);

    /// Takes the other's value directly, without a call of `set`.
    PCounter(PCounter const& o);

    /// Leaves 0 behind at the place of the value.
    virtual ~PCounter();

    /// Adds `d`. All changing operators but assignment end here.
    /// @return the new value
    virtual int change(int d);

    /// Replaces the value. Both assignments end here.
    virtual void set(int v);

    PCounter& operator=(PCounter const& o);   ///< `set` with the other's value
    PCounter& operator=(int v);               ///< `set(v)`
    PCounter& operator+=(PCounter const& o);  ///< `change` with the other's value
    PCounter& operator+=(int d);              ///< `change(d)`
    PCounter& operator-=(PCounter const& o);  ///< `change` with the negated value, which may wrap
    PCounter& operator-=(int d);              ///< `change(-d)`, which may wrap
    PCounter& operator++();                   ///< `change(1)`
    PCounter& operator--();                   ///< `change(-1)`

    bool operator==(PCounter const& o) const;  ///< equal, by the values
    bool operator==(int v) const;              ///< equal, by the value
    bool operator!=(PCounter const& o) const;  ///< not equal, by the values
    bool operator!=(int v) const;              ///< not equal, by the value
    bool operator<(PCounter const& o) const;   ///< less, by the values
    bool operator<(int v) const;               ///< less, by the value
    bool operator<=(PCounter const& o) const;  ///< less or equal, by the values
    bool operator<=(int v) const;              ///< less or equal, by the value
    bool operator>(PCounter const& o) const;   ///< greater, by the values
    bool operator>(int v) const;               ///< greater, by the value
    bool operator>=(PCounter const& o) const;  ///< greater or equal, by the values
    bool operator>=(int v) const;              ///< greater or equal, by the value

    operator int() const;  ///< the value

protected:
    int value;  ///< read and written without a lock
};

/// A counter that takes its own mutex around each `set` and `change`. A copy has a mutex of its
/// own and takes over the value only.
///
/// @warning The mutex is never initialised, on purpose: taking it fails at once and excludes
/// nobody, so this counter is as unsynchronised as `PCounter`. To count from several threads, hold
/// an initialised `PMutex` around every use, or use `std::atomic<int>`.
class PORTINGLAYER_EXPORT PCounterSync : public PCounter {
public:
    /// Starts with `v`, without a call of `set`.
    PCounterSync(int v);

    /// Takes over the value.
    PCounterSync(PCounterSync const& o);
    ~PCounterSync() override;

    PCounterSync& operator=(PCounterSync const& o);  ///< `set` with the other's value
    using PCounter::operator=;

    int change(int d) override;
    void set(int v) override;

private:
    PMutex mutex;
};

/// A pointer that shares its pointee with its copies; the last one to go releases it. How, the
/// release mode says: `SINGLE` with `delete`, `ARRAY` with array `delete` (elements are destroyed
/// from the last to the first), any other value not at all. Copies share one counter, allocated
/// with the first share; an empty pointer has neither pointee nor counter and allocates nothing.
///
/// The library holds the instantiations for `char`, `wchar_t`, `char*` (the vector only: the texts
/// that it points to stay the caller's) and `PProcess`; any other is made where it is used.
///
/// Threads: the count is a plain integer; a pointer and all its copies belong to one thread at a
/// time.
///
/// @warning The default mode is `ARRAY`. Give `SINGLE` for what was made by plain `new`.
/// @warning Without memory for the counter the pointee is held but never released by that share;
/// nothing is thrown.
/// @warning Two pointers made from the same raw pointer do not know of each other and both release
/// it: copy the first one instead.
template <typename T>
class PPtr {
public:
    static constexpr int SINGLE = 0;  ///< released with `delete`
    static constexpr int ARRAY = 1;   ///< released with array `delete`

    /// Takes over `p`, which may be null, as its first share.
    PPtr(T* p = nullptr, int mode = ARRAY)
        : pointee(p), counter(_firstShare(p)), releaseMode(mode) {}

    /// Joins the other's share. Of a pointee held without a counter the new share is the first.
    PPtr(PPtr const& o) : pointee(o.pointee), counter(o._join()), releaseMode(o.releaseMode) {}

    /// Releases this share, and the pointee with the last one.
    PORTINGLAYER_EXPORT virtual ~PPtr();

    /// Joins the other's share and mode, then releases the own one. Safe also where that destroys
    /// either pointer, as in `head = head->next`.
    PPtr& operator=(PPtr const& o) {
        PPtr(o)._swap(*this);
        return *this;
    }

    /// Takes over `p`, which may be null, in the same mode, then releases the own share. The
    /// pointer that it holds already changes nothing.
    PPtr& operator=(T* p) {
        if (p != pointee) PPtr(p, releaseMode)._swap(*this);
        return *this;
    }

    T* get() const { return pointee; }         ///< null when empty
    T& operator*() const { return *pointee; }  ///< not for an empty pointer
    T* operator->() const { return pointee; }  ///< null when empty

    /// Does nothing, and nothing here calls it: for code that calls it on a base.
    PORTINGLAYER_EXPORT virtual void newCounter();

    /// Releases the pointee as the mode says; nothing when empty. Assignments and the destructor
    /// release in this way whatever a derived pointer does instead.
    ///
    /// @warning Pointee and counter stay as they are, and every share still points to what is gone.
    /// Assign null to the last share instead.
    PORTINGLAYER_EXPORT virtual void freePtr();

private:
    static int* _firstShare(T const* p) {
        return p == nullptr ? nullptr : new (std::nothrow) int(1);
    }

    /// The counter for one more share.
    int* _join() const {
        if (pointee == nullptr || counter == nullptr) return _firstShare(pointee);
        ++*counter;
        return counter;
    }

    void _swap(PPtr& o) {
        std::swap(pointee, o.pointee);
        std::swap(counter, o.counter);
        std::swap(releaseMode, o.releaseMode);
    }

    T* pointee;
    int* counter;
    int releaseMode;
};

template <typename T>
PPtr<T>::~PPtr() {
    if (counter != nullptr && (*counter)-- == 1) {
        PPtr::freePtr();
        delete counter;
    }
    pointee = nullptr;
    counter = nullptr;
    releaseMode = SINGLE;
}

template <typename T>
void PPtr<T>::newCounter() {
}

template <typename T>
void PPtr<T>::freePtr() {
    if (releaseMode == SINGLE)
        delete pointee;
    else if (releaseMode == ARRAY)
        delete[] pointee;
}

/// @cond
// What the library holds of an instantiation; everything else is inline where it is used.
#define PORTINGLAYER_HELD_PPTR(declared, T)                                                        \
    declared template PPtr<T>::~PPtr();                                                            \
    declared template void PPtr<T>::newCounter();                                                  \
    declared template void PPtr<T>::freePtr()

PORTINGLAYER_HELD_PPTR(extern, char);
PORTINGLAYER_HELD_PPTR(extern, wchar_t);
PORTINGLAYER_HELD_PPTR(extern, char*);
/// @endcond

#endif
