#include "process/command_launch.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include "process/pipe.h"

namespace {

/// Of what the new program met on its way.
int _launchCode(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR: return PERR_NO_SUCH_FILE;
    case EACCES:
    case EPERM:
    case ENOEXEC:
    case EISDIR:
    case EINVAL:  // a program whose header makes no sense
    case ELIBBAD:
    case ELOOP:
    case ETXTBSY: return PERR_REFUSED;
    case ENOMEM: return PERR_NO_MEMORY;
    default: return PERR_SYSTEM;
    }
}

/// Of what the caller could not get for it.
int _shortage(int error) {
    return error == ENOMEM ? PERR_NO_MEMORY : PERR_SYSTEM;
}

/// What differs in the child from a plain copy of the caller.
class SpawnAttributes {
public:
    explicit SpawnAttributes(bool foreground) {
        sigset_t all, none;
        // With two of the C library's own, which sigfillset leaves out and the child would ignore.
        (void)std::memset(&all, 0xFF, sizeof all);
        (void)sigemptyset(&none);
        int const group = foreground ? 0 : POSIX_SPAWN_SETPGROUP;
        int const flags = POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | group;
        (void)posix_spawnattr_init(&attributes);  // none of these can fail with these values
        (void)posix_spawnattr_setflags(&attributes, static_cast<short>(flags));
        (void)posix_spawnattr_setsigdefault(&attributes, &all);
        (void)posix_spawnattr_setsigmask(&attributes, &none);
        (void)posix_spawnattr_setpgroup(&attributes, 0);  // that of its own id
    }
    ~SpawnAttributes() { (void)posix_spawnattr_destroy(&attributes); }
    SpawnAttributes(SpawnAttributes const&) = delete;
    SpawnAttributes& operator=(SpawnAttributes const&) = delete;

    posix_spawnattr_t const* get() const { return &attributes; }

private:
    posix_spawnattr_t attributes;
};

/// What the child does before it becomes the program.
class SpawnActions {
public:
    SpawnActions() { (void)posix_spawn_file_actions_init(&actions); }  // cannot fail
    ~SpawnActions() { (void)posix_spawn_file_actions_destroy(&actions); }
    SpawnActions(SpawnActions const&) = delete;
    SpawnActions& operator=(SpawnActions const&) = delete;

    /// Both give 0 or an error number.
    int enter(std::string const& folder) {
        if (folder.empty()) return 0;
        return posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    }
    int give(int descriptor, int as) {
        return posix_spawn_file_actions_adddup2(&actions, descriptor, as);
    }

    posix_spawn_file_actions_t const* get() const { return &actions; }

private:
    posix_spawn_file_actions_t actions;
};

/// The streams of a child on their way to it: the caller's ends, and what the child gets.
class NewStreams {
public:
    /// Makes what the child is to get and has it given. 0 or an error number.
    int make(StreamModes const& streams, SpawnActions& actions) {
        int error = 0;
        for (int stream = 0; stream <= STDERR_FILENO && error == 0; ++stream) {
            switch (streams[static_cast<std::size_t>(stream)]) {
            case PCommand::PIPED: error = pipe(stream, actions); break;
            case PCommand::DISCARDED: error = discard(stream, actions); break;
            default: error = inherit(stream, actions);
            }
        }
        return error;
    }

    CommandStreams ours;

private:
    int pipe(int stream, SpawnActions& actions) {
        Pipe made;
        if (!made.open()) return errno;
        bool const input = stream == STDIN_FILENO;
        auto const place = static_cast<std::size_t>(stream);
        ours[place] = std::move(input ? made.writeEnd : made.readEnd);
        theirs[place] = std::move(input ? made.readEnd : made.writeEnd);
        return actions.give(theirs[place].get(), stream);
    }

    int discard(int stream, SpawnActions& actions) {
        // Opened here: in the child a failure would look like a missing program.
        if (!nothing.isOpen()) nothing = Descriptor(::open("/dev/null", O_RDWR | O_CLOEXEC));
        if (!nothing.isOpen() || !_leaveStandardStreams(nothing)) return errno;
        return actions.give(nothing.get(), stream);
    }

    static int inherit(int stream, SpawnActions& actions) {
        // Given to itself, a close-on-exec stream stays open. One that is closed stays closed.
        int const flags = fcntl(stream, F_GETFD);
        return flags != -1 && (flags & FD_CLOEXEC) != 0 ? actions.give(stream, stream) : 0;
    }

    CommandStreams theirs;
    Descriptor nothing;  ///< the null device
};

/// The PATH of this process, or the default one of the system. Empty where there is neither.
std::string _searchPath() {
    if (char const* const path = std::getenv("PATH"); path != nullptr) return path;
    std::string path(confstr(_CS_PATH, nullptr, 0), '\0');
    (void)confstr(_CS_PATH, path.data(), path.size());
    if (!path.empty()) path.pop_back();  // its terminator
    return path;
}

/// Looks for a program without slash. Relative folders are passed over: they hang on the current
/// one.
int _findAlongPath(std::string const& name, std::string& path) {
    int code = PERR_NO_SUCH_FILE;
    std::string const folders = _searchPath();
    for (std::size_t begin = 0, end = 0; begin <= folders.size(); begin = end + 1) {
        end = std::min(folders.find(':', begin), folders.size());
        if (begin == end || folders[begin] != '/') continue;

        std::string candidate = folders.substr(begin, end - begin) + "/" + name;
        struct stat found {};
        if (stat(candidate.c_str(), &found) != 0) continue;
        if (S_ISREG(found.st_mode) &&
            faccessat(AT_FDCWD, candidate.c_str(), X_OK, AT_EACCESS) == 0) {
            path = std::move(candidate);
            return PERR_OK;
        }
        code = PERR_REFUSED;  // unless a later folder has one that can be run
    }
    return code;
}

int _findProgram(std::string const& program, std::string& path) {
    if (program.find('/') == std::string::npos) return _findAlongPath(program, path);
    path = program;
    return PERR_OK;
}

std::vector<char*> _argumentVector(CommandSettings const& settings) {
    std::vector<char*> arguments;
    arguments.reserve(settings.arguments.size() + 2);
    // The system only reads them.
    arguments.push_back(const_cast<char*>(settings.program.c_str()));
    for (std::string const& argument : settings.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    return arguments;
}

}  // namespace

int _launch(CommandSettings const& settings, StreamModes const& streams, pid_t& child,
            CommandStreams& ours) {
    std::string path;
    int const found = _findProgram(settings.program, path);
    if (found != PERR_OK) return found;
    std::vector<char*> const arguments = _argumentVector(settings);
    std::vector<char*> const environment = settings.environment.apply();

    SpawnAttributes const attributes(settings.foreground);
    SpawnActions actions;
    NewStreams made;
    int error = made.make(streams, actions);
    if (error == 0) error = actions.enter(settings.folder);
    if (error != 0) return _shortage(error);

    error = posix_spawn(&child, path.c_str(), actions.get(), attributes.get(), arguments.data(),
                        environment.data());
    if (error != 0) return _launchCode(error);
    ours = std::move(made.ours);
    return PERR_OK;
}
