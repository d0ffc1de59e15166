/// @file
/// Files, temporary files, directory listings and system facts.
///
/// Names are wide text. They reach the system as multibyte text of the process's locale, made by
/// the rule of `PLiteral::ascii`: at most as many bytes as the name has characters, and nothing
/// from its first zero character on. A name that the locale cannot express reaches the system as no
/// name at all and is refused (`PFile::check` is true of it, as of all that cannot be examined).
///
/// @warning Under a multibyte locale a name with other than ASCII characters is so cut and may be
///          that of another file, which is then opened, truncated, replaced or removed. Fit it with
///          PUtf8::padded, except for a safe write, a PTempFile and PFile::removeAll; or keep to
///          ASCII names.
///
/// When the system refuses a `popen`, `pdelete`, `rename` or `pcreate`, its reason is still in
/// `errno` on return.
///
/// Operations that may block are cancellation points of the calling thread and say so. Closing and
/// destroying are none, in any class here.
#ifndef PORTINGLAYER_FILES_H
#define PORTINGLAYER_FILES_H

#include <dirent.h>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>

/// One open file: a descriptor and the file's name.
///
/// A handle is closed (after construction, after `pclose`), open (after a successful `popen`), or
/// half open: when `popen` gets the file but not its lock, the descriptor stays open, so that
/// `isOpen` is true and `pclose` is due, but name and mode are not stored. The handle owns its
/// descriptor and closes it on destruction. It has no lock: one thread at a time uses it.
/// Descriptors are closed in programs that the process starts. Backslashes in names are turned into
/// slashes by every operation here but `getFileName`.
///
/// @warning A half-open handle reads and writes, without the lock. Test the code of `popen`, not
///          `isOpen`, before using the file.
class PORTINGLAYER_EXPORT PFile {
public:
    static constexpr unsigned int OPEN_READ = 1;         ///< read access
    static constexpr unsigned int OPEN_WRITE = 2;        ///< write access
    static constexpr unsigned int OPEN_APPEND = 4;       ///< every write goes to the end
    static constexpr unsigned int OPEN_TRUNCATE = 8;     ///< the content is dropped
    static constexpr unsigned int OPEN_CREATE = 16;      ///< makes a missing file, mode 0644
    static constexpr unsigned int OPEN_SAFE_WRITE = 32;  ///< safe writing; stands alone

    static constexpr unsigned int EXCLUSIVE = 0;  ///< `share`: takes the lock
    static constexpr unsigned int UNLOCKED = 1;   ///< `share`: does without

    static constexpr int KIND_FILE = 0;       ///< `kind`: a regular file
    static constexpr int KIND_DIRECTORY = 1;  ///< `kind`: a directory
    static constexpr int KIND_SPECIAL = 2;    ///< `kind`: a device, a pipe or a socket

    /// A closed handle.
    PFile();

    PFile(PFile const&) = delete;
    PFile& operator=(PFile const&) = delete;

    /// Closes the file as `pclose` does, so an open safe-write file is moved over its name.
    ///
    /// @warning A failure of that move goes unnoticed; call `pclose` to learn of it.
    /// @warning A static or global handle is destroyed by `exit` with whatever was written by then,
    ///          and moved over its name; so it is by a forked child that calls `exit`. Keep
    ///          handles for safe writing local.
    virtual ~PFile();

