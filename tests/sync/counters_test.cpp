#include <climits>
#include <new>
#include <string>

#include <gtest/gtest.h>
#include <portinglayer/counters.h>
#include <support/order.h>

namespace {

/// Writes down how it is changed.
struct Watched : PCounter {
    using PCounter::PCounter;
    using PCounter::operator=;
    int change(int d) override {
        calls += "change " + std::to_string(d) + ";";
        return PCounter::change(d);
    }
    void set(int v) override {
        calls += "set " + std::to_string(v) + ";";
        PCounter::set(v);
    }
    std::string calls;
};

/// Writes its name down when it is destroyed.
struct Noted {
    ~Noted() { gone += name; }
    char name = '?';
    PPtr<Noted> next = nullptr;
    static inline std::string gone;
};

struct SharedPointer : testing::Test {
    SharedPointer() { Noted::gone.clear(); }
};

}  // namespace

TEST(Counter, ChangesThroughItsVirtualOperationsAndWrapsAround) {
    Watched counter(5);
    EXPECT_EQ(7, int(counter += 2));
    EXPECT_EQ(4, int(counter -= PCounter(3)));
    EXPECT_EQ(5, int(++counter));
    EXPECT_EQ(4, int(--counter));
    EXPECT_EQ(3, int(counter -= 1));
    EXPECT_EQ(INT_MIN + 2, int(counter += PCounter(INT_MAX)));
    EXPECT_EQ(9, int(counter = 9));
    EXPECT_EQ(3, int(counter = PCounter(3)));
    EXPECT_EQ("change 2;change -3;change 1;change -1;change -1;change 2147483647;set 9;set 3;",
              counter.calls);
}

TEST(Counter, IsComparedByItsValue) {
    for (int value : {-1, 0, 1}) {
        expectOrder(value, 0, PCounter(value), PCounter(0));
        expectOrder(value, 0, PCounter(value), 0);
    }
}

TEST(Counter, LeavesZeroBehind) {
    alignas(PCounter) int place[sizeof(PCounter) / sizeof(int)];
    auto* const counter = new (place) PCounter(5);
    counter->~PCounter();
    EXPECT_EQ(0, place[sizeof(void*) / sizeof(int)]);
}

TEST(LockedCounter, CountsAsAnyOther) {
    PCounterSync counter(5), copy(counter);
    EXPECT_EQ(7, counter.change(2));
    EXPECT_EQ(9, int(counter = 9));
    EXPECT_EQ(5, int(counter = copy));
}

TEST_F(SharedPointer, DeletesWithTheLastShare) {
    {
        PPtr<Noted> first(new Noted{'a'}, PPtr<Noted>::SINGLE);
        PPtr<Noted> second(first), third;
        third = second;
        second = nullptr;
        first = third;
        first = first.get();  // what it holds already
        EXPECT_EQ("", Noted::gone);
    }
    EXPECT_EQ("a", Noted::gone);
}

TEST_F(SharedPointer, KeepsItsModeForThePointerThatItIsAssigned) {
    Noted kept{'k'};
    PPtr<Noted>(&kept, 2) = nullptr;
    EXPECT_EQ("", Noted::gone) << "left alone in a mode of no meaning";
    PPtr<Noted> pointer(new Noted{'a'}, PPtr<Noted>::SINGLE);
    pointer = new Noted{'b'};  // a sanitizer sees the wrong kind of delete
    EXPECT_EQ("a", Noted::gone);
    pointer = PPtr<Noted>(new Noted[1]{{'c'}});
    EXPECT_EQ("ab", Noted::gone);
    pointer = new Noted[2]{{'d'}, {'e'}};
    pointer = nullptr;
    EXPECT_EQ("abced", Noted::gone);
}

TEST_F(SharedPointer, MayBeAssignedFromInsideWhatGoes) {
    PPtr<Noted> head(new Noted{'a', {new Noted{'b'}, PPtr<Noted>::SINGLE}}, PPtr<Noted>::SINGLE);
    head = head->next;
    EXPECT_EQ("a", Noted::gone);
    EXPECT_EQ('b', head->name);
}
