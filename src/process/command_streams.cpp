#include "process/command_streams.h"

#include <cerrno>
#include <csignal>
#include <iterator>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <portinglayer/result_codes.h>

#include "fs/uninterrupted.h"
#include "sync/uncancelled.h"

namespace {

/// While it lives, a pipe that nobody reads raises no SIGPIPE on this thread. `errno` stays.
class NoPipeSignal {
public:
    NoPipeSignal() {
        (void)sigemptyset(&pipe);
        (void)sigaddset(&pipe, SIGPIPE);
        sigset_t pending;
        (void)sigpending(&pending);
        wasPending = sigismember(&pending, SIGPIPE) == 1;  // for others, who have it blocked
        (void)pthread_sigmask(SIG_BLOCK, &pipe, &before);
    }
    ~NoPipeSignal() {
        int const error = errno;
        if (error == EPIPE && !wasPending) forget();
        (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
        errno = error;
    }
    NoPipeSignal(NoPipeSignal const&) = delete;
    NoPipeSignal& operator=(NoPipeSignal const&) = delete;

private:
    /// Takes the signal that the write has raised.
    void forget() const {
        Uncancelled const uncancelled;
        timespec const noTime{};
        (void)_uninterrupted([&] { return sigtimedwait(&pipe, nullptr, &noTime); });
    }

    sigset_t pipe, before;
    bool wasPending;
};

constexpr std::size_t READ_BYTES = 32768;

}  // namespace

ssize_t _writeSome(Descriptor const& to, char const* bytes, std::size_t length) {
    NoPipeSignal const noSignal;
    return _uninterrupted([&] { return ::write(to.get(), bytes, length); });
}

ssize_t _readSome(Descriptor const& from, char* buffer, std::size_t length) {
    return _uninterrupted([&] { return ::read(from.get(), buffer, length); });
}

int CommandExchange::go(Deadline const& until) try {
    // A pipe takes a part of what is written, and the rest when there is room again.
    if (fcntl(streams[STDIN_FILENO].get(), F_SETFL, O_NONBLOCK) != 0) return PERR_SYSTEM;
    if (input.empty()) streams[STDIN_FILENO].close();

    while (!isDone()) {
        if (until.isOver()) return PERR_PROCESS_RUNNING;
        int const code = step(until);
        if (code != PERR_OK) return code;
    }
    return PERR_OK;
} catch (std::bad_alloc const&) {
    return PERR_NO_MEMORY;
}

/// The input does not count: nobody is left to read it.
bool CommandExchange::isDone() const {
    return child < 0 && !streams[STDOUT_FILENO].isOpen() && !streams[STDERR_FILENO].isOpen();
}

int CommandExchange::step(Deadline const& until) {
    timespec place{};
    pollfd looks[] = {{streams[STDIN_FILENO].get(), POLLOUT, 0},
                      {streams[STDOUT_FILENO].get(), POLLIN, 0},
                      {streams[STDERR_FILENO].get(), POLLIN, 0},
                      {child, POLLIN, 0}};
    if (ppoll(looks, std::size(looks), until.left(place), nullptr) < 0)
        return errno == EINTR ? PERR_OK : PERR_SYSTEM;

    int code = PERR_OK;
    if (looks[0].revents != 0) code = feed();
    if (looks[1].revents != 0 && code == PERR_OK) code = take(streams[STDOUT_FILENO], output);
    if (looks[2].revents != 0 && code == PERR_OK) code = take(streams[STDERR_FILENO], errors);
    if (looks[3].revents != 0) child = -1;
    return code;
}

int CommandExchange::feed() {
    Descriptor& stream = streams[STDIN_FILENO];
    ssize_t const done = _writeSome(stream, input.data() + written, input.size() - written);
    if (done < 0 && errno == EAGAIN) return PERR_OK;
    if (done < 0 && errno != EPIPE) return PERR_WRITE;

    written = done < 0 ? input.size() : written + static_cast<std::size_t>(done);
    if (written == input.size()) stream.close();
    return PERR_OK;
}

int CommandExchange::take(Descriptor& stream, std::string& text) {
    char buffer[READ_BYTES];
    ssize_t const done = _readSome(stream, buffer, sizeof buffer);
    if (done < 0) return PERR_READ;
    if (done == 0) stream.close();
    text.append(buffer, static_cast<std::size_t>(done));
    return PERR_OK;
}
