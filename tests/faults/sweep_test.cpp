#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/scratch.h>

TEST(FaultSweep, Text) {
    sweep("PString editing", {PERR_NO_MEMORY}, [](Fault& fault) {
        PString s(L" a b ", 5);
        int const code = fault([&] {
            return steps([&] { return s.cat(L"abc", 3); }, [&] { return s.insert(1, L"abc", 3); },
                         [&] { return s.stripall(); }, [&] { return s.fill(L'x', 99); },
                         [&] { return s.cat("abc", 3); }, [&] { return s.set(L"abc", 3); },
                         [&] { return s.set("x", 1); });
        });
        EXPECT_EQ(s.len(), s.ptr() == nullptr ? 0 : wcslen(s.ptr()));
        EXPECT_EQ(s.set(L"abc", 3), PERR_OK);
        return code;
    });
    sweep("PLiteral::getNextToken", {PERR_TOKEN}, [](Fault& fault) {
        PString source(L"a b", 3), token;
        return fault([&] { return PLiteral::getNextToken(source, token, L' '); });
    });
    sweep("PUtils to text", {PERR_NO_MEMORY}, plain([] {
              PString out;
              unsigned char const bytes[] = {1, 2};
              return steps([&] { return PUtils::int32ToStr(-5, out); },
                           [&] { return PUtils::uint64ToStr(7, out); },
                           [&] { return PUtils::binaryToStr(bytes, 2, out); },
                           [&] { return PUtils::pformatString(out, L"%500d of %ls", 1, L"x"); });
          }));
    sweep("PUtils::strToBinary", {PERR_NO_MEMORY}, plain([] {
              unsigned char* bytes = nullptr;
              unsigned long count = 0;
              int const code = PUtils::strToBinary(L"0x00, 0xA0", bytes, count);
              delete[] bytes;
              return code;
          }));
    sweep("PUtils::getKeyValue", {PERR_NO_MEMORY}, plain([] {
              PString key, value;
              return PUtils::getKeyValue(L"k = v", key, value, L'=');
          }));
    sweep("PUtils::convertArgs", {PERR_NO_MEMORY}, plain([] {
              char program[] = "p", option[] = "a=1";
              char* argv[] = {program, option, nullptr};
              PString* list = nullptr;
              unsigned long count = 0;
              int const code = PUtils::convertArgs(2, argv, list, count, L'=');
              delete[] list;
              return code;
          }));
}

TEST(FaultSweep, Streams) {
    std::vector<PString> const list(3, PString(L"abc", 3));
    std::vector<PTargetInfo> records(2);
    for (PTargetInfo& record : records) record.targetId.name = L"n", record.targetId.id = 1;
    auto const write = [&](PDataWriter& out) {
        return steps([&] { return out.writeStrings(list); },
                     [&] { return out.writeString(list[0]); },
                     [&] { return PDataFormaterUtils::writePTargetInfoArray(out, records); });
    };
    sweep("PDataWriter strings and records", {PERR_NO_MEMORY, PERR_DATA_ENCODE}, plain([&] {
              std::vector<unsigned char> data;
              PDataWriter out(data);
              return write(out);
          }));
    std::vector<unsigned char> data;
    PDataWriter writer(data);
    ASSERT_EQ(write(writer), PERR_OK);
    sweep("PDataReader strings and records", {PERR_NO_MEMORY, PERR_DATA_DECODE}, plain([&] {
              std::vector<PString> strings;
              PString string;
              std::vector<PTargetInfo> found;
              PDataReader in(data);
              return steps([&] { return in.readStrings(strings); },
                           [&] { return in.readString(string); },
                           [&] { return PDataFormaterUtils::readPTargetInfoArray(in, found); });
          }));
}

TEST(FaultSweep, LocksAndThreads) {
    std::wstring const name = wide(uniqueName());
    auto const mutexSteps = [](PMutex& mutex) {
        int const code = steps([&] { return mutex.init(true); }, [&] { return mutex.lock(); },
                               [&] { return mutex.unlock(); });
        int const closed = mutex.close();
        return code == PERR_OK ? closed : code;
    };
    auto const semaphoreSteps = [](PSemaphore& semaphore) {
        int value = 0;
        int const code =
            steps([&] { return semaphore.init(2, true); }, [&] { return semaphore.post(); },
                  [&] { return semaphore.wait(); }, [&] { return semaphore.wait(9U); },
                  [&] { return semaphore.trywait(); }, [&] { return semaphore.getValue(value); });
        int const closed = semaphore.close();
        return code == PERR_OK ? closed : code;
    };
    auto const again = [](auto& object, auto const& use, Fault& fault) {
        int const code = fault([&] { return use(object); });
        EXPECT_EQ(use(object), PERR_OK) << "the same object then works";
        return code;
    };
    Codes const mutexCodes{PERR_MUTEX, PERR_MUTEX_LOCK, PERR_MUTEX_UNLOCK, PERR_MUTEX_CLOSE};
    Codes const semaphoreCodes{PERR_NO_MEMORY,      PERR_SEMAPHORE,       PERR_SEMAPHORE_POST,
                               PERR_SEMAPHORE_WAIT, PERR_SEMAPHORE_VALUE, PERR_SEMAPHORE_CLOSE};
    sweep("PMutex", mutexCodes, [&](Fault& fault) {
        PMutex mutex;
        return again(mutex, mutexSteps, fault);
    });
    sweep("PMutex, named", mutexCodes, [&](Fault& fault) {
        PMutex mutex{PLiteral(name.c_str())};
        return again(mutex, mutexSteps, fault);
    });
    sweep("PSemaphore", semaphoreCodes, [&](Fault& fault) {
        PSemaphore semaphore;
        return again(semaphore, semaphoreSteps, fault);
    });
    sweep("PSemaphore, named", semaphoreCodes, [&](Fault& fault) {
        PSemaphore semaphore{PLiteral(name.c_str())};
        return again(semaphore, semaphoreSteps, fault);
    });
    PMutex held;
    ASSERT_EQ(held.init(true), PERR_OK);
    ASSERT_EQ(held.lock(), PERR_OK);
    auto const conditionSteps = [&](PConditionalVar& condition) {
        int const code = steps([&] { return condition.init(); }, [&] { return condition.notify(); },
                               [&] { return condition.notifyAll(); });
        int const waited = code == PERR_OK ? condition.wait(&held, 1) : PERR_CONDITION_TIMEOUT;
        int const closed = condition.close();
        if (code != PERR_OK) return code;
        return waited == PERR_CONDITION_TIMEOUT ? closed : waited;
    };
    sweep("PConditionalVar",
          {PERR_CONDITION, PERR_CONDITION_NOTIFY, PERR_CONDITION_WAIT, PERR_CONDITION_CLOSE},
          [&](Fault& fault) {
              PConditionalVar condition;
              return again(condition, conditionSteps, fault);
          });
    EXPECT_EQ(held.unlock(), PERR_OK);
    sweep("PThread", {PERR_THREAD, PERR_THREAD_JOIN}, [&](Fault& fault) {
        PThread thread;
        return again(
            thread,
            [](PThread& one) {
                void* result = nullptr;
                return steps([&] { return one.pcreate([](void* p) { return p; }, nullptr); },
                             [&] { return one.pjoin(result); });
            },
            fault);
    });
}
