#include "host/app/ViewPane.h"

#include "host/view/ViewModule.h"

#include <QtWidgets/QLabel>
#include <QtWidgets/QVBoxLayout>

namespace tnhost {

ViewPane::ViewPane(Scene &scene, QWidget *parent)
    : QWidget(parent)
{
    QString error;
    m_display = ViewModule::createView(scene, &error);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    if (m_display) {
        layout->addWidget(m_display->widget());
        return;
    }
    auto *reason = new QLabel(tr("There is no 3D view: %1").arg(error));
    reason->setObjectName(QStringLiteral("noView"));
    reason->setTextFormat(Qt::PlainText);
    reason->setTextInteractionFlags(Qt::TextSelectableByMouse);
    reason->setAlignment(Qt::AlignCenter);
    reason->setWordWrap(true);
    layout->addWidget(reason);
}

} // namespace tnhost
