#pragma once

#include "DisplayReport/check/DisplayCheck.h"
#include "ScreenManager/ScreenManager.h"
#include "SoundDisplays.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

/// Checks displays of the tests, each in a folder of its own with its files.
class DisplayFolder {
public:
    DisplayFolder() = default;
    DisplayFolder(const DisplayFolder&) = delete;
    DisplayFolder& operator=(const DisplayFolder&) = delete;
    ~DisplayFolder() { ScreenManager::deleteInstance(); }

    Veltrani::DisplayReport::DisplayDescription checked(const sound::Display& display,
                                                        const Veltrani::DisplayReport::CheckOptions& options = {}) {
        for (const auto& [name, content] : display.files) {
            m_folder.write(name, content);
        }
        return Veltrani::DisplayReport::DisplayCheck::ofFile(m_folder.write("display.xml", display.text), options);
    }

private:
    TemporaryFolder m_folder;
    LogTrap m_log;
};

/// One change to a text, made wherever it stands; a failed test where it does not.
inline std::string changed(std::string text, const std::string& from, const std::string& to) {
    std::size_t changes = 0;
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
        ++changes;
    }
    EXPECT_GT(changes, 0U) << "the display does not have " << from;
    return text;
}

/// Everything that was found, as it is printed.
inline std::vector<std::string> reported(const Veltrani::DisplayReport::DisplayDescription& description) {
    std::vector<std::string> texts;
    for (const auto& fault : description.faults) {
        texts.push_back(fault.where + ": " + fault.what);
    }
    for (const auto& finding : description.findings) {
        texts.push_back(finding.where + ": " + finding.what + " [" + finding.rule + "]");
    }
    return texts;
}

/// The names of the rules that found something.
inline std::set<std::string> rulesOf(const Veltrani::DisplayReport::DisplayDescription& description) {
    std::set<std::string> rules;
    for (const auto& finding : description.findings) {
        rules.insert(finding.rule);
    }
    return rules;
}
