#include "Configuration/detail/XmlUnitsConfig.h"

#include "Common/Utf8.h"
#include "Configuration/detail/XmlNode.h"

namespace Veltrani {

XmlUnitsConfig::XmlUnitsConfig(const xmlNode* units)
    : m_unitName(fromUtf8(Xml::attribute(units, "native").value_or(""))) {}

}  // namespace Veltrani
