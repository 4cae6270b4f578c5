// The syntax of the command line, and its parser.
//
// Behind it is CLI11, which parser.cpp alone includes because it takes seconds to compile. An Option or a Syntax is a
// handle: copy it freely, use it while its Parser lives. The variables that options fill must live until parse() has
// returned; those of a request live as long as its command.
#pragma once

#include "cli/command.h"
#include "language/translation.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace zembrastel::cli {

class Option {
public:
    explicit Option(CLI::Option& described) : option(&described) {}

    // An argument may be left out.
    Option optional() const;
    // Refuses an empty text, such as that of a shell variable that is not set.
    Option notEmpty(const char* complaint = translatable("must not be empty")) const;
    // Refuses a number that is no TCP port.
    Option portNumber() const;
    // May be given several times, with one text each time.
    Option repeatable() const;
    // May not be given together with any of these.
    Option excludes(const std::vector<Option>& others) const;

private:
    CLI::Option* option;
};

void excludeEachOther(const std::vector<Option>& options);

class Syntax {
public:
    Syntax(CLI::App& described, Command& chosenCommand) : app(&described), chosen(&chosenCommand) {}

    // Arguments without a name before them. They are required.
    Option argument(const char* name, std::string& target, const char* help) const;
    Option argument(const char* name, std::vector<std::string>& target, const char* help) const; // one or more
    Option profileArgument(std::string& target) const;                                           // NAME

    // Options with a value. `type` is the word for the value in the help.
    Option option(const char* name, std::string& target, const char* type, const char* help) const;
    Option option(const char* name, std::optional<std::string>& target, const char* type, const char* help) const;
    Option option(const char* name, std::optional<std::int64_t>& target, const char* type, const char* help) const;
    Option option(const char* name, std::vector<std::string>& target, const char* type, const char* help) const;

    Option flag(const char* name, bool& target, const char* help) const;

    // An option that was added before.
    [[nodiscard]] Option named(const char* name) const;

    // Shown after the options.
    void footer(const char* text) const;

    template <class Request>
    struct Added;

    // Adds a command. If the user chooses it, `run` gets its request, which the options of the new syntax fill.
    template <class Request>
    Added<Request> command(const char* name, const char* help, ExitCode (*run)(const CommandContext&, const Request&)) {
        const auto request = std::make_shared<Request>();
        const Syntax added =
            addCommand(name, help, [run, request](const CommandContext& context) { return run(context, *request); });
        return {.syntax = added, .request = *request};
    }

    // Adds a group of commands, of which the user names one.
    [[nodiscard]] Syntax group(const char* name, const char* help) const;

private:
    [[nodiscard]] Syntax addCommand(const char* name, const char* help, Command run) const;

    CLI::App* app;
    Command* chosen;
};

template <class Request>
struct Syntax::Added {
    Syntax syntax;
    Request& request;
};

class Parser {
public:
    explicit Parser(const char* description);
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser();

    // The syntax of the program: its global options and commands are added to it.
    [[nodiscard]] Syntax program();

    void setVersion(const char* text);

    // The chosen command; an empty one if the parser has printed help or the version instead. Throws CommandError
    // (usage) if the command line is wrong. Called once, after everything was added. `footer` ends the program's help.
    [[nodiscard]] Command parse(int count, char** arguments, const char* footer);

private:
    [[nodiscard]] std::string complaint(const std::exception& error, bool required) const;

    std::unique_ptr<CLI::App> app;
    Command chosen;
};

} // namespace zembrastel::cli
