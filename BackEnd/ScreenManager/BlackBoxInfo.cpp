#include "ScreenManager/BlackBoxInfo.h"

#include <cstddef>
#include <utility>

namespace {

/// Readers of the text reserve 512 wide characters for it, terminator included.
constexpr std::size_t LONGEST_TEXT = 511;

}  // namespace

BlackBoxInfo::BlackBoxInfo() = default;

BlackBoxInfo::BlackBoxInfo(bool enabled, std::wstring protocol, std::wstring commAddress, int commPort, int powerPort)
    : m_enabled(enabled),
      m_protocol(std::move(protocol)),
      m_commAddress(std::move(commAddress)),
      m_commPort(commPort),
      m_powerPort(powerPort) {}

BlackBoxInfo::~BlackBoxInfo() = default;

bool BlackBoxInfo::getEnabled() const {
    return m_enabled;
}

std::wstring BlackBoxInfo::getProtocol() {
    return m_protocol;
}

std::wstring BlackBoxInfo::getCommAddress() {
    return m_commAddress;
}

int BlackBoxInfo::getCommPort() const {
    return m_commPort;
}

int BlackBoxInfo::getPowerPort() const {
    return m_powerPort;
}

std::vector<int> BlackBoxInfo::getOtherPowerPorts() const {
    return m_otherPowerPorts;
}

void BlackBoxInfo::setEnabled(bool enabled) {
    m_enabled = enabled;
}

void BlackBoxInfo::setProtocol(std::wstring protocol) {
    m_protocol = std::move(protocol);
}

void BlackBoxInfo::setCommAddress(std::wstring commAddress) {
    m_commAddress = std::move(commAddress);
}

void BlackBoxInfo::setCommPort(int commPort) {
    m_commPort = commPort;
}

void BlackBoxInfo::setPowerPort(int powerPort) {
    m_powerPort = powerPort;
}

void BlackBoxInfo::setOtherPowerPorts(std::vector<int>& otherPowerPorts) {
    m_otherPowerPorts = otherPowerPorts;
}

// The two blanks after each semicolon and the power port without quotes are intended: programs that parse the text rely
// on them.
std::wstring BlackBoxInfo::toString() {
    const std::wstring text = std::wstring(L"BlackBoxInfo[ enabled='") + (m_enabled ? L"true" : L"false") +
                              L"';  protocol='" + m_protocol + L"';  commAddress='" + m_commAddress +
                              L"';  commPort='" + std::to_wstring(m_commPort) + L"';  powerPort=" +
                              std::to_wstring(m_powerPort) + L" ]";
    return text.substr(0, LONGEST_TEXT);
}
