#include "readers/step/StepAssembly.h"

#include "core/ConversionError.h"
#include "core/Stopwatch.h"
#include "core/Text.h"
#include "readers/step/StepHeader.h"
#include "scene/SceneOperations.h"

#include <utility>

namespace tnconvert {

namespace {

std::string joined(const std::vector<std::string> &sentences)
{
    std::string text;
    for (const std::string &sentence : sentences)
        text += (text.empty() ? "" : " ") + sentence;
    return text;
}

} // namespace

StepAssembly::StepAssembly(const Settings &settings, Report &report)
    : m_settings(settings)
    , m_report(report)
{
}

Scene StepAssembly::read(const std::string &path)
{
    m_report.progress(0, "Reading");
    m_references.emplace(path, m_settings.followOutside);
    Scene scene;
    scene.roots = std::move(load(absolutePath(path), 0, 90).nodes);
    if (!hasGeometry(scene.roots) && !m_isFiltered && isAnalysisModel(path))
        throw ConversionError(fileName(path)
                              + " is an analysis model (AP209) that holds finite elements, which "
                                "are not read, and no shapes.");
    scene.missingParts = std::move(m_missingParts);
    scene.losses = std::move(m_losses);
    scene.isFiltered = m_isFiltered;
    return scene;
}

/// Reads take the first two fifths of the time, those of part files with their shapes.
StepAssembly::File &StepAssembly::load(const std::string &path, double from, double to)
{
    File &file = m_files[path];
    const double half = from + (to - from) * 4 / 9;
    file.document = std::make_unique<StepDocument>(path, m_report, from, half);
    file.builder = std::make_unique<StepSceneBuilder>(*file.document, m_settings, m_report, half,
                                                      to, m_nodeCount);
    loadParts(file, from, half);
    file.nodes = file.builder->build();
    if (!file.builder->losses().isEmpty())
        m_losses.push_back(file.builder->losses().sentence(fileName(path)));
    const FaceTally &faces = file.builder->faces();
    if (faces.lost > 0)
        m_losses.push_back(faces.sentence(fileName(path)));
    m_isFiltered = m_isFiltered || faces.isFiltered || file.builder->isFiltered();
    file.isOpen = false;
    return file;
}

void StepAssembly::loadParts(File &file, double from, double to)
{
    const std::vector<StepPartFile> &parts = file.document->partFiles();
    if (!m_settings.importReferencedFiles)
        return;
    const double share = (to - from) / double(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto &[product, path] = parts[i];
        if (!product) {
            m_losses.push_back("No product is said to be in " + fileName(path) + ".");
            continue;
        }
        // Drawings and other documents of a product are told by their name alone.
        if (!parts[i].isStepFile() && !file.document->structure().products()[*product].isEmpty())
            continue;
        StepSceneBuilder *part =
            loadPart(path, from + share * double(i), from + share * double(i + 1));
        if (part)
            file.builder->setPart(*product, *part);
    }
}

/// Null when the part cannot be had.
StepSceneBuilder *StepAssembly::loadPart(const std::string &path, double from, double to)
{
    const auto known = m_files.find(path);
    if (known != m_files.end()) {
        if (known->second.isOpen)
            m_losses.push_back(fileName(path) + " is a part of itself; it is read once.");
        return known->second.isOpen ? nullptr : known->second.builder.get();
    }
    if (m_references->mayFollow(path))
        m_report.reference(path);
    m_report.partStarted(path);
    const Stopwatch watch;
    Outcome outcome = triedPart(path, from, to);
    outcome.seconds = watch.seconds();
    m_report.partFinished(path, outcome);
    return m_files[path].builder.get();
}

Outcome StepAssembly::triedPart(const std::string &path, double from, double to)
{
    const std::size_t missingBefore = m_missingParts.size();
    const std::size_t lossesBefore = m_losses.size();
    const std::uint64_t nodesBefore = m_nodeCount;
    try {
        m_references->check(path);
        const File &file = load(path, from, to);
        // It counts where it occurs.
        m_nodeCount = nodesBefore;
        if (!hasGeometry(file.nodes))
            throw ConversionError(fileName(path) + " contains no shape that can be read.");
    } catch (const ConversionError &error) {
        m_files[path].builder.reset();
        m_files[path].isOpen = false;
        m_missingParts.push_back(path);
        return {State::Failure, error.what(), 0};
    }
    std::string message = joined({m_losses.begin() + std::ptrdiff_t(lossesBefore), m_losses.end()});
    if (m_missingParts.size() > missingBefore)
        message += (message.empty() ? "" : " ") + ("Parts of " + fileName(path) + " are missing.");
    if (!message.empty())
        return {State::Incomplete, message, 0};
    return {};
}

} // namespace tnconvert
