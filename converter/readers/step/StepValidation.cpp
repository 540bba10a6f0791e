#include "readers/step/StepValidation.h"

#include "readers/kernel/KernelGuard.h"

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace tnconvert {

namespace {

bool isNear(double value, double stated)
{
    return std::abs(value - stated)
        <= StepValidation::tolerance * std::max(std::abs(value), std::abs(stated));
}

} // namespace

StepValidation::StepValidation(const StepDocument &document, ShapeOf shapeOf)
    : m_document(document)
    , m_shapeOf(std::move(shapeOf))
{
}

void StepValidation::check(StepLosses &losses)
{
    for (std::size_t i = 0; i < m_document.structure().products().size(); ++i) {
        const StepProduct &product = m_document.structure().products()[i];
        for (const Handle(Standard_Transient) & subject : product.subjects()) {
            const auto *properties = m_document.properties().find(subject);
            const std::string differs = properties ? differenceOf(i, properties->measured) : "";
            if (!differs.empty())
                losses.add(StepLosses::Kind::Validation, "\"" + product.name + "\": " + differs);
        }
    }
}

/// How a product differs from what is stated, empty when it does not.
std::string StepValidation::differenceOf(std::size_t product,
                                         const StepProperties::Measured &stated)
{
    if (!stated.area && !stated.volume && !stated.centroid)
        return {};
    const Mass &mass = massOf(product);
    if (!mass.isKnown)
        return {};
    for (const auto &[what, value, of] : {std::make_tuple("area", mass.area, stated.area),
                                          std::make_tuple("volume", mass.volume, stated.volume)}) {
        if (of && !isNear(value, *of))
            return std::string(what) + " " + std::to_string(value) + " instead of "
                + std::to_string(*of);
    }
    if (stated.centroid && mass.volume > 0) {
        const gp_XYZ centroid = mass.moment / mass.volume;
        const double size = std::max(std::cbrt(mass.volume), stated.centroid->Modulus());
        if ((centroid - *stated.centroid).Modulus() > tolerance * size)
            return "another centroid";
    }
    return {};
}

const StepValidation::Mass &StepValidation::massOf(std::size_t product)
{
    const auto known = m_masses.find(product);
    return known != m_masses.end() ? known->second
                                   : m_masses.emplace(product, measured(product)).first->second;
}

StepValidation::Mass StepValidation::measured(std::size_t product)
{
    Mass mass;
    const std::optional<TopoDS_Shape> shape = m_shapeOf(product);
    mass.isKnown = shape.has_value();
    if (shape && !shape->IsNull()) {
        GProp_GProps area;
        GProp_GProps volume;
        mass.isKnown = KernelGuard::run([&] {
            BRepGProp::SurfaceProperties(*shape, area);
            BRepGProp::VolumeProperties(*shape, volume, /*onlyClosed*/ true);
        });
        mass.area = area.Mass();
        mass.volume = volume.Mass();
        mass.moment = volume.CentreOfMass().XYZ() * volume.Mass();
    }
    for (const StepOccurrence &occurrence :
         m_document.structure().products()[product].occurrences) {
        const Mass part = massOf(occurrence.product);
        const double scale = std::abs(occurrence.placement.ScaleFactor());
        const double volume = part.volume * scale * scale * scale;
        mass.isKnown = mass.isKnown && part.isKnown;
        mass.area += part.area * scale * scale;
        mass.volume += volume;
        if (part.volume > 0) {
            gp_XYZ centroid = part.moment / part.volume;
            occurrence.placement.Transforms(centroid);
            mass.moment += centroid * volume;
        }
    }
    return mass;
}

} // namespace tnconvert
