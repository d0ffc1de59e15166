/// The processes of the machine, one after the other.
#ifndef PORTINGLAYER_PROCESS_PROCESS_ENTRIES_H
#define PORTINGLAYER_PROCESS_PROCESS_ENTRIES_H

#include <memory>

#include <dirent.h>

/// The entries of the process directory that stand for a process, in the order of the system.
class ProcessEntries {
public:
    ProcessEntries();

    bool isOpen() const { return directory != nullptr; }

    /// Gives the id of the next process; false at the end.
    bool next(unsigned int& processId);

private:
    struct CloseDirectory {
        void operator()(DIR* stream) const;
    };

    std::unique_ptr<DIR, CloseDirectory> directory;
};

#endif
