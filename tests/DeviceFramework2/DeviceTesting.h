#pragma once

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/PjlinkSettings.h"

#include <stdlib.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>

/// What the tests of the device framework share.
namespace device_testing {

/// The message of the `DeviceException` that a step throws, UTF-8; "no fault" when it throws none.
template <class Step>
std::string faultOf(Step&& step) {
    try {
        step();
    } catch (const Veltrani::DeviceFramework2::DeviceException& fault) {
        return Veltrani::toUtf8(fault.message);
    }
    return "no fault";
}

/// Entries of a folder of the process file system: open descriptors, threads.
inline std::ptrdiff_t countEntries(const char* folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
}

inline std::ptrdiff_t openDescriptors() {
    return countEntries("/proc/self/fd");
}

inline std::ptrdiff_t threads() {
    return countEntries("/proc/self/task");
}

/// How long a step took.
template <class Step>
std::chrono::milliseconds timeOf(Step&& step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

/// Generous for answers on loopback of a loaded machine.
constexpr std::chrono::milliseconds PATIENT{5000};
/// For waits that a test expects to run out.
constexpr std::chrono::milliseconds IMPATIENT{150};
/// What a wait may last beyond its limit on a loaded machine before a test calls it unlimited.
constexpr std::chrono::milliseconds GRACE{2000};

/// Limits for projectors that answer. The password settings name variables that nobody has.
inline Veltrani::DeviceFramework2::PjlinkSettings patientSettings() {
    return {PATIENT, PATIENT, PATIENT, {"SM_TEST_PJLINK_PASSWORD", "SM_TEST_PJLINK_PASSWORD_FILE"}};
}

/// Limits for projectors that do not.
inline Veltrani::DeviceFramework2::PjlinkSettings impatientSettings() {
    return {PATIENT, IMPATIENT, IMPATIENT, {"SM_TEST_PJLINK_PASSWORD", "SM_TEST_PJLINK_PASSWORD_FILE"}};
}

/// The snippet of a projector on loopback; number 1 has the MAC address 02:00:00:00:00:01.
inline std::wstring snippetText(int port, int number = 1) {
    constexpr wchar_t DIGITS[] = L"0123456789ABCDEF";
    const std::wstring last{DIGITS[number / 16], DIGITS[number % 16]};
    return L"<Device type='PJLink' mac='02:00:00:00:00:" + last + L"' host='127.0.0.1' port='" + std::to_wstring(port) +
           L"'/>";
}

inline Veltrani::DeviceFramework2::DeviceSnippet snippetFor(int port) {
    return Veltrani::DeviceFramework2::DeviceSnippet::parse(snippetText(port));
}

/// An environment variable for the time of a scope.
class Environment {
public:
    Environment(std::string name, const std::string& value) : m_name(std::move(name)) {
        ::setenv(m_name.c_str(), value.c_str(), 1);
    }
    ~Environment() { ::unsetenv(m_name.c_str()); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::string m_name;
};

}  // namespace device_testing
