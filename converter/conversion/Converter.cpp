#include "conversion/Converter.h"

#include "core/ConversionError.h"
#include "core/FileProbe.h"
#include "core/Limits.h"
#include "core/References.h"
#include "core/Stopwatch.h"
#include "core/Text.h"
#include "readers/ReaderRegistry.h"
#include "readers/kernel/Kernel.h"
#include "sandbox/Sandbox.h"
#include "scene/SceneOperations.h"
#include "writer/GlbWriter.h"

#include <Standard_Failure.hxx>
#include <Standard_OutOfMemory.hxx>

#include <filesystem>
#include <new>

namespace tnconvert {

namespace {

std::unique_ptr<Reader> readerFor(const Job &job)
{
    std::unique_ptr<Reader> reader =
        job.type.empty() ? readerBySuffix(job.input) : readerByName(job.type);
    if (reader)
        return reader;
    if (!job.type.empty())
        throw ConversionError("The file type \"" + validUtf8(job.type) + "\" is not known.");
    throw ConversionError("The type of " + fileName(job.input)
                          + " is not known by its suffix; see --list-formats.");
}

void checkOutput(const Job &job)
{
    std::error_code error;
    const std::filesystem::path output(job.output);
    if (std::filesystem::is_directory(output, error))
        throw ConversionError("The output " + validUtf8(job.output) + " is a directory.");
    const std::filesystem::path directory = output.parent_path();
    if (!directory.empty() && !std::filesystem::is_directory(directory, error))
        throw ConversionError("The directory " + validUtf8(directory.string())
                              + " for the output does not exist.");
    if (std::filesystem::equivalent(job.input, output, error))
        throw ConversionError("The output would overwrite the input " + fileName(job.input) + ".");
}

void applySettings(const Settings &settings, Scene &scene)
{
    if (settings.removeEmptyGroups)
        removeEmptyGroups(scene.roots);
    if (settings.createLayerGroups)
        createLayerGroups(scene.roots);
    // Either gives instances meshes of their own.
    if (settings.flushTransformations || settings.unshareNodes)
        checkTriangleCount("The scene without shared meshes", triangleCount(scene.roots));
    if (settings.flushTransformations)
        flushTransformations(scene.roots);
    if (settings.unshareNodes)
        unshareMeshes(scene.roots);
}

std::string missingPartsMessage(const std::vector<std::string> &parts, const References &references)
{
    std::string message = parts.size() == 1 ? "A part file is missing or cannot be read: "
                                            : "Part files are missing or cannot be read: ";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::string objection = references.objection(parts[i]);
        message += (i > 0 ? ", " : "") + validUtf8(parts[i])
            + (objection.empty() ? "" : " (" + objection + ")");
    }
    return message + ".";
}

/// What the scene lacks, in sentences; empty when it is whole.
std::string lossMessage(const Scene &scene, const Job &job)
{
    std::string message;
    if (!scene.missingParts.empty())
        message = missingPartsMessage(scene.missingParts,
                                      References(job.input, job.settings.followOutside));
    for (const std::string &loss : scene.losses)
        message += (message.empty() ? "" : " ") + loss;
    return message;
}

Outcome convertOrThrow(const Job &job, Report &report)
{
    if (job.confinesProcess)
        Sandbox::confine(job.input, job.output, job.settings.followOutside);
    setKernelThreads(job.threads);
    checkReadable(job.input);
    const std::unique_ptr<Reader> reader = readerFor(job);
    checkOutput(job);
    Scene scene = reader->read(job.input, job.settings, report);
    report.progress(90, "Writing");
    applySettings(job.settings, scene);
    const std::string loss = lossMessage(scene, job);
    if (!hasGeometry(scene.roots)) {
        if (!loss.empty())
            throw ConversionError(loss + " Nothing else is left of " + fileName(job.input) + ".");
        throw ConversionError(fileName(job.input) + " contains no geometry"
                              + (scene.isFiltered ? " that the settings let through." : "."));
    }
    const std::string source =
        job.settings.fullSource ? absolutePath(job.input) : fileName(job.input);
    GlbWriter(source, job.sourceId).write(scene, job.output);
    report.progress(100, "Writing");
    if (!loss.empty())
        return {State::Incomplete, loss, 0};
    return {};
}

Outcome noMemory(const Job &job)
{
    return {State::Failure, "There is not enough memory to convert " + fileName(job.input) + ".",
            0};
}

Outcome convertCaught(const Job &job, Report &report)
{
    try {
        return convertOrThrow(job, report);
    } catch (const ConversionError &error) {
        return {State::Failure, error.what(), 0};
    } catch (const std::bad_alloc &) {
        return noMemory(job);
    } catch (const std::length_error &) {
        return noMemory(job);
    } catch (const Standard_OutOfMemory &) {
        return noMemory(job);
    } catch (const Standard_Failure &failure) {
        return {State::Failure,
                fileName(job.input) + " is damaged: the CAD kernel gave up on it ("
                    + validUtf8(failure.DynamicType()->Name()) + ").",
                0};
    } catch (const std::exception &error) {
        return {State::Failure,
                fileName(job.input) + " cannot be converted: " + validUtf8(error.what()) + ".", 0};
    }
}

} // namespace

Outcome convert(const Job &job, Report &report)
{
    const Stopwatch watch;
    Outcome outcome = convertCaught(job, report);
    outcome.seconds = watch.seconds();
    return outcome;
}

} // namespace tnconvert
