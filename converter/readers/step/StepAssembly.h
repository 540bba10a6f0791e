#pragma once

#include "core/References.h"
#include "core/Report.h"
#include "core/Settings.h"
#include "readers/step/StepDocument.h"
#include "readers/step/StepSceneBuilder.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tnconvert {

/// A Step file and the part files that it refers to, each read once. A part file is reported with
/// its state as soon as its shapes are made.
class StepAssembly {
public:
    /// Both must outlive the assembly.
    StepAssembly(const Settings &settings, Report &report);

    /// Throws ConversionError when @p path itself cannot be read.
    Scene read(const std::string &path);

private:
    struct File {
        std::unique_ptr<StepDocument> document;
        std::unique_ptr<StepSceneBuilder> builder;
        std::vector<Node> nodes;
        bool isOpen = true; ///< it is being read, with what it refers to
    };

    File &load(const std::string &path, double from, double to);
    void loadParts(File &file, double from, double to);
    Outcome triedPart(const std::string &path, double from, double to);
    StepSceneBuilder *loadPart(const std::string &path, double from, double to);

    const Settings &m_settings;
    Report &m_report;
    std::optional<References> m_references;
    std::map<std::string, File> m_files; ///< by absolute path
    std::uint64_t m_nodeCount = 0;
    std::vector<std::string> m_missingParts;
    std::vector<std::string> m_losses;
    bool m_isFiltered = false;
};

} // namespace tnconvert
