#pragma once

#include "platform/tnFileIOService.h"

#include <QtCore/QFileInfo>

#include <map>
#include <set>
#include <vector>

/// A file service that converts nothing: it answers by suffix and by what a test has set, records
/// what it was asked, and leaves it to the test to emit signals.
class ScriptedFileService : public tnFileIOService {
public:
    struct Load {
        QStringList files;
        tndNode target;
        QString directory;
        bool load, remove, direct;
    };
    struct Reimport {
        tndNode node;
        bool remove;
    };

    // What the service knows, by lower-case suffix: which files it supports, and their types.
    using FileType = tnCADFileTypes::FileType;
    std::map<QString, FileType> types{
        {"step", FileType::Step},    {"stp", FileType::Step},        {"igs", FileType::Iges},
        {"stl", FileType::STL},      {"obj", FileType::Obj},         {"wrl", FileType::VRML},
        {"jt", FileType::JT},        {"3dm", FileType::Rhino},       {"x_t", FileType::Parasolid},
        {"skp", FileType::SketchUp}, {"catpart", FileType::CatiaV5}, {"wire", FileType::Heron},
        {"kxt", FileType::KXT},      {"prt", FileType::NX},          {"asm", FileType::SolidEdge}};
    bool handledByDialog = true;
    bool directLoadCandidate = true;
    std::set<FileType> disabledTypes;

    // What it was asked, in order.
    std::vector<Load> loads;
    std::vector<Reimport> reimports;
    std::vector<quint64> aborts;
    QStringList typeRequests;
    QStringList typeQuestions;

    // What it holds.
    int maxParallelProcesses = -1;
    std::map<FileType, tndXlatSettings> xlatSettings;
    std::map<FileType, tndXlatSettings> defaultXlatSettings;
    tndSceneImportSettings sceneSettings;
    tndProjectMergeSettings mergeSettings;
    quint64 nextJob = 1;

    void setMaxParallelProcesses(int count) override { maxParallelProcesses = count; }
    int getMaxParallelProcesses() override { return maxParallelProcesses; }
    void setImportSettings(FileType t, const tndXlatSettings &s) override { xlatSettings[t] = s; }
    tndXlatSettings getImportSettings(FileType t) override { return xlatSettings[t]; }
    tndXlatSettings getDefaultImportSettings(FileType t) override { return defaultXlatSettings[t]; }
    void setSceneImportSettings(const tndSceneImportSettings &s) override { sceneSettings = s; }
    tndSceneImportSettings getSceneImportSettings() override { return sceneSettings; }
    void setProjectMergeSettings(const tndProjectMergeSettings &s) override { mergeSettings = s; }
    tndProjectMergeSettings getProjectMergeSettings() override { return mergeSettings; }
    bool isFileTypeEnabled(FileType type) override { return disabledTypes.count(type) == 0; }
    bool isHandledByImportDialog(const QString &) override { return handledByDialog; }
    quint64 loadFiles(const QStringList &files, const tndNode &target, const QString &directory,
                      bool load, bool remove, bool direct) override
    {
        loads.push_back({files, target, directory, load, remove, direct});
        return nextJob++;
    }
    quint64 reimportFile(const tndNode &node, bool remove) override
    {
        reimports.push_back({node, remove});
        return nextJob++;
    }
    void requestFileType(const QString &path) override { typeRequests << path; }
    void abortImport(quint64 job) override { aborts.push_back(job); }
    bool isFileSupported(const QString &path) override
    {
        return types.count(fileSuffix(path).toLower()) != 0;
    }
    bool isDirectLoadCandidate(const QString &) override { return directLoadCandidate; }
    QString fileSuffix(const QString &path) override { return QFileInfo(path).suffix(); }
    FileType fileType(const QString &path) override
    {
        typeQuestions << path;
        const auto found = types.find(fileSuffix(path).toLower());
        return found == types.end() ? FileType::Unsupported : found->second;
    }
};
