/// @file
/// Programs that are started, fed, read, awaited and ended: `PCommand`, and `PEnding`, how one
/// ended.
#ifndef PORTINGLAYER_COMMANDS_H
#define PORTINGLAYER_COMMANDS_H

#include <memory>
#include <string>

#include <portinglayer/export.h>
#include <portinglayer/result_codes.h>
#include <portinglayer/strings.h>

/// How a program ended.
struct PEnding {
    int exitCode;  ///< 0 to 255; -1 when a signal ended it
    int signal;    ///< the signal that ended it; 0 when it ended itself
};

/// One program to be run, and the child process that runs it.
///
/// An object is idle at first and holds a child from a `start` that succeeded until that child was
/// *collected*: its ending was given by `wait`, `end` or `run`, or someone else took it. Settings
/// are made while no child is held; afterwards another child can be started with the same settings.
/// It owns its settings, its ends of the pipes and a process descriptor of the child, all
/// close-on-exec and kept until the next start or the destructor. It does not own the child, which
/// outlives it. It is neither copied nor moved: keep several in a `std::list` or `std::deque`.
///
/// **Text.** Names and texts become UTF-8 as a whole in every locale; backslashes and white space
/// stay. Each operation with a text returns PERR_INVALID_ARGUMENT for one that holds a zero
/// character, or that is empty where a name is asked for, PERR_BAD_FORMAT for one that UTF-8 cannot
/// hold, and PERR_NO_MEMORY. Outputs are written only on success, and as `run` says. Nothing is
/// thrown.
///
/// **Groups.** Unless `setForeground` says otherwise the child leads a process group of its own,
/// which what it starts belongs to as well. There the queries of PProcess, which collect every
/// ended child of the caller's group, never take its ending.
/// @warning Who collects any child (`waitpid(-1)`), gives the id to `PProcess::kill`, or ignores
///          SIGCHLD, takes endings away: `wait` and `end` then give PERR_NO_PROCESS. Collect
///          children by their ids, signal this one by `signal`, and leave SIGCHLD be.
///
/// Threads: one thread at a time, but that four may work at once on a child that was started: one
/// for `writeInput` and `closeInput`, one for `readOutput`, one for `readErrors`, and one for
/// `wait`, with `signal` from any. Signals that come to the caller end no operation early. What
/// blocks is a cancellation point; a cancelled thread leaves the object usable, and a child runs
/// on, without its streams where it was in `run`.
/// Children: a forked child holds nothing; `wait` and `end` give PERR_NO_PROCESS there. But it has
/// the ends of the pipes until its copy of the object is gone: until then `closeInput` of the
/// parent does not end the input of the program.
class PORTINGLAYER_EXPORT PCommand {
public:
    static constexpr unsigned int FOREVER = 4294967295U;  ///< as a time: without a limit

    static constexpr int INHERITED =
        0;  ///< a stream of the child: that of the caller, closed or not
    static constexpr int DISCARDED = 1;  ///< at its end when read, lost when written
    static constexpr int PIPED = 2;      ///< leads to this object

    /// @name Describing a program
    /// Each setting may be made until `start` and again when no child is held any more. It returns
    /// PERR_PROCESS_RUNNING while one is held, and whatever fails changes nothing.
    /// @{

    /// Describes a program without arguments, with folder, environment and streams of the caller.
    ///
    /// A text that cannot be taken shows as the code of `start`.
    /// @param program  a path, or a name without slash that is looked up along PATH; the program
    ///                 gets it as its argument 0, as it stands
    explicit PCommand(PLiteral const& program);

    /// Closes what is held.
    ///
    /// Children: none is ended, awaited or collected.
    /// @warning A child that nobody awaited runs on, and when it has ended it remains as a zombie
    ///          until the caller ends or collects it by its id. Call `wait` or `end` first. A child
    ///          that writes to a pipe which is gone is ended by SIGPIPE, as a rule.
    virtual ~PCommand();

    PCommand(PCommand const&) = delete;
    PCommand& operator=(PCommand const&) = delete;

