/// What a command is to run: its texts as UTF-8, and the changes of its environment.
#ifndef PORTINGLAYER_PROCESS_COMMAND_SETTINGS_H
#define PORTINGLAYER_PROCESS_COMMAND_SETTINGS_H

#include <array>
#include <string>
#include <utility>
#include <vector>

#include <portinglayer/commands.h>

/// Encodes the name of a variable as `_utf8Name` does; a `=` within is PERR_INVALID_ARGUMENT, too.
int _utf8Variable(PLiteral const& name, std::string& bytes);

/// Changes of an environment, in their order.
class EnvironmentChanges {
public:
    void clear();
    /// Adds a change: the entry is NAME=VALUE to set a variable, NAME to remove it.
    void add(std::string&& entry) { changes.push_back(std::move(entry)); }

    /// The environment of this process with the changes applied, ended by a null pointer, for as
    /// long as neither is changed.
    std::vector<char*> apply() const;

private:
    bool cleared = false;
    std::vector<std::string> changes;
};

/// INHERITED, DISCARDED or PIPED for input, output and errors.
using StreamModes = std::array<int, 3>;

struct CommandSettings {
    int programCode = PERR_OK;  ///< of the text of the program
    std::string program;
    std::vector<std::string> arguments;
    EnvironmentChanges environment;
    std::string folder;  ///< empty: that of the caller
    StreamModes streams{PCommand::INHERITED, PCommand::INHERITED, PCommand::INHERITED};
    bool foreground = false;
};

#endif
