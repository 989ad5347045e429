#pragma once

#include <locale>
#include <string>

/// Numbers as some countries write them ("1.234,5") as the global locale of a scope, whatever locales the system has
/// installed.
class ForeignLocale {
public:
    ForeignLocale() : m_previous(std::locale::global(foreign())) {}
    ~ForeignLocale() { std::locale::global(m_previous); }
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;

private:
    template <class Character>
    class Punctuation : public std::numpunct<Character> {
        Character do_decimal_point() const override { return Character(','); }
        Character do_thousands_sep() const override { return Character('.'); }
        std::string do_grouping() const override { return "\3"; }
    };

    /// A locale owns its facets.
    static std::locale foreign() {
        const std::locale narrow(std::locale::classic(), new Punctuation<char>);
        return {narrow, new Punctuation<wchar_t>};
    }

    std::locale m_previous;
};