    /// Adds one argument, as it stands: spaces and quotes are part of it.
    ///
    /// @param argument  may be empty
    /// @return PERR_OK
    /// @return PERR_PROCESS_RUNNING   a child is held
    /// @return PERR_INVALID_ARGUMENT  it holds a zero character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold it
    /// @return PERR_NO_MEMORY
    [[nodiscard]] int addArgument(PLiteral const& argument);

    /// Sets a variable of the environment that the child gets.
    ///
    /// The child gets the environment of the caller as it is at `start`, with these changes in the
    /// order of their calls.
    /// @param value  may be empty
    /// @return PERR_OK
    /// @return PERR_PROCESS_RUNNING   a child is held
    /// @return PERR_INVALID_ARGUMENT  the name is empty or holds a `=`, or a text holds a zero
    ///                                character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold one of them
    /// @return PERR_NO_MEMORY
    [[nodiscard]] int setEnvironment(PLiteral const& name, PLiteral const& value);

    /// Removes a variable from the environment that the child gets; one that is not there is no
    /// failure.
    ///
    /// Codes as `setEnvironment`.
    [[nodiscard]] int unsetEnvironment(PLiteral const& name);

    /// Removes every variable: the child gets only what is set afterwards.
    ///
    /// @return PERR_OK
    /// @return PERR_PROCESS_RUNNING  a child is held
    /// @return PERR_NO_MEMORY
    [[nodiscard]] int clearEnvironment();

    /// Sets the folder in which the child runs.
    ///
    /// @param dir  when relative, from the folder of the caller at `start`
    /// @return PERR_OK
    /// @return PERR_PROCESS_RUNNING   a child is held
    /// @return PERR_INVALID_ARGUMENT  it is empty or holds a zero character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold it
    /// @return PERR_NO_MEMORY
    [[nodiscard]] int setWorkingDir(PLiteral const& dir);

    /// Sets what standard input, output and errors of the child are.
    ///
    /// @warning Where the caller has closed a standard stream, the next file it opens may stand
    ///          there, and INHERITED gives that to the child, close-on-exec or not. Set it
    ///          DISCARDED.
    /// @param input, output, errors  each INHERITED, DISCARDED or PIPED; INHERITED until set
    /// @return PERR_OK
    /// @return PERR_PROCESS_RUNNING   a child is held
    /// @return PERR_INVALID_ARGUMENT  one is none of the three
    /// @return PERR_NO_MEMORY
    [[nodiscard]] int setStreams(int input, int output, int errors);

    /// Sets whether the child stays in the process group of the caller instead of leading its own.
    ///
    /// A program that reads from the terminal has to; interrupting the caller there interrupts it
    /// too.
    /// @warning In the foreground the queries of PProcess, on any thread, can take the ending of
    ///          the child, and `end` and the limit of `run` end the child alone, not what it
    ///          started. Leave it out but for programs that use the terminal.
    /// @param foreground  false until set
    /// @return PERR_OK
    /// @return PERR_PROCESS_RUNNING  a child is held
    /// @return PERR_NO_MEMORY
    [[nodiscard]] int setForeground(bool foreground);

    /// @}
    /// @name Starting
    /// @{

    /// Starts the program; returns when it runs or has been refused.
    ///
    /// No code of the caller runs in the child, and the cost does not grow with the memory of the
    /// caller. The child gets default signal dispositions, an empty signal mask, and of the
    /// descriptors its three streams and those that the caller left inheritable.
    ///
    /// A program without a slash is looked for along the PATH of the caller, not of the child, and
    /// along the default folders of the system where there is no PATH. Empty and relative parts of
    /// PATH, and folders that may not be looked into, are passed over, so that nothing is ever
    /// taken from the current folder. A relative program with a slash is taken from the folder of
    /// the child.
    ///
    /// Whatever fails leaves no child, and what the object had from an earlier one.
    /// @warning The environment of the caller is read here: let no other thread change it
    ///          meanwhile.
    /// @return PERR_OK                the program runs, or ran and ended already; the streams of an
    ///                                earlier child are closed
    /// @return PERR_PROCESS_RUNNING   a child is held
    /// @return PERR_NO_SUCH_FILE      the program, the folder or the interpreter of a script is
    ///                                missing, or a part of a path is no folder
    /// @return PERR_REFUSED           the program is a folder or not executable, such as a script
    ///                                without `#!` (no shell is tried), or permission is missing
    /// @return PERR_NOT_SUPPORTED     the system has no process descriptors; nothing was started
    /// @return PERR_INVALID_ARGUMENT  the text of the program is empty or holds a zero character
    /// @return PERR_BAD_FORMAT        UTF-8 cannot hold the text of the program
    /// @return PERR_NO_MEMORY
    /// @return PERR_SYSTEM            arguments or environment are too long, or no process or
    ///                                descriptor is left. Where the last descriptor goes to another
    ///                                thread just when the program begins, the program is killed
    ///                                again.
    [[nodiscard]] int start();

