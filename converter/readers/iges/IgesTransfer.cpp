#include "readers/iges/IgesTransfer.h"

#include "core/ConversionError.h"
#include "core/Text.h"
#include "readers/kernel/ForkedShapes.h"
#include "readers/kernel/KernelGuard.h"

#include <BRep_Builder.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <TopoDS_Compound.hxx>

#include <vector>

namespace tnconvert {

/// One that can leave out roots.
class IgesTransfer::Reader : public IGESCAFControl_Reader {
public:
    void leaveOut(int root) { theroots.Remove(root); }
};

IgesTransfer::IgesTransfer(const std::string &path, const Settings &settings, Report &report)
    : m_path(path)
    , m_settings(settings)
    , m_report(report)
{
    open();
    if (transfer())
        return;
    leaveBadRootsOut();
    if (transfer())
        return;
    // It also crashes over what the shapes are called.
    m_withNames = false;
    leaveBadRootsOut();
    if (!transfer())
        throw ConversionError(fileName(path) + " is damaged: its entities cannot become shapes.");
    report.warning(fileName(path) + " is damaged: the names of its entities cannot be read.");
}

IgesTransfer::~IgesTransfer() = default;

/// Afresh: what a crash has interrupted is in no state to go on from.
void IgesTransfer::open()
{
    m_document.emplace();
    m_reader = std::make_unique<Reader>();
    m_reader->SetColorMode(Standard_True);
    m_reader->SetNameMode(m_withNames);
    m_reader->SetLayerMode(Standard_True);
    m_reader->SetReadVisible(!m_settings.importInvisibleSurfaces
                             && !m_settings.importInvisibleCurves);
    bool isRead = false;
    KernelGuard::run([&] { isRead = m_reader->ReadFile(m_path.c_str()) == IFSelect_RetDone; });
    if (!isRead)
        throw ConversionError(fileName(m_path) + " is damaged: its entities cannot be read.");
}

bool IgesTransfer::transfer()
{
    const Handle(KernelProgress) progress = new KernelProgress(m_report, 40, 60, "Transferring");
    return KernelGuard::run([&] { m_reader->Transfer(m_document->handle(), progress->Start()); });
}

void IgesTransfer::leaveBadRootsOut()
{
    open();
    const auto count = std::size_t(m_reader->NbRootsForTransfer());
    TopoDS_Compound survived;
    BRep_Builder().MakeCompound(survived);
    const std::vector<TopoDS_Shape> tried = makeForked(count, [&](std::size_t i) {
        m_reader->TransferOneRoot(int(i) + 1);
        return TopoDS_Shape(survived);
    });
    for (std::size_t i = count; i > 0; --i) {
        if (tried[i - 1].IsNull())
            m_reader->leaveOut(int(i));
    }
}

Handle(XSControl_WorkSession) IgesTransfer::session() const
{
    return m_reader->WS();
}

} // namespace tnconvert
