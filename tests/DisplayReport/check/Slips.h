#pragma once

#include <ostream>
#include <span>

/// Everyday slips: each is one change to a display that is sound, made wherever the text stands.
namespace sound {

struct Slip {
    const char* what;
    const char* display;
    const char* from;
    const char* to;
    const char* expected;        ///< a part of "where: what [rule]"
    const char* file = nullptr;  ///< the file that is changed; the configuration where null
};

inline std::ostream& operator<<(std::ostream& out, const Slip& slip) {
    return out << slip.display << ": " << slip.what;
}

/// Those about pictures, lenses and sizes, each with everything that is reported.
[[nodiscard]] std::span<const Slip> slipsOfPictures();

}  // namespace sound
