/// Lists what a folder holds of a pattern. The patterns are those of the shell: *, ? and [...].
#include <clocale>
#include <cstdio>

#include <portinglayer/files.h>

int main() {
    setlocale(LC_CTYPE, "");  // names become text in the locale of the process
    PDir logs(L".", L"*.log");
    for (int step = logs.preaddir(); step != PERR_DIR_NOT_OPEN && step != PERR_READ;
         step = ++logs) {
        if (step == PERR_CONVERSION) continue;  // a name that is no text in this locale
        bool const folder = PFile::check(logs.getEntry(), PFile::KIND_DIRECTORY);
        std::printf("%ls%s\n", logs.getEntry().ptr(), folder ? "/" : "");
    }
    return logs == PERR_READ ? 0 : 1;  // PERR_READ: nothing is left
}
