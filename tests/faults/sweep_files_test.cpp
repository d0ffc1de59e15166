#include <cerrno>

#include <faults/sweep.h>
#include <portinglayer/portinglayer.h>
#include <support/scratch.h>

TEST(FaultSweep, Files) {
    Scratch const scratch;
    std::wstring const name = scratch.wpath("file"), other = scratch.wpath("other");
    std::wstring const dir = scratch.wpath("dir"), lines = scratch.wpath("lines"),
                       folder = scratch.wpath("");
    Codes const fileCodes{PERR_OPEN, PERR_LOCKED, PERR_NO_MEMORY, PERR_WRITE,
                          PERR_READ, PERR_SEEK,   PERR_STAT,      PERR_SYSTEM};
    scratch.write("lines", std::string(300, 'a') + "\nb\n");
    for (unsigned int const flags : {27U, 32U}) {
        sweep(flags == 32 ? "PFile, safe write" : "PFile", fileCodes, [&](Fault& fault) {
            PFile file;
            auto const use = [&] {
                long long size = 0;
                PString copy;
                int const code =
                    steps([&] { return file.popen(name.c_str(), flags, 0); },
                          [&] { return file.pwriteLine(L"text"); }, [&] { return file.pflush(); },
                          [&] { return file.pseek(0, 0); }, [&] { return file.pgetSize(size); },
                          [&] { return file.pgetName(copy); });
                int const closed = file.isOpen() ? file.pclose() : PERR_OK;
                return code == PERR_OK ? closed : code;
            };
            int const code = fault(use);
            EXPECT_EQ(use(), PERR_OK) << "the same object then works";
            return code;
        });
    }
    sweep("PFile::preadLine", fileCodes, plain([&] {
              PFile file;
              PString line;
              return steps([&] { return file.popen(lines.c_str(), PFile::OPEN_READ, 1); },
                           [&] { return file.preadLine(line); });
          }));
    sweep("PFile::rename, pdelete", {PERR_IO, PERR_DELETE, PERR_SYSTEM}, [&](Fault& fault) {
        scratch.write("file", "x");
        int const code = fault([&] {
            return steps([&] { return PFile::rename(name.c_str(), other.c_str()); },
                         [&] { return PFile::pdelete(other.c_str()); });
        });
        (void)PFile::pdelete(name.c_str());
        (void)PFile::pdelete(other.c_str());
        return code;
    });
    sweep(
        "PFile::removeAll",
        {PERR_DELETE, PERR_DIR_NOT_FOUND, PERR_INVALID_ARGUMENT, PERR_NO_MEMORY, PERR_NO_SUCH_FILE},
        [&](Fault& fault) {
            errno = 0;
            EXPECT_EQ(PDir::pcreate(dir.c_str()), PERR_OK);
            scratch.write("dir/a", "x");
            int const code = fault([&] { return PFile::removeAll(dir.c_str()); });
            EXPECT_EQ(PFile::exists(dir.c_str()) ? PFile::removeAll(dir.c_str()) : PERR_OK,
                      PERR_OK);
            return code;
        });
    sweep("PDir", {PERR_DIR_NOT_OPEN, PERR_READ, PERR_CONVERSION, PERR_NO_MEMORY}, plain([&] {
              PDir listing;
              return steps([&] { return listing.popen(folder.c_str(), L"*"); },
                           [&] { return listing.preaddir(); }, [&] { return ++listing; },
                           [&] { return listing.pclose(); });
          }));
    sweep("PTempFile", {PERR_OPEN, PERR_LOCKED, PERR_NO_MEMORY}, [&](Fault& fault) {
        PTempFile file;
        PString used;
        int const code = fault([&] { return file.popen(name.c_str(), 18, 0); });
        if (file.pgetName(used) == PERR_OK) (void)PFile::pdelete(used);
        for (std::string const& left : scratch.names())
            if (left != "lines" && left != "file") (void)unlink(scratch.path(left).c_str());
        return code;
    });
    sweep("PLibrary::load", {PERR_LIBRARY_LOAD, PERR_NO_MEMORY}, plain([] {
              PLibrary* library = nullptr;
              int const code = PLibrary::load(L"libm.so.6", library, true);
              if (code == PERR_OK) delete library;
              return code;
          }));
}
