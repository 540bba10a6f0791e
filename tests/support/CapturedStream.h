#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QTemporaryFile>

#include <cstdio>
#include <unistd.h>
#include <utility>

/// Takes what is printed on a standard stream for as long as it lives.
class CapturedStream {
public:
    explicit CapturedStream(FILE *stream)
        : m_stream(stream)
    {
        m_file.open();
        std::fflush(m_stream);
        m_saved = dup(fileno(m_stream));
        dup2(m_file.handle(), fileno(m_stream));
    }
    ~CapturedStream() { take(); }
    Q_DISABLE_COPY_MOVE(CapturedStream)

    /// Gives the stream back and returns what was printed.
    QByteArray take()
    {
        if (m_saved >= 0) {
            std::fflush(m_stream);
            dup2(m_saved, fileno(m_stream));
            close(std::exchange(m_saved, -1));
        }
        m_file.seek(0);
        return m_file.readAll();
    }

private:
    FILE *m_stream;
    QTemporaryFile m_file;
    int m_saved = -1;
};
