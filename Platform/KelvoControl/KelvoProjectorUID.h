#pragma once

#include <string>

/// The key of a projector in the table of the channel maps: its configuration id.
class KelvoProjectorUID {
public:
    /// Not explicit: callers look up the table by the ids that the configuration lists.
    KelvoProjectorUID(std::wstring configurationId);

    [[nodiscard]] const std::wstring& value() const { return m_value; }

private:
    std::wstring m_value;
};

/// Orders by the text of the id, as `std::wstring` does: exact, case included.
[[nodiscard]] bool operator<(const KelvoProjectorUID& a, const KelvoProjectorUID& b);
