#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <stdexcept>

namespace tnhost {

/// What is wrong with a file, as a sentence for the user. Stays inside the reader.
class GlbError : public std::runtime_error {
public:
    explicit GlbError(const QString &text)
        : std::runtime_error(text.toStdString())
    {
    }
};

/// The container of a glTF binary, checked before any parser sees it.
class GlbFile {
public:
    GlbFile() = delete;

    /// The file's bytes. Throws GlbError when it cannot be read, when header or chunks contradict
    /// its size, or when its JSON is nested so deeply that a recursive parser would run out of
    /// stack.
    static QByteArray read(const QString &path);
};

} // namespace tnhost
