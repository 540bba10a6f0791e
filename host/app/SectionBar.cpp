#include "host/app/SectionBar.h"

#include "host/view/SceneDisplay.h"

#include <QtWidgets/QAction>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QSlider>

namespace tnhost {

namespace {

constexpr int steps = 1000;
constexpr int sliderWidth = 160;

} // namespace

SectionBar::SectionBar(SceneDisplay *display, QWidget *parent)
    : QToolBar(tr("Section"), parent)
    , m_display(display)
    , m_axis(new QComboBox)
    , m_place(new QSlider(Qt::Horizontal))
{
    setObjectName(QStringLiteral("section"));
    m_axis->addItems(
        {tr("No Section"), tr("Section across x"), tr("Section across y"), tr("Section across z")});
    m_place->setRange(0, steps);
    m_place->setValue(steps / 2);
    m_place->setFixedWidth(sliderWidth);
    m_place->setToolTip(tr("Where it cuts"));
    addWidget(m_axis);
    addWidget(m_place);
    m_flip = addAction(tr("Other Side"));
    m_flip->setCheckable(true);
    connect(m_axis, qOverload<int>(&QComboBox::currentIndexChanged), this, &SectionBar::apply);
    connect(m_place, &QSlider::valueChanged, this, &SectionBar::apply);
    connect(m_flip, &QAction::toggled, this, &SectionBar::apply);
    setEnabled(display);
    if (display)
        apply();
}

void SectionBar::apply()
{
    Section section;
    section.axis = static_cast<Section::Axis>(m_axis->currentIndex());
    section.place = static_cast<float>(m_place->value()) / steps;
    section.isFlipped = m_flip->isChecked();
    m_place->setEnabled(section.axis != Section::Axis::None);
    m_flip->setEnabled(section.axis != Section::Axis::None);
    m_display->setSection(section);
}

} // namespace tnhost