    /// Gives the process id of the latest child, 0 before a start that succeeded. It stays after
    /// the end. Nothing is collected.
    ///
    /// @warning After the collection the system gives the id to other processes: show it, and
    ///          signal through `signal` and `end`, which never meet another process.
    [[nodiscard]] unsigned int getPID() const;

    /// @}
    /// @name Streams
    /// Of a child that was started with them PIPED. They stay open when it ends, until the next
    /// start or the destructor.
    /// @{

    /// Writes all of the bytes to the standard input of the child. No SIGPIPE reaches the caller.
    ///
    /// @warning It blocks while the pipe is full and the child does not read, and so does a child
    ///          while nobody reads what it writes: a caller that writes much before it reads waits
    ///          forever. Write and read on two threads, or leave both to `run`.
    /// @param length  bytes
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `bytes` is null or `length` is 0
    /// @return PERR_NOT_OPEN          the input is not piped, not started or closed
    /// @return PERR_WRITE             nobody is left to read; some of the bytes may have been read.
    ///                                The input stays open.
    ///
    /// Blocks: until the last byte is in the pipe, which holds 64 KiB as a rule.
    [[nodiscard]] int writeInput(char const* bytes, unsigned long length);

    /// Closes the input, so that the child finds its end behind what was written.
    ///
    /// @return PERR_OK
    /// @return PERR_NOT_OPEN  the input is not piped, not started or closed
    [[nodiscard]] int closeInput();

    /// Reads what the child has written to its standard output, at most `length` bytes.
    ///
    /// It waits for the first byte and gives what is there. What was written before an end can be
    /// read after it, also after `wait`.
    /// @warning The end comes when the last process has closed the stream, which may be one that
    ///          the child has started and left behind: `end` ends the whole group.
    /// @param length     bytes
    /// @param[out] done  bytes read, 1 to `length`
    /// @return PERR_OK
    /// @return PERR_INVALID_ARGUMENT  `buffer` is null or `length` is 0
    /// @return PERR_NOT_OPEN          the output is not piped, not started or closed
    /// @return PERR_END_OF_FILE       all was read, and nobody is left to write more
    /// @return PERR_READ              the system refused the read
    ///
    /// Blocks: while nothing is there.
    [[nodiscard]] int readOutput(char* buffer, unsigned long length, unsigned long& done);

    /// As `readOutput`, from the standard errors. Codes as `readOutput`.
    [[nodiscard]] int readErrors(char* buffer, unsigned long length, unsigned long& done);

    /// @}
    /// @name Waiting and ending
    /// @{

    /// Waits for the child to end and collects it, and no other.
    ///
    /// It sleeps in the system until the child ends; a stopped child is a running one, and so is an
    /// ended one that another process traces, until that lets it go.
    /// @warning What the child has started and left behind runs on, and `end` does not meet it any
    ///          more once this has returned PERR_OK. Where that matters, wait without collecting,
    ///          by `waitid` with `getPID()` and WEXITED | WNOWAIT, and call `end`.
    /// @param[out] ending   how it ended
    /// @param milliseconds  at the most; 0 only looks, FOREVER has no limit
    /// @return PERR_OK               also each time after it was collected, with the same ending
    /// @return PERR_PROCESS_RUNNING  the time is over
    /// @return PERR_NO_PROCESS       no child was started, or someone else has collected it
    /// @return PERR_SYSTEM           the system refused to wait
    ///
    /// Blocks: at most for the time.
    [[nodiscard]] int wait(PEnding& ending, unsigned int milliseconds);

