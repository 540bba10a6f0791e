#include "filelist/RecordList.h"

#include <algorithm>
#include <utility>

const RecordList::Record &RecordList::at(int row) const
{
    const auto position = static_cast<std::size_t>(row);
    return m_places[position < m_gapBegin ? position : position + m_gapSize];
}

template <typename Predicate>
int RecordList::firstRowWith(Predicate predicate) const
{
    const auto found = std::find_if(m_places.begin(), m_places.end(), [&](const Record &record) {
        return record && predicate(*record);
    });
    if (found == m_places.end())
        return -1;
    const auto position = static_cast<std::size_t>(found - m_places.begin());
    return static_cast<int>(position < m_gapBegin ? position : position - m_gapSize);
}

int RecordList::rowOf(const QString &path) const
{
    return firstRowWith([&](const tnCADImportFile &file) { return file.matches(path); });
}

int RecordList::rowOf(const tnCADImportFile *record, int likelyRow) const
{
    if (likelyRow >= 0 && likelyRow < size() && at(likelyRow).get() == record)
        return likelyRow;
    return firstRowWith([&](const tnCADImportFile &file) { return &file == record; });
}

void RecordList::append(const Record &record)
{
    closeGap();
    m_places.push_back(record);
}

void RecordList::insert(int row, const Record &record)
{
    closeGap();
    ++m_revision;
    m_places.insert(m_places.begin() + row, record);
}

void RecordList::remove(int row)
{
    ++m_revision;
    const auto position = static_cast<std::size_t>(row);
    if (m_gapBegin <= position)
        closeGap();
    if (m_gapSize == 0)
        m_gapBegin = position + 1;
    for (; m_gapBegin > position + 1; --m_gapBegin)
        m_places[m_gapBegin - 1 + m_gapSize] = std::move(m_places[m_gapBegin - 1]);
    --m_gapBegin;
    ++m_gapSize;
    m_places[position].reset();
}

void RecordList::closeGap()
{
    const auto begin = m_places.begin() + static_cast<std::ptrdiff_t>(m_gapBegin);
    m_places.erase(begin, begin + static_cast<std::ptrdiff_t>(m_gapSize));
    m_gapBegin = 0;
    m_gapSize = 0;
}

void RecordList::clear()
{
    closeGap();
    ++m_revision;
    m_places.clear();
}
