/// @file
/// The result codes of every fallible operation, and their names.
///
/// An operation returns `PERR_OK` (0) or a negative code; none returns a positive value, and
/// nothing is thrown across the interface, except by the `append` operations of `PDataWriter`,
/// which have no code to tell that memory ran out. Test `result == PERR_OK` or `result < 0`. The
/// codes are grouped: -5xx failures shared by all families, -6xx files, directories and dynamic
/// libraries, -7xx threads, synchronisation and processes, -90xx binary data streams. The values
/// are part of the interface and never change. The meanings below are general; the comment of each
/// operation gives the exact trigger, and a code that an operation passes on from another one is
/// passed on unchanged.
#ifndef PORTINGLAYER_RESULT_CODES_H
#define PORTINGLAYER_RESULT_CODES_H

#include <portinglayer/export.h>

// clang-format off
/// Every code once: CODE(name, value, meaning). The constants below and `perrorName` are both made
/// from this list, so they cannot drift.
#define PORTINGLAYER_RESULT_CODES(CODE) \
    CODE(PERR_OK, 0, "success") \
    CODE(PERR_SYSTEM, -500, "a system call failed for a reason with no code of its own") \
    CODE(PERR_NO_MEMORY, -501, "no memory could be allocated, or a conversion gave nothing") \
    CODE(PERR_INVALID_ARGUMENT, -502, "an argument is null, empty, out of range or does not fit") \
    CODE(PERR_CONVERSION, -503, "a name from the system could not be converted to wide text") \
    CODE(PERR_NOT_FOUND, -504, "a searched item, file, key line or process is not there") \
    CODE(PERR_READ, -505, "a read failed, or a listing has ended") \
    CODE(PERR_WRITE, -506, "a write failed") \
    CODE(PERR_BAD_FORMAT, -507, "text is not a valid number, boolean or hexadecimal item") \
    CODE(PERR_NOT_SUPPORTED, -508, "the operation is not supported on this platform") \
    CODE(PERR_IO, -509, "a system file could not be opened, or an input/output error") \
    CODE(PERR_TOKEN, -510, "no token could be taken from the text") \
    CODE(PERR_REFUSED, -511, "the file system refused (permission, busy, exists, other device)") \
    CODE(PERR_STOPPED, -512, "the awaited child has stopped rather than ended") \
    CODE(PERR_LIBRARY_LOAD, -601, "a dynamic library could not be loaded") \
    CODE(PERR_OPEN, -611, "a file could not be opened or locked, or no temporary name is free") \
    CODE(PERR_ALREADY_OPEN, -612, "the file object is already open") \
    CODE(PERR_NOT_OPEN, -613, "the file object is not open") \
    CODE(PERR_END_OF_FILE, -614, "a read or write transferred zero bytes") \
    CODE(PERR_SEEK, -615, "repositioning failed") \
    CODE(PERR_DELETE, -619, "a file could not be deleted") \
    CODE(PERR_NO_SUCH_FILE, -620, "the file does not exist") \
    CODE(PERR_STAT, -621, "the file's size could not be read") \
    CODE(PERR_DIR_NOT_OPEN, -622, "a directory could not be opened, or no listing is open") \
    CODE(PERR_DIR_ALREADY_OPEN, -623, "the directory object is already open") \
    CODE(PERR_DIR_CLOSE, -624, "closing a listing failed (recorded inside, never returned)") \
    CODE(PERR_DIR_CREATE, -625, "a directory could not be created") \
    CODE(PERR_DIR_DELETE, -626, "a directory could not be removed") \
    CODE(PERR_DIR_EXISTS, -627, "the directory to be created already exists") \
    CODE(PERR_DIR_NOT_FOUND, -628, "the directory or tree to be removed does not exist") \
    CODE(PERR_LOCKED, -630, "the file is locked by another holder") \
    CODE(PERR_THREAD, -701, "no thread is owned, or a thread could not be created") \
    CODE(PERR_THREAD_JOIN, -702, "joining the thread failed") \
    CODE(PERR_THREAD_EXISTS, -703, "the thread object already owns a thread") \
    CODE(PERR_THREAD_CANCEL, -704, "cancelling the thread failed") \
    CODE(PERR_THREAD_DETACH, -705, "detaching the thread failed") \
    CODE(PERR_MUTEX, -711, "the mutex is not initialised or could not be created") \
    CODE(PERR_MUTEX_LOCK, -712, "locking failed") \
    CODE(PERR_MUTEX_UNLOCK, -713, "unlocking failed") \
    CODE(PERR_MUTEX_NOT_FOUND, -714, "the named mutex does not exist") \
    CODE(PERR_MUTEX_CLOSE, -715, "releasing the mutex failed") \
    CODE(PERR_MUTEX_INITIALISED, -716, "the mutex is already initialised") \
    CODE(PERR_MUTEX_EXISTS, -717, "the named mutex already exists") \
    CODE(PERR_SEMAPHORE, -721, "the semaphore is not initialised or could not be created") \
    CODE(PERR_SEMAPHORE_POST, -722, "posting failed") \
    CODE(PERR_SEMAPHORE_WAIT, -723, "waiting failed, or a try-wait found the count at zero") \
    CODE(PERR_SEMAPHORE_TIMEOUT, -724, "a timed wait expired") \
    CODE(PERR_SEMAPHORE_VALUE, -725, "the count could not be read") \
    CODE(PERR_SEMAPHORE_NOT_FOUND, -726, "the named semaphore does not exist") \
    CODE(PERR_SEMAPHORE_CLOSE, -727, "releasing the semaphore failed") \
    CODE(PERR_SEMAPHORE_INITIALISED, -728, "the semaphore is already initialised") \
    CODE(PERR_SEMAPHORE_EXISTS, -729, "the named semaphore already exists") \
    CODE(PERR_CONDITION, -731, "the condition variable is not initialised or was not created") \
    CODE(PERR_CONDITION_WAIT, -732, "waiting failed") \
    CODE(PERR_CONDITION_TIMEOUT, -733, "a wait timed out") \
    CODE(PERR_CONDITION_NOTIFY, -734, "signalling failed") \
    CODE(PERR_CONDITION_CLOSE, -735, "releasing the condition variable failed") \
    CODE(PERR_CONDITION_INITIALISED, -736, "the condition variable is already initialised") \
    CODE(PERR_CONDITION_NAMED_MUTEX, -737, "the mutex given to a wait is a named one") \
    CODE(PERR_CONDITION_MUTEX_NOT_INITIALISED, -738, "the mutex given to a wait is uninitialised") \
    CODE(PERR_KILL, -742, "a signal could not be sent to a process") \
    CODE(PERR_NO_PROCESS, -743, "there is no process (id 0, ended, or not a child)") \
    CODE(PERR_PROCESS_RUNNING, -744, "this object's child is still running") \
    CODE(PERR_DATA_SHORT, -9001, "the byte stream is too short for the item to be read") \
    CODE(PERR_DATA_MARKER, -9002, "the marker byte in the stream is not the expected one") \
    CODE(PERR_DATA_ENCODE, -9005, "wide text could not be converted to bytes for the stream") \
    CODE(PERR_DATA_DECODE, -9006, "bytes from the stream could not be converted to wide text")
// clang-format on

/// Declares one code as a constant.
#define PORTINGLAYER_DECLARE_CODE(name, value, meaning) inline constexpr int name = value;
PORTINGLAYER_RESULT_CODES(PORTINGLAYER_DECLARE_CODE)
#undef PORTINGLAYER_DECLARE_CODE

/// Gives the symbolic name of a result code, for messages and logs.
///
/// @param code  a result code
/// @return the name, such as "PERR_LOCKED", in static storage that nobody releases; null for a
///         value that is no result code
///
/// Threads: free of shared state, callable from any.
PORTINGLAYER_EXPORT char const* perrorName(int code);

#endif
