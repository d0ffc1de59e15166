#include <climits>
#include <cstring>
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
    void set(int v) override { calls += "set " + std::to_string(v) + ";"; }
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

template <typename Counter>
class AnyCounter : public testing::Test {};
using CounterTypes = testing::Types<PCounter, PCounterSync>;
TYPED_TEST_SUITE(AnyCounter, CounterTypes);

TYPED_TEST(AnyCounter, CountsAndWrapsAround) {
    TypeParam counter(5);
    EXPECT_EQ(7, counter.change(2));
    EXPECT_EQ(4, int(counter -= 3));
    EXPECT_EQ(5, int(++counter));
    EXPECT_EQ(4, int(--counter));
    EXPECT_EQ(6, int(counter += TypeParam(2)));
    EXPECT_EQ(1, int(counter -= TypeParam(5)));
    EXPECT_EQ(INT_MIN, int(counter += INT_MAX));
    EXPECT_EQ(9, int(counter = 9));
    EXPECT_EQ(3, int(counter = TypeParam(3)));
}

TYPED_TEST(AnyCounter, IsComparedByItsValue) {
    for (int value : {-1, 0, 1}) {
        expectOrder(value, 0, TypeParam(value), TypeParam(0));
        expectOrder(value, 0, TypeParam(value), 0);
    }
}

TYPED_TEST(AnyCounter, LeavesZeroBehind) {
    alignas(TypeParam) unsigned char place[sizeof(TypeParam)];
    auto* const counter = new (place) TypeParam(5);
    counter->~TypeParam();
    int left = 77;
    std::memcpy(&left, place + sizeof(void*), sizeof left);
    EXPECT_EQ(0, left);
}

TEST(Counter, ChangesThroughItsVirtualOperations) {
    Watched counter(5);
    counter += 2;
    counter -= PCounter(3);
    ++counter;
    --counter;
    counter = 9;
    EXPECT_EQ("change 2;change -3;change 1;change -1;set 9;", counter.calls);
}

TEST_F(SharedPointer, DeletesWithTheLastShare) {
    {
        PPtr<Noted> first(new Noted{'a'}, PPtr<Noted>::SINGLE);
        PPtr<Noted> second(first), third;
        third = second;
        second = nullptr;
        first = third;
        EXPECT_EQ("", Noted::gone);
    }
    EXPECT_EQ("a", Noted::gone);
}

TEST_F(SharedPointer, DestroysAnArrayFromItsEnd) {
    PPtr<Noted> array(new Noted[3]{{'a'}, {'b'}, {'c'}});
    array.newCounter();
    array = array.get();  // what it holds already
    EXPECT_EQ("", Noted::gone);
    array = nullptr;
    EXPECT_EQ("cba", Noted::gone);
}

TEST_F(SharedPointer, LeavesThePointeeAloneInAnyOtherMode) {
    Noted kept{'k'};
    PPtr<Noted>(&kept, 2) = nullptr;
    EXPECT_EQ("", Noted::gone);
}

TEST_F(SharedPointer, KeepsItsModeForThePointerThatItIsAssigned) {
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
