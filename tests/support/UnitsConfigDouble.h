#pragma once

#include "Configuration/IUnitsConfig.h"
#include "support/Recorder.h"

/// Native units that return what their member states.
class UnitsConfigDouble : public IUnitsConfig, public Recorder {
public:
    explicit UnitsConfigDouble(Trace* trace = nullptr) : Recorder("units", trace) {}

    std::wstring unitName = L"m";

    std::wstring getUnitName() const override {
        record("getUnitName");
        return unitName;
    }
};