    /// Opens a file and, with `share` EXCLUSIVE, locks it against other holders.
    ///
    /// Without OPEN_WRITE the file is opened for reading, also when OPEN_READ is not given.
    /// OPEN_TRUNCATE needs OPEN_WRITE or OPEN_CREATE; with OPEN_CREATE it truncates even a file
    /// opened for reading only. Bits above OPEN_SAFE_WRITE are stored and, without that one, have
    /// no effect. The lock is an exclusive advisory `flock`, not waited for, and held until the
    /// handle is closed; it excludes only those who lock too, other handles of this process
    /// included.
    ///
    /// OPEN_SAFE_WRITE alone, with `share` EXCLUSIVE, writes a new file beside the named one,
    /// called NAME ".talv_temp-" PROCESS "-" TICK, created or truncated for writing and locked;
    /// `pclose` moves it over NAME. Until then NAME keeps its content, whatever happens to this
    /// process; one that ends before, or is refused the lock, leaves the sibling behind.
    ///
    /// @param name   the file; not empty
    /// @param flags  OPEN_ bits
    /// @param share  EXCLUSIVE (0) takes the lock, any other value does without
    /// @return PERR_OK                open; a folder opens for reading too, but `pread` then
    ///                                gives PERR_READ
    /// @return PERR_INVALID_ARGUMENT  empty name, or a combination of bits that is not allowed; the
    ///                                handle is unchanged
    /// @return PERR_ALREADY_OPEN      the handle is open or half open; it is unchanged
    /// @return PERR_NO_SUCH_FILE      the system knows no such file or folder; still closed
    /// @return PERR_OPEN              the system refused to open the file: still closed; or it
    ///                                refused the lock for another reason than the next: half open
    /// @return PERR_LOCKED            another handle holds the lock; half open, call `pclose`
    /// @return PERR_NO_MEMORY         the name could not be copied or composed; still closed
    ///
    /// Blocks: not for the lock; a named pipe waits for its other end. A cancellation point.
    /// Children: one that is forked meanwhile holds the lock as well, until it closes its copy of
    /// the handle, becomes another program or ends; `pclose` here does not free it before.
    ///
    /// @warning A safe write makes a new file, with mode 0644 less the umask and the caller as
    ///          owner, and replaces a symbolic link instead of following it; set rights anew after
    ///          `pclose`.
    /// @warning Two handles of one process that open one name for safe writing within a millisecond
    ///          share the sibling: the second empties it before it is refused the lock, and the
    ///          first moves what it wrote since over NAME. Let one thread at a time replace a file.
    /// @warning A safe write to a name beyond ASCII, which is cut, replaces another file: the new
    ///          content for "a" and an accented letter is moved over "a". With zero characters
    ///          behind it, as PString's narrow `set` and `cat` leave them, NAME is emptied at once,
    ///          since the system sees nothing of what follows a zero. Keep to ASCII names without
    ///          zeros, or use a PReplacement, with a name from PUtf8::decode.
    /// @warning With OPEN_TRUNCATE the content is gone before the lock is asked for; open without
    ///          it where another holder may be at work.
    [[nodiscard]] int popen(PLiteral const& name, unsigned int flags, unsigned int share);

    /// Reads at most `length` bytes at the current position into `buffer`.
    ///
    /// One system read: a short count is passed on as it comes, an interrupted read is not
    /// repeated.
    /// @param[out] done  bytes read (1 to `length`); written only on success
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `buffer` is null or `length` is 0
    /// @return PERR_NOT_OPEN          the handle is closed
    /// @return PERR_END_OF_FILE       nothing is left to read
    /// @return PERR_READ              the system refused the read: not open for reading, a folder,
    ///                                interrupted by a signal, a bad `buffer`
    ///
    /// Blocks: as the file does; a pipe or device waits for data. A cancellation point.
    [[nodiscard]] int pread(char* buffer, unsigned long length, unsigned long& done);

    /// Writes at most `length` bytes from `buffer` at the current position.
    ///
    /// One system write: a short count is passed on as it comes, an interrupted write is not
    /// repeated.
    /// @param[out] done  bytes written (1 to `length`); written only on success
    /// @return PERR_OK           compare `done` with `length`
    /// @return PERR_NOT_OPEN     the handle is closed
    /// @return PERR_END_OF_FILE  the system wrote nothing, as when `length` is 0
    /// @return PERR_WRITE        the system refused the write: no space, not open for writing,
    ///                           interrupted by a signal, a bad `buffer`
    ///
    /// Blocks: as the file does; a full pipe waits for its reader. A cancellation point.
    [[nodiscard]] int pwrite(char const* buffer, unsigned long length, unsigned long& done);

    /// Moves the current position.
    ///
    /// @param offset  bytes, counted from what `whence` names; may be negative
    /// @param whence  0 the start, 1 the current position, 2 the end; 3 and 4 seek the next data
    ///                and the next hole at or after `offset`, as the system's `lseek` does
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN  the handle is closed
    /// @return PERR_SEEK      the position is negative, `whence` is another value, the file has no
    ///                        positions (a pipe), or no data or hole follows; the position is
    ///                        unchanged
    [[nodiscard]] int pseek(long long offset, int whence);

