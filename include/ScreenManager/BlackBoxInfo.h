#pragma once

#include <string>
#include <vector>

/// The connection to a black box, an external controller of the display system: whether it is used, how it is reached
/// and which power ports it draws on.
class BlackBoxInfo {
public:
    /// Not used, nothing known, no power port (-1).
    BlackBoxInfo();
    BlackBoxInfo(bool enabled, std::wstring protocol, std::wstring commAddress, int commPort, int powerPort);
    BlackBoxInfo(const BlackBoxInfo&) = default;
    BlackBoxInfo& operator=(const BlackBoxInfo&) = default;
    virtual ~BlackBoxInfo();

    [[nodiscard]] bool getEnabled() const;
    [[nodiscard]] std::wstring getProtocol();
    [[nodiscard]] std::wstring getCommAddress();
    [[nodiscard]] int getCommPort() const;
    [[nodiscard]] int getPowerPort() const;
    [[nodiscard]] std::vector<int> getOtherPowerPorts() const;

    void setEnabled(bool enabled);
    void setProtocol(std::wstring protocol);
    void setCommAddress(std::wstring commAddress);
    void setCommPort(int commPort);
    void setPowerPort(int powerPort);
    /// Copies the ports; the argument is not changed.
    void setOtherPowerPorts(std::vector<int>& otherPowerPorts);

    /// Returns the record in one line, without the other power ports, cut after 511 characters.
    [[nodiscard]] std::wstring toString();

private:
    bool m_enabled = false;
    std::wstring m_protocol;
    std::wstring m_commAddress;
    int m_commPort = 0;
    int m_powerPort = -1;
    std::vector<int> m_otherPowerPorts;
};
