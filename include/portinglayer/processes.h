/// @file
/// Processes of the system: `PProcess` starts a program, waits for it and ends it, and asks for the
/// facts of any process by its id.
#ifndef PORTINGLAYER_PROCESSES_H
#define PORTINGLAYER_PROCESSES_H

#include <vector>

#include <portinglayer/counters.h>
#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>
#include <portinglayer/threads.h>

/// One program to be run, and the child process that runs it; also, as static operations on a
/// process id, the facts of every process of the machine.
///
/// An object is idle while its process id is 0 and started once `start()` has forked. It stays
/// started after its child has ended, until `kill()`, `startProcAsDifferentUser()`, another
/// `start()`, `initProcessInfo`, `clearProcessInfo` or the destructor clears the id. It owns its
/// texts; it never owns the child, which outlives it. Objects cannot be copied and take no locks:
/// one object belongs to one thread at a time, but `waitExitCode` and the const operations only
/// read it and may run on several at once. The static operations share nothing and may run on any
/// thread.
///
/// **Reaping.** `isRunning`, `getPID`, `start`, `startProcAsDifferentUser`, `kill()`, the static
/// `waitFinish`, `getName`, `getPath`, `listPIDs`, `getChildPID`, `find` and `killTree` first
/// collect the exit status of *every* ended child of the calling process (those of its process
/// group), also of children that other code started; so does the `waitFinish` of an object whose
/// child still runs when the time is over. Whoever needs an exit code calls `waitExitCode`, on a
/// thread of its own if need be, and lets nothing of that list run on any thread until it has
/// returned: a child that ends meanwhile is collected by whichever call comes first.
/// The other queries do not reap: `getCmdLine`, `getWorkingDir`, `getPriority`, `getEnvironment`,
/// `getMemoryUsage`, `getParentPID`, `getUserName` and the measurements of load.
///
/// **Process ids are used again.** Once a child was collected, the system may give its id to any
/// new process, and the object would take that one for its child: `isRunning` and `getPID` find it,
/// `start()` refuses, and `kill()` ends it. Call `clearProcessInfo()` as soon as the exit code is
/// known, or the `waitFinish` of the object has given false.
///
/// **Process ids 0 and 4294967295.** The system reads 0 as "every process of the caller's group"
/// and 4294967295 (-1) as "every process that the caller may signal", the caller and its session
/// included. Both mean the same to `killSignal`, to the static `kill` and to `killTree`, which hand
/// an id to the system as it comes; `killTree(0)` also ends all descendants of process 1. The
/// instance `kill()` never signals either, because no process runs under these ids. What `getPID`,
/// `listPIDs`, `getChildPID` and `find` give as processes is never one of them. A *parent* id, from
/// `getParentPID` or `find`, is 0 where no parent can be seen: look at it before signalling it. The
/// other ids above 2147483647 are negative to the system and mean whole process groups.
///
/// **Signals.** A child inherits which signals its starter ignores, and which the starting thread
/// blocks: SIGTERM does nothing to it where these were among them. While the caller ignores
/// SIGCHLD, the system collects ended children by itself and no exit code can be had.
///
/// **Cancellation.** The operations that block say so, and a thread that is cancelled ends there;
/// those that reap or read files of the system may be cancellation points too, `start` among them.
/// Nothing stays open in either case, but a child that was started goes on. The destructor and what
/// only clears the id are no cancellation points.
///
/// **Text.** Text from and to the system is converted under the locale of the process. Where an
/// operation gives text with multibyte characters, `len()` counts bytes unless said otherwise: zero
/// characters fill the rest behind the terminator, so measure such text with `wcslen`. In a command
/// line they stand behind each argument that has such characters.
class PORTINGLAYER_EXPORT PProcess {
public:
    /// @name Describing a program
    /// @{

    /// Describes a program that inherits folder and environment of the calling process.
    ///
    /// Nothing is started. When memory runs out while a text or the environment is copied, the
    /// object keeps no executable, so that `start()` gives PERR_NOT_FOUND instead of running half
    /// of what was asked for. Nothing is thrown.
    /// @param executable  path, or bare name that is looked up along PATH; stored without white
    ///                    space at both ends and with every backslash turned into a slash
    /// @param arguments   all arguments, separated by single spaces, see `start()`; stored without
    ///                    white space at both ends
    PProcess(PLiteral const& executable, PLiteral const& arguments);

