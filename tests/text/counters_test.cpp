#include <climits>
#include <string>

#include <text/models.h>

#include <portinglayer/counters.h>

namespace {

std::string events;

struct Watched : PCounterSync {
    using PCounterSync::PCounterSync;
    using PCounterSync::operator=;
    int change(int d) override {
        events += "c" + std::to_string(d) + " ";
        return PCounterSync::change(d);
    }
    void set(int v) override { events += "s" + std::to_string(v) + " "; }
};

struct Noted {
    ~Noted() { events += name; }
    char name;
    PPtr<Noted> next = nullptr;
};

}  // namespace

TEST(Counter, EveryChangeGoesThroughTheVirtualOperations) {
    events.clear();
    Watched counter(5);
    PCounter const three(3);
    --(++((counter += 2) -= three));
    counter = 9;
    static_cast<PCounter&>(counter) = three;
    (counter += three) -= INT_MIN;
    EXPECT_EQ(events, "c2 c-3 c1 c-1 s9 s3 c3 c-2147483648 ");
    EXPECT_EQ(static_cast<int>(PCounterSync(counter)), INT_MIN + 7) << "wrapped, then copied";
    for (int i : {-4, 3, 4}) {
        EXPECT_EQ(compared(PCounter(i), three), compared(i, 3)) << i;
        EXPECT_EQ(compared(PCounter(i), 3), compared(i, 3)) << i;
    }
}

TEST(SharedPointer, ReleasesOnceWithTheLastShareInTheModeGivenAtFirst) {
    static Noted kept{'k'};
    struct {
        int mode;
        Noted* (*make)();
        char const* expected;
    } const rows[] = {{PPtr<Noted>::SINGLE, [] { return new Noted{'a'}; }, "a|a"},
                      {PPtr<Noted>::ARRAY,
                       [] {
                           return new Noted[2]{{'a'}, {'b'}};
                       },
                       "ba|ba"},
                      {2, [] { return &kept; }, "|"}};
    for (auto const& [mode, make, expected] : rows) {
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
        EXPECT_EQ(events, expected) << mode;
    }
}

TEST(SharedPointer, MayBeAssignedFromInsideWhatGoes) {
    PPtr<Noted> head(new Noted{'a', {new Noted{'b'}, PPtr<Noted>::SINGLE}}, PPtr<Noted>::SINGLE);
    head = head->next;
    EXPECT_EQ(head->name, 'b');
}
