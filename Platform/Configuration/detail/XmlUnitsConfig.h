#pragma once

#include "Configuration/IUnitsConfig.h"

#include <libxml/tree.h>

namespace Veltrani {

/// The `<Units>` of a checked document.
class XmlUnitsConfig : public IUnitsConfig {
public:
    explicit XmlUnitsConfig(const xmlNode* units);

    [[nodiscard]] std::wstring getUnitName() const override { return m_unitName; }

private:
    std::wstring m_unitName;
};

}  // namespace Veltrani
