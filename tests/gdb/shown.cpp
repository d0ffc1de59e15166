// A program with one object of each kind that a debugger is asked to show; see `check`.
#include <vector>

#include <portinglayer/portinglayer.h>

namespace {

struct Objects {
    PLiteral view;
    PString owned{L"wide \x20ac", P_WHOLE_STRING};
    PString* pointer = &owned;
    std::vector<PString> lines{PString(L"one", P_WHOLE_STRING), PString()};
    PPtr<char> shared{new char[8]{"pointee"}, PPtr<char>::ARRAY};
    PPtr<char> empty;
    PFile closed, file;
    PFile* filePointer = &file;
    PDir folder{PLiteral(L"/proc/self"), PLiteral(L"stat?s")};
    PLibrary library;
    PProcess process{PLiteral(L"sleep"), PLiteral(L"10")};
    PCommand command{PLiteral(L"sort")};
    PReplacement replacement;
    PFileLock lock;
    PMutex mutex, raw;
    PSemaphore semaphore;
    PConditionalVar condition;
    PThread thread;
    PCounter counter{7};
    PTime time{5, 4, 3, 2, 1, 12, 2024, 0, 335, 0};
    PTargetID target{PString(L"target", P_WHOLE_STRING), 4};
};

int _setUp(Objects& all) {
    int const codes[] = {
        all.file.popen(PLiteral(L"/proc/self/status"), PFile::OPEN_READ, 1),
        all.folder.preaddir(),
        all.command.setStreams(PCommand::PIPED, PCommand::PIPED, PCommand::INHERITED),
        all.command.start(),
        all.mutex.init(true),
        all.mutex.lock(),
        all.semaphore.init(3, true),
    };
    for (int const code : codes)
        if (code != PERR_OK) return code;
    return PERR_LOCKED;
}

[[gnu::noinline]] int _stop(Objects const& all, PString const& text, PFile* file,
                            PDataReader const& reader, int result) {
    return all.view.len() + text.len() == 0 && file == nullptr ? static_cast<int>(sizeof reader)
                                                               : result;
}

}  // namespace

int main() {
    Objects all;
    int const result = _setUp(all);
    PPtr<char> const second(all.shared);
    std::vector<unsigned char> bytes{0, 0, 0, 1, 2};
    PDataReader reader(bytes);
    reader.setOffset(4);
    return _stop(all, all.owned, &all.file, reader, result) == PERR_LOCKED ? 0 : 1;
}
