#include <climits>
#include <string>

#include <gtest/gtest.h>

#include <portinglayer/counters.h>

static_assert(sizeof(PCounter) == 16 && sizeof(PCounterSync) == 16 + sizeof(PMutex));
static_assert(sizeof(PPtr<char>) == 32 && sizeof(PPtr<PCounter>) == 32);

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
    counter -= INT_MIN;
    EXPECT_EQ(events, "c2 c-3 c1 c-1 s9 s3 c-2147483648 ");
    EXPECT_EQ(static_cast<int>(PCounterSync(counter)), INT_MIN + 4) << "wrapped, then copied";
    EXPECT_TRUE(counter < three && counter <= 3 && three > counter && three >= 3 && three != 4);
}

TEST(SharedPointer, ReleasesOnceWithTheLastShareInTheGivenMode) {
    Noted kept{'k'};
    struct {
        Noted* pointee;
        int mode;
        char const* expected;
    } const rows[] = {{new Noted{'a'}, PPtr<Noted>::SINGLE, "a"},
                      {new Noted[3]{{'a'}, {'b'}, {'c'}}, PPtr<Noted>::ARRAY, "cba"},
                      {&kept, 2, ""}};
    for (auto const& [pointee, mode, expected] : rows) {
        events.clear();
        {
            PPtr<Noted> first(pointee, mode), third(nullptr, mode);
            PPtr<Noted> const second(first);
            third = second;
            third = pointee;
            first = nullptr;
            EXPECT_TRUE(first.get() == nullptr && &*third == pointee && events.empty()) << mode;
        }
        EXPECT_EQ(events, expected) << mode;
    }
}

TEST(SharedPointer, RawAssignmentKeepsTheMode) {
    events.clear();
    PPtr<Noted> head(new Noted[1]{{'a'}});
    head = nullptr;
    head = new Noted[2]{{'c'}, {'b'}};
    head->next = PPtr<Noted>(new Noted{'d'}, PPtr<Noted>::SINGLE);
    head = head->next;
    EXPECT_EQ(events, "abc") << "assigned from inside what goes";
    EXPECT_EQ(head->name, 'd');
}