    /// As above, with a folder.
    ///
    /// @param workingDir  folder in which the child runs, empty for the caller's; stored like
    ///                    `executable`, which when relative is looked up from here
    PProcess(PLiteral const& executable, PLiteral const& arguments, PLiteral const& workingDir);

    /// As above, with an environment instead of a folder.
    ///
    /// @warning A braced text is taken for a folder: name the vector and the PString within it.
    /// @param environment  entries NAME=VALUE, copied; the child keeps what it inherits, and these
    ///                     add to it or override it
    PProcess(PLiteral const& executable, PLiteral const& arguments,
             std::vector<PString> const& environment);

    /// As above, with a folder and an environment.
    PProcess(PLiteral const& executable, PLiteral const& arguments, PLiteral const& workingDir,
             std::vector<PString> const& environment);

    /// Forgets the child as `clearProcessInfo` does.
    ///
    /// Children: a child that still runs goes on running; one that has ended is reaped.
    virtual ~PProcess();

    PProcess(PProcess const&) = delete;
    PProcess& operator=(PProcess const&) = delete;

    /// @}
    /// @name Starting
    /// @{

    /// Starts the described program as a child of the calling process.
    ///
    /// The child inherits the open descriptors that are not marked close-on-exec and the standard
    /// streams. It changes to the folder, sets the environment entries in their order (an entry
    /// without `=` is skipped, the value begins behind the first `=`), then runs the program.
    /// The arguments are split at every single space and lose white space at both ends; quotes mean
    /// nothing.
    /// @warning Two adjacent spaces end the argument list: the program of "a  b" gets only "a".
    ///          Write one space between arguments.
    /// @warning Executable, folder, entries and each argument are cut to as many bytes as they have
    ///          characters, as `PLiteral::ascii` says, so only ASCII passes whole. In a UTF-8
    ///          locale fit each of them with `PUtf8::padded`, one argument at a time. Folder,
    ///          entries and the last argument pass as well with the zero characters that PString's
    ///          narrow `set` leaves behind them. An argument of which nothing is left, or that the
    ///          locale cannot express, ends the argument list.
    /// @warning PERR_OK does not say that the program runs. A failed fork gives PERR_OK as well and
    ///          leaves 4294967295 as process id: ask `getPID` or `isRunning`, which tell, and use
    ///          no waiting operation of such an object, as these take any child of the caller; so
    ///          does, without waiting, what clears the id, the destructor included. A
    ///          program that could not be run ends its child with an exit code that `waitExitCode`
    ///          gives: the system's error number (2 for a missing program, 14 for a name that the
    ///          locale cannot express), or 139 for a folder that could not be entered.
    /// @warning The child converts text and allocates before it becomes the program. When other
    ///          threads of the caller may hold a lock at the time of the fork, that of the
    ///          allocator included where it does not guard itself against forks, the child can
    ///          block forever.
    /// @warning A child that cannot become the program leaves with `exit`. That runs the exit
    ///          handlers of the caller, destroys its static objects and writes what its streams
    ///          hold, all once more: a static `PFile` in safe-write mode moves its half-written
    ///          file over the good one, a static named PMutex or PSemaphore removes its name. Flush
    ///          streams before, keep such objects local, and let exit handlers compare `getpid()`.
    /// @warning The child inherits ignored and blocked signals: see Signals above, and start it
    ///          while SIGTERM is neither if `kill` is to end it.
    /// @return PERR_OK               in the parent: the child was forked, or the fork failed
    ///                               (above)
    /// @return PERR_PROCESS_RUNNING  the child of this object still runs; nothing changed
    /// @return PERR_NOT_FOUND        there is no executable; the process id is 0
    /// @return PERR_NO_MEMORY        returned *in the child* when there is no memory for the name
    ///                               of the program, its arguments or its environment: the child
    ///                               goes on in the caller's code, so leave it with `_exit` on this
    ///                               code
    ///
    /// Children: reaps every ended child of the caller first, then starts one.
    [[nodiscard]] int start();

