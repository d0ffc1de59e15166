#include <climits>
#include <string>

#include <portinglayer/counters.h>
#include <text/models.h>

namespace {

std::string events;

struct Watched : PCounterSync {
    using PCounterSync::PCounterSync;
    using PCounterSync::operator=;
    int change(int d) override {
        events += std::to_string(d) + " ";
        return PCounterSync::change(d);
    }
    void set(int v) override { events += "=" + std::to_string(v) + " "; }
};

struct Noted {
    ~Noted() { events += name; }
    char name;
    PPtr<Noted> next = nullptr;
};

/// Deletions while shares go, then after the last one; the second thing comes by raw assignment.
std::string _deletions(int mode, Noted* (*make)()) {
    events.clear();
    {
        PPtr<Noted> first(make(), mode), second(first), third(nullptr, mode);
        third = second;
        third = third.get();
        second = first = nullptr;
        EXPECT_TRUE(events.empty() && first.get() == nullptr && &*third == third.get()) << mode;
        third = make();
        events += "|";
    }
    return events;
}

}  // namespace

TEST(Counter, EveryChangeGoesThroughTheVirtualOperations) {
    events.clear();
    Watched counter(5);
    PCounter const three(3);
    --(++((counter += 2) -= three));
    counter = 9;
    static_cast<PCounter&>(counter) = three;
    static_cast<PCounterSync&>(counter) = PCounterSync(4);
    (counter += three) -= INT_MIN;
    EXPECT_EQ(events, "2 -3 1 -1 =9 =3 =4 3 -2147483648 ");
    EXPECT_EQ(static_cast<int>(PCounterSync(counter)), INT_MIN + 7) << "wrapped, then copied";
    for (int i : {-4, 3, 4}) {
        EXPECT_EQ(compared(++(PCounter(9) = i - 1), three), compared(i, 3)) << i;
        EXPECT_EQ(compared(PCounterSync(9) = PCounterSync(i), 3), compared(i, 3)) << i;
    }
}

TEST(SharedPointer, DeletesOnceWithTheLastShareInTheModeGivenAtFirst) {
    static Noted kept{'k'};
    EXPECT_EQ(_deletions(PPtr<Noted>::SINGLE, [] { return new Noted{'a'}; }), "a|a");
    EXPECT_EQ(_deletions(PPtr<Noted>::ARRAY, [] { return new Noted[2]{{'a'}, {'b'}}; }), "ba|ba");
    EXPECT_EQ(_deletions(2, [] { return &kept; }), "|");
    PPtr<Noted> head(new Noted{'a', {new Noted{'b'}, PPtr<Noted>::SINGLE}}, PPtr<Noted>::SINGLE);
    head = head->next;
    EXPECT_EQ(head->name, 'b') << "assigned from inside what goes";
    auto* const own = new Noted{'o', {nullptr, PPtr<Noted>::SINGLE}};
    own->next = own;
    events.clear();
    own->next = nullptr;
    EXPECT_EQ(events, "o") << "assigned to inside what goes";
}
