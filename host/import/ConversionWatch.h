#pragma once

#include <QtCore/QString>

#include <utility>

namespace tnhost {

/// Notices that a conversion gets nowhere. Counts the ticks of its owner's timer rather than
/// reading a clock: a machine that slept, or a host that was busy itself, is no silence of the
/// converter.
class ConversionWatch {
public:
    /// A conversion that brings no news over @p silence milliseconds is too silent; 0: none ever
    /// is.
    explicit ConversionWatch(int silence);

    /// Forgets the conversion before.
    void restart();
    void notifyNews() { m_silent = 0; }
    /// News only when it differs from the progress before.
    void notifyProgress(double percent, const QString &message);
    /// Says that @p interval milliseconds have passed; whether the conversion is too silent now.
    bool tick(int interval);

private:
    const int m_silence;
    int m_silent = 0; ///< ms without news
    std::pair<double, QString> m_progress;
};

} // namespace tnhost