    /// Starts a program without keeping an object; otherwise as the instance form.
    ///
    /// @param[out] pid  process id of the child; written only on success
    /// @return PERR_OK          the child was forked and had not ended yet
    /// @return PERR_NOT_FOUND   `executable` is empty, or memory ran out for the description
    /// @return PERR_NO_MEMORY   no object could be allocated; also returned in the child, see above
    /// @return PERR_NO_PROCESS  the child could not be forked or has ended already
    /// @warning A program that ends at once gives PERR_NO_PROCESS although it ran, and its exit
    ///          code is lost: keep a `PProcess` object where the exit code matters, and call its
    ///          `waitExitCode` before `getPID`, which has the same effect.
    ///
    /// Children: starts one; reaps every ended child of the caller.
    [[nodiscard]] static int start(PLiteral const& executable, PLiteral const& arguments,
                                   PLiteral const& workingDir,
                                   std::vector<PString> const& environment, unsigned int& pid);
    /// As above, in the caller's folder.
    [[nodiscard]] static int start(PLiteral const& executable, PLiteral const& arguments,
                                   std::vector<PString> const& environment, unsigned int& pid);
    /// As above, with the caller's environment.
    [[nodiscard]] static int start(PLiteral const& executable, PLiteral const& arguments,
                                   PLiteral const& workingDir, unsigned int& pid);
    /// As above, in the caller's folder and with its environment.
    [[nodiscard]] static int start(PLiteral const& executable, PLiteral const& arguments,
                                   unsigned int& pid);

