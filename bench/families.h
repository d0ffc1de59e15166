/// @file
/// The families of operations. One more is a file of its own with a function that makes its operations,
/// a line here and one in CMakeLists.txt; its results make one picture. Peers stand in
/// peers.h.
#ifndef PORTINGLAYER_BENCH_FAMILIES_H
#define PORTINGLAYER_BENCH_FAMILIES_H

void addProcesses();
void addCommands();
void addProcessFacts();
void addSearch();
void addEditing();
void addConversions();
void addUtf8();
void addNumbers();
void addFormatting();
void addSplitting();
void addPointers();
void addStreams();
void addLocks();
void addThreads();
void addFiles();
void addLines();
void addFolders();

struct Family {
    char const* name;
    void (*add)();
};

/// In the order of measuring. Processes come first: a parent is as large as what was measured before
/// has made it.
constexpr Family FAMILIES[] = {
    {"processes", addProcesses},
    {"commands", addCommands},

    {"process facts", addProcessFacts},
    {"search", addSearch},
    {"editing", addEditing},
    {"conversions", addConversions},
    {"UTF-8", addUtf8},
    {"numbers", addNumbers},
    {"formatting", addFormatting},
    {"splitting", addSplitting},
    {"pointers", addPointers},
    {"streams", addStreams},
    {"locks", addLocks},
    {"threads", addThreads},
    {"files", addFiles},
    {"lines", addLines},
    {"folders", addFolders},
};

#endif
