/// Commands of a test, which are real programs, and endings.
#ifndef TESTS_PROCESS_COMMANDS_H
#define TESTS_PROCESS_COMMANDS_H

#include <portinglayer/portinglayer.h>
#include <support/expect.h>

inline bool operator==(PEnding const& one, PEnding const& other) {
    return one.exitCode == other.exitCode && one.signal == other.signal;
}

inline void PrintTo(PEnding const& ending, std::ostream* out) {
    *out << "exit code " << ending.exitCode << ", signal " << ending.signal;
}

constexpr int DISCARDED = PCommand::DISCARDED, PIPED = PCommand::PIPED;
constexpr unsigned int FOREVER = PCommand::FOREVER;

/// A program with its arguments, ended with its group at the latest when the object ends.
struct Command : PCommand {
    explicit Command(wchar_t const* program, std::initializer_list<wchar_t const*> arguments = {})
        : PCommand(program) {
        for (wchar_t const* const argument : arguments) EXPECT_CODE(PERR_OK, addArgument(argument));
    }
    ~Command() { (void)end(ending, 0); }

    /// What the program writes when it is run with `input`.
    std::string outputOf(std::string const& input = "") {
        EXPECT_CODE(PERR_OK, run(input, output, errors, ending, 20'000));
        return output;
    }
    /// What comes next of a piped output, nothing at its end.
    std::string read() {
        char buffer[4096];
        unsigned long done = 0;
        return readOutput(buffer, sizeof buffer, done) == PERR_OK ? std::string(buffer, done) : "";
    }
    void startAndHear(std::string const& said) {
        ASSERT_CODE(PERR_OK, setStreams(PIPED, PIPED, DISCARDED));
        ASSERT_CODE(PERR_OK, start());
        ASSERT_EQ(said, read());
    }

    std::string output = "kept", errors = "kept";
    PEnding ending{7, 7};
};

struct Shell : Command {
    explicit Shell(std::wstring const& script) : Command(L"sh", {L"-c", script.c_str()}) {}
};

#endif
