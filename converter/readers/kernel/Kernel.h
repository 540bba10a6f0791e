#pragma once

#include "core/Report.h"
#include "scene/Transform.h"

#include <Message_ProgressIndicator.hxx>
#include <TCollection_ExtendedString.hxx>
#include <TDocStd_Document.hxx>
#include <gp_Trsf.hxx>

#include <string>

namespace tnconvert {

/// Makes the CAD kernel quiet and lets it deliver millimetres; cheap when called again.
void prepareKernel();

/// Lets the kernel use @p count threads, this one included; 0: as many as there are cores.
void setKernelThreads(int count);

/// How many threads the kernel may use: one unless it was told otherwise.
int kernelThreads();

/// The kernel's transformation as the scene has it.
Transform transformOf(const gp_Trsf &transformation);

/// The kernel's text as UTF-8.
std::string kernelText(const TCollection_ExtendedString &text);

/// A document of the kernel, emptied at the end of its life.
class KernelDocument {
public:
    KernelDocument();
    ~KernelDocument();
    KernelDocument(const KernelDocument &) = delete;
    KernelDocument &operator=(const KernelDocument &) = delete;

    Handle(TDocStd_Document) & handle() { return m_document; }

private:
    Handle(TDocStd_Document) m_document;
};

/// Maps the progress of one of the kernel's operations to a range of percents.
class KernelProgress : public Message_ProgressIndicator {
public:
    KernelProgress(Report &report, double from, double to, std::string message);

protected:
    void Show(const Message_ProgressScope &scope, Standard_Boolean isForced) override;

private:
    Report &m_report;
    const double m_from;
    const double m_to;
    const std::string m_message;
};

} // namespace tnconvert
