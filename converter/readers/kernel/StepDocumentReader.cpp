#include "readers/kernel/StepDocumentReader.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Limits.h"
#include "core/Stopwatch.h"
#include "core/Text.h"
#include "readers/kernel/Kernel.h"
#include "readers/step/StepDamage.h"
#include "readers/step/StepStructure.h"

#include <Interface_InterfaceModel.hxx>
#include <STEPCAFControl_ExternFile.hxx>
#include <STEPConstruct_ExternRefs.hxx>
#include <Standard_Failure.hxx>
#include <StepGeom_CartesianPoint.hxx>
#include <StepGeom_Direction.hxx>
#include <StepGeom_Vector.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <XSControl_WorkSession.hxx>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

namespace tnconvert {

namespace {

/// Unlike the reader's own ReadFile, one that takes no byte order mark for damage.
IFSelect_ReturnStatus readFile(STEPControl_Reader &reader, const std::string &path)
{
    const std::string head = readHead(path, 3);
    std::ifstream file(path, std::ios::binary);
    file.seekg(std::streamoff(head.size() - withoutByteOrderMark(head).size()));
    return reader.ReadStream(path.c_str(), file);
}

} // namespace

StepDocumentReader::StepDocumentReader(Report &report, bool readsParts)
    : m_report(report)
    , m_readsParts(readsParts)
{
    SetColorMode(Standard_True);
    SetNameMode(Standard_True);
    SetLayerMode(Standard_True);
    SetPropsMode(Standard_True);
    SetMatMode(Standard_True);
    SetGDTMode(Standard_False);
    SetViewMode(Standard_False);
    SetSHUOMode(Standard_False);
}

void StepDocumentReader::load(const std::string &path, Handle(TDocStd_Document) & document)
{
    m_report.progress(0, "Reading");
    readModel(ChangeReader(), path);
    loadParts(ChangeReader().WS(), std::filesystem::path(path).parent_path().string(), document);
    const Handle(KernelProgress) progress = new KernelProgress(m_report, 40, 60, "Transferring");
    if (!Transfer(document, progress->Start()))
        throw ConversionError(fileName(path) + " contains no shape that can be read.");
}

void StepDocumentReader::readModel(STEPControl_Reader &reader, const std::string &path)
{
    if (readFile(reader, path) != IFSelect_RetDone)
        throw ConversionError(fileName(path) + " is damaged: its data section cannot be read.");
    checkNumbers(path, reader.WS());
    noteDamage(path, reader.WS());
    // The kernel would unfold the products first and run without end.
    checkNodeCount(fileName(path), StepStructure(reader.StepModel()).nodeCount());
}

void StepDocumentReader::checkNumbers(const std::string &path,
                                      const Handle(XSControl_WorkSession) & session)
{
    const auto isFinite = [](const Handle(Standard_Transient) & entity) {
        bool finite = true;
        const auto check = [&finite](double value) { finite = finite && std::isfinite(value); };
        if (const auto point = Handle(StepGeom_CartesianPoint)::DownCast(entity))
            for (int i = 1; i <= point->NbCoordinates(); ++i)
                check(point->CoordinatesValue(i));
        else if (const auto direction = Handle(StepGeom_Direction)::DownCast(entity);
                 direction && !direction->DirectionRatios().IsNull())
            for (int i = 1; i <= direction->NbDirectionRatios(); ++i)
                check(direction->DirectionRatiosValue(i));
        else if (const auto vector = Handle(StepGeom_Vector)::DownCast(entity))
            check(vector->Magnitude());
        return finite;
    };
    const Handle(Interface_InterfaceModel) model = session->Model();
    for (int i = 1; i <= model->NbEntities(); ++i) {
        if (!isFinite(model->Value(i)))
            throw ConversionError(fileName(path) + " is damaged: it has impossible coordinates.");
    }
}

void StepDocumentReader::noteDamage(const std::string &path,
                                    const Handle(XSControl_WorkSession) & session)
{
    const StepDamage damage(session);
    const std::string isDamaged = fileName(path) + " is damaged: ";
    if (damage.neededCount() == 1)
        m_losses.push_back(isDamaged + "an entity that its shapes need cannot be read, "
                           + damage.firstNeeded() + ".");
    else if (damage.neededCount() > 1)
        m_losses.push_back(isDamaged + std::to_string(damage.neededCount())
                           + " entities that its shapes need cannot be read, the first is "
                           + damage.firstNeeded() + ".");
    if (damage.otherCount() > 0)
        m_report.warning(isDamaged + std::to_string(damage.otherCount())
                         + " of its entities are not as they should be, but no shape needs them.");
}

void StepDocumentReader::loadParts(const Handle(XSControl_WorkSession) & session,
                                   const std::string &directory,
                                   Handle(TDocStd_Document) & document)
{
    STEPConstruct_ExternRefs references(session);
    references.LoadExternRefs();
    for (int i = 1; i <= references.NbExternRefs(); ++i) {
        const Standard_CString stated = references.FileName(i);
        if (!stated || !*stated)
            continue;
        const std::string name = stated;
        if (ExternFiles().IsBound(name.c_str()))
            continue;
        if (!m_readsParts) {
            // An entry without a label makes the kernel leave the reference empty.
            enter(name);
            continue;
        }
        std::string portable = name;
        std::replace(portable.begin(), portable.end(), '\\', '/');
        const std::string path =
            absolutePath((std::filesystem::path(directory) / portable).string());
        m_report.partStarted(path);
        const Stopwatch watch;
        Outcome outcome = loadPart(name, path, document);
        outcome.seconds = watch.seconds();
        if (outcome.state == State::Failure)
            m_missingParts.push_back(path);
        m_report.partFinished(path, outcome);
    }
}

Handle(STEPCAFControl_ExternFile) StepDocumentReader::enter(const std::string &name)
{
    const Handle(STEPCAFControl_ExternFile) file = new STEPCAFControl_ExternFile;
    file->SetName(new TCollection_HAsciiString(name.c_str()));
    file->SetLoadStatus(IFSelect_RetError);
    // The base class keeps its table private, yet looks into it before it reads a file itself.
    using Files = NCollection_DataMap<TCollection_AsciiString, Handle(STEPCAFControl_ExternFile)>;
    const_cast<Files &>(ExternFiles()).Bind(name.c_str(), file);
    return file;
}

Outcome StepDocumentReader::loadPart(const std::string &name, const std::string &path,
                                     Handle(TDocStd_Document) & document)
{
    // Entered before it is read, which ends circles of references as well.
    const Handle(STEPCAFControl_ExternFile) file = enter(name);
    try {
        checkStepFile(path);
        STEPControl_Reader part;
        file->SetWS(part.WS());
        const std::size_t missingBefore = m_missingParts.size();
        const std::size_t lossesBefore = m_losses.size();
        readModel(part, path);
        file->SetLoadStatus(IFSelect_RetDone);
        loadParts(part.WS(), std::filesystem::path(path).parent_path().string(), document);
        TDF_LabelSequence labels;
        file->SetTransferStatus(Transfer(part, 0, document, labels, Standard_True));
        if (labels.IsEmpty())
            throw ConversionError(fileName(path) + " contains no shape that can be read.");
        file->SetLabel(labels.First());
        if (m_missingParts.size() > missingBefore)
            return {State::Incomplete, "Parts of " + fileName(path) + " are missing.", 0};
        if (m_losses.size() > lossesBefore)
            return {State::Incomplete, m_losses[lossesBefore], 0};
        return {};
    } catch (const ConversionError &error) {
        return {State::Failure, error.what(), 0};
    } catch (const Standard_Failure &) {
        return {State::Failure, fileName(path) + " is damaged: it cannot be transferred.", 0};
    }
}

void checkStepFile(const std::string &path)
{
    checkReadable(path);
    const std::string head = readHead(path, 512);
    if (trimmed(withoutByteOrderMark(head)).substr(0, 12) != "ISO-10303-21")
        throwWrongContent(path, "a Step file", "it does not begin with ISO-10303-21");
    if (readTail(path, 4096).find("END-ISO-10303-21") == std::string::npos)
        throw ConversionError(fileName(path)
                              + " is truncated: its last line END-ISO-10303-21; is missing.");
}

} // namespace tnconvert
