#pragma once

#include "core/Report.h"
#include "readers/step/StepEntities.h"
#include "readers/step/StepLooks.h"
#include "readers/step/StepLosses.h"
#include "readers/step/StepPartFiles.h"
#include "readers/step/StepProperties.h"
#include "readers/step/StepStructure.h"

#include <STEPControl_Reader.hxx>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tnconvert {

/// A Step file as it was read, before any shape is made.
class StepDocument {
public:
    /// Reads and checks @p path. Throws ConversionError when nothing can be made of it; damage that
    /// loses nothing is reported as warnings.
    /// Progress is reported between @p from and @p to percent.
    StepDocument(const std::string &path, Report &report, double from, double to);

    const std::string &path() const { return m_path; }
    const StepEntities &entities() const { return *m_entities; }
    const StepStructure &structure() const { return *m_structure; }
    const StepLooks &looks() const { return *m_looks; }
    const StepProperties &properties() const { return *m_properties; }
    const std::vector<StepPartFile> &partFiles() const { return m_partFiles; }

    /// What is known to be missing before shapes are made.
    const StepLosses &losses() const { return m_losses; }

private:
    void readEntities(const std::function<void(double)> &heard);
    void checkNumbers() const;
    void noteDamage(Report &report);

    const std::string m_path;
    STEPControl_Reader m_reader;
    std::optional<StepEntities> m_entities;
    std::optional<StepStructure> m_structure;
    std::optional<StepLooks> m_looks;
    std::optional<StepProperties> m_properties;
    std::vector<StepPartFile> m_partFiles;
    StepLosses m_losses;
};

} // namespace tnconvert
