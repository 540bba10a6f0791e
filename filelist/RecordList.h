#pragma once

#include "records/tnCADImportFile.h"

#include <memory>
#include <vector>

/// The records of the file model by row. It is made for the removal of many rows from the largest
/// to the smallest: their places stay empty, as one gap, until all are gone, so that what stands
/// behind moves once and not for every row. Rows must be in range.
class RecordList {
public:
    using Record = std::shared_ptr<tnCADImportFile>;

    int size() const { return static_cast<int>(m_places.size() - m_gapSize); }
    const Record &at(int row) const;
    /// The first row with the path, or -1. O(n).
    int rowOf(const QString &path) const;
    /// The row of the record, or -1. O(1) for the likely row, which may be out of range, else O(n).
    int rowOf(const tnCADImportFile *record, int likelyRow) const;
    /// Changes with all that moves rows; rows that are appended leave it as it is.
    unsigned int revision() const { return m_revision; }

    void append(const Record &record);
    /// O(size - row).
    void insert(int row, const Record &record);
    /// O(1) for the row in front of the one removed last, O(distance) above that one. What is left
    /// open is closed by the next insertion or by closeGap().
    void remove(int row);
    /// O(n).
    void closeGap();
    void clear();

private:
    template <typename Predicate>
    int firstRowWith(Predicate predicate) const;

    std::vector<Record> m_places; ///< the gap holds null pointers
    std::size_t m_gapBegin = 0;
    std::size_t m_gapSize = 0;
    unsigned int m_revision = 0;
};
