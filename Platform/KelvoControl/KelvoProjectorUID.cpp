#include "KelvoControl/KelvoProjectorUID.h"

#include <utility>

KelvoProjectorUID::KelvoProjectorUID(std::wstring configurationId) : m_value(std::move(configurationId)) {}

bool operator<(const KelvoProjectorUID& a, const KelvoProjectorUID& b) {
    return a.value() < b.value();
}
