#include "readers/kernel/Kernel.h"

#include "core/Text.h"

#include <Interface_Static.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <OSD_Parallel.hxx>
#include <OSD_ThreadPool.hxx>
#include <STEPControl_Controller.hxx>
#include <TCollection_AsciiString.hxx>
#include <XCAFDoc_DocumentTool.hxx>

#include <algorithm>

namespace tnconvert {

namespace {

int threads = 1;

} // namespace

void prepareKernel()
{
    static const bool isPrepared = [] {
        Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_Printer));
        // The readers' parameters exist only after this.
        STEPControl_Controller::Init();
        Interface_Static::SetCVal("xstep.cascade.unit", "MM");
        return true;
    }();
    (void)isPrepared;
}

void setKernelThreads(int count)
{
    threads = count > 0 ? count : std::max(OSD_Parallel::NbLogicalProcessors(), 1);
    // Unlike the other kind that the kernel has these can be counted, and turn signals into
    // failures.
    OSD_Parallel::SetUseOcctThreads(true);
    if (threads > 1)
        OSD_ThreadPool::DefaultPool(threads - 1);
}

int kernelThreads()
{
    return threads;
}

Transform transformOf(const gp_Trsf &transformation)
{
    Transform result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 4; ++column)
            result.at(row, column) = transformation.Value(row + 1, column + 1);
    }
    return result;
}

std::string kernelText(const TCollection_ExtendedString &text)
{
    const TCollection_AsciiString utf8(text);
    return validUtf8(std::string_view(utf8.ToCString(), std::size_t(utf8.Length())));
}

KernelDocument::KernelDocument()
    : m_document(new TDocStd_Document("BinXCAF"))
{
    XCAFDoc_DocumentTool::Set(m_document->Main());
}

KernelDocument::~KernelDocument()
{
    // The attributes refer to their document; without this the cycle would stay in memory.
    m_document->Main().Root().ForgetAllAttributes(Standard_True);
}

KernelProgress::KernelProgress(Report &report, double from, double to, std::string message)
    : m_report(report)
    , m_from(from)
    , m_to(to)
    , m_message(std::move(message))
{
}

void KernelProgress::Show(const Message_ProgressScope &, Standard_Boolean)
{
    m_report.progress(m_from + (m_to - m_from) * GetPosition(), m_message);
}

} // namespace tnconvert
