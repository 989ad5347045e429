#pragma once

#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/FaultList.h"

#include <libxml/tree.h>

#include <string>

namespace Veltrani::ConfigurationDetail {

/// Reports what is well-formed value by value but cannot be meant: values that contradict each other and ids that occur
/// twice. Values that are missing or ill-formed are skipped; the format check has reported them.
class MeaningChecker {
public:
    /// Adds the faults of a whole document.
    static void check(const xmlNode* root, FaultList& faults);

private:
    MeaningChecker(const ElementReader& reader, FaultList& faults) : m_reader(reader), m_faults(faults) {}

    void checkScreen(const xmlNode* screen);
    void checkFileUnit(const xmlNode* screen);
    void checkImportOrientation(const xmlNode* import);
    void checkRange(const xmlNode* range);
    void checkAzimuth(const xmlNode* azimuth);
    void checkElevation(const xmlNode* elevation);
    void checkRails(const xmlNode* screen);
    void checkTable(const xmlNode* table);
    void checkIncreasing(const xmlNode* pair, const xmlNode* previous, const char* attribute);
    void checkIds(const xmlNode* projectors);
    void checkScreenArea(const xmlNode* area);
    void add(const xmlNode* at, std::string found, std::string expected, std::string remedy);

    const ElementReader m_reader;
    FaultList& m_faults;
};

}  // namespace Veltrani::ConfigurationDetail
