#include "OptionList.h"

#include <CLI/CLI.hpp>

#include <utility>

Option& Option::required() {
    m_option->required();
    return *this;
}

Option& Option::typeName(const char* name) {
    m_option->type_name(name);
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& words) {
    m_option->check(CLI::IsMember(words));
    return *this;
}

Option& Option::between(int least, int most) {
    m_option->check(CLI::Range(least, most));
    return *this;
}

Option& Option::oneValueEach() {
    m_option->allow_extra_args(false);
    return *this;
}

Option& Option::needs(const Option& other) {
    m_option->needs(other.m_option);
    return *this;
}

Option& Option::excludes(const Option& other) {
    m_option->excludes(other.m_option);
    return *this;
}

Option OptionList::add(const char* names, std::string& value, const char* help) {
    return Option(*m_line->add_option(names, value, help));
}

Option OptionList::add(const char* names, int& value, const char* help) {
    return Option(*m_line->add_option(names, value, help));
}

Option OptionList::add(const char* names, std::vector<std::string>& values, const char* help) {
    return Option(*m_line->add_option(names, values, help));
}

Option OptionList::addFlag(const char* names, bool& value, const char* help) {
    return Option(*m_line->add_flag(names, value, help));
}

Option OptionList::addRead(const char* names, const std::function<void(const std::string&)>& take, const char* help) {
    return Option(*m_line->add_option_function<std::string>(names, take, help));
}

Option OptionList::addNumber(const char* names, std::function<void(double)> take, const char* help) {
    return Option(*m_line->add_option_function<double>(
        names, [take = std::move(take)](const double& number) { take(number); }, help));
}

void OptionList::whenComplete(std::function<void()> check) {
    m_line->parse_complete_callback(std::move(check));
}

void OptionList::refuse(const std::string& option, const std::string& what) {
    throw CLI::ValidationError(option, what);
}
