#pragma once

#include "support/pjlink_simulator/PjlinkSimulator.h"

#include <string>

/// Configurations of displays with simulated projectors, for the tests of the program.
namespace projector_displays {

/// Long enough for an answer on loopback of a loaded machine.
inline const std::string PATIENT = "5";
/// For waits that a test expects to run out; twice the time of a slow answer on loopback.
inline const std::string IMPATIENT = "0.2";

/// "02:00:00:00:00:01"; numbers up to 99.
inline std::string mac(int number) {
    return "02:00:00:00:00:" + std::to_string(number / 10) + std::to_string(number % 10);
}

inline std::string snippet(int port, int number) {
    return "<Device type='PJLink' mac='" + mac(number) + "' host='127.0.0.1' port='" + std::to_string(port) + "'/>";
}

inline std::string entry(const std::string& id, const std::string& name, const std::string& device) {
    return "    <Projector id='" + id + "' section='S-" + id + "'>\n      <Name>" + name + "</Name>\n      <Device>" +
           device + "</Device>\n      <Resolution width='1280' height='800'/>\n    </Projector>\n";
}

inline std::string display(const std::string& entries) {
    return "<?xml version='1.0' encoding='UTF-8'?>\n<!-- hall 2 -->\n<Display version='1' lengthUnit='m'>\n"
           "  <Units native='m'/>\n  <Projectors>\n" +
           entries + "  </Projectors>\n</Display>\n";
}

/// Projectors "Left" and "Right" with the MAC addresses 1 and 2, under the ids L and R.
inline std::string twoProjectors(int leftPort, int rightPort) {
    return display(entry("L", "Left", snippet(leftPort, 1)) + entry("R", "Right", snippet(rightPort, 2)));
}

/// A port of 127.0.0.1 at which nobody is: that of a simulator that has ended.
inline int deadPort() {
    return PjlinkSimulator().port();
}

}  // namespace projector_displays