    /// Gives the size of the open file.
    ///
    /// @param[out] size  bytes; written only on success
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN  the handle is closed
    /// @return PERR_STAT      the system refused to examine the file
    [[nodiscard]] int pgetSize(long long& size);

    /// Asks the system to bring what was written to the storage device.
    ///
    /// @return PERR_OK        asked; whether it succeeded is not told
    /// @return PERR_NOT_OPEN  the handle is closed
    ///
    /// Blocks: until the device answers. A cancellation point.
    [[nodiscard]] int pflush();

    /// Closes the file, which drops its lock, and moves a safe-write file over its final name.
    ///
    /// @return PERR_OK        closed; a safe-write file now stands under its name
    /// @return PERR_NOT_OPEN  the handle was closed already, or a safe-write handle lost its names
    /// @return PERR_SYSTEM    closed, but the safe-write file could not be moved: the old file is
    ///                        as it was, and the new content stays under its temporary name
    ///
    /// Blocks: no longer than the system takes. Not a cancellation point.
    ///
    /// @warning The move is not preceded by a flush, so a loss of power soon after can leave an
    ///          empty or partial file; call `pflush` before closing where that matters.
    [[nodiscard]] int pclose();

    /// Tells whether a descriptor is held: open or half open.
    bool isOpen();

    /// Copies the name under which the file was opened, with slashes, into `out`.
    ///
    /// For a safe-write file that is the final name; half open, the name is empty.
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN   the handle is closed; `out` is unchanged
    /// @return PERR_NO_MEMORY  no memory for the copy; `out` is empty
    [[nodiscard]] int pgetName(PString& out);

    /// Cuts `path` down to what follows its last slash: "/a/b.txt" to "b.txt", "dir/" to nothing.
    /// Text without a slash stays as it is. Backslashes are not looked at.
    static void getFileName(PString& path);

    /// Reads the next line, without its line feed and without any carriage return in it.
    ///
    /// Each byte becomes one wide character by sign extension: there is no multibyte decoding, and
    /// bytes from 128 on become the values from 0xFFFFFF80 on. A zero byte cuts the delivered text;
    /// the rest of the line is consumed. The last line needs no line feed, but carriage returns
    /// alone at the end of the file are no line; a read error after the first character ends the
    /// line like the end of the file. The file is read in blocks of 128 bytes and repositioned
    /// behind the line feed, so the position after the call is the start of the next line.
    /// @param[out] line  the line, possibly empty; written only on success
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN     the handle is closed
    /// @return PERR_END_OF_FILE  no line is left
    /// @return PERR_READ         the system refused to read before the first character
    /// @return PERR_NO_MEMORY    no memory for the line; what was read of it is consumed
    ///
    /// Blocks: as `pread` does. A cancellation point; what was read of the line is then lost.
    ///
    /// @warning What is read is not decoded: a line with bytes beyond ASCII is not written back by
    ///          `pwriteLine`, which leaves it empty. Copy such lines with `pread` and `pwrite`.
    /// @warning From a pipe or device, which cannot be repositioned, up to 127 bytes after the line
    ///          feed are lost; read such files with `pread`.
    [[nodiscard]] int preadLine(PString& line);

    /// Writes `line` as multibyte text, then a line feed, in one write each.
    ///
    /// Empty text, text that the locale cannot express, and text for whose conversion no memory is
    /// left, writes only the line feed. The multibyte text is cut at as many bytes as `line` has
    /// characters, and at its first zero character. A short write is neither continued nor told.
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN     the handle is closed
    /// @return PERR_WRITE        the system refused a write; if it was the first, no line feed is
    ///                           written
    /// @return PERR_END_OF_FILE  the system wrote nothing; likewise
    ///
    /// Blocks: as `pwrite` does. A cancellation point; the line feed may then be missing.
    ///
    /// @warning Lines that several handles append to one file mix, since each is two writes. Write
    ///          a line with its line feed by one `pwrite`, or lock the file.
    [[nodiscard]] int pwriteLine(PLiteral const& line);