    /// Sends a signal to the child, and to nothing that it started.
    ///
    /// @param number  1 to SIGRTMAX
    /// @return PERR_OK                sent, which says nothing of what the child does with it; also
    ///                                for a child that has ended and is not collected
    /// @return PERR_INVALID_ARGUMENT  there is no such signal
    /// @return PERR_NO_PROCESS        no child was started, or it was collected
    /// @return PERR_KILL              the system refused, such as for a program with rights of its
    ///                                own
    [[nodiscard]] int signal(int number);

    /// Ends the child and what it started: SIGTERM to its group, time to leave, SIGKILL to what is
    /// left of it, then collects the child.
    ///
    /// The wait is over as soon as no process of the group runs. In the foreground it is the child
    /// alone that is signalled and awaited. After the collection nobody is signalled, and the
    /// ending comes again.
    /// @warning What the child moved into another group, as daemons and shells with job control do,
    ///          is not met.
    /// @warning A stopped program that handles SIGTERM cannot leave before it is continued: give a
    ///          grace that ends. Where someone else has collected the child, what it started is not
    ///          ended.
    /// @param[out] ending        how the child ended
    /// @param graceMilliseconds  time for leaving; 0 kills at once, FOREVER never
    /// @return PERR_OK
    /// @return PERR_NO_PROCESS  no child was started, or someone else has collected it
    /// @return PERR_KILL        the system refused a signal, such as for a program with rights of
    ///                          its own; the child is still held
    /// @return PERR_SYSTEM      the system refused to wait; the child is still held
    ///
    /// Blocks: at most for the grace, and until the system has carried out the kill.
    [[nodiscard]] int end(PEnding& ending, unsigned int graceMilliseconds);

    /// Runs the program from its start to its end, with `input` on its standard input.
    ///
    /// All three streams are piped this time. The input is written while both outputs are read, so
    /// no sizes can block; input that the program does not read is no failure. It returns when both
    /// outputs have ended and the child too, which is collected; the streams are closed.
    /// At the limit the group of the child is killed, in the foreground the child alone.
    /// @warning The outputs end when the last process has closed them: a program that leaves one in
    ///          the background keeps `run` waiting until the limit, where that one is killed too.
    ///          What it leaves with other outputs runs on.
    /// @param[out] output, errors  all that was written, also by what the program started. May be
    ///                             `input`, but not the same string.
    /// @param[out] ending          how the child ended
    /// @param milliseconds         from start to end; FOREVER has no limit
    /// @return PERR_OK               whatever the exit code
    /// @return PERR_PROCESS_RUNNING  the limit was reached: the outputs hold what was read until
    ///                               then, `ending` tells how the child ended, killed or before,
    ///                               so that more may be missing behind an exit code of 0.
    ///                               Also when a child was held at the call, and all outputs are
    ///                               left alone.
    /// @return PERR_NO_PROCESS       someone else has collected the child; the outputs are left
    ///                               alone
    /// @return PERR_KILL             something failed or the limit was reached, but the system
    ///                               refused to kill the child, such as a program with rights of
    ///                               its own: it is still held, the outputs are left alone
    /// @return PERR_READ             the system refused a read; the group was killed, the child
    ///                               collected
    /// @return PERR_WRITE            the system refused a write otherwise than because nobody
    ///                               reads; as PERR_READ
    /// @return PERR_NO_MEMORY        at the start, or for the outputs: as PERR_READ
    /// @return PERR_SYSTEM           at the start; or the system refused to wait: the child is
    ///                               still held, the outputs are left alone
    ///
    /// Where the start fails, codes as `start`; all outputs are left alone.
    ///
    /// Blocks: at most for the time, and until the system has carried out the kill.
    [[nodiscard]] int run(std::string const& input, std::string& output, std::string& errors,
                          PEnding& ending, unsigned int milliseconds);

    /// @}

private:
    struct State;

    std::unique_ptr<State> state;  ///< null where memory for it ran out
};

#endif
