#include "filelist/KnownPaths.h"

KnownPaths::KnownPaths(const RecordList &rows, int questions)
    : m_rows(rows)
    , m_questions(questions)
    , m_revision(rows.revision())
{
}

bool KnownPaths::contains(const QString &path)
{
    if (m_questions == 1)
        return m_rows.rowOf(path) >= 0; // a single walk is faster
    if (m_revision != m_rows.revision()) {
        m_revision = m_rows.revision();
        m_paths.clear();
        m_rowsSeen = 0;
    }
    if (m_rowsSeen == 0)
        m_paths.reserve(static_cast<std::size_t>(m_rows.size() + m_questions));
    for (; m_rowsSeen < m_rows.size(); ++m_rowsSeen)
        m_paths.insert(m_rows.at(m_rowsSeen)->path());
    return m_paths.count(path) > 0;
}
