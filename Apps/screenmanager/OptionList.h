#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// One option or argument of a command. What else it accepts is stated by chained calls after it was added.
///
/// This class and the next one are all that the commands see of CLI11, whose header takes longer to compile than any of
/// them.
class Option {
public:
    explicit Option(CLI::Option& option) : m_option(&option) {}

    Option& required();
    /// The name of its value in the help.
    Option& typeName(const char* name);
    Option& oneOf(const std::vector<std::string>& words);
    /// A whole number with both bounds included.
    Option& between(int least, int most);
    /// It takes one value each time that it is given.
    Option& oneValueEach();
    Option& needs(const Option& other);
    Option& excludes(const Option& other);

private:
    CLI::Option* m_option;  ///< owned by the command line
};

/// The options of one command. Parsing fills their values, which must outlive the command line.
class OptionList {
public:
    explicit OptionList(CLI::App& line) : m_line(&line) {}

    /// @param names "-o,--output", or "FILE" for an argument without a dash
    Option add(const char* names, std::string& value, const char* help);
    Option add(const char* names, int& value, const char* help);
    Option add(const char* names, std::vector<std::string>& values, const char* help);
    Option addFlag(const char* names, bool& value, const char* help);
    /// @param take is given the value; calls `refuse` for one that is none
    Option addRead(const char* names, const std::function<void(const std::string&)>& take, const char* help);
    Option addNumber(const char* names, std::function<void(double)> take, const char* help);

    /// @param check is called once everything has been parsed; calls `refuse` for values that do not go together
    void whenComplete(std::function<void()> check);

    /// Throws what `CommandLine::parse` throws for a wrong command line: "--mac: what is wrong with it".
    [[noreturn]] static void refuse(const std::string& option, const std::string& what);

private:
    CLI::App* m_line;  ///< owned by the command line
};
