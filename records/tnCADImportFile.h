#pragma once

#include "platform/tndNode.h"
#include "records/CADFileTypes.h"

#include <QtCore/QFileInfo>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

/// How far a file has come. The numbers order the State column when it is sorted.
enum class ImportState : std::int32_t {
    Pending = 0,
    Importing = 1,
    Loading = 2,
    Failed = 3,
    Succeeded = 4,
    Incomplete = 5,
    Aborted = 6,
};

/// One file of a batch: what the disk says of it, its type, its state and progress, the scene node
/// that came of it, and its place in an assembly. It stores what it is told and shows itself as
/// text. GUI thread only; held by std::shared_ptr. Everything is O(1) but what reads the disk.
class tnCADImportFile : public QObject {
    Q_OBJECT

public:
    /// Reads the file's facts from the disk and asks the file service for its suffix, and for its
    /// type where the suffix tells it. A missing file has size 0 and no date.
    explicit tnCADImportFile(const QString &path);
    ~tnCADImportFile() override;

    /// The path as it was given; never changes.
    QString path() const { return m_path; }
    /// Exact comparison with the path, case included. From the end on, as the files of one folder
    /// begin alike: lookups walk over whole lists of them.
    bool matches(const QString &path) const
    {
        return m_path.size() == path.size()
            && std::equal(m_path.crbegin(), m_path.crend(), path.crbegin());
    }
    /// The name without directory.
    QString fileName() const { return m_fileName; }
    /// What the file service takes for the suffix, without dot, in the file's own case.
    QString suffix() const { return m_suffix; }
    /// Bytes, as of the last change of state.
    qint64 size() const { return m_size; }
    /// The size in kB or MB; "Unknown" for 0 bytes.
    QString sizeText() const;

    /// Undefined until it is known.
    tnCADFileTypes::FileType fileType() const { return m_fileType; }
    void setFileType(tnCADFileTypes::FileType type) { m_fileType = type; }
    /// Several systems write files with this suffix, so that only a look into the file tells its
    /// type; the record stays Undefined until somebody sets the answer.
    bool hasSharedSuffix() const;

    ImportState state() const { return m_state; }
    /// Any state but Importing drops percentage and message. Size and date are read again: a
    /// converter may have written the file only now.
    void setState(ImportState state);
    /// Importing or Loading.
    bool isRunning() const;
    /// Pending, Failed or Aborted: a batch may take the file.
    bool isImportable() const;
    /// Whether the number is one of ImportState's.
    static bool isValidState(int state);

    /// Shown while the file is Importing, in other states merely kept.
    void setProgress(unsigned int percent, const QString &message);
    /// The name of the state, or the progress of a file that is Importing.
    QString stateText() const;
    /// Rich text, a table of the file's facts. Values are not escaped.
    QString toolTip() const;

    /// False again when the parent has gone.
    bool hasParent() const { return !m_parent.expired(); }
    /// The assembly whose part this file is.
    const std::weak_ptr<tnCADImportFile> &parent() const { return m_parent; }
    void setParent(const std::shared_ptr<tnCADImportFile> &parent) { m_parent = parent; }

    /// Links to children that have gone still count, here and below.
    bool hasChildren() const { return !m_children.empty(); }
    unsigned int childCount() const { return static_cast<unsigned int>(m_children.size()); }
    /// Keeps a weak link; no test for a double entry.
    void addChild(const std::shared_ptr<tnCADImportFile> &child) { m_children.push_back(child); }
    /// In the order of adding; an empty link for an index out of range.
    const std::weak_ptr<tnCADImportFile> &child(int index) const;

    /// The scene node that was loaded from the file; null until then.
    tndNode node() const { return m_node; }
    void setNode(const tndNode &node) { m_node = node; }

private:
    void readDiskFacts(const QFileInfo &info);

    QString m_path;
    QString m_fileName;
    QString m_suffix;
    qint64 m_size = 0;
    ImportState m_state = ImportState::Pending;
    QFileInfo m_diskFacts; ///< with size and times as they were read last; empty without a file
    unsigned int m_percent = 0;
    QString m_message;
    tnCADFileTypes::FileType m_fileType = tnCADFileTypes::Undefined;
    tndNode m_node;
    std::weak_ptr<tnCADImportFile> m_parent;
    std::vector<std::weak_ptr<tnCADImportFile>> m_children;
};

Q_DECLARE_METATYPE(ImportState)
