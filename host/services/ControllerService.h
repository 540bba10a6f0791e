#pragma once

#include "platform/tnControllerService.h"

#include <QtCore/QObject>

namespace tnhost {

/// Passes on to the main window what modules want to see. Without a window it only remembers.
class ControllerService final : public QObject, public tnControllerService {
    Q_OBJECT

public:
    void showAssetManager(bool show) override;
    /// What the last call asked for; false before the first.
    bool isAssetManagerWanted() const { return m_assetManagerWanted; }

signals:
    /// Once per call, also when nothing changes: a dock behind others is to be raised again.
    void assetManagerRequested(bool show);

private:
    bool m_assetManagerWanted = false;
};

} // namespace tnhost