    /// Would start the program as another user; not supported. Both texts are ignored.
    ///
    /// @return PERR_PROCESS_RUNNING  the child of this object still runs; nothing changed
    /// @return PERR_NOT_SUPPORTED    always otherwise; the process id is 0
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] int startProcAsDifferentUser(PString user, PString password);

    /// Sets the process id to 0 without a look at the child.
    ///
    /// @return PERR_OK  always
    [[nodiscard]] int initProcessInfo();

    /// Sets the process id to 0 and reaps the child if it has ended; after a failed fork, any one
    /// ended child of the caller. Never waits, never signals.
    ///
    /// @return PERR_OK  always
    [[nodiscard]] int clearProcessInfo();

    /// @}
    /// @name Waiting
    /// @{

    /// Tells whether a process runs. A process that has ended but was not yet collected by its
    /// parent (a zombie) does not run. The id of a thread counts, too.
    ///
    /// @param[out] running  always written; false for process id 0
    /// @return PERR_OK  always
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int isRunning(unsigned int processId, bool& running);
    /// As the form with an id, for the child of this object; false when there is none.
    [[nodiscard]] int isRunning(bool& running) const;

    /// Gets the process id of the child of this object.
    ///
    /// @param[out] processId  written only on success
    /// @return PERR_OK
    /// @return PERR_NO_PROCESS  no child was started, or it has ended
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] int getPID(unsigned int& processId) const;

    /// Waits until the child of this object ends, and gets how it ended.
    ///
    /// The process id stays as it is, so a second call gives PERR_NO_PROCESS.
    /// @warning From then on the id may mean a stranger: call `clearProcessInfo()` next.
    /// @param[out] exitCode  0 to 255 as the child gave it, or minus the number of the signal that
    ///                       ended it (-9 after SIGKILL); -1 on failure, and after SIGHUP: only the
    ///                       code tells these two apart
    /// @return PERR_OK
    /// @return PERR_NO_PROCESS  no child was started, or its exit code was taken already, here, by
    ///                          an operation that reaps, or by the system because the caller
    ///                          ignores SIGCHLD (then after the child has ended)
    /// @return PERR_STOPPED     a traced child has stopped rather than ended
    /// @return PERR_SYSTEM      the system refused to wait, or a signal interrupted the wait
    ///
    /// Blocks: until the child ends; a cancellation point. Children: reaps this one. Threads:
    /// meanwhile others may use the const operations of the object and the static ones, but neither
    /// `kill()` nor `waitFinish`.
    [[nodiscard]] int waitExitCode(int& exitCode);

    /// Waits until a process ends, for about a time.
    ///
    /// It looks at the process between sleeps of a tenth of the time, a second at least, and sleeps
    /// whole steps only: a wait below 1000 milliseconds does not sleep at all, one of 1999 ends
    /// after 1000, and an ending is noticed up to a step late. A signal that the caller handles
    /// ends a sleep, so the wait is shorter.
    /// @warning A step above 4294967 milliseconds wraps as `PThread::psleep` says: from 42949680 on
    ///          a wait is far too short.
    /// @param timeoutMs  milliseconds
    /// @return true if the process still runs, false if it has ended
    ///
    /// Blocks: up to `timeoutMs`; a cancellation point. Children: reaps every ended child of the
    /// caller.
    static bool waitFinish(unsigned int processId, unsigned int timeoutMs);
    /// As the form with an id, for the child of this object; false when there is none.
    ///
    /// Children: reaps this one; when it still runs in the end, every ended child of the caller.
    /// @warning After false the id may mean a stranger: call `clearProcessInfo()` next.
    /// @warning It takes the exit code of the child, so `waitExitCode` gives PERR_NO_PROCESS
    ///          afterwards. To wait with a time limit and get the exit code, call `waitExitCode` on
    ///          a thread, wait for that thread's answer on a `PConditionalVar`, and let nothing
    ///          that reaps run meanwhile.
    bool waitFinish(unsigned int timeoutMs);

    /// @}
    /// @name Ending
    /// @{

    /// Sends a signal to a process, then sleeps a second and reaps the process if it is a child
    /// that has ended.
    ///
    /// @warning Process id 0 signals the caller's whole process group, 4294967295 every process
    ///          that the caller may signal: check ids that come from elsewhere.
    /// @return PERR_OK
    /// @return PERR_KILL  there is no such process, no permission or no such signal; returned at
    ///                    once
    ///
    /// Blocks: one second on success, less when a signal comes that the caller handles; a
    /// cancellation point. Children: reaps this one; for 0 and 4294967295 any one child.
    [[nodiscard]] static int killSignal(unsigned int processId, int signal);

    /// Asks a process to end: SIGTERM (15) through `killSignal`, with its codes and its meaning of
    /// 0 and 4294967295.
    ///
    /// @warning PERR_OK says that the signal was sent. A process that ignores or blocks SIGTERM,
    ///          also by inheritance, goes on: look with `isRunning`, then send SIGKILL.
    [[nodiscard]] static int kill(unsigned int processId);

    /// Ends the child of this object with SIGKILL if it runs, and forgets it in every case.
    ///
    /// Only what runs under the id is signalled, so nothing is for an object that never started or
    /// whose fork failed: process ids 0 and 4294967295 are never signalled here.
    /// @warning Where the child was collected before, the id may mean a stranger, which is ended:
    ///          call `clearProcessInfo()` once the exit code is known.
    /// @return PERR_OK    also when no child ran; the process id is 0
    /// @return PERR_KILL  the system refused the signal; the process id is 0 all the same
    ///
    /// Blocks: one second when it signalled, less when a signal comes that the caller handles; a
    /// cancellation point: where the thread ends there, before or after the signal was sent, the
    /// object keeps the process id. Children: reaps every ended child of the caller.
    [[nodiscard]] int kill();

    /// Ends a process and all its descendants, parents before their children.
    ///
    /// Each gets SIGTERM, up to two seconds to end, and then SIGKILL. The tree is read once at the
    /// start, from parents to children: what is started later is not found, nor is a process whose
    /// parent has ended before, as the system gave it another one.
    /// @warning Call it while the root still runs: of a tree whose root has ended nothing is found.
    ///          What may lose parents or goes on starting others is ended as a whole by a
    ///          `PCommand`.
    /// @warning A signal that the caller handles ends a pause: SIGKILL may come before a process
    ///          had its time. Call it on a thread that blocks such signals.
    /// @warning Process id 0 signals the caller's group and ends all descendants of process 1,
    ///          4294967295 signals every process that the caller may signal. Never pass an
    ///          unchecked id.
    /// @return PERR_OK
    /// @return PERR_KILL       a signal could not be sent, such as to a process that ended in
    ///                         between; every process of the tree was tried
    /// @return PERR_NO_MEMORY  the tree could not be listed; no process was signalled
    ///
    /// Blocks: one to four seconds for each process that still runs; a cancellation point.
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int killTree(unsigned int processId);

    /// @}
    /// @name Facts of a process
    /// The forms without a process id ask for the child of this object.
    /// @{

    /// Gets the name of a process as the system knows it, cut by the system to 15 bytes except for
    /// its own workers, without white space at both ends. The system writes a backslash in it as
    /// two, and a line feed as a backslash and "n".
    ///
    /// @param[out] name  cleared first; `len()` counts characters
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, or it ended meanwhile
    /// @return PERR_NO_MEMORY  memory ran out, or the locale cannot convert the name, such as one
    ///                         that the system cut within a character
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int getName(unsigned int processId, PString& name);
    /// As the form with an id.
    /// @return PERR_NO_PROCESS  no child was started; `name` is left alone
    [[nodiscard]] int getName(PString& name) const;

    /// Gets the path of the program that a process runs, at most 512 bytes of it, without white
    /// space at both ends and with backslashes turned into slashes. Where the file was removed or
    /// replaced since, the system adds " (deleted)".
    ///
    /// @param[out] path  left alone on failure, but empty on PERR_NO_MEMORY
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, it has no program (a kernel thread, a
    ///                         zombie), or the caller may not see it
    /// @return PERR_NO_MEMORY  memory ran out, or the locale cannot convert the path, such as one
    ///                         with a character across byte 512
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int getPath(unsigned int processId, PString& path);
    /// As the form with an id; where the system does not tell, gives the executable that this
    /// object describes.
    /// @return PERR_OK
    /// @return PERR_NO_PROCESS  no child was started; `path` is left alone
    [[nodiscard]] int getPath(PString& path) const;

    /// Gets the arguments of a process, the program first, in one text separated by single spaces.
    ///
    /// An argument that holds a space stands in double quotes; a quote inside is not escaped. An
    /// argument that the locale cannot convert joins as an empty one.
    /// @warning The command line is read in pieces of 255 bytes. Behind the first one arguments are
    ///          cut in the wrong place or joined empty: trust only what lies within the first 255
    ///          bytes.
    /// @warning Behind an argument with multibyte characters stand as many zero characters as it
    ///          has bytes more than characters, and printing stops there.
    /// @param[out] commandLine  cleared once the process is found; empty for a kernel thread and a
    ///                          zombie
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, or it ended meanwhile
    /// @return PERR_NO_MEMORY  memory ran out; `commandLine` is empty
    [[nodiscard]] static int getCmdLine(unsigned int processId, PString& commandLine);
    /// As the form with an id; where the system does not tell, gives the arguments that this object
    /// describes.
    /// @return PERR_OK
    /// @return PERR_NO_PROCESS  no child was started; `commandLine` is left alone
    [[nodiscard]] int getCmdLine(PString& commandLine) const;

    /// Gets the current folder of a process, at most 512 bytes of it, without white space at both
    /// ends and with backslashes turned into slashes. Where the folder was removed since, the
    /// system adds " (deleted)".
    ///
    /// @param[out] dir  left alone on failure, but empty on PERR_NO_MEMORY
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, it has ended (a zombie), or the caller may
    ///                         not see its folder
    /// @return PERR_NO_MEMORY  memory ran out, or the locale cannot convert the path, such as one
    ///                         with a character across byte 512
    [[nodiscard]] static int getWorkingDir(unsigned int processId, PString& dir);
    /// As the form with an id.
    /// @return PERR_NO_PROCESS  no child was started; `dir` is left alone
    [[nodiscard]] int getWorkingDir(PString& dir) const;

    /// Gets the nice value of a process, -20 (favoured) to 19. Process id 0 is the caller.
    ///
    /// @param[out] value  written only on success
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process
    [[nodiscard]] static int getPriority(unsigned int processId, int& value);
    /// As the form with an id.
    /// @return PERR_NO_PROCESS  no child was started; `value` is left alone
    [[nodiscard]] int getPriority(int& value) const;

    /// Gets the environment with which a process was started, as entries NAME=VALUE.
    ///
    /// Later changes that the process made to its own environment do not show. Bytes behind the
    /// last terminator are dropped, and so are bytes that the locale cannot convert. `len()` of an
    /// entry counts characters.
    /// @warning The environment is read in blocks of 128 bytes. A multibyte character that lies
    ///          across two blocks is dropped.
    /// @param[out] environment  cleared first
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, the caller may not see its environment, or
    ///                         it has none any more (a zombie; some kernels give PERR_OK and no
    ///                         entry)
    /// @return PERR_NO_MEMORY  memory ran out; the entries read so far stay
    [[nodiscard]] static int getEnvironment(unsigned int processId,
                                            std::vector<PString>& environment);
    /// As the form with an id.
    /// @return PERR_NO_PROCESS  no child was started; `entries` is left alone
    [[nodiscard]] int getEnvironment(std::vector<PString>& entries) const;

    /// Gets the memory of a process that is resident now, in bytes.
    ///
    /// @param[out] bytes  a multiple of 1024; written only on success
    /// @return PERR_OK
    /// @return PERR_NO_PROCESS  there is no such process
    /// @return PERR_NOT_FOUND   the process has no memory of its own (a kernel thread, a zombie)
    [[nodiscard]] static int getMemoryUsage(unsigned int processId, unsigned long long& bytes);
    /// As the form with an id; `bytes` is 0 on failure.
    [[nodiscard]] int getMemoryUsage(unsigned long long& bytes) const;

    /// Gets the process id of the parent of a process.
    ///
    /// @param[out] parentId  0 on failure, and for a process whose parent cannot be seen
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, or it ended meanwhile
    [[nodiscard]] static int getParentPID(unsigned int processId, unsigned int& parentId);

    /// Gets the name of the user whom a process belongs to.
    ///
    /// @warning On Linux the answer is "root" for every process whose name does not hold "uid". Do
    ///          not decide on rights by it.
    /// @param[out] name  left alone when the account file knows no such user (PERR_OK all the
    ///                   same); bytes other than ASCII come as `PFile::preadLine` gives them
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  there is no such process, or a file cannot be opened or read
    /// @return PERR_NO_MEMORY  memory ran out, but while a file was opened; `name` is left alone or
    ///                         empty
    [[nodiscard]] static int getUserName(unsigned int const& processId, PString& name);

    /// Gets the memory of the machine that is free or used only for buffers and cached files, in
    /// bytes.
    ///
    /// @param[out] bytes  0 on failure; what the system does not report counts as 0
    /// @return PERR_OK
    /// @return PERR_IO  the system's report cannot be opened
    [[nodiscard]] static int getFreeMemory(unsigned long long& bytes);

    /// Gets the process id of the caller.
    static unsigned int getCurrentPID();

    /// Gets the environment with which the caller was started, see `getEnvironment`: what `setenv`
    /// changed since does not show.
    ///
    /// @param[out] environment  cleared first
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  the system's file cannot be opened or read
    /// @return PERR_NO_MEMORY  memory ran out; the entries read so far stay
    [[nodiscard]] static int getCurrentEnvironment(std::vector<PString>& environment);

    /// @}
    /// @name Load
    /// Whole numbers of percent, cut, measured between two samples with a pause.
    /// @{

    /// Measures the load of the whole machine over one second.
    ///
    /// @warning `process.getCPUUsage(percent)` measures the machine as well, since no form asks for
    ///          the child of an object: give the id that `getPID` gave.
    /// @param[out] percent  0 on failure
    /// @return PERR_OK
    /// @return PERR_IO  the system's counters cannot be opened
    ///
    /// Blocks: one second, less when a signal comes that the caller handles; a cancellation point.
    [[nodiscard]] static int getCPUUsage(unsigned int& percent);

    /// Measures the load of one process, as a share of all processors together: a process that
    /// keeps one of four processors busy reads about 25.
    ///
    /// The pause is 400 milliseconds, or what the environment variable TALV_PROC_SAMPLE_TIME_MS
    /// said (milliseconds, not 0, below 4294968) when it was read for the first time in this
    /// process.
    /// @param[out] percent  0 on failure
    /// @return PERR_OK
    /// @return PERR_SYSTEM       no counter moved in the pause, or the counters could not be read,
    ///                           such as for a process with a space in its name
    /// @return PERR_NO_SUCH_FILE  there is no such process
    /// @return PERR_OPEN         the system's counters cannot be opened
    /// @return PERR_READ         the system's counters cannot be read, such as those of a process
    ///                           that ended meanwhile
    /// @return PERR_END_OF_FILE  the system's counters are empty
    /// @return PERR_SEEK         the system's counters cannot be read again
    /// @return PERR_NO_MEMORY    no memory for the names of the counters
    ///
    /// Blocks: for the pause, less when a signal comes that the caller handles; a cancellation
    /// point.
    [[nodiscard]] static int getCPUUsage(unsigned int processId, unsigned int& percent);

    /// Measures the load of one processor over 400 milliseconds.
    ///
    /// @warning For a number that the system does not list, such as that of a processor switched
    ///          off, the first listed one whose number begins with it is measured: 10 for 1.
    ///          PERR_SYSTEM comes only where there is none.
    /// @warning The counters are read in blocks of 2,048 bytes. A processor whose line lies across
    ///          two, on a machine with some dozens, is not found or is measured by cut numbers:
    ///          measure the machine there.
    /// @param cpu           number of the processor, from 0
    /// @param[out] percent  written only on success
    /// @return PERR_OK
    /// @return PERR_OPEN    the system's counters cannot be opened
    /// @return PERR_SYSTEM  there is no such processor (see above), or its counters cannot be read
    ///
    /// Blocks: 400 milliseconds, less when a signal comes that the caller handles; a cancellation
    /// point.
    [[nodiscard]] static int getSpecCPUUsage(unsigned int cpu, unsigned int& percent);

    /// @}
    /// @name Listing
    /// In the order of the system, not sorted. A process that ends during a listing may be in it or
    /// not.
    /// @{

    /// Lists the ids of all processes.
    ///
    /// @param[out] pids  emptied first
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  the system's list cannot be opened
    /// @return PERR_NO_MEMORY  memory ran out; what was listed so far stays
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int listPIDs(std::vector<unsigned int>& pids);

    /// Lists the direct children of a process. Process id 0 stands for process 1.
    ///
    /// @param[out] children  emptied first
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  the process has no child, or the system's list cannot be opened
    /// @return PERR_NO_MEMORY  memory ran out; what was listed so far stays
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int getChildPID(unsigned int processId,
                                         std::vector<unsigned int>& children);

    /// Finds processes by the name of their program, whole and without regard to case.
    ///
    /// Folders in front of the name are ignored. The system cuts names to 15 bytes: for a given
    /// text of 15 characters or more, folders counted, a process with a name of 15 characters is
    /// compared by the last part of the path it was started with.
    /// @warning A script whose name has 15 characters or more is never found: what it was started
    ///          with is the path of its interpreter. Nor is a process whose name the locale cannot
    ///          convert. Look for these with `listPIDs` and `getCmdLine`.
    /// @param[out] pids        emptied first
    /// @param[out] parentPids  emptied first; the parent of each process in `pids`, in the same
    ///                         place
    /// @return PERR_OK
    /// @return PERR_NOT_FOUND  no process has this name, or the system's list cannot be opened
    /// @return PERR_NO_MEMORY  memory ran out; what was found so far stays
    ///
    /// Children: reaps every ended child of the caller.
    [[nodiscard]] static int find(PString const& name, std::vector<unsigned int>& pids,
                                  std::vector<unsigned int>& parentPids);

    /// @}

private:
    PString executable;                ///< trimmed, with slashes
    PString arguments;                 ///< trimmed
    std::vector<PString> environment;  ///< entries NAME=VALUE
    PString workingDir;                ///< trimmed, with slashes; empty: the caller's
    PThread thread;                    ///< unused; holds its place in the layout
    unsigned int pid;                  ///< of the child; 0: none
};

/// @cond
PORTINGLAYER_HELD_PPTR(extern, PProcess);
/// @endcond

#endif
