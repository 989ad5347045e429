#include "Configuration/Internal/XmlUnitsConfig.h"

#include "Common/Utf8.h"
#include "Configuration/Internal/XmlNode.h"

namespace Veltrani {

XmlUnitsConfig::XmlUnitsConfig(const xmlNode* units)
    : m_unitName(fromUtf8(Xml::attribute(units, "native").value_or(""))) {}

}  // namespace Veltrani