    /// Tells whether something stands under the name; symbolic links are followed, so a dangling
    /// one does not exist. False for an empty name, and for one that cannot be looked at, such as
    /// in a folder that may not be searched.
    static bool exists(PLiteral const& name);

    /// Tells whether what stands under the name is of a kind; symbolic links are followed.
    ///
    /// @param kind  KIND_FILE (0), KIND_DIRECTORY (1) or KIND_SPECIAL (2); anything else gives
    ///              false
    /// @return false for an empty name and for another kind
    ///
    /// @warning True for every kind when the name cannot be examined, as when it does not exist;
    ///          ask `exists` first.
    static bool check(PLiteral const& name, int kind);

    /// Removes a file, or a symbolic link itself; never a directory.
    ///
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  empty name
    /// @return PERR_NO_SUCH_FILE      there is no such file
    /// @return PERR_DELETE            the system refused: a directory, no permission and the like
    ///
    /// @warning Under a multibyte locale a name with other than ASCII characters is cut and may
    ///          name another file; fit it with PUtf8::padded, or keep to ASCII names.
    [[nodiscard]] static int pdelete(PLiteral const& name);

    /// Gives a file or directory another name within its file system, replacing what `to` names.
    ///
    /// The replacement is one step: whoever opens `to` finds the old or the new, never neither.
    /// Symbolic links are renamed and replaced themselves, never followed.
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  one of the names is empty
    /// @return PERR_NOT_FOUND         there is no such file, or no such target folder
    /// @return PERR_REFUSED           not permitted, busy, exists, another file system, a directory
    ///                                where a file is wanted or the reverse, a directory into
    ///                                itself, no space, a read-only file system, or a directory
    ///                                that is not empty
    /// @return PERR_IO                device error, too many links, name too long, or a loop of
    ///                                links
    /// @return PERR_SYSTEM            any other reason, missing access rights among them
    ///
    /// @warning Under a multibyte locale a name with other than ASCII characters is cut and may
    ///          name another file; fit it with PUtf8::padded, or keep to ASCII names.
    [[nodiscard]] static int rename(PLiteral const& from, PLiteral const& to);

    /// Removes a directory with everything in it. One slash at the end of `path` is ignored. Zero
    /// characters may stand behind it.
    ///
    /// The walk stops at the first thing that cannot be removed; what went before stays removed. It
    /// holds one descriptor per level of the tree.
    /// @return PERR_OK
    /// @return PERR_DIR_NOT_FOUND     `path` is empty, "/", missing, or cannot be looked at (too
    ///                                long, in a folder that may not be searched, not to be
    ///                                converted); or the walk stopped at something of that sort: a
    ///                                dangling link, a loop of links, a path grown too long, an
    ///                                entry of a folder that may be listed but not searched, a name
    ///                                that leads nowhere for its backslash or its cut (below)
    /// @return PERR_INVALID_ARGUMENT  `path`, or meanwhile something below it, is not a directory
    /// @return PERR_DELETE            a file could not be removed, as in a folder that may not be
    ///                                written; or a directory that could not be emptied: it is
    ///                                unreadable, no descriptor is left for it, it is filled again
    ///                                by others, or holds a name that cannot be converted, which
    ///                                ends its listing
    /// @return PERR_NO_SUCH_FILE      something vanished while it was being removed, also by this
    ///                                call under a name that was cut (below)
    /// @return PERR_NO_MEMORY         no memory for a path; that for other things shows as one of
    ///                                the failures above
    ///
    /// @warning Do not fit `path` with PUtf8::padded: names are put behind the padding.
    /// @warning File systems mounted below `path` are emptied, too. Unmount them first.
    /// @warning Symbolic links to directories are followed: the target is emptied, wherever it is,
    ///          then the link removed. Remove links yourself first where a tree may hold any.
    /// @warning A backslash in the name of an entry counts as a slash, so that an entry such as
    ///          "..\name" has another file or tree removed in its place, even outside of `path`. Do
    ///          not call it on trees to which others can add names.
    /// @warning Under a multibyte locale a name with other than ASCII characters, `path` or one
    ///          below it, is cut, in the worst case to its parent folder, which is then emptied;
    ///          keep to ASCII names.
    [[nodiscard]] static int removeAll(PLiteral const& path);

private:
    [[nodiscard]] int openSafely(PString&& path);

