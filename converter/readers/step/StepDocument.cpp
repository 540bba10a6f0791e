#include "readers/step/StepDocument.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Limits.h"
#include "core/Text.h"
#include "core/WatchedFile.h"
#include "readers/kernel/KernelGuard.h"
#include "readers/step/StepDamage.h"
#include "readers/step/StepHeader.h"
#include "readers/step/StepNumbers.h"

#include <StepGeom_CartesianPoint.hxx>
#include <StepGeom_Direction.hxx>
#include <StepGeom_Vector.hxx>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <istream>
#include <sstream>

namespace tnconvert {

namespace {

/// Of the time that reading takes. What is read is then linked and checked.
constexpr double parsingShare = 0.7;

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

/// Unlike the reader's own ReadFile, one that takes no byte order mark for damage.
bool readFile(STEPControl_Reader &reader, const std::string &path, const StepNumbers &numbers,
              const std::function<void(double)> &heard)
{
    if (numbers.twinCount() > 0) {
        std::istringstream text(
            std::string(withoutByteOrderMark(numbers.renumbered(readWhole(path)))));
        return reader.ReadStream(path.c_str(), text) == IFSelect_RetDone;
    }
    const std::string head = readHead(path, 3);
    WatchedFile bytes(path, heard);
    std::istream file(&bytes);
    file.ignore(std::streamsize(head.size() - withoutByteOrderMark(head).size()));
    return reader.ReadStream(path.c_str(), file) == IFSelect_RetDone;
}

bool isFinite(const StepGeom_CartesianPoint &point)
{
    for (int i = 1; i <= point.NbCoordinates(); ++i) {
        if (!std::isfinite(point.CoordinatesValue(i)))
            return false;
    }
    return true;
}

bool isFinite(const StepGeom_Direction &direction)
{
    for (int i = 1; !direction.DirectionRatios().IsNull() && i <= direction.NbDirectionRatios();
         ++i) {
        if (!std::isfinite(direction.DirectionRatiosValue(i)))
            return false;
    }
    return true;
}

bool isFinite(const StepGeom_Vector &vector)
{
    return std::isfinite(vector.Magnitude());
}

template <typename Entity>
bool areFinite(const StepEntities &entities)
{
    const auto all = entities.all<Entity>();
    return std::all_of(all.begin(), all.end(), [](const auto &one) { return isFinite(*one); });
}

} // namespace

StepDocument::StepDocument(const std::string &path, Report &report, double from, double to)
    : m_path(path)
{
    checkStepFile(path);
    readEntities([&](double share) {
        report.progress(from + (to - from) * share * parsingShare, "Reading");
    });
    checkNumbers();
    const bool isDone = KernelGuard::run([this] {
        m_structure.emplace(*m_entities);
        checkNodeCount(fileName(m_path), m_structure->nodeCount());
        m_looks.emplace(*m_entities);
        m_properties.emplace(*m_entities);
        m_partFiles = partFilesOf(m_path, *m_entities, *m_structure);
    });
    if (!isDone)
        throw ConversionError(fileName(path) + " is damaged: its products cannot be read.");
    noteDamage(report);
}

void StepDocument::readEntities(const std::function<void(double)> &heard)
{
    const StepNumbers numbers(m_path);
    if (numbers.twinCount() > 0)
        m_losses.add(StepLosses::Kind::Twin, numbers.firstTwin(), numbers.twinCount());
    bool isRead = false;
    KernelGuard::run([&] { isRead = readFile(m_reader, m_path, numbers, heard); });
    if (!isRead)
        throw ConversionError(fileName(m_path) + " is damaged: its data section cannot be read.");
    m_entities.emplace(m_reader.WS());
}

/// The kernel runs without end on a coordinate that is no number.
void StepDocument::checkNumbers() const
{
    if (!areFinite<StepGeom_CartesianPoint>(*m_entities)
        || !areFinite<StepGeom_Direction>(*m_entities) || !areFinite<StepGeom_Vector>(*m_entities))
        throw ConversionError(fileName(m_path) + " is damaged: it has impossible coordinates.");
}

void StepDocument::noteDamage(Report &report)
{
    const std::string isDamaged = fileName(m_path) + " is damaged: ";
    const StepDamage damage(*m_entities, m_path);
    if (damage.neededCount() > 0)
        m_losses.add(StepLosses::Kind::Needed, damage.firstNeeded(), damage.neededCount());
    // The kernel knows no finite elements, and takes them for damage.
    if (damage.otherCount() > 0 && !isAnalysisModel(m_path))
        report.warning(isDamaged + std::to_string(damage.otherCount())
                       + " of its entities are not as they should be, but no shape needs them.");
    if (m_looks->damagedCount() > 0)
        report.warning(isDamaged + std::to_string(m_looks->damagedCount())
                       + " of its colours cannot be read.");
    for (const Handle(Standard_Transient) & placement : m_structure->lostPlaces())
        m_losses.add(StepLosses::Kind::Place, m_entities->label(placement));
}

} // namespace tnconvert
