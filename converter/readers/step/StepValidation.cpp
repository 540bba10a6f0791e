#include "readers/step/StepValidation.h"

#include "readers/kernel/KernelGuard.h"

#include <BRepGProp.hxx>
#include <GProp_GProps.hxx>
#include <TopExp_Explorer.hxx>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tnconvert {

namespace {

bool isNear(double value, double stated)
{
    return std::abs(value - stated)
        <= StepValidation::tolerance * std::max(std::abs(value), std::abs(stated));
}

std::string difference(const std::string &what, double value, double stated)
{
    return what + " " + std::to_string(value) + " instead of " + std::to_string(stated);
}

/// The area of a shape's solids, or of its faces that bound none.
double areaOf(const TopoDS_Shape &shape, TopAbs_ShapeEnum kind, TopAbs_ShapeEnum avoided)
{
    double area = 0;
    for (TopExp_Explorer pieces(shape, kind, avoided); pieces.More(); pieces.Next()) {
        GProp_GProps properties;
        BRepGProp::SurfaceProperties(pieces.Current(), properties);
        area += properties.Mass();
    }
    return area;
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
    if (stated.area && !isNear(mass.area, *stated.area) && !isNear(mass.solidArea, *stated.area))
        return difference("area", mass.area, *stated.area);
    if (stated.volume && !isNear(mass.volume, *stated.volume))
        return difference("volume", mass.volume, *stated.volume);
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
        GProp_GProps volume;
        mass.isKnown = KernelGuard::run([&] {
            mass.solidArea = areaOf(*shape, TopAbs_SOLID, TopAbs_SHAPE);
            mass.area = mass.solidArea + areaOf(*shape, TopAbs_FACE, TopAbs_SOLID);
            BRepGProp::VolumeProperties(*shape, volume, /*onlyClosed*/ true);
        });
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
        mass.solidArea += part.solidArea * scale * scale;
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
