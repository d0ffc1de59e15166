/// @file
/// New content for the name of a file: whole and durable, or not at all.
#ifndef PORTINGLAYER_REPLACEMENTS_H
#define PORTINGLAYER_REPLACEMENTS_H

#include <portinglayer/strings.h>

/// Replaces the content of a file, or makes a file, in one step: `begin`, then `write` or
/// `writeLine` as often as needed, then `commit`. Until then, and after anything else than a
/// `commit` that succeeds, the old content stands, whatever happens to the program or the machine;
/// readers see one or the other, never a mixture. `abandon` and the destructor give up what was
/// begun.
///
/// The content is collected in a new file in the folder of the old one, which a killed program
/// leaves behind under a name like `.replacement-0123456789abcdef`. At no time is it more open than
/// the old file, but for the group where it cannot keep that of the old one. In the end it has the
/// mode of the old file (without set-id bits where its owner or group is another), or 0666 less the
/// umask where there is none. Its owner is the caller, its group that of the old file where the
/// system lets the caller give it; otherwise the group of the caller has the rights that the old
/// one had. The access list and extended attributes of the old file are not taken over, nor does
/// the folder give a list to what replaces a file; other hard links keep the old content. What
/// decides is the rights to the folder, which must allow to read and to write it, not those to the
/// old file. Where the name is a symbolic link, the file that it leads to is replaced or made, and
/// the link stays.
///
/// Names and lines become UTF-8 as a whole in every locale; backslashes and white space stay.
/// @warning Two programs that replace one file at the same time do not mix, but the later `commit`
///          wins, and what the other one put there is lost. Hold a PFileLock on a file of its own
///          from before reading the old content until after `commit`.
///
/// Threads: one object is used by one thread at a time. Only `write` and `writeLine` are
/// cancellation points.
/// Children: in a forked child nothing is begun; what was begun stays with the parent. Programs
/// that are started inherit nothing.
class PORTINGLAYER_EXPORT PReplacement {
public:
    /// Nothing is begun.
    PReplacement();

    /// Abandons what was begun.
    virtual ~PReplacement();

    PReplacement(PReplacement const&) = delete;
    PReplacement& operator=(PReplacement const&) = delete;

    /// Begins new content for a file, which may be missing.
    ///
    /// @param name  a relative one means the file of this moment, wherever the program goes
    ///              afterwards
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  the name is empty or holds a zero character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold the name
    /// @return PERR_ALREADY_OPEN      something is begun, and stays so
    /// @return PERR_NO_SUCH_FILE      the folder is missing, or a part of its path is no folder
    /// @return PERR_REFUSED           no permission, a read-only system, something else than a
    ///                                regular file, symbolic links in a ring or more than 40 in a
    ///                                row
    /// @return PERR_WRITE             no space for another file
    /// @return PERR_NO_MEMORY         no memory
    /// @return PERR_SYSTEM            a name that is too long, or no descriptors left
    /// On failure nothing is begun and nothing left behind, but for PERR_ALREADY_OPEN.
    [[nodiscard]] int begin(PLiteral const& name);

    /// Appends all of `length` bytes to the new content.
    ///
    /// @warning Where a limit of the process on the size of files is met, the system ends the
    ///          process by SIGXFSZ; ignore this signal to be told PERR_WRITE instead.
    /// @param bytes  may be null where `length` is 0, which is PERR_OK
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN          nothing is begun
    /// @return PERR_INVALID_ARGUMENT  `bytes` is null and `length` is not 0
    /// @return PERR_WRITE             the system refused, for want of space too
    /// After a failure each further `write` and the `commit` give its code again.
    /// Blocks: as long as the system takes to store the bytes; a signal ends nothing early.
    [[nodiscard]] int write(char const* bytes, unsigned long length);

    /// Appends a text as UTF-8 and a line feed, both in one write.
    ///
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN          nothing is begun
    /// @return PERR_INVALID_ARGUMENT  the line holds a zero character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold the line
    /// @return PERR_NO_MEMORY         no memory for the bytes
    /// @return PERR_WRITE             the system refused, for want of space too
    /// After a failure each further `write` and the `commit` give its code again.
    /// Blocks: as `write`.
    [[nodiscard]] int writeLine(PLiteral const& line);

    /// Puts the new content in place of the old: flushes the new file to the disk, moves it over
    /// the name, flushes the folder. Whatever comes of it, nothing is begun afterwards.
    ///
    /// @return PERR_OK            the new content stands, also after a loss of power
    /// @return PERR_NOT_OPEN      nothing was begun
    /// @return PERR_WRITE         the disk refused the new content, and the old stands; or it
    ///                            refused the flush of the folder only: the new content stands, but
    ///                            a loss of power may bring back the old
    /// @return PERR_REFUSED       the file may not be moved over the name; the old content stands
    /// @return PERR_NO_SUCH_FILE  the folder or the new file was removed meanwhile
    /// @return PERR_NO_MEMORY     the system has none; the old content stands
    /// @return PERR_SYSTEM        any other refusal; the old content stands
    /// @return what a `write` gave that failed; the old content stands
    /// Blocks: as long as the disk takes; a signal ends nothing early.
    [[nodiscard]] int commit();

    /// Gives up what is begun and removes the new file; the old content stands. Does nothing where
    /// nothing is begun.
    void abandon();

private:
    struct Begun;

    Begun* own();
    int failed(int code);

    Begun* begun;  ///< null where nothing is
};

#endif
