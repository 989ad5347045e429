#include "Completion.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace {

constexpr const char* WHAT = "# Completes the commands and options of screenmanager in ";

std::vector<const CLI::App*> commandsOf(const CLI::App& program) {
    return program.get_subcommands([](const CLI::App*) { return true; });
}

std::string namesOf(const CLI::App& program, const std::string& separator) {
    std::string names;
    for (const CLI::App* const command : commandsOf(program)) {
        names += (names.empty() ? "" : separator) + command->get_name();
    }
    return names;
}

/// An option as it may be typed: "-o --output".
std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back('-' + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

/// The options of a command line as they are typed, with a blank between them.
std::string optionsOf(const CLI::App& line) {
    std::string words;
    for (const CLI::Option* const option : line.get_options()) {
        for (const std::string& name : namesOf(*option)) {
            words += (words.empty() ? "" : " ") + name;
        }
    }
    return words;
}

/// The words that the value of an option is one of, with a blank between them; none for any other.
std::string valuesOf(const CLI::Option& option) {
    // As the help has them, behind the name of the value: "FORMAT:{csv,json}".
    const std::string type = option.get_type_name();
    const auto begin = type.find(":{");
    const auto end = type.find('}', std::min(begin, type.size()));
    if (end == std::string::npos) {
        return "";
    }
    std::string words = type.substr(begin + 2, end - begin - 2);
    std::replace(words.begin(), words.end(), ',', ' ');
    return words;
}

/// For each option that has such values what is done with them, as a case of "COMMAND:OPTION" for bash and zsh.
std::string casesOfValues(const CLI::App& program, const std::string& opening, const std::string& closing) {
    std::vector<const CLI::App*> lines = commandsOf(program);
    lines.push_back(&program);
    std::string cases;
    for (const CLI::App* const line : lines) {
        for (const CLI::Option* const option : line->get_options()) {
            const std::string values = valuesOf(*option);
            for (const std::string& name : namesOf(*option)) {
                if (!values.empty()) {
                    cases += "        " + (line == &program ? "*" : line->get_name()) + ':' + name + ") " + opening +
                             values + closing + " ;;\n";
                }
            }
        }
    }
    return cases;
}

/// In single quotes, each of its own replaced.
std::string quoted(const std::string& text, const std::string& quote) {
    std::string word = "'";
    for (const char character : text) {
        word += character == '\'' ? quote : std::string(1, character);
    }
    return word + '\'';
}

/// Options of a line for fish.
std::string fishOptions(const CLI::App& line, const std::string& condition) {
    std::string lines;
    for (const CLI::Option* const option : line.get_options()) {
        if (option->get_positional()) {
            continue;
        }
        lines += "complete -c screenmanager" + condition;
        for (const std::string& name : option->get_snames()) {
            lines += " -s " + name;
        }
        for (const std::string& name : option->get_lnames()) {
            lines += " -l " + name;
        }
        const std::string values = valuesOf(*option);
        lines += values.empty() ? (option->get_items_expected_min() > 0 ? " -r" : "") : " -x -a '" + values + '\'';
        lines += " -d " + quoted(option->get_description(), "\\'") + '\n';
    }
    return lines;
}

}  // namespace

std::vector<std::string> Completion::shells() {
    return {"bash", "zsh", "fish"};
}

std::string Completion::script(const std::string& shell) const {
    return shell == "zsh" ? zsh() : shell == "fish" ? fish() : bash();
}

std::string Completion::bash() const {
    std::string cases;
    for (const CLI::App* const command : commandsOf(*m_program)) {
        cases += "        " + command->get_name() + ") words+=' " + optionsOf(*command) + "' ;;\n";
    }
    return std::string(WHAT) +
           "bash.\n"
           "_screenmanager() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} command= values= words='" +
           optionsOf(*m_program) +
           "' i\n"
           "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
           "        case ${COMP_WORDS[i]} in " +
           namesOf(*m_program, "|") +
           ") command=${COMP_WORDS[i]}; break ;; esac\n"
           "    done\n"
           "    case $command in\n"
           "        '') words+=' " +
           namesOf(*m_program, " ") + "' ;;\n" + cases +
           "    esac\n"
           "    case $command:${COMP_WORDS[COMP_CWORD-1]} in\n" +
           casesOfValues(*m_program, "values='", "'") +
           "    esac\n"
           "    COMPREPLY=()\n"
           "    if [[ -n $values ]]; then COMPREPLY=($(compgen -W \"$values\" -- \"$word\"))\n"
           "    elif [[ $word == -* || -z $command ]]; then COMPREPLY=($(compgen -W \"$words\" -- \"$word\")); fi\n"
           "}\n"
           "complete -o default -F _screenmanager screenmanager";
}

std::string Completion::zsh() const {
    std::string commands;
    std::string cases;
    for (const CLI::App* const command : commandsOf(*m_program)) {
        commands += "    " + quoted(command->get_name() + ':' + command->get_description(), "'\\''") + '\n';
        cases += "    " + command->get_name() + ") options+=(" + optionsOf(*command) + ") ;;\n";
    }
    return "#compdef screenmanager\n" + std::string(WHAT) +
           "zsh.\n"
           "local command= i\n"
           "local -a commands options\n"
           "commands=(\n" +
           commands + ")\noptions=(" + optionsOf(*m_program) +
           ")\n"
           "for ((i = 2; i < CURRENT; ++i)); do\n"
           "    case ${words[i]} in " +
           namesOf(*m_program, "|") +
           ") command=${words[i]}; break ;; esac\n"
           "done\n"
           "case $command in\n" +
           cases +
           "esac\n"
           "case $command:${words[CURRENT-1]} in\n" +
           casesOfValues(*m_program, "compadd -- ", "; return") +
           "esac\n"
           "if [[ ${words[CURRENT]} == -* ]]; then\n"
           "    compadd -- $options\n"
           "elif [[ -z $command ]]; then\n"
           "    _describe command commands\n"
           "else\n"
           "    _files\n"
           "fi";
}

std::string Completion::fish() const {
    std::string lines;
    for (const CLI::App* const command : commandsOf(*m_program)) {
        lines += "complete -c screenmanager -n '__screenmanager_is \"\"' -f -a " + command->get_name() + " -d " +
                 quoted(command->get_description(), "\\'") + '\n';
        lines += fishOptions(*command, " -n '__screenmanager_is " + command->get_name() + '\'');
    }
    lines += fishOptions(*m_program, "");
    lines.pop_back();
    return std::string(WHAT) +
           "fish.\n"
           "function __screenmanager_is\n"
           "    set -l command\n"
           "    for word in (commandline -opc)[2..-1]\n"
           "        if contains -- $word " +
           namesOf(*m_program, " ") +
           "\n"
           "            set command $word\n"
           "            break\n"
           "        end\n"
           "    end\n"
           "    test \"$command\" = \"$argv[1]\"\n"
           "end\n" +
           lines;
}
