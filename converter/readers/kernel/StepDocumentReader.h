#pragma once

#include "core/Report.h"

#include <STEPCAFControl_Reader.hxx>

#include <string>
#include <vector>

namespace tnconvert {

/// The kernel's Step reader, with an eye on each external part file.
class StepDocumentReader : public STEPCAFControl_Reader {
public:
    /// @p report must outlive the reader. When @p readsParts is false, references to part files
    /// are left out.
    StepDocumentReader(Report &report, bool readsParts);

    /// Loads @p path and its part files into @p document. Throws ConversionError when @p path
    /// itself cannot be read.
    void load(const std::string &path, Handle(TDocStd_Document) & document);

    /// Absolute paths of the part files that could not be read.
    const std::vector<std::string> &missingParts() const { return m_missingParts; }
    /// A sentence for each file that has damaged shapes.
    const std::vector<std::string> &losses() const { return m_losses; }

private:
    /// Reads the entities of @p path. Throws ConversionError when they cannot become a scene.
    void readModel(STEPControl_Reader &reader, const std::string &path);
    /// Throws ConversionError: the kernel runs without end on a coordinate that is no number.
    static void checkNumbers(const std::string &path,
                             const Handle(XSControl_WorkSession) & session);
    void noteDamage(const std::string &path, const Handle(XSControl_WorkSession) & session);
    void loadParts(const Handle(XSControl_WorkSession) & session, const std::string &directory,
                   Handle(TDocStd_Document) & document);
    Handle(STEPCAFControl_ExternFile) enter(const std::string &name);
    Outcome loadPart(const std::string &name, const std::string &path,
                     Handle(TDocStd_Document) & document);

    Report &m_report;
    const bool m_readsParts;
    std::vector<std::string> m_missingParts;
    std::vector<std::string> m_losses;
};

/// Throws ConversionError when @p path is no readable and whole Step file.
void checkStepFile(const std::string &path);

} // namespace tnconvert
