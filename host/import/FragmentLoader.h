#pragma once

#include "host/import/BackgroundThread.h"
#include "host/scene/SceneFragment.h"

#include <QtCore/QObject>
#include <QtCore/QString>

#include <deque>
#include <memory>

namespace tnhost {

/// Receives how a load goes on, from the event loop and in the GUI thread. It must live until
/// onFragmentRead(), or until it has been cancelled or the loader is gone.
class LoadObserver {
public:
    LoadObserver() = default;
    Q_DISABLE_COPY_MOVE(LoadObserver)

    virtual void onReadingStarted() = 0;
    /// The last call. A null fragment comes with a sentence for the user.
    virtual void onFragmentRead(const std::shared_ptr<const SceneFragment> &fragment,
                                const QString &error) = 0;

protected:
    ~LoadObserver() = default;
};

/// Reads converted files in the background, one at a time and in the order of the requests:
/// the disk and the scene are the narrow places, and more threads would take the converters' cores.
class FragmentLoader : public QObject {
    Q_OBJECT

public:
    FragmentLoader();
    /// Waits for the file that is being read. No observer is called.
    ~FragmentLoader() override;

    void load(const QString &path, LoadObserver &observer);
    /// The observer is not called any more. A file that is being read is read to its end, for
    /// nothing.
    void cancel(const LoadObserver &observer);

private:
    struct Request {
        QString path;
        LoadObserver *observer = nullptr;
    };

    void startNext();
    void onRead(const std::shared_ptr<const SceneFragment> &fragment, const QString &error);

    bool m_isReading = false;
    LoadObserver *m_current = nullptr; ///< null when it was cancelled
    std::deque<Request> m_queue;
    BackgroundThread m_thread; ///< ends before what it works for
};

} // namespace tnhost