    int fd;              ///< -1 when closed
    unsigned int flags;  ///< as given to `popen`; 0 when closed or half open
    PString name;        ///< with slashes; the final name of a safe-write file
    PString tempName;    ///< the sibling that is open while safe writing; else empty
};

/// A file whose name is a prefix followed by a random number, chosen such that no such file
/// existed.
///
/// It is a `PFile` in all else, and one thread at a time uses it. The file stays on disk after
/// closing and destruction: removing it is the caller's. Close it through this class: after
/// `PFile::pclose` on the base the object stays taken, and `popen` refuses it.
class PORTINGLAYER_EXPORT PTempFile : public PFile {
public:
    /// A closed handle, ready for `popen`.
    PTempFile();

    /// Closes the file as `PFile` does; it stays on disk.
    ~PTempFile() override;

    /// Opens a file that did not exist a moment ago, called `prefix` followed by up to six digits.
    ///
    /// @param prefix  the first part of the name, folder included; nothing is put between it and
    ///                the digits
    /// @param flags   as for `PFile::popen`; OPEN_CREATE must be among them, or OPEN_SAFE_WRITE
    ///                be alone, or nothing can be opened
    /// @param share   as for `PFile::popen`
    /// @return PERR_OK                open; `pgetName` gives the name
    /// @return PERR_ALREADY_OPEN      this object has an open file; unchanged
    /// @return PERR_INVALID_ARGUMENT  empty prefix
    /// @return PERR_OPEN              no free name was found in 238,328 attempts
    /// @return PERR_NO_MEMORY         no memory for a name
    /// @return the codes of `PFile::popen` for the final opening, with the same states
    ///
    /// Blocks: while it probes. A cancellation point.
    ///
    /// @warning The number is drawn anew from the clock's second at every attempt, so names are
    ///          predictable, and looking and opening are two steps: another process can take the
    ///          name in between. Use a folder that only trusted users can write.
    /// @warning A second file with the same prefix in the same second keeps the processor busy with
    ///          probes until the second ends, or fails with PERR_OPEN when the attempts are used up
    ///          before; give each file a prefix of its own.
    /// @warning In a folder that may not be searched, or that is none, each of the 238,328 attempts
    ///          is made before PERR_OPEN is returned: about a second. Ask PFile::exists for the
    ///          folder with "/." behind it first.
    /// @warning Behind a zero character in `prefix` the digits are lost, so the prefix itself is
    ///          tried and opened: cut zeros off first, with `PString(prefix.ptr(),
    ///          P_WHOLE_STRING)`.
    [[nodiscard]] int popen(PLiteral const& prefix, unsigned int flags, unsigned int share);

    /// Closes the file, which stays on disk, and frees the object for another `popen`.
    ///
    /// @return the codes of `PFile::pclose`
    [[nodiscard]] int pclose();

    /// Makes a random decimal number from 0 to 238327, without leading zeros.
    ///
    /// The system's generator is seeded with the clock's second first, so calls within a second
    /// give the same number, and the random sequence of the whole process starts over.
    /// @return a new terminated array that the caller releases with `delete[]`; null when no memory
    ///         is left
    wchar_t* getRandStr();

private:
    bool active;  ///< opened through this class and not closed through it yet
};

/// The names in one directory that match a pattern, one per step, and making and removing
/// directories.
///
/// The object owns the directory stream from `popen` to `pclose` or destruction. The code of the
/// last step is kept and compared with `==` and `!=`. One thread at a time uses it. A listing:
///
///     PDir dir(L"/etc", L"*.conf");
///     for (int code = dir.preaddir(); code == PERR_OK; code = ++dir) use(dir.getEntry());
class PORTINGLAYER_EXPORT PDir {
public:
    /// An object without a directory; its code is PERR_OK.
    PDir();

    /// Opens a listing as `popen` does; `getResult` gives the code.
    PDir(PLiteral const& dir, PLiteral const& pattern);

    PDir(PDir const&) = delete;
    PDir& operator=(PDir const&) = delete;

    /// Closes the listing.
    virtual ~PDir();

