#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/scratch.h>

TEST(FaultSweep, Processes) {
    unsigned int const self = PProcess::getCurrentPID();
    std::wstring const child = wide(TEST_CHILD);
    Codes const factCodes{PERR_NOT_FOUND, PERR_NO_MEMORY, PERR_NO_PROCESS, PERR_IO,
                          PERR_SYSTEM,    PERR_OPEN,      PERR_READ,       PERR_SEEK};
    sweep("PProcess facts", factCodes, plain([&] {
              PString text;
              unsigned long long memory = 0;
              unsigned int parent = 0;
              int priority = 0;
              return steps([&] { return PProcess::getName(self, text); },
                           [&] { return PProcess::getPath(self, text); },
                           [&] { return PProcess::getWorkingDir(self, text); },
                           [&] { return PProcess::getCmdLine(self, text); },
                           [&] { return PProcess::getPriority(self, priority); },
                           [&] { return PProcess::getMemoryUsage(self, memory); },
                           [&] { return PProcess::getParentPID(self, parent); },
                           [&] { return PProcess::getFreeMemory(memory); },
                           [&] { return PProcess::getUserName(self, text); });
          }));
    sweep("PProcess processor load", factCodes, [&](Fault& fault) {
        unsigned int percent = 0;
        return fault([&] {
            return steps([&] { return PProcess::getCPUUsage(percent); },
                         [&] { return PProcess::getSpecCPUUsage(0, percent); });
        });
    });
    sweep("PProcess::start, waitExitCode",
          {PERR_NO_PROCESS, PERR_SYSTEM, PERR_NO_MEMORY, PERR_NOT_FOUND}, [&](Fault& fault) {
              std::vector<PString> const environment(1, PString(L"A=B", 3));
              int exitCode = -1;
              return fault([&] {
                  PProcess process(child.c_str(), L"exit 0", L"/", environment);
                  return steps([&] { return process.start(); },
                               [&] { return process.waitExitCode(exitCode); });
              });
          });
}

// What walks over all processes is swept over a few calls only: what follows is more of the same.
TEST(FaultSweep, ProcessLists) {
    std::vector<unsigned int> ids, parents;
    unsigned int const self = PProcess::getCurrentPID();
    int failed = 0;
    for (int n = 1; n <= 40; ++n) {
        Fault fault{n, n % 2 == 0};
        int const code = fault([&] {
            return steps([&] { return PProcess::listPIDs(ids); },
                         [&] { return PProcess::find(PString(L"fault_sweep", 11), ids, parents); });
        });
        EXPECT_TRUE(code == PERR_OK || code == PERR_NOT_FOUND || code == PERR_NO_MEMORY)
            << n << " " << code;
        failed += fault.fired ? 1 : 0;
    }
    EXPECT_EQ(failed, 40);
    ASSERT_EQ(PProcess::find(PString(L"fault_sweep", 11), ids, parents), PERR_OK);
    EXPECT_EQ(ids, std::vector<unsigned int>{self});
}
