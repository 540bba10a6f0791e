#pragma once

#include "platform/tnCADFileTypes.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace tnhost {

/// What a converter process is asked to do with one file.
struct ConversionRequest {
    QString input; ///< absolute path
    QString output; ///< absolute path of the glTF binary
    QString type; ///< display name of the file type
    QString sourceId; ///< noted in the output; see OutputNames
    QJsonObject settings; ///< translator options by field name
    int threads = 1; ///< cores that the conversion may use
};

/// Receives how a conversion goes on, always from the event loop and in the GUI thread. It must
/// live until onConversionEnded() or until the pool is gone.
class ConversionObserver {
public:
    ConversionObserver() = default;
    Q_DISABLE_COPY_MOVE(ConversionObserver)

    virtual void onProgress(unsigned int percent, const QString &message) = 0;
    virtual void onWarning(const QString &message) = 0;
    virtual void onPart(const QString &file) = 0;
    virtual void onPartFinished(const QString &file, tnCADFileTypes::JobState state, double seconds,
                                const QString &message) = 0;
    /// The result depends on this file, which need not exist.
    virtual void onReference(const QString & /*file*/) { }
    /// The last call, exactly once; the process writes nothing for this file any more. A message
    /// says why it is no success. Negative seconds: the converter did not get round to measuring.
    virtual void onConversionEnded(tnCADFileTypes::JobState state, double seconds,
                                   const QString &message) = 0;

protected:
    ~ConversionObserver() = default;
};

} // namespace tnhost