    /// Opens a directory for listing. The first name is fetched with `preaddir`.
    ///
    /// A backslash in `dir` or `pattern` is an ordinary character. The pattern knows "*", "?" and
    /// "[...]"; names that begin with a dot match like others, "." and ".." included. Once it is
    /// set up, the object keeps its pattern until `pclose`: after a failure another `popen` tries
    /// its own `dir` with the first pattern.
    /// @param pattern  which names to give; empty for all
    /// @return PERR_OK
    /// @return PERR_DIR_ALREADY_OPEN  the object has an open listing, which can go on
    /// @return PERR_DIR_NOT_OPEN      the system refused to open the directory
    /// @return PERR_NO_MEMORY         no memory for path or pattern; the object is not set up
    [[nodiscard]] int popen(PLiteral const& dir, PLiteral const& pattern);

    /// Goes to the first, or next, name that matches, whatever the code of the last step was.
    ///
    /// @return PERR_OK            `getEntry` gives the name
    /// @return PERR_READ          no name is left, or the directory could not be read further; the
    ///                            last name stays
    /// @return PERR_CONVERSION    the name cannot be converted to wide text; the entry is empty,
    ///                            and calling again goes on behind it
    /// @return PERR_DIR_NOT_OPEN  there is no open listing
    [[nodiscard]] int preaddir();

    /// Goes to the next name that matches.
    ///
    /// @return the codes of `preaddir`
    /// @return PERR_DIR_NOT_OPEN  there is no current name: call `preaddir` first
    int operator++();
    /// As above; the result is the new code in this form, too.
    int operator++(int);

    /// Tells whether `value` is the code of the last step.
    bool operator==(int value) const;
    /// Tells whether `value` is another code than that of the last step.
    bool operator!=(int value) const;

    /// The current name, without its directory; the object's own, valid until the next step.
    PString const& getEntry() const;

    /// The code of the last step.
    [[nodiscard]] int getResult() const;

    /// Closes the listing, if any, and sets the object back to where construction left it.
    ///
    /// @return PERR_OK  always, also when the system fails to close
    [[nodiscard]] int pclose();

    /// Forgets pattern, directory and name without closing.
    ///
    /// @warning An open directory stream is lost, with its descriptor; use `pclose`.
    void clear();

    /// Makes one directory, mode 0775 less the process's mask; its parent must exist.
    ///
    /// Backslashes are ordinary characters here.
    /// @return PERR_OK
    /// @return PERR_DIR_EXISTS  the name exists already
    /// @return PERR_DIR_CREATE  the system refused for another reason, an empty name among them
    ///
    /// @warning `errno` is looked at even after success: if it held EEXIST before the call, the
    ///          directory is made and PERR_DIR_EXISTS returned. Set `errno` to 0 first where that
    ///          matters.
    [[nodiscard]] static int pcreate(PLiteral const& dir);

    /// Removes one empty directory. Backslashes are ordinary characters here.
    ///
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  empty name
    /// @return PERR_DIR_NOT_FOUND     there is no such directory
    /// @return PERR_DIR_DELETE        the system refused: not empty, not a directory, no permission
    ///
    /// @warning Under a multibyte locale a name with other than ASCII characters is cut and may
    ///          name another directory; fit it with PUtf8::padded, or keep to ASCII names.
    [[nodiscard]] static int pdelete(PLiteral const& dir);

private:
    [[nodiscard]] int setUp(PLiteral const& dir, PLiteral const& pattern);

    int result;              ///< code of the last step
    PString entry;           ///< current name
    PString pattern;         ///< empty while not set up
    PString path;            ///< the directory, with a slash at its end
    DIR* stream;             ///< null when none is open
    struct dirent* current;  ///< what the stream gave last; its own
};

/// Facts of the system. No instances are needed.
class PORTINGLAYER_EXPORT PSystem {
public:
    /// The folder for temporary files, with a slash at its end: "/tmp/", or empty text when that
    /// cannot be listed. No environment variable is asked.
    static PString getTempDir();

    /// Gives `min`, or, when the generator yields the very largest of its 2,147,483,648 numbers,
    /// `min` + `max`. The system's generator is seeded with the clock's second first.
    ///
    /// @warning This is not a random number in a range; use the generators of `<random>` for one.
    static int getRandom(int min, int max);
};

#endif
