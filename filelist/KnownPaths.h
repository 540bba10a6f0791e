#pragma once

#include "filelist/RecordList.h"

#include <memory_resource>
#include <unordered_set>

/// Tells for many paths, one after the other, whether they are in the table, which may change
/// meanwhile. A walk over the table for each of them would keep people waiting for thousands. It is
/// made for one operation, which gives back its memory at once.
class KnownPaths {
public:
    /// The table must outlive it. The number of questions to come is a hint.
    KnownPaths(const RecordList &rows, int questions);
    Q_DISABLE_COPY_MOVE(KnownPaths)

    /// O(1) besides what has been appended since the last question; O(n) when rows have come or
    /// gone in between.
    bool contains(const QString &path);

private:
    const RecordList &m_rows;
    const int m_questions;
    std::pmr::monotonic_buffer_resource m_memory;
    std::pmr::unordered_set<QString> m_paths{&m_memory};
    int m_rowsSeen = 0;
    unsigned int m_revision = 0;
};
