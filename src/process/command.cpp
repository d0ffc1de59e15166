#include <portinglayer/commands.h>

#include <new>
#include <utility>

#include <unistd.h>

#include "process/command_child.h"
#include "process/command_launch.h"
#include "process/command_settings.h"
#include "process/command_streams.h"
#include "sync/uncancelled.h"
#include "text/utf8_name.h"

struct PCommand::State {
    CommandSettings settings;
    CommandChild child;
    CommandStreams streams;

    /// Changes the settings unless a child is held.
    template <typename Change>
    int set(Change const& change) try {
        return child.isHeld() ? PERR_PROCESS_RUNNING : change(settings);
    } catch (std::bad_alloc const&) {
        return PERR_NO_MEMORY;
    }

    int start(StreamModes const& wanted) try {
        Uncancelled const uncancelled;  // no child is started that nobody holds
        if (child.isHeld()) return PERR_PROCESS_RUNNING;
        if (settings.programCode != PERR_OK) return settings.programCode;

        int code = _canHoldChildren();
        if (code != PERR_OK) return code;
        pid_t started = 0;
        CommandStreams opened;
        code = _launch(settings, wanted, started, opened);
        if (code == PERR_OK) code = child.hold(started, !settings.foreground);
        if (code == PERR_OK) streams = std::move(opened);
        return code;
    } catch (std::bad_alloc const&) {
        return PERR_NO_MEMORY;
    }

    int read(std::size_t stream, char* buffer, unsigned long length, unsigned long& done) const {
        Descriptor const& from = streams[stream];
        if (!from.isOpen()) return PERR_NOT_OPEN;

        ssize_t const count = _readSome(from, buffer, length);
        if (count < 0) return PERR_READ;
        if (count == 0) return PERR_END_OF_FILE;
        done = static_cast<unsigned long>(count);
        return PERR_OK;
    }
};

PCommand::PCommand(PLiteral const& program) : state(new (std::nothrow) State()) {
    if (state != nullptr) state->settings.programCode = _utf8Name(program, state->settings.program);
}

PCommand::~PCommand() = default;

int PCommand::addArgument(PLiteral const& argument) {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([&](CommandSettings& settings) {
        std::string bytes;
        int const code = _utf8Text(argument, bytes);
        if (code == PERR_OK) settings.arguments.push_back(std::move(bytes));
        return code;
    });
}

int PCommand::setEnvironment(PLiteral const& name, PLiteral const& value) {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([&](CommandSettings& settings) {
        std::string entry, bytes;
        int code = _utf8Variable(name, entry);
        if (code == PERR_OK) code = _utf8Text(value, bytes);
        if (code == PERR_OK) settings.environment.add(entry + '=' + bytes);
        return code;
    });
}

int PCommand::unsetEnvironment(PLiteral const& name) {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([&](CommandSettings& settings) {
        std::string entry;
        int const code = _utf8Variable(name, entry);
        if (code == PERR_OK) settings.environment.add(std::move(entry));
        return code;
    });
}

int PCommand::clearEnvironment() {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([](CommandSettings& settings) {
        settings.environment.clear();
        return PERR_OK;
    });
}

int PCommand::setWorkingDir(PLiteral const& dir) {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([&](CommandSettings& settings) { return _utf8Name(dir, settings.folder); });
}

int PCommand::setStreams(int input, int output, int errors) {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([&](CommandSettings& settings) {
        for (int const mode : {input, output, errors})
            if (mode < INHERITED || mode > PIPED) return PERR_INVALID_ARGUMENT;
        settings.streams = {input, output, errors};
        return PERR_OK;
    });
}

int PCommand::setForeground(bool foreground) {
    if (state == nullptr) return PERR_NO_MEMORY;
    return state->set([=](CommandSettings& settings) {
        settings.foreground = foreground;
        return PERR_OK;
    });
}

int PCommand::start() {
    return state == nullptr ? PERR_NO_MEMORY : state->start(state->settings.streams);
}

unsigned int PCommand::getPID() const {
    return state == nullptr ? 0 : static_cast<unsigned int>(state->child.id());
}

int PCommand::writeInput(char const* bytes, unsigned long length) {
    if (bytes == nullptr || length == 0) return PERR_INVALID_ARGUMENT;
    if (state == nullptr || !state->streams[STDIN_FILENO].isOpen()) return PERR_NOT_OPEN;
    while (length > 0) {
        ssize_t const count = _writeSome(state->streams[STDIN_FILENO], bytes, length);
        if (count <= 0) return PERR_WRITE;
        bytes += count;
        length -= static_cast<unsigned long>(count);
    }
    return PERR_OK;
}

int PCommand::closeInput() {
    if (state == nullptr || !state->streams[STDIN_FILENO].isOpen()) return PERR_NOT_OPEN;
    state->streams[STDIN_FILENO].close();
    return PERR_OK;
}

int PCommand::readOutput(char* buffer, unsigned long length, unsigned long& done) {
    if (buffer == nullptr || length == 0) return PERR_INVALID_ARGUMENT;
    return state == nullptr ? PERR_NOT_OPEN : state->read(STDOUT_FILENO, buffer, length, done);
}

int PCommand::readErrors(char* buffer, unsigned long length, unsigned long& done) {
    if (buffer == nullptr || length == 0) return PERR_INVALID_ARGUMENT;
    return state == nullptr ? PERR_NOT_OPEN : state->read(STDERR_FILENO, buffer, length, done);
}

int PCommand::wait(PEnding& ending, unsigned int milliseconds) {
    if (state == nullptr) return PERR_NO_PROCESS;
    return state->child.await(ending, Deadline(milliseconds));
}

int PCommand::signal(int number) {
    return state == nullptr ? PERR_NO_PROCESS : state->child.signal(number);
}

int PCommand::end(PEnding& ending, unsigned int graceMilliseconds) {
    if (state == nullptr) return PERR_NO_PROCESS;
    return state->child.end(ending, Deadline(graceMilliseconds));
}

int PCommand::run(std::string const& input, std::string& output, std::string& errors,
                  PEnding& ending, unsigned int milliseconds) {
    if (state == nullptr) return PERR_NO_MEMORY;
    Deadline const until(milliseconds);
    int const started = state->start({PIPED, PIPED, PIPED});
    if (started != PERR_OK) return started;

    // Its own, so that a thread that is cancelled leaves none behind that does not block.
    CommandStreams streams(std::move(state->streams));
    CommandExchange exchange(streams, state->child.descriptor(), input);
    int const exchanged = exchange.go(until);
    int const killed = exchanged == PERR_OK ? PERR_OK : state->child.kill();

    PEnding how{};
    int const collected = state->child.await(how, Deadline(killed == PERR_OK ? FOREVER : 0));
    if (collected == PERR_PROCESS_RUNNING) return killed;
    if (collected != PERR_OK) return collected;
    if (exchanged != PERR_OK && exchanged != PERR_PROCESS_RUNNING) return exchanged;

    output = std::move(exchange.output);
    errors = std::move(exchange.errors);
    ending = how;
    return exchanged;
}
