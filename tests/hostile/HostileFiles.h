#pragma once

#include <QMap>
#include <QRandomGenerator>
#include <QVector>

/// A file to convert and those that it refers to.
struct HostileFile {
    QString format; ///< as the worker protocol names it
    QString input; ///< the name of the file to convert
    QMap<QString, QByteArray> files; ///< the contents, by name
    QString damage; ///< what was done to them; empty: nothing
};

/// Damaged files without end, made of sound ones. The same seed and number give the same file.
class HostileFiles {
public:
    explicit HostileFiles(quint32 seed);

    HostileFile file(int number) const;
    /// What file() makes the file of this number of.
    const HostileFile &sound(int number) const { return m_sound[number % m_sound.size()]; }

private:
    quint32 m_seed;
    QVector<HostileFile> m_sound;
};
