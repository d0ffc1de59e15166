/// Which file a name means when its content is replaced, and the new file beside it.
#ifndef PORTINGLAYER_FS_REPLACED_FILE_H
#define PORTINGLAYER_FS_REPLACED_FILE_H

#include <sys/stat.h>

#include <string>

#include "fs/descriptor.h"

/// The file at the end of all symbolic links: its folder, which stays the same one wherever it and
/// the program go, and the name in it.
struct ReplacedFile {
    Descriptor folder;
    std::string name;
    bool exists = false;
    struct stat facts = {};  ///< of a file that exists
};

/// Follows a name to its file. Gives PERR_OK or a code; std::bad_alloc leaves it.
int _findReplaced(std::string path, ReplacedFile& found);

/// Looks at the file once more. A file that is gone since keeps the facts that were found last.
void _lookAgain(ReplacedFile& found);

/// Makes an empty file, open for writing, under a random name in the folder; it is no more open
/// than the one that it is to replace. Gives PERR_OK or a code; std::bad_alloc leaves it with
/// nothing made.
int _createBeside(ReplacedFile const& replaced, std::string& name, Descriptor& file);

/// Gives a new file the mode of the one that it replaces, and the group where that may be. Gives
/// PERR_OK or a code.
int _copyMode(ReplacedFile const& replaced, Descriptor const& file);

#endif
